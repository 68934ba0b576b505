#pragma once

// The checksum of scene streams and the layers that feed it what passes through a serializer. Not part of the API.

#include <MarlixLib/io/IDeserializer.h>
#include <MarlixLib/io/ISerializer.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <type_traits>

namespace Marlix::Detail {

/// A hash over every key and value in stream order: the writer and the reader feed it the same sequence. Streams of
/// the first format version hash byte by byte (FNV-1a); later ones a word at a time, four times faster, since hashing
/// bytes one by one cost more than encoding them.
class Checksum
{
public:
    explicit Checksum(std::uint32_t version)
        : bytewise(version < 2)
    {
    }
    void add(char tag, StringView text)
    {
        if (bytewise) {
            addBytes(&tag, 1);
            const std::uint64_t size = text.size();
            addBytes(&size, sizeof size);
            addBytes(text.data(), text.size());
            return;
        }
        mix(std::uint8_t(tag) | std::uint64_t(text.size()) << 8);
        // Whole words copied by a fixed size, which compilers inline; the last one, filled with zeros, may be shorter.
        std::size_t at = 0;
        for (; text.size() - at >= 8; at += 8) {
            std::uint64_t word;
            std::memcpy(&word, text.data() + at, 8);
            mix(word);
        }
        if (at < text.size()) {
            std::uint64_t word = 0;
            std::memcpy(&word, text.data() + at, text.size() - at);
            mix(word);
        }
    }
    template <class T> void addValue(const T& value)
    {
        static_assert(std::is_trivially_copyable_v<T> && sizeof(T) <= 8);
        if (bytewise) {
            addBytes(&value, sizeof value);
            return;
        }
        std::uint64_t word = 0;
        std::memcpy(&word, &value, sizeof value);
        mix(word);
    }
    std::uint64_t get() const { return hash; }

private:
    void addBytes(const void* data, std::size_t size)
    {
        const auto* bytes = static_cast<const unsigned char*>(data);
        for (std::size_t i = 0; i < size; ++i) {
            hash ^= bytes[i];
            hash *= 0x100000001b3ull;
        }
    }
    void mix(std::uint64_t word)
    {
        hash = (hash ^ word) * 0x9e3779b97f4a7c15ull;
        hash ^= hash >> 29;
    }

    bool bytewise;
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

} // namespace Marlix::Detail
