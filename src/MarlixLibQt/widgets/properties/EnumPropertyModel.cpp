#include <MarlixLibQt/widgets/properties/EnumPropertyModel.h>

namespace Marlix::Widgets {

EnumPropertyModel::EnumPropertyModel(
    GenericPropertyAccessor accessor, SharedPtr<IUndoManager> undoManager, Optional<String> displayName)
    : PropertyModelBase<std::int64_t>(std::move(accessor), std::move(undoManager), std::move(displayName))
{
}

Array<EnumerationValue> EnumPropertyModel::getEnumerationValues() const
{
    if (getAccessor().isEmpty() || !isResolved(getAccessor().checkProperty()))
        return {};
    return getAccessor().getDefinition().getTypeDefinition().getEnumerationValues();
}

std::int64_t EnumPropertyModel::readValue() const
{
    const GenericPropertyAccessor& accessor = getAccessor();
    return accessor.getObjects().front()->visitProperty(
        accessor.getPath(), [](const GenericProperty& property) { return property.read<std::int64_t>(); });
}

void EnumPropertyModel::writeValue(const std::int64_t& value)
{
    const GenericPropertyAccessor& accessor = getAccessor();
    // Every object is checked first: a selection that mixes types changes none of its objects.
    for (const auto& object : accessor.getObjects()) {
        const TypeDefinition& type = object->getProperty(accessor.getPath()).getTypeDefinition();
        if (type.getKind() != TypeKind::Enumeration)
            throw Exception(
                "The property \"" + accessor.getPath() + "\" holds a " + type.getName() + ", not an enumeration");
        if (!type.findEnumerationName(value))
            throw Exception(std::to_string(value) + " is not a value of " + type.getName());
    }
    accessor.mutate([value](GenericProperty& property) { property.write<std::int64_t>(value); });
}

} // namespace Marlix::Widgets
