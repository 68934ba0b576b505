#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/data/Entity.h>

#include <unordered_map>

namespace Marlix {

/// A scene: the entities it holds, in the order they were added, with lookup by identity and by class. Adding and
/// removing is recorded in the undo action open on this thread and reported to the observers.
class MARLIXLIB_EXPORT EntityGraphTracker
{
public:
    /// Told after every change with the entities added and removed; a replacement reports the new and the old content.
    using Observer = Function<void(ArrayView<const EntityHolder<Entity>> added, ArrayView<const EntityHolder<Entity>> removed)>;

    EntityGraphTracker(); ///< An empty scene.
    ~EntityGraphTracker(); ///< Releases the entities; undo records that still refer to the scene then do nothing.
    /// Not copyable: undo records and observers refer to the scene itself.
    EntityGraphTracker(const EntityGraphTracker&) = delete;
    /// Not assignable; replaceEntities() swaps the content.
    EntityGraphTracker& operator=(const EntityGraphTracker&) = delete;

    /// An Exception for an empty holder or an entity already in the scene.
    void addEntity(EntityHolder<Entity> entity);
    /// False when the entity is not in the scene.
    bool removeEntity(const Entity& entity);
    /// Replaces the whole content in one change (not recorded for undo): loading a scene commits through it.
    void replaceEntities(Array<EntityHolder<Entity>> entities);

    /// True when the entity is in the scene (by identity).
    bool contains(const Entity& entity) const { return indexById.contains(entity.getId()); }
    std::size_t size() const { return entities.size(); } ///< The number of entities in the scene.
    bool isEmpty() const { return entities.empty(); } ///< True when the scene holds no entity.
    /// The entities in the order they were added.
    const Array<EntityHolder<Entity>>& getEntities() const { return entities; }
    /// The entity with identity \p id; empty when the scene does not hold it.
    EntityHolder<Entity> findEntity(std::uint64_t id) const;
    /// The entities of `entityClass` and of the classes derived from it, in scene order.
    Array<EntityHolder<Entity>> getEntitiesOfClass(const EntityClassInfo& entityClass) const;

    /// Calls \p observer after each change, on the changing thread, until the returned lifetime ends.
    CallbackLifetime addObserver(Observer observer);

    /// Scenes are equal when they hold entities of the same classes with equal values in the same order, and their
    /// references point at corresponding entities (or at the very same entity outside the scene).
    bool isEquivalentTo(const EntityGraphTracker& other) const;

private:
    class MembershipRecord;
    void insertUnrecorded(EntityHolder<Entity> entity, std::size_t position);
    EntityHolder<Entity> eraseUnrecorded(const Entity& entity, std::size_t* position);

    Array<EntityHolder<Entity>> entities;
    std::unordered_map<std::uint64_t, std::size_t> indexById;
    CallbackList<ArrayView<const EntityHolder<Entity>>, ArrayView<const EntityHolder<Entity>>> observers;
    SharedPtr<EntityGraphTracker*> self;
};

} // namespace Marlix
