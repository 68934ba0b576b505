#pragma once

#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLibQt/lister/ListerModel.h>

#include <cstdint>
#include <unordered_map>

// The row storage of ListerModel; private to the lister.
namespace Marlix::Widgets {
/// \cond INTERNAL

struct TopLevelStruct;

/// One row: a top-level entity or a sub-entity, found by its key (the internal id of its indexes).
struct ListerNode
{
    std::uint64_t key = 0;
    EntityHolder<Entity> entity;
    bool topLevel = false;
    int row = 0; // of a sub-entity in its parent's list; top-level rows are counted in their record
    TopLevelStruct* parent = nullptr; // of a sub-entity
    SharedPtr<TopLevelStruct> record; // of a top-level node
    CallbackLifetime observation;
    UniquePtr<ListerNode> next; // in the bucket's chain
};

/// A top-level row and its sub-rows, in order.
struct TopLevelStruct
{
    ListerNode* node = nullptr;
    int row = 0;
    Array<ListerNode*> children;
};

/// The nodes by key: 64-bit FNV-1a over the key's bytes, least significant first, masked into a power-of-two number of
/// buckets, each a chain. The first row of an entity is keyed by its identity; rows that show it again get keys of
/// their own.
class ListerRowIndex
{
public:
    ListerRowIndex();
    ~ListerRowIndex();
    ListerRowIndex(const ListerRowIndex&) = delete;
    ListerRowIndex& operator=(const ListerRowIndex&) = delete;

    static std::uint64_t hash(std::uint64_t key);

    ListerNode* find(std::uint64_t key) const;
    ListerNode* insert(EntityHolder<Entity> entity, bool topLevel);
    void erase(std::uint64_t key);
    TopLevelStruct* findTopLevel(const Entity& entity) const;
    std::size_t size() const { return count; }
    std::size_t getBucketCount() const { return buckets.size(); }

private:
    void rehash(std::size_t size);

    Array<UniquePtr<ListerNode>> buckets;
    std::size_t count = 0;
    std::uint64_t extraKeys = 0;
    std::unordered_multimap<std::uint64_t, std::uint64_t> extraKeysById;
};

/// Changes reported by observed rows, possibly from another thread, until the model's thread shows them.
class ListerChangeQueue
{
public:
    struct Change
    {
        std::uint64_t key;
        std::uint32_t rootIndex;
    };

    /// True when this is the first change since the last `take`: the caller posts one showing of them all.
    bool push(Change change);
    Array<Change> take();

private:
    Mutex mutex;
    Array<Change> pending;
    bool posted = false;
};

/// Per entity layout, the root property each column shows (-1 for none): a change of a root property names its cells.
class ListerColumnRoots
{
public:
    const Array<std::int64_t>& get(const Entity& entity, const Stack<ListerColumnDefinition>& columns);

private:
    std::unordered_map<const Marlix::Detail::ObjectLayout*,
        std::pair<SharedPtr<const Marlix::Detail::ObjectLayout>, Array<std::int64_t>>>
        roots;
};

/// \endcond
} // namespace Marlix::Widgets
