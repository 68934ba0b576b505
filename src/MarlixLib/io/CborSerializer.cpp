#include <MarlixLib/base/Exception.h>
#include <MarlixLib/io/CborItems.h>
#include <MarlixLib/io/CborSerializer.h>

#include <bit>
#include <cmath>
#include <cstring>

namespace Marlix {

using namespace Detail::Cbor;

namespace {
constexpr std::uint8_t FALSE_BYTE = 0xf4;
constexpr std::uint8_t TRUE_BYTE = 0xf5;
constexpr std::uint8_t FLOAT32_BYTE = 0xfa;
constexpr std::uint8_t FLOAT64_BYTE = 0xfb;

// Bytes of the head of an item whose argument is `value`: the shortest form, as a canonical encoder writes it.
constexpr std::size_t headSize(std::uint64_t value)
{
    return value < 24 ? 1 : value <= 0xff ? 2 : value <= 0xffff ? 3 : value <= 0xffffffffu ? 5 : 9;
}

void putHead(std::byte* at, std::uint8_t major, std::uint64_t value)
{
    const auto first = std::uint8_t(major << 5);
    const std::size_t size = headSize(value);
    if (size == 1) {
        at[0] = std::byte(first | value);
        return;
    }
    at[0] = std::byte(first | (size == 2 ? 24 : size == 3 ? 25 : size == 5 ? 26 : 27));
    for (std::size_t i = 1; i < size; ++i)
        at[i] = std::byte(value >> (8 * (size - 1 - i)));
}
} // namespace

struct CborSerializer::Impl
{
    struct Level
    {
        bool isArray;
        std::size_t headOffset; // records: where the head goes, one byte kept for it until the end
        std::size_t count; // records: keys and values written; arrays: values declared
        std::size_t written = 0; // arrays: values written
    };

    Array<std::byte> bytes;
    Array<Level> levels { Level { false, 0, 0 } };
    bool versionWritten = false;

    std::byte* grow(std::size_t size)
    {
        const std::size_t old = bytes.size();
        bytes.resize(old + size);
        return bytes.data() + old;
    }
    void head(std::uint8_t major, std::uint64_t value) { putHead(grow(headSize(value)), major, value); }
    void text(StringView value)
    {
        std::byte* at = grow(headSize(value.size()) + value.size());
        putHead(at, TextMajor, value.size());
        if (!value.empty())
            std::memcpy(at + headSize(value.size()), value.data(), value.size());
    }

    // Starts one value under the key in the innermost level: the key itself inside a record, a count inside an array.
    void begin(StringView key)
    {
        if (!versionWritten)
            Detail::throwStopException("io/CborSerializer", __LINE__);
        Level& level = levels.back();
        if (level.isArray) {
            if (level.written >= level.count)
                Detail::throwStopException("io/CborSerializer", __LINE__);
            ++level.written;
        } else {
            level.count += 2;
            text(key);
        }
    }

