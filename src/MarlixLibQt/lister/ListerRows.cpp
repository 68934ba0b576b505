#include <MarlixLibQt/lister/ListerRows.h>

#include <mutex>

namespace Marlix::Widgets {

namespace {
constexpr std::uint64_t FNV_OFFSET_BASIS = 0xcbf29ce484222325ULL;
constexpr std::uint64_t FNV_PRIME = 0x100000001b3ULL;
constexpr std::size_t INITIAL_BUCKETS = 64;
// Identities are counted up from one and never reach this bit, so extra keys cannot meet them.
constexpr std::uint64_t EXTRA_ROW_KEY = 1ULL << 63;
} // namespace

ListerRowIndex::ListerRowIndex()
    : buckets(INITIAL_BUCKETS)
{
}

ListerRowIndex::~ListerRowIndex()
{
    // Chains are freed one node at a time: a long chain freed through nested destructors could exhaust the stack.
    for (auto& bucket : buckets)
        while (bucket)
            bucket = std::move(bucket->next);
}

std::uint64_t ListerRowIndex::hash(std::uint64_t key)
{
    std::uint64_t hash = FNV_OFFSET_BASIS;
    for (int byte = 0; byte < 8; ++byte) {
        hash ^= (key >> (8 * byte)) & 0xffU;
        hash *= FNV_PRIME;
    }
    return hash;
}

ListerNode* ListerRowIndex::find(std::uint64_t key) const
{
    for (ListerNode* node = buckets[hash(key) & (buckets.size() - 1)].get(); node; node = node->next.get())
        if (node->key == key)
            return node;
    return nullptr;
}

ListerNode* ListerRowIndex::insert(EntityHolder<Entity> entity, bool topLevel)
{
    if (count >= buckets.size())
        rehash(buckets.size() * 2);
    auto node = std::make_unique<ListerNode>();
    const std::uint64_t id = entity->getId();
    node->key = id;
    if (find(id)) {
        node->key = EXTRA_ROW_KEY | ++extraKeys;
        extraKeysById.emplace(id, node->key);
    }
    node->entity = std::move(entity);
    node->topLevel = topLevel;
    auto& bucket = buckets[hash(node->key) & (buckets.size() - 1)];
    node->next = std::move(bucket);
    bucket = std::move(node);
    ++count;
    return bucket.get();
}

void ListerRowIndex::erase(std::uint64_t key)
{
    UniquePtr<ListerNode>* link = &buckets[hash(key) & (buckets.size() - 1)];
    while (*link && (*link)->key != key)
        link = &(*link)->next;
    if (!*link)
        return;
    UniquePtr<ListerNode> erased = std::move(*link);
    *link = std::move(erased->next);
    --count;
    if (key & EXTRA_ROW_KEY) {
        auto [first, last] = extraKeysById.equal_range(erased->entity->getId());
        for (; first != last; ++first)
            if (first->second == key) {
                extraKeysById.erase(first);
                break;
            }
    }
}

void ListerRowIndex::rehash(std::size_t size)
{
    Array<UniquePtr<ListerNode>> old = std::exchange(buckets, Array<UniquePtr<ListerNode>>(size));
    for (auto& chain : old)
        while (chain) {
            UniquePtr<ListerNode> node = std::move(chain);
            chain = std::move(node->next);
            auto& bucket = buckets[hash(node->key) & (size - 1)];
            node->next = std::move(bucket);
            bucket = std::move(node);
        }
}

TopLevelStruct* ListerRowIndex::findTopLevel(const Entity& entity) const
{
    if (const ListerNode* node = find(entity.getId()); node && node->topLevel)
        return node->record.get();
    auto [first, last] = extraKeysById.equal_range(entity.getId());
    for (; first != last; ++first)
        if (const ListerNode* node = find(first->second); node->topLevel)
            return node->record.get();
    return nullptr;
}

bool ListerChangeQueue::push(Change change)
{
    const std::lock_guard lock(mutex);
    pending.push_back(change);
    return !std::exchange(posted, true);
}

Array<ListerChangeQueue::Change> ListerChangeQueue::take()
{
    const std::lock_guard lock(mutex);
    posted = false;
    return std::exchange(pending, {});
}

const Array<std::int64_t>& ListerColumnRoots::get(const Entity& entity, const Stack<ListerColumnDefinition>& columns)
{
    const auto& layout = entity.getObjectLayout();
    auto found = roots.find(layout.get());
    if (found == roots.end()) {
        Array<std::int64_t> indexes;
        for (const auto& column : columns) {
            const bool shown = column.presentation != ListerValuePresentation::Actions;
            const GenericPropertyHandle handle
                = shown ? entity.resolveHandle(column.propertyPath) : GenericPropertyHandle();
            indexes.push_back(handle.isResolved() ? std::int64_t(handle.getRootIndex()) : -1);
        }
        found = roots.emplace(layout.get(), std::pair(layout, std::move(indexes))).first;
    }
    return found->second.second;
}

} // namespace Marlix::Widgets
