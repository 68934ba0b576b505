#include <MarlixLib/data/EntityGraphTracker.h>

#include <MarlixLib/base/Exception.h>
#include <MarlixLib/undo/Action.h>

namespace Marlix {

/// Undoes an addition or a removal; holds the entity so that undo can bring it back.
class EntityGraphTracker::MembershipRecord final : public UndoRecord
{
public:
    MembershipRecord(WeakPtr<EntityGraphTracker*> tracker, EntityHolder<Entity> entity, std::size_t position, bool added)
        : tracker(std::move(tracker))
        , entity(std::move(entity))
        , position(position)
        , added(added)
    {
    }
    void undo() override { apply(!added); }
    void redo() override { apply(added); }

private:
    void apply(bool insert)
    {
        const auto locked = tracker.lock();
        if (!locked || !*locked)
            return;
        if (insert)
            (*locked)->insertUnrecorded(entity, position);
        else
            (*locked)->eraseUnrecorded(*entity, nullptr);
    }

    WeakPtr<EntityGraphTracker*> tracker;
    EntityHolder<Entity> entity;
    std::size_t position;
    bool added;
};

EntityGraphTracker::EntityGraphTracker()
    : self(makeSharedPtr<EntityGraphTracker*>(this))
{
}

EntityGraphTracker::~EntityGraphTracker()
{
    *self = nullptr;
}

void EntityGraphTracker::addEntity(EntityHolder<Entity> entity)
{
    if (!entity)
        throw Exception("An empty entity cannot be added to a scene");
    if (contains(*entity))
        throw Exception("The entity #" + std::to_string(entity->getId()) + " is already in the scene");
    const std::size_t position = entities.size();
    if (Detail::Action* action = Detail::Action::current())
        action->record(std::make_unique<MembershipRecord>(self, entity, position, true));
    insertUnrecorded(std::move(entity), position);
}

bool EntityGraphTracker::removeEntity(const Entity& entity)
{
    if (!contains(entity))
        return false;
    std::size_t position = 0;
    EntityHolder<Entity> removed = eraseUnrecorded(entity, &position);
    if (Detail::Action* action = Detail::Action::current())
        action->record(std::make_unique<MembershipRecord>(self, std::move(removed), position, false));
    return true;
}

void EntityGraphTracker::insertUnrecorded(EntityHolder<Entity> entity, std::size_t position)
{
    position = std::min(position, entities.size());
    entities.insert(entities.begin() + static_cast<std::ptrdiff_t>(position), entity);
    for (std::size_t i = position; i < entities.size(); ++i)
        indexById[entities[i]->getId()] = i;
    const EntityHolder<Entity> added[] = { entity };
    observers.call(added, {});
}

EntityHolder<Entity> EntityGraphTracker::eraseUnrecorded(const Entity& entity, std::size_t* positionOut)
{
    const auto found = indexById.find(entity.getId());
    if (found == indexById.end())
        return nullptr;
    const std::size_t position = found->second;
    EntityHolder<Entity> removed = std::move(entities[position]);
    entities.erase(entities.begin() + static_cast<std::ptrdiff_t>(position));
    indexById.erase(found);
    for (std::size_t i = position; i < entities.size(); ++i)
        indexById[entities[i]->getId()] = i;
    if (positionOut)
        *positionOut = position;
    const EntityHolder<Entity> removedList[] = { removed };
    observers.call({}, removedList);
    return removed;
}

void EntityGraphTracker::replaceEntities(Array<EntityHolder<Entity>> replacement)
{
    std::unordered_map<std::uint64_t, std::size_t> index;
    index.reserve(replacement.size());
    for (std::size_t i = 0; i < replacement.size(); ++i) {
        if (!replacement[i] || !index.emplace(replacement[i]->getId(), i).second)
            throw Exception("A scene cannot hold an empty entity or one entity twice");
    }
    Array<EntityHolder<Entity>> old = std::move(entities);
    entities = std::move(replacement);
    indexById = std::move(index);
    observers.call(entities, old);
}

EntityHolder<Entity> EntityGraphTracker::findEntity(std::uint64_t id) const
{
    const auto found = indexById.find(id);
    return found == indexById.end() ? nullptr : entities[found->second];
}

Array<EntityHolder<Entity>> EntityGraphTracker::getEntitiesOfClass(const EntityClassInfo& entityClass) const
{
    Array<EntityHolder<Entity>> result;
    for (const auto& entity : entities)
        if (entityClass.isBaseClassOf(entity->getClassInfo()))
            result.push_back(entity);
    return result;
}

CallbackLifetime EntityGraphTracker::addObserver(Observer observer)
{
    return observers.add(std::move(observer));
}

namespace {
bool equivalentValues(const TypeDefinition& type, const void* a, const void* b,
    const std::unordered_map<std::uint64_t, std::size_t>& mine, const std::unordered_map<std::uint64_t, std::size_t>& theirs)
{
    const auto sameEntity = [&](const EntityHolder<Entity>& x, const EntityHolder<Entity>& y) {
        if (!x || !y)
            return !x && !y;
        const auto i = mine.find(x->getId());
        const auto j = theirs.find(y->getId());
        if (i == mine.end() || j == theirs.end())
            return x == y;
        return i->second == j->second;
    };
    switch (type.getKind()) {
    case TypeKind::EntityReference:
        return sameEntity(*static_cast<const EntityHolder<Entity>*>(a), *static_cast<const EntityHolder<Entity>*>(b));
    case TypeKind::List:
        if (type.getElementType()->getKind() == TypeKind::EntityReference) {
            const auto& x = *static_cast<const Array<EntityHolder<Entity>>*>(a);
            const auto& y = *static_cast<const Array<EntityHolder<Entity>>*>(b);
            if (x.size() != y.size())
                return false;
            for (std::size_t i = 0; i < x.size(); ++i)
                if (!sameEntity(x[i], y[i]))
                    return false;
            return true;
        }
        return type.equals(a, b);
    case TypeKind::DataObject:
        for (const PropertyDefinition& field : type.getLayout()->getProperties())
            if (!equivalentValues(field.getTypeDefinition(), static_cast<const std::byte*>(a) + field.getOffset(),
                    static_cast<const std::byte*>(b) + field.getOffset(), mine, theirs))
                return false;
        return true;
    default:
        return type.equals(a, b);
    }
}
} // namespace

bool EntityGraphTracker::isEquivalentTo(const EntityGraphTracker& other) const
{
    if (entities.size() != other.entities.size())
        return false;
    for (std::size_t i = 0; i < entities.size(); ++i) {
        const Entity& a = *entities[i];
        const Entity& b = *other.entities[i];
        if (!(a.getClassInfo() == b.getClassInfo()))
            return false;
        for (std::uint32_t p = 0; p < a.getPropertyCount(); ++p)
            if (!equivalentValues(a.getPropertyDefinition(p).getTypeDefinition(), a.getPropertyData(p), b.getPropertyData(p),
                    indexById, other.indexById))
                return false;
    }
    return true;
}

} // namespace Marlix
