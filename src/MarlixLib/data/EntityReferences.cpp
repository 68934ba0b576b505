#include <MarlixLib/data/EntityReferences.h>

#include <unordered_set>

namespace Marlix {

namespace {
template <class Visit> void visitReferences(const TypeDefinition& type, const void* value, const Visit& visit)
{
    switch (type.getKind()) {
    case TypeKind::EntityReference:
        if (const auto& entity = *static_cast<const EntityHolder<Entity>*>(value))
            visit(entity);
        break;
    case TypeKind::List:
        if (type.getElementType()->getKind() == TypeKind::EntityReference)
            for (const auto& entity : *static_cast<const Array<EntityHolder<Entity>>*>(value))
                if (entity)
                    visit(entity);
        break;
    case TypeKind::DataObject:
        for (const PropertyDefinition& field : type.getLayout()->getProperties())
            visitReferences(field.getTypeDefinition(), static_cast<const std::byte*>(value) + field.getOffset(), visit);
        break;
    default:
        break;
    }
}

template <class Visit> void visitReferences(const Entity& entity, const Visit& visit)
{
    for (std::uint32_t i = 0; i < entity.getPropertyCount(); ++i)
        visitReferences(entity.getPropertyDefinition(i).getTypeDefinition(), entity.getPropertyData(i), visit);
}
} // namespace

Optional<EntityClassInfo> getEntityClassAcceptedByProperty(const GenericProperty& property)
{
    const TypeDefinition& type = property.getTypeDefinition();
    if (type.getKind() == TypeKind::EntityReference)
        return type.getAcceptedEntityClass();
    if (type.getKind() == TypeKind::List && type.getElementType()->getKind() == TypeKind::EntityReference)
        return type.getElementType()->getAcceptedEntityClass();
    return std::nullopt;
}

Optional<EntityClassInfo> getEntityClassAcceptedByProperty(const GenericPropertyAccessor& accessor)
{
    if (!isResolved(accessor.checkProperty()))
        return std::nullopt;
    return getEntityClassAcceptedByProperty(accessor.getProperty());
}

EntityHolder<Entity> getEntityFromProperty(const GenericProperty& property)
{
    if (property.getTypeDefinition().getKind() != TypeKind::EntityReference)
        return nullptr;
    Observable::accessProperty(property.getDefinition());
    return *static_cast<const EntityHolder<Entity>*>(property.getData());
}

Array<EntityHolder<Entity>> getReferencedEntities(const Entity& entity)
{
    Array<EntityHolder<Entity>> result;
    visitReferences(entity, [&](const EntityHolder<Entity>& referenced) { result.push_back(referenced); });
    return result;
}

void appendReferencedEntities(const Entity& entity, Array<const Entity*>& out)
{
    visitReferences(entity, [&](const EntityHolder<Entity>& referenced) { out.push_back(referenced.get()); });
}

bool canAddChildrenWithoutCycles(const Entity& parent, const Entity& child)
{
    if (&parent == &child)
        return false;
    std::unordered_set<const Entity*> visited { &child };
    Array<const Entity*> pending { &child };
    while (!pending.empty()) {
        const Entity* current = pending.back();
        pending.pop_back();
        for (const auto& next : getReferencedEntities(*current)) {
            if (next.get() == &parent)
                return false;
            if (visited.insert(next.get()).second)
                pending.push_back(next.get());
        }
    }
    return true;
}

bool canAddChildrenWithoutCycles(const Entity& parent, ArrayView<const EntityHolder<Entity>> children)
{
    for (const auto& child : children)
        if (child && !canAddChildrenWithoutCycles(parent, *child))
            return false;
    return true;
}

} // namespace Marlix
