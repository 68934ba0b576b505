#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/EntityReferences.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/io/CborDeserializer.h>
#include <MarlixLib/io/CborSerializer.h>
#include <MarlixLib/io/HashingStreams.h>
#include <MarlixLib/io/SceneSerializer.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <type_traits>
#include <unordered_map>

namespace Marlix {

using Detail::Checksum;
using Detail::HashingDeserializer;
using Detail::HashingSerializer;

namespace {
constexpr StringView SCENE_KEY = "scene";
constexpr StringView CLASSES_KEY = "classes";
constexpr StringView IDS_KEY = "ids";
constexpr StringView ENTITIES_KEY = "entities";
constexpr StringView ENTITY_KEY = "entity";
constexpr StringView CHECKSUM_KEY = "checksum";
const String CORRUPTED = "The scene stream is corrupted";

/// Where an entity sits in a list, found by a key in one probe or two: the entity's address on save, its identity
/// in the stream on load. Scenes of 100 000 entities made a node-based map the largest cost of both.
class PlaceTable
{
public:
    static constexpr std::uint32_t NONE = std::numeric_limits<std::uint32_t>::max();

    explicit PlaceTable(std::size_t count)
        : bits(std::bit_width(std::max<std::size_t>(16, 2 * count) - 1))
        , keys(std::size_t(1) << bits)
        , places(std::size_t(1) << bits, NONE)
    {
    }
    /// False when the key is there already.
    bool insert(std::uint64_t key, std::uint32_t place)
    {
        std::size_t slot = first(key);
        for (; places[slot] != NONE; slot = next(slot))
            if (keys[slot] == key)
                return false;
        keys[slot] = key;
        places[slot] = place;
        return true;
    }
    std::uint32_t find(std::uint64_t key) const
    {
        for (std::size_t slot = first(key); places[slot] != NONE; slot = next(slot))
            if (keys[slot] == key)
                return places[slot];
        return NONE;
    }

private:
    std::size_t first(std::uint64_t key) const { return std::size_t((key * 0x9e3779b97f4a7c15ull) >> (64 - bits)); }
    std::size_t next(std::size_t slot) const { return (slot + 1) & (keys.size() - 1); }

    int bits;
    Array<std::uint64_t> keys;
    Array<std::uint32_t> places;
};

Unexpected<String> failure(const String& detail)
{
    return Unexpected<String>(CORRUPTED + ": " + detail);
}

bool isSaved(const PropertyDefinition& property)
{
    return !property.getFlags().has(PropertyFlag::Transient);
}

/// Leaves every record and array it entered, also on an early return.
class Nesting
{
public:
    explicit Nesting(IDeserializer& in)
        : in(in)
    {
    }
    ~Nesting()
    {
        while (!open.empty()) {
            if (open.back())
                in.leaveArray();
            else
                in.leaveRecord();
            open.pop_back();
        }
    }
    Expected<void, String> enterRecord(StringView key)
    {
        if (auto entered = in.enterRecord(key); !entered)
            return failure(entered.error());
        open.push_back(false);
        return {};
    }
    Expected<std::size_t, String> enterArray(StringView key)
    {
        auto count = in.enterArray(key);
        if (!count)
            return failure(count.error());
        open.push_back(true);
        return *count;
    }
    void leave()
    {
        if (open.back())
            in.leaveArray();
        else
            in.leaveRecord();
        open.pop_back();
    }

private:
    IDeserializer& in;
    Array<bool> open;
};
/// The entities a load made and not yet handed over. A failed load drops them with their references reset first: a
/// stream can make entities reference each other in a loop, and such a loop of strong references would never be freed.
class Staged
{
public:
    ~Staged()
    {
        for (const auto& entity : entities)
            for (std::uint32_t i = 0; i < entity->getPropertyCount(); ++i)
                entity->restoreProperty(i, entity->getPropertyDefinition(i).getDefaultValue().data());
    }
    Array<EntityHolder<Entity>> release() { return std::move(entities); }

