#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/data/EntityClassInfo.h>
#include <MarlixLib/data/GenericDataObject.h>

#include <compare>
#include <cstdint>
#include <memory>

namespace Marlix {

class Entity;

/// A strong, shared reference to an entity.
template <class T> using EntityHolder = SharedPtr<T>;

/// A data object with an identity and a class. Identities are unique in the process and never reused.
class MARLIXLIB_EXPORT Entity : public GenericDataObject
{
public:
    /// A new entity of \p classInfo with the class's default values and a fresh identity; classes' factories call it.
    explicit Entity(const EntityClassInfo& classInfo = EntityClassInfo::entityClass());

    /// The identity: non-zero, unique in the process, kept for the entity's life.
    std::uint64_t getId() const { return id; }
    const EntityClassInfo& getClassInfo() const { return classInfo; } ///< The class the entity was created with.
    /// True when the entity's class is \p base or derives from it.
    bool isInstanceOf(const EntityClassInfo& base) const { return base.isBaseClassOf(classInfo); }
    /// A strong reference sharing ownership with the holders that keep the entity; the entity must be held by one.
    EntityHolder<Entity> getHolder() { return std::static_pointer_cast<Entity>(shared_from_this()); }
    /// \overload
    EntityHolder<const Entity> getHolder() const { return std::static_pointer_cast<const Entity>(shared_from_this()); }
    /// Whether changes of this entity count as changes of the entities that reference it.
    virtual bool isTransitiveToUndoTracking() const { return true; }

    /// A copy with a new identity and the same property values (references keep pointing at the same entities).
    EntityHolder<Entity> clone() const;

private:
    std::uint64_t id;
    EntityClassInfo classInfo;
};

/// A weak reference to an entity that can be locked; it keeps the identity, so expired handles still sort and compare.
class MARLIXLIB_EXPORT EntityHandle
{
public:
    EntityHandle() = default; ///< An empty handle: identity 0, never locks.
    /// A handle to \p entity that does not keep it alive; an empty holder makes an empty handle.
    EntityHandle(const EntityHolder<Entity>& entity)
        : entity(entity)
        , id(entity ? entity->getId() : 0)
    {
    }

    /// The entity while something still holds it; empty otherwise.
    EntityHolder<Entity> lock() const { return entity.lock(); }
    bool isExpired() const { return entity.expired(); } ///< True once the entity is gone (and for empty handles).
    bool isEmpty() const { return id == 0; } ///< True for a handle made without an entity, even if it has not expired.
    /// The entity's identity, kept after the entity is gone; 0 for empty handles.
    std::uint64_t getId() const { return id; }

    /// Handles are equal when they name the same identity, alive or not.
    bool operator==(const EntityHandle& other) const { return id == other.id; }
    /// Orders by identity, which is the order the entities were created in.
    std::strong_ordering operator<=>(const EntityHandle& other) const { return id <=> other.id; }

private:
    WeakPtr<Entity> entity;
    std::uint64_t id = 0;
};

/// Orders handles with each other and with identities, for sets of handles searched by identity.
template <class T> struct HeteroOperatorLess;
/// Orders handles by identity and lets sets of handles be searched with a bare identity.
template <> struct HeteroOperatorLess<EntityHandle>
{
    using is_transparent = void; ///< Enables the mixed handle/identity lookups in ordered containers.
    /// Compares two handles by identity.
    bool operator()(const EntityHandle& a, const EntityHandle& b) const { return a.getId() < b.getId(); }
    bool operator()(const EntityHandle& a, std::uint64_t b) const { return a.getId() < b; } ///< \overload
    bool operator()(std::uint64_t a, const EntityHandle& b) const { return a < b.getId(); } ///< \overload
};

} // namespace Marlix
