#include <MarlixLib/io/SceneSerializer.h>

#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/EntityReferences.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/io/CborDeserializer.h>
#include <MarlixLib/io/CborSerializer.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <unordered_map>

namespace Marlix {

namespace {
constexpr StringView SCENE_KEY = "scene";
constexpr StringView CLASSES_KEY = "classes";
constexpr StringView IDS_KEY = "ids";
constexpr StringView ENTITIES_KEY = "entities";
constexpr StringView ENTITY_KEY = "entity";
constexpr StringView CHECKSUM_KEY = "checksum";
const String CORRUPTED = "The scene stream is corrupted";

/// FNV-1a over every key and value in stream order: the writer and the reader feed it the same sequence.
class Checksum
{
public:
    void add(const void* data, std::size_t size)
    {
        const auto* bytes = static_cast<const unsigned char*>(data);
        for (std::size_t i = 0; i < size; ++i) {
            hash ^= bytes[i];
            hash *= 0x100000001b3ull;
        }
    }
    void add(char tag, StringView key)
    {
        add(&tag, 1);
        const std::uint64_t size = key.size();
        add(&size, sizeof size);
        add(key.data(), key.size());
    }
    template <class T> void addValue(const T& value) { add(&value, sizeof value); }
    std::uint64_t get() const { return hash; }

private:
    std::uint64_t hash = 0xcbf29ce484222325ull;
};

class HashingSerializer final : public ISerializer
{
public:
    HashingSerializer(ISerializer& inner, Checksum& checksum)
        : inner(inner)
        , checksum(checksum)
    {
    }
    void serializeFormatVersion(std::uint32_t version) override
    {
        checksum.addValue(version);
        inner.serializeFormatVersion(version);
    }
    void beginRecord(StringView key) override
    {
        checksum.add('r', key);
        inner.beginRecord(key);
    }
    void endRecord() override
    {
        checksum.add('e', {});
        inner.endRecord();
    }
    void beginArray(StringView key, std::size_t count) override
    {
        checksum.add('a', key);
        checksum.addValue(std::uint64_t(count));
        inner.beginArray(key, count);
    }
    void endArray() override
    {
        checksum.add('f', {});
        inner.endArray();
    }
    void writeBool(StringView key, bool value) override
    {
        checksum.add('b', key);
        checksum.addValue(value);
        inner.writeBool(key, value);
    }
    void writeInt(StringView key, std::int64_t value) override
    {
        checksum.add('i', key);
        checksum.addValue(value);
        inner.writeInt(key, value);
    }
    void writeUInt(StringView key, std::uint64_t value) override
    {
        checksum.add('u', key);
        checksum.addValue(value);
        inner.writeUInt(key, value);
    }
    void writeFloat(StringView key, double value) override
    {
        checksum.add('d', key);
        checksum.addValue(std::bit_cast<std::uint64_t>(value));
        inner.writeFloat(key, value);
    }
    void writeString(StringView key, StringView value) override
    {
        checksum.add('s', key);
        checksum.add('v', value);
        inner.writeString(key, value);
    }
    void writeBytes(StringView key, ArrayView<const std::byte> value) override
    {
        checksum.add('y', key);
        checksum.add('v', StringView(reinterpret_cast<const char*>(value.data()), value.size()));
        inner.writeBytes(key, value);
    }
    void writeEntityReference(StringView key, std::uint64_t entityId) override
    {
        checksum.add('x', key);
        checksum.addValue(entityId);
        inner.writeEntityReference(key, entityId);
    }

private:
    ISerializer& inner;
    Checksum& checksum;
};

class HashingDeserializer final : public IDeserializer
{
public:
    HashingDeserializer(IDeserializer& inner, Checksum& checksum)
        : inner(inner)
        , checksum(checksum)
    {
    }
    Result<std::uint32_t> deserializeFormatVersion() override
    {
        auto version = inner.deserializeFormatVersion();
        if (version)
            checksum.addValue(*version);
        return version;
    }
    Result<void> enterRecord(StringView key) override
    {
        auto entered = inner.enterRecord(key);
        if (entered)
            checksum.add('r', key);
        return entered;
    }
    void leaveRecord() override
    {
        checksum.add('e', {});
        inner.leaveRecord();
    }
    Result<std::size_t> enterArray(StringView key) override
    {
        auto count = inner.enterArray(key);
        if (count) {
            checksum.add('a', key);
            checksum.addValue(std::uint64_t(*count));
        }
        return count;
    }
    void leaveArray() override
    {
        checksum.add('f', {});
        inner.leaveArray();
    }
    bool hasKey(StringView key) const override { return inner.hasKey(key); }
    Result<bool> readBool(StringView key) override { return hashed('b', key, inner.readBool(key)); }
    Result<std::int64_t> readInt(StringView key) override { return hashed('i', key, inner.readInt(key)); }
    Result<std::uint64_t> readUInt(StringView key) override { return hashed('u', key, inner.readUInt(key)); }
    Result<double> readFloat(StringView key) override
    {
        auto value = inner.readFloat(key);
        if (value) {
            checksum.add('d', key);
            checksum.addValue(std::bit_cast<std::uint64_t>(*value));
        }
        return value;
    }
    Result<String> readString(StringView key) override
    {
        auto value = inner.readString(key);
        if (value) {
            checksum.add('s', key);
            checksum.add('v', *value);
        }
        return value;
    }
    Result<Array<std::byte>> readBytes(StringView key) override
    {
        auto value = inner.readBytes(key);
        if (value) {
            checksum.add('y', key);
            checksum.add('v', StringView(reinterpret_cast<const char*>(value->data()), value->size()));
        }
        return value;
    }
    Result<std::uint64_t> readEntityReference(StringView key) override
    {
        return hashed('x', key, inner.readEntityReference(key));
    }

private:
    template <class T> Result<T> hashed(char tag, StringView key, Result<T> value)
    {
        if (value) {
            checksum.add(tag, key);
            checksum.addValue(*value);
        }
        return value;
    }

