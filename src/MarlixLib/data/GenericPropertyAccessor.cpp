#include <MarlixLib/data/GenericPropertyAccessor.h>

#include <MarlixLib/base/Exception.h>

namespace Marlix {

GenericPropertyAccessor::GenericPropertyAccessor(EntityHolder<Entity> object, String path)
    : GenericPropertyAccessor(Array<EntityHolder<Entity>> { std::move(object) }, std::move(path))
{
}

GenericPropertyAccessor::GenericPropertyAccessor(Array<EntityHolder<Entity>> objects, String path)
    : objects(std::move(objects))
    , path(std::move(path))
{
    if (this->objects.empty())
        throw Exception("A property accessor needs at least one object");
    for (const auto& object : this->objects)
        if (!object)
            throw Exception("A property accessor was given an empty entity");
}

PropertyPathStatus GenericPropertyAccessor::checkProperty() const
{
    if (objects.empty())
        return PropertyPathStatus::DoesNotResolve;
    PropertyPathStatus worst = PropertyPathStatus::RootProperty;
    for (const auto& object : objects)
        worst = std::max(worst, object->checkPropertyPath(path));
    return worst;
}

const PropertyDefinition& GenericPropertyAccessor::getDefinition() const
{
    if (objects.empty())
        throw Exception("An empty property accessor has no property");
    const auto resolved = objects.front()->resolve(path);
    if (!isResolved(resolved.status))
        throw Exception("The property path \"" + path + "\" does not resolve");
    return *resolved.definition;
}

GenericProperty GenericPropertyAccessor::getProperty() const
{
    if (objects.empty())
        throw Exception("An empty property accessor has no property");
    return objects.front()->getProperty(path);
}

bool GenericPropertyAccessor::hasSameValues() const
{
    const GenericProperty first = getProperty();
    for (std::size_t i = 1; i < objects.size(); ++i) {
        const GenericProperty other = objects[i]->getProperty(path);
        if (other.getTypeDefinition().getName() != first.getTypeDefinition().getName()
            || !first.getTypeDefinition().equals(first.getData(), other.getData()))
            return false;
    }
    return true;
}

String GenericPropertyAccessor::toString() const
{
    return hasSameValues() ? getProperty().toString() : String(MIXED_VALUES_TEXT);
}

void GenericPropertyAccessor::checkWritableAs(std::type_index type) const
{
    if (objects.empty())
        throw Exception("An empty property accessor has no property");
    for (const auto& object : objects)
        object->getProperty(path).checkIsOfType(type, nullptr, TypeKind::Plain, false);
}

void GenericPropertyAccessor::setValue(const Value& value) const
{
    if (value.isEmpty())
        throw Exception("An empty value cannot be written to \"" + path + "\"");
    for (const auto& object : objects) {
        const GenericProperty property = object->getProperty(path);
        if (property.getTypeDefinition().getName() != value.getType()->getName())
            throw Exception("The property \"" + path + "\" holds a " + property.getTypeDefinition().getName() + ", not a "
                + value.getType()->getName());
    }
    for (const auto& object : objects)
        object->mutateProperty(path, [&](GenericProperty& property) { property.setValue(value); });
}

Expected<void, String> GenericPropertyAccessor::setFromString(StringView text) const
{
    const GenericProperty first = getProperty();
    Value parsed(first.getDefinition().getType());
    if (auto result = first.getTypeDefinition().fromString(text, parsed.data()); !result)
        return result;
    try {
        setValue(parsed);
    } catch (const Exception& error) {
        return Unexpected<String>(error.getMessage());
    }
    return {};
}

void GenericPropertyAccessor::mutate(const Function<void(GenericProperty&)>& writer) const
{
    for (const auto& object : objects)
        object->mutateProperty(path, [&](GenericProperty& property) { writer(property); });
}

void GenericPropertyAccessor::addObserver(CallbacksOwner& owner, Function<void(const ObservedProperty&)> observer) const
{
    for (const auto& object : objects)
        owner.add(object->getProperty(path).addObserver(observer));
}

} // namespace Marlix