    // A record's length is known at its end only. Records of fewer than twelve pairs, nearly all of them, fit the
    // byte kept for the head; longer ones move their content to make room.
    static void closeRecord(Array<std::byte>& target, const Level& level)
    {
        const std::size_t size = headSize(level.count);
        if (size > 1)
            target.insert(target.begin() + std::ptrdiff_t(level.headOffset) + 1, size - 1, std::byte(0));
        putHead(target.data() + level.headOffset, ArrayMajor, level.count);
    }
};

CborSerializer::CborSerializer()
    : impl(std::make_unique<Impl>())
{
    impl->grow(1); // the root record's head
}

CborSerializer::~CborSerializer() = default;

void CborSerializer::serializeFormatVersion(std::uint32_t version)
{
    if (impl->versionWritten)
        Detail::throwStopException("io/CborSerializer", __LINE__);
    impl->versionWritten = true;
    impl->begin(VERSION_KEY);
    impl->head(UnsignedMajor, version);
}

void CborSerializer::beginRecord(StringView key)
{
    impl->begin(key);
    impl->levels.push_back({ false, impl->bytes.size(), 0 });
    impl->grow(1);
}

void CborSerializer::endRecord()
{
    if (impl->levels.size() < 2 || impl->levels.back().isArray)
        Detail::throwStopException("io/CborSerializer", __LINE__);
    Impl::closeRecord(impl->bytes, impl->levels.back());
    impl->levels.pop_back();
}

void CborSerializer::beginArray(StringView key, std::size_t count)
{
    impl->begin(key);
    impl->head(MapMajor, 1);
    impl->text(ARRAY_KEY);
    impl->head(ArrayMajor, count);
    impl->levels.push_back({ true, 0, count });
}

void CborSerializer::endArray()
{
    if (impl->levels.size() < 2 || !impl->levels.back().isArray)
        Detail::throwStopException("io/CborSerializer", __LINE__);
    // A short array would make the length written at its start a lie.
    if (impl->levels.back().written != impl->levels.back().count)
        Detail::throwStopException("io/CborSerializer", __LINE__);
    impl->levels.pop_back();
}

void CborSerializer::writeBool(StringView key, bool value)
{
    impl->begin(key);
    *impl->grow(1) = std::byte(value ? TRUE_BYTE : FALSE_BYTE);
}

void CborSerializer::writeInt(StringView key, std::int64_t value)
{
    impl->begin(key);
    if (value >= 0)
        impl->head(UnsignedMajor, std::uint64_t(value));
    else
        impl->head(NegativeMajor, ~std::uint64_t(value)); // -1 - value, without overflow at the minimum
}

void CborSerializer::writeUInt(StringView key, std::uint64_t value)
{
    impl->begin(key);
    impl->head(UnsignedMajor, value);
}

void CborSerializer::writeFloat(StringView key, double value)
{
    impl->begin(key);
    // Single precision when it holds the value exactly, which keeps streams of typical scene values short. NaN
    // never compares equal, so it keeps its double form with its bits.
    const auto single = static_cast<float>(value);
    if (!std::isnan(value) && static_cast<double>(single) == value) {
        std::byte* at = impl->grow(5);
        at[0] = std::byte(FLOAT32_BYTE);
        const auto bits = std::bit_cast<std::uint32_t>(single);
        for (int i = 0; i < 4; ++i)
            at[1 + i] = std::byte(bits >> (8 * (3 - i)));
        return;
    }
    std::byte* at = impl->grow(9);
    at[0] = std::byte(FLOAT64_BYTE);
    const auto bits = std::bit_cast<std::uint64_t>(value);
    for (int i = 0; i < 8; ++i)
        at[1 + i] = std::byte(bits >> (8 * (7 - i)));
}

void CborSerializer::writeString(StringView key, StringView value)
{
    impl->begin(key);
    impl->text(value);
}

void CborSerializer::writeBytes(StringView key, ArrayView<const std::byte> value)
{
    impl->begin(key);
    std::byte* at = impl->grow(headSize(value.size()) + value.size());
    putHead(at, BytesMajor, value.size());
    if (!value.empty())
        std::memcpy(at + headSize(value.size()), value.data(), value.size());
}

void CborSerializer::writeEntityReference(StringView key, std::uint64_t entityId)
{
    impl->begin(key);
    impl->head(MapMajor, 1);
    impl->text(ENTITY_KEY);
    impl->head(UnsignedMajor, entityId);
}

Array<std::byte> CborSerializer::getBytes() const
{
    if (impl->levels.size() != 1 || !impl->versionWritten)
        Detail::throwStopException("io/CborSerializer", __LINE__);
    Array<std::byte> bytes = impl->bytes;
    Impl::closeRecord(bytes, impl->levels.front());
    return bytes;
}

Array<std::byte> CborSerializer::takeBytes()
{
    if (impl->levels.size() != 1 || !impl->versionWritten)
        Detail::throwStopException("io/CborSerializer", __LINE__);
    Impl::closeRecord(impl->bytes, impl->levels.front());
    Array<std::byte> bytes = std::move(impl->bytes);
    impl = std::make_unique<Impl>();
    impl->grow(1);
    return bytes;
}

} // namespace Marlix