    IDeserializer& inner;
    Checksum& checksum;
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
    // The marks of the given entities live in a table sorted by address, which a scene of 100 000 entities fills
    // without an allocation per entity; entities reached outside of them get theirs in a map.
    Array<const Entity*> sorted;
    sorted.reserve(entities.size());
    for (const auto& entity : entities)
        sorted.push_back(entity.get());
    std::ranges::sort(sorted);
    Array<Mark> marks(sorted.size(), Mark::Unvisited);
    std::unordered_map<const Entity*, Mark> outside;
    const auto markOf = [&](const Entity* entity) -> Mark& {
        const auto found = std::ranges::lower_bound(sorted, entity);
        if (found != sorted.end() && *found == entity)
            return marks[std::size_t(found - sorted.begin())];
        return outside[entity];
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
} // namespace

void SceneSerializer::save(const EntityGraphTracker& scene, ISerializer& out)
{
    // Refused before the first byte: a stream with a loop would be refused by every reader.
    if (const Entity* looped = findReferenceCycle(scene.getEntities()))
        throw Exception("The scene cannot be saved: the references of the " + looped->getClassInfo().getName()
            + " entity #" + std::to_string(looped->getId()) + " lead back to it");
    Checksum checksum;
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
    Checksum checksum;
    HashingDeserializer hashing(in, checksum);
    const auto version = hashing.deserializeFormatVersion();
    if (!version)
        return failure(version.error());
    if (*version == 0 || *version > FORMAT_VERSION)
        return Unexpected<String>("Unknown scene format version " + std::to_string(*version));

    Nesting nesting(hashing);
    if (auto entered = nesting.enterRecord(SCENE_KEY); !entered)
        return Unexpected<String>(entered.error());

    Staged staged;
    Array<EntityHolder<Entity>>& entities = staged.entities;
    const auto classCount = nesting.enterArray(CLASSES_KEY);
    if (!classCount)
        return Unexpected<String>(classCount.error());
    for (std::size_t i = 0; i < *classCount; ++i) {
        const auto name = hashing.readString("class");
        if (!name)
            return failure(name.error());
        const auto entityClass = TypeDatabase::instance().lookupEntityClass(*name);
        if (!entityClass)
            return Unexpected<String>("The scene holds an entity of the unknown class \"" + *name + "\"");
        if (!entityClass->canCreate())
            return failure("the class \"" + *name + "\" cannot be created");
        entities.push_back(entityClass->create());
    }
    nesting.leave();

    std::unordered_map<std::uint64_t, EntityHolder<Entity>> table;
    const auto idCount = nesting.enterArray(IDS_KEY);
    if (!idCount)
        return Unexpected<String>(idCount.error());
    if (*idCount != entities.size())
        return failure("there are " + std::to_string(*idCount) + " identities for " + std::to_string(entities.size()) + " entities");
    for (const auto& entity : entities) {
        const auto id = hashing.readUInt("id");
        if (!id)
            return failure(id.error());
        if (*id == 0 || !table.emplace(*id, entity).second)
            return failure("the identity " + std::to_string(*id) + " is zero or repeated");
    }
    nesting.leave();

    const EntityResolver resolver = [&table](std::uint64_t id) -> Expected<SharedPtr<Entity>, String> {
        const auto found = table.find(id);
        if (found == table.end())
            return failure("a reference names the entity #" + std::to_string(id) + " that the stream does not hold");
        return found->second;
    };

    const auto entityCount = nesting.enterArray(ENTITIES_KEY);
    if (!entityCount)
        return Unexpected<String>(entityCount.error());
    if (*entityCount != entities.size())
        return failure("there are " + std::to_string(*entityCount) + " value records for " + std::to_string(entities.size()) + " entities");
    for (const auto& entity : entities) {
        if (auto entered = nesting.enterRecord(ENTITY_KEY); !entered)
            return Unexpected<String>(entered.error());
        for (std::uint32_t i = 0; i < entity->getPropertyCount(); ++i) {
            const PropertyDefinition& property = entity->getPropertyDefinition(i);
            if (!isSaved(property))
                continue;
            auto value = property.getTypeDefinition().deserialize(hashing, property.getName(), resolver, entity->mutablePropertyData(i));
            if (!value)
                return failure(value.error());
        }
        nesting.leave();
    }
    nesting.leave();

    const std::uint64_t expected = checksum.get();
    const auto written = in.readUInt(CHECKSUM_KEY);
    if (!written)
        return failure(written.error());
    if (*written != expected)
        return failure("its checksum does not match its content");
    if (findReferenceCycle(entities))
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
    return out.getBytes();
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