    Array<EntityHolder<Entity>> entities;
};

/// An entity that reaches itself through its references, or null. Scenes must not hold such loops, neither saved nor
/// loaded: they are what editors refuse to make, and the entities in one would keep each other alive for ever.
const Entity* findReferenceCycle(const Array<EntityHolder<Entity>>& entities)
{
    enum class Mark : std::uint8_t
    {
        Unvisited,
        OnPath,
        Done,
    };
    // The marks of the given entities live in a table by their place, which a scene of 100 000 entities fills
    // without an allocation per entity; entities reached outside of them get theirs in a map.
    PlaceTable places(entities.size());
    for (std::size_t i = 0; i < entities.size(); ++i)
        places.insert(std::uint64_t(reinterpret_cast<std::uintptr_t>(entities[i].get())), std::uint32_t(i));
    Array<Mark> marks(entities.size(), Mark::Unvisited);
    std::unordered_map<const Entity*, Mark> outside;
    const auto markOf = [&](const Entity* entity) -> Mark& {
        const std::uint32_t place = places.find(std::uint64_t(reinterpret_cast<std::uintptr_t>(entity)));
        return place != PlaceTable::NONE ? marks[place] : outside[entity];
    };

    // Depth first. The entities left to visit from every entity on the path share one stack; each entity of the path
    // owns the part above the size it found.
    struct Step
    {
        const Entity* entity;
        std::size_t firstPending;
    };
    Array<Step> path;
    Array<const Entity*> pending;
    const auto enter = [&](const Entity* entity, Mark& mark) {
        mark = Mark::OnPath;
        path.push_back({ entity, pending.size() });
        appendReferencedEntities(*entity, pending);
    };
    for (const auto& root : entities) {
        if (Mark& mark = markOf(root.get()); mark == Mark::Unvisited)
            enter(root.get(), mark);
        while (!path.empty()) {
            if (pending.size() == path.back().firstPending) {
                markOf(path.back().entity) = Mark::Done;
                path.pop_back();
                continue;
            }
            const Entity* next = pending.back();
            pending.pop_back();
            Mark& mark = markOf(next);
            if (mark == Mark::OnPath)
                return next;
            if (mark == Mark::Unvisited)
                enter(next, mark);
        }
    }
    return nullptr;
}

/// Whether the references read, given as the places they name (those of entity `i` from `firstReference[i]` on),
/// form a loop. Entities that no remaining entity references are taken away until none is left, or only entities on
/// a loop or behind one: plain numbers in a few arrays, where walking the entities again missed the cache at each.
bool formsLoop(const Array<std::size_t>& firstReference, const Array<std::uint32_t>& references)
{
    const std::size_t count = firstReference.size() - 1;
    Array<std::uint32_t> referrers(count, 0);
    for (const std::uint32_t place : references)
        ++referrers[place];
    Array<std::uint32_t> unreferenced;
    for (std::uint32_t i = 0; i < count; ++i)
        if (referrers[i] == 0)
            unreferenced.push_back(i);
    std::size_t taken = 0;
    while (!unreferenced.empty()) {
        const std::uint32_t place = unreferenced.back();
        unreferenced.pop_back();
        ++taken;
        for (std::size_t i = firstReference[place]; i < firstReference[place + 1]; ++i)
            if (--referrers[references[i]] == 0)
                unreferenced.push_back(references[i]);
    }
    return taken != count;
}
} // namespace

void SceneSerializer::save(const EntityGraphTracker& scene, ISerializer& out)
{
    // Refused before the first byte: a stream with a loop would be refused by every reader.
    if (const Entity* looped = findReferenceCycle(scene.getEntities()))
        throw Exception("The scene cannot be saved: the references of the " + looped->getClassInfo().getName()
            + " entity #" + std::to_string(looped->getId()) + " lead back to it");
    Checksum checksum(FORMAT_VERSION);
    HashingSerializer hashing(out, checksum);
    const auto& entities = scene.getEntities();
    hashing.serializeFormatVersion(FORMAT_VERSION);
    hashing.beginRecord(SCENE_KEY);
    hashing.beginArray(CLASSES_KEY, entities.size());
    for (const auto& entity : entities)
        hashing.writeString("class", entity->getClassInfo().getName());
    hashing.endArray();
    hashing.beginArray(IDS_KEY, entities.size());
    for (const auto& entity : entities)
        hashing.writeUInt("id", entity->getId());
    hashing.endArray();
    hashing.beginArray(ENTITIES_KEY, entities.size());
    for (const auto& entity : entities) {
        hashing.beginRecord(ENTITY_KEY);
        for (std::uint32_t i = 0; i < entity->getPropertyCount(); ++i) {
            const PropertyDefinition& property = entity->getPropertyDefinition(i);
            if (isSaved(property))
                property.getTypeDefinition().serialize(hashing, property.getName(), entity->getPropertyData(i));
        }
        hashing.endRecord();
    }
    hashing.endArray();
    // The checksum itself is written past the hashing layer.
    out.writeUInt(CHECKSUM_KEY, checksum.get());
    hashing.endRecord();
}

Expected<Array<EntityHolder<Entity>>, String> SceneSerializer::read(IDeserializer& in)
{
    const auto version = in.deserializeFormatVersion();
    if (!version)
        return failure(version.error());
    if (*version == 0 || *version > FORMAT_VERSION)
        return Unexpected<String>("Unknown scene format version " + std::to_string(*version));
    Checksum checksum(*version);
    checksum.addValue(*version);
    HashingDeserializer hashing(in, checksum);

    Nesting nesting(hashing);
    if (auto entered = nesting.enterRecord(SCENE_KEY); !entered)
        return Unexpected<String>(entered.error());

    Staged staged;
    Array<EntityHolder<Entity>>& entities = staged.entities;
    const auto classCount = nesting.enterArray(CLASSES_KEY);
    if (!classCount)
        return Unexpected<String>(classCount.error());
    // A scene holds few classes: each is looked up in the database once, and runs of one class not even in the map.
    std::unordered_map<String, EntityClassInfo> classes;
    auto known = classes.end();
    for (std::size_t i = 0; i < *classCount; ++i) {
        const auto name = hashing.readString("class");
        if (!name)
            return failure(name.error());
        if (known == classes.end() || known->first != *name)
            known = classes.find(*name);
        if (known == classes.end()) {
            const auto entityClass = TypeDatabase::instance().lookupEntityClass(*name);
            if (!entityClass)
                return Unexpected<String>("The scene holds an entity of the unknown class \"" + *name + "\"");
            if (!entityClass->canCreate())
                return failure("the class \"" + *name + "\" cannot be created");
            known = classes.emplace(*name, *entityClass).first;
        }
        entities.push_back(known->second.create());
    }
    nesting.leave();

    const auto idCount = nesting.enterArray(IDS_KEY);
    if (!idCount)
        return Unexpected<String>(idCount.error());
    if (*idCount != entities.size())
        return failure("there are " + std::to_string(*idCount) + " identities for " + std::to_string(entities.size())
            + " entities");
    Array<std::uint64_t> ids;
    ids.reserve(entities.size());
    bool ascending = true;
    for (std::size_t i = 0; i < entities.size(); ++i) {
        const auto id = hashing.readUInt("id");
        if (!id)
            return failure(id.error());
        if (*id == 0)
            return failure("the identity 0 is zero or repeated");
        ascending = ascending && (ids.empty() || *id > ids.back());
        ids.push_back(*id);
    }
    nesting.leave();

    // Scenes are saved in the order their entities were made, so identities mostly ascend with few gaps: then a
    // plain array finds the place of each, and references resolve without a hash probe each.
    const std::uint64_t firstId = ids.empty() ? 0 : ids.front();
    Array<std::uint32_t> dense;
    Optional<PlaceTable> table;
    if (ascending && (ids.empty() || ids.back() - firstId < 4 * std::uint64_t(ids.size()) + 64)) {
        dense.assign(ids.empty() ? 0 : std::size_t(ids.back() - firstId + 1), PlaceTable::NONE);
        for (std::size_t i = 0; i < ids.size(); ++i)
            dense[std::size_t(ids[i] - firstId)] = std::uint32_t(i);
    } else {
        table.emplace(ids.size());
        for (std::size_t i = 0; i < ids.size(); ++i)
            if (!table->insert(ids[i], std::uint32_t(i)))
                return failure("the identity " + std::to_string(ids[i]) + " is zero or repeated");
    }
    const auto placeOf = [&](std::uint64_t id) {
        if (table)
            return table->find(id);
        return id >= firstId && id - firstId < dense.size() ? dense[std::size_t(id - firstId)] : PlaceTable::NONE;
    };

    // The places every reference names, those of each entity after the ones before it: the loop check at the end
    // needs nothing else.
    Array<std::uint32_t> references;
    Array<std::size_t> firstReference;
    firstReference.reserve(entities.size() + 1);
    const auto missing = [](std::uint64_t id) {
        return failure("a reference names the entity #" + std::to_string(id) + " that the stream does not hold");
    };
    const EntityResolver resolver
        = [&placeOf, &entities, &references, &missing](std::uint64_t id) -> Expected<SharedPtr<Entity>, String> {
        const std::uint32_t place = placeOf(id);
        if (place == PlaceTable::NONE)
            return missing(id);
        references.push_back(place);
        return entities[place];
    };
    // A reference an entity holds itself, alone or in a list, is set once every value is read, by a pass that asks
    // for the entities it needs a few references ahead: setting each as it was read waited for memory at each one.
    struct Unset
    {
        EntityHolder<Entity>* holder;
        std::uint32_t place;
        const TypeDefinition* type;
        StringView key;
    };
    Array<Unset> unset;
    // Scenes hold about one reference per entity.
    references.reserve(entities.size());
    unset.reserve(entities.size());
    // Where a reference read goes, empty until that pass.
    const auto setLater = [&](const TypeDefinition& type, StringView key, EntityHolder<Entity>& holder,
                              std::uint64_t id) -> Expected<void, String> {
        holder = nullptr;
        if (id == 0)
            return {};
        const std::uint32_t place = placeOf(id);
        if (place == PlaceTable::NONE)
            return failure(missing(id).error());
        references.push_back(place);
        unset.push_back({ &holder, place, &type, key });
        return {};
    };
    Array<std::uint64_t> itemIds; // of one list at a time
    const auto isReference = [](const TypeDefinition& type) {
        return type.getKind() == TypeKind::EntityReference && type.isNative<EntityHolder<Entity>>();
    };

    const auto entityCount = nesting.enterArray(ENTITIES_KEY);
    if (!entityCount)
        return Unexpected<String>(entityCount.error());
    if (*entityCount != entities.size())
        return failure("there are " + std::to_string(*entityCount) + " value records for "
            + std::to_string(entities.size()) + " entities");
    for (const auto& entity : entities) {
        firstReference.push_back(references.size());
        if (auto entered = nesting.enterRecord(ENTITY_KEY); !entered)
            return Unexpected<String>(entered.error());
        for (std::uint32_t i = 0; i < entity->getPropertyCount(); ++i) {
            const PropertyDefinition& property = entity->getPropertyDefinition(i);
            if (!isSaved(property))
                continue;
            // Straight into the new entity, without a copy made first: a failed read drops it anyway.
            const TypeDefinition& type = property.getTypeDefinition();
            if (isReference(type)) {
                const auto id = hashing.readEntityReference(property.getName());
                if (!id)
                    return failure(id.error());
                auto* holder = static_cast<EntityHolder<Entity>*>(entity->mutablePropertyData(i));
                if (auto outcome = setLater(type, property.getName(), *holder, *id); !outcome)
                    return Unexpected<String>(outcome.error());
                continue;
            }
            if (type.getKind() == TypeKind::List && type.isNative<Array<EntityHolder<Entity>>>()
                && isReference(*type.getElementType())) {
                const auto count = hashing.enterArray(property.getName());
                if (!count)
                    return failure(count.error());
                // The identities first: the list is then made at its size, and its references stay where they are.
                itemIds.clear();
                for (std::size_t item = 0; item < *count; ++item) {
                    const auto id = hashing.readEntityReference("item");
                    if (!id) {
                        hashing.leaveArray();
                        return failure(id.error());
                    }
                    itemIds.push_back(*id);
                }
                hashing.leaveArray();
                auto& list = *static_cast<Array<EntityHolder<Entity>>*>(entity->mutablePropertyData(i));
                list.assign(itemIds.size(), nullptr);
                for (std::size_t item = 0; item < itemIds.size(); ++item)
                    if (auto outcome = setLater(*type.getElementType(), "item", list[item], itemIds[item]); !outcome)
                        return Unexpected<String>(outcome.error());
                continue;
            }
            auto value = type.getOperations().deserialize(
                type, hashing, property.getName(), resolver, entity->mutablePropertyData(i));
            if (!value)
                return failure(value.error());
        }
        nesting.leave();
    }
    firstReference.push_back(references.size());
    nesting.leave();
    constexpr std::size_t AHEAD = 8;
    // The class the last reference's type accepts, asked for again only when the type changes.
    const TypeDefinition* lastType = nullptr;
    Optional<EntityClassInfo> accepted;
    for (std::size_t i = 0; i < unset.size(); ++i) {
#if defined(__GNUC__)
        if (i + AHEAD < unset.size()) {
            // The entity and, where it was made with it, the block of its count just before it.
            const auto next = reinterpret_cast<std::uintptr_t>(entities[unset[i + AHEAD].place].get());
            __builtin_prefetch(reinterpret_cast<const void*>(next - 16));
            __builtin_prefetch(reinterpret_cast<const void*>(next));
        }
#endif
        const EntityHolder<Entity>& target = entities[unset[i].place];
        if (unset[i].type != lastType) {
            lastType = unset[i].type;
            accepted.emplace(lastType->getAcceptedEntityClass());
        }
        if (!accepted->isBaseClassOf(target->getClassInfo()))
            return failure(
                "The reference \"" + String(unset[i].key) + "\" names an entity that is not a " + accepted->getName());
        *unset[i].holder = target;
    }

    const std::uint64_t expected = checksum.get();
    const auto written = in.readUInt(CHECKSUM_KEY);
    if (!written)
        return failure(written.error());
    if (*written != expected)
        return failure("its checksum does not match its content");
    if (formsLoop(firstReference, references))
        return failure("its references form a cycle");
    return staged.release();
}

Expected<void, String> SceneSerializer::load(EntityGraphTracker& scene, IDeserializer& in)
{
    auto entities = read(in);
    if (!entities)
        return Unexpected<String>(entities.error());
    scene.replaceEntities(std::move(*entities));
    return {};
}

Array<std::byte> SceneSerializer::saveToBytes(const EntityGraphTracker& scene)
{
    CborSerializer out;
    save(scene, out);
    return out.takeBytes();
}

Expected<Array<EntityHolder<Entity>>, String> SceneSerializer::readFromBytes(ArrayView<const std::byte> bytes)
{
    CborDeserializer in(bytes);
    if (!in.getStreamError().empty())
        return failure(in.getStreamError());
    return read(in);
}

Expected<void, String> SceneSerializer::loadFromBytes(EntityGraphTracker& scene, ArrayView<const std::byte> bytes)
{
    auto entities = readFromBytes(bytes);
    if (!entities)
        return Unexpected<String>(entities.error());
    scene.replaceEntities(std::move(*entities));
    return {};
}

} // namespace Marlix
