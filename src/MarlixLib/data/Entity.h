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
    explicit Entity(const EntityClassInfo& classInfo = EntityClassInfo::entityClass());

    std::uint64_t getId() const { return id; }
    const EntityClassInfo& getClassInfo() const { return classInfo; }
    bool isInstanceOf(const EntityClassInfo& base) const { return base.isBaseClassOf(classInfo); }
    EntityHolder<Entity> getHolder() { return std::static_pointer_cast<Entity>(shared_from_this()); }
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
    EntityHandle() = default;
    EntityHandle(const EntityHolder<Entity>& entity)
        : entity(entity)
        , id(entity ? entity->getId() : 0)
    {
    }

    EntityHolder<Entity> lock() const { return entity.lock(); }
    bool isExpired() const { return entity.expired(); }
    bool isEmpty() const { return id == 0; }
    std::uint64_t getId() const { return id; }

    bool operator==(const EntityHandle& other) const { return id == other.id; }
    std::strong_ordering operator<=>(const EntityHandle& other) const { return id <=> other.id; }

private:
    WeakPtr<Entity> entity;
    std::uint64_t id = 0;
};

/// Orders handles with each other and with identities, for sets of handles searched by identity.
template <class T> struct HeteroOperatorLess;
template <> struct HeteroOperatorLess<EntityHandle>
{
    using is_transparent = void;
    bool operator()(const EntityHandle& a, const EntityHandle& b) const { return a.getId() < b.getId(); }
    bool operator()(const EntityHandle& a, std::uint64_t b) const { return a.getId() < b; }
    bool operator()(std::uint64_t a, const EntityHandle& b) const { return a < b.getId(); }
};

} // namespace Marlix
