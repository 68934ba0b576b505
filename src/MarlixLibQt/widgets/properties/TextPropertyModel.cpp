#include <MarlixLibQt/widgets/properties/TextPropertyModel.h>

namespace Marlix::Widgets {

TextPropertyModel::TextPropertyModel(
    GenericPropertyAccessor accessor, SharedPtr<IUndoManager> undoManager, Optional<String> displayName)
    : PropertyModelBase<String>(std::move(accessor), std::move(undoManager), std::move(displayName))
{
}

bool TextPropertyModel::hasTextForm(const TypeDefinition& type)
{
    return type.getOperations().toString && type.getOperations().fromString;
}

String TextPropertyModel::readValue() const
{
    return getAccessor().toString();
}

void TextPropertyModel::writeValue(const String& value)
{
    if (!hasTextForm(getAccessor().getDefinition().getTypeDefinition()))
        throw Exception(
            "Values of " + getAccessor().getDefinition().getTypeDefinition().getName() + " have no text form");
    // Parsed once, then written to every object or to none.
    if (auto written = getAccessor().setFromString(value); !written)
        throw Exception(written.error());
}

} // namespace Marlix::Widgets
