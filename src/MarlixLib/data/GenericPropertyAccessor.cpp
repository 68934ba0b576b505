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
    handles.reserve(this->objects.size());
    for (const auto& object : this->objects) {
        if (!object)
            throw Exception("A property accessor was given an empty entity");
        // Objects of one class share their layout, and so the resolved path.
        if (!handles.empty() && handles.back().isFor(object->getObjectLayout()))
            handles.push_back(handles.back());
        else
            handles.push_back(object->resolveHandle(this->path));
    }
}

PropertyPathStatus GenericPropertyAccessor::checkProperty() const
{
    if (objects.empty())
        return PropertyPathStatus::DoesNotResolve;
    PropertyPathStatus worst = PropertyPathStatus::RootProperty;
    for (const auto& handle : handles)
        worst = std::max(worst, handle.getStatus());
    return worst;
}

const PropertyDefinition& GenericPropertyAccessor::getDefinition() const
{
    if (objects.empty())
        throw Exception("An empty property accessor has no property");
    if (!handles.front().isResolved())
        throw Exception("The property path \"" + path + "\" does not resolve");
    return *handles.front().getDefinition();
}

GenericProperty GenericPropertyAccessor::getProperty() const
{
    if (objects.empty())
        throw Exception("An empty property accessor has no property");
    return objects.front()->getProperty(handles.front());
}

bool GenericPropertyAccessor::hasSameValues() const
{
    const GenericProperty first = getProperty();
    for (std::size_t i = 1; i < objects.size(); ++i) {
        const GenericProperty other = objects[i]->getProperty(handles[i]);
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
    for (std::size_t i = 0; i < objects.size(); ++i)
        objects[i]->getProperty(handles[i]).checkIsOfType(type, nullptr, TypeKind::Plain, false);
}

void GenericPropertyAccessor::setValue(const Value& value) const
{
    if (value.isEmpty())
        throw Exception("An empty value cannot be written to \"" + path + "\"");
    for (std::size_t i = 0; i < objects.size(); ++i) {
        const GenericProperty property = objects[i]->getProperty(handles[i]);
        if (property.getTypeDefinition().getName() != value.getType()->getName())
            throw Exception("The property \"" + path + "\" holds a " + property.getTypeDefinition().getName() + ", not a "
                + value.getType()->getName());
    }
    for (std::size_t i = 0; i < objects.size(); ++i)
        objects[i]->mutateProperty(handles[i], [&](GenericProperty& property) { property.setValue(value); });
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

void GenericPropertyAccessor::addObserver(CallbacksOwner& owner, Function<void(const ObservedProperty&)> observer) const
{
    for (std::size_t i = 0; i < objects.size(); ++i)
        owner.add(objects[i]->getProperty(handles[i]).addObserver(observer));
}

} // namespace Marlix
