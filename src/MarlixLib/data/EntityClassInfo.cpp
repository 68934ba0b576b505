#include <MarlixLib/data/EntityClassInfo.h>

#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLib/data/GroupLayout.h>

namespace Marlix {

SharedPtr<const Detail::ObjectLayout> Detail::ObjectLayout::make(ArrayView<const SharedPtr<const GroupLayout>> layouts)
{
    auto result = makeSharedPtr<ObjectLayout>();
    for (const auto& layout : layouts) {
        if (!layout)
            throw Exception("A data object was given an empty group layout");
        const std::size_t align = layout->getStorageAlignment();
        result->size = (result->size + align - 1) / align * align;
        result->segments.push_back({ layout, result->size, result->propertyCount });
        for (const PropertyDefinition& property : layout->getProperties())
            result->slots.push_back({ &property, result->size + property.getOffset() });
        result->size += layout->getStorageSize();
        result->alignment = std::max(result->alignment, align);
        result->propertyCount += static_cast<std::uint32_t>(layout->getProperties().size());
    }
    return result;
}

namespace {
SharedPtr<const Detail::EntityClassData> makeRootClass()
{
    auto data = makeSharedPtr<Detail::EntityClassData>();
    data->name = "Entity";
    data->objectLayout = Detail::ObjectLayout::make({});
    data->factory = [](const EntityClassInfo& info) { return makeSharedPtr<Entity>(info); };
    return data;
}
} // namespace

EntityClassInfo::EntityClassInfo()
    : data(entityClass().data)
{
}

EntityClassInfo::EntityClassInfo(SharedPtr<const Detail::EntityClassData> data)
    : data(std::move(data))
{
    if (!this->data)
        Detail::throwStopException("data/EntityClassInfo", __LINE__);
}

EntityClassInfo::EntityClassInfo(
    String name, const EntityClassInfo& base, Array<SharedPtr<const GroupLayout>> layouts, Factory factory, UserData attributes)
{
    auto made = makeSharedPtr<Detail::EntityClassData>();
    made->name = std::move(name);
    made->base = base.data;
    made->allLayouts = base.data->allLayouts;
    for (const auto& layout : layouts)
        made->allLayouts.push_back(layout);
    made->layouts = std::move(layouts);
    made->objectLayout = Detail::ObjectLayout::make(made->allLayouts);
    // Property names are unique over the whole class, so a name addresses one property.
    for (std::size_t i = 0; i < made->allLayouts.size(); ++i)
        for (const PropertyDefinition& property : made->allLayouts[i]->getProperties())
            for (std::size_t j = 0; j < i; ++j)
                if (made->allLayouts[j]->findProperty(property.getName()))
                    throw Exception("The class " + made->name + " has two properties named \"" + property.getName() + "\"");
    made->factory = std::move(factory);
    made->attributes = std::move(attributes);
    data = std::move(made);
}

const EntityClassInfo& EntityClassInfo::entityClass()
{
    static const EntityClassInfo root(makeRootClass());
    return root;
}

Optional<EntityClassInfo> EntityClassInfo::getBaseClass() const
{
    if (!data->base)
        return std::nullopt;
    return EntityClassInfo(data->base);
}

bool EntityClassInfo::isBaseClassOf(const EntityClassInfo& other) const
{
    for (const Detail::EntityClassData* c = other.data.get(); c; c = c->base.get())
        if (c == data.get())
            return true;
    return false;
}

SharedPtr<Entity> EntityClassInfo::create() const
{
    if (!data->factory)
        throw Exception("The class " + data->name + " cannot be created");
    auto entity = data->factory(*this);
    if (!entity || !(entity->getClassInfo() == *this))
        Detail::throwStopException("data/EntityClassInfo", __LINE__);
    return entity;
}

} // namespace Marlix
