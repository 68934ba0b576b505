#include <MarlixLib/base/Exception.h>
#include <MarlixLib/io/CborDeserializer.h>
#include <MarlixLib/io/CborItems.h>
#include <MarlixLib/io/CborSerializer.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace Marlix {

using namespace Detail::Cbor;

namespace {

double halfToDouble(std::uint64_t bits)
{
    const int exponent = int(bits >> 10) & 0x1f;
    const int mantissa = int(bits & 0x3ff);
    double value = exponent == 0 ? std::ldexp(mantissa, -24)
        : exponent != 31         ? std::ldexp(mantissa + 1024, exponent - 25)
        : mantissa == 0          ? std::numeric_limits<double>::infinity()
                                 : std::numeric_limits<double>::quiet_NaN();
    return bits & 0x8000 ? -value : value;
}

} // namespace

struct CborDeserializer::Impl
{
    /// A pair of a record passed over while looking for a later key.
    struct Passed
    {
        StringView key;
        std::size_t value;
        std::size_t index;
        bool taken = false;
    };

    struct Level
    {
        bool isArray;
        std::size_t cursor; // the next item not looked at: a key in records, a value in arrays
        std::uint64_t remaining; // pairs of records, values of arrays, from the cursor on
        std::size_t consumed = 0; // pairs looked at, or values read
        Array<Passed> passed; // records: pairs before the cursor not read yet, in stream order
        // How messages name the level: its key in the enclosing record, or its place in the enclosing array.
        StringView name;
        std::size_t element = 0;
        bool isElement = false;
        bool advancesParent = false; // entered at the parent's cursor: leaving it moves that cursor past it
    };

    /// Where a value was found: enough to mark it read once its kind has been checked.
    struct Slot
    {
        std::size_t value;
        StringView key; // the stream's own copy
        std::ptrdiff_t passedIndex; // -1 at the cursor
    };

    Array<std::byte> owned;
    const std::uint8_t* data = nullptr;
    String streamError;
    Array<Level> levels;
    std::size_t versionValue = 0; // the value of the root's first pair when its key is VERSION_KEY, 0 otherwise

    void open(ArrayView<const std::byte> bytes)
    {
        data = reinterpret_cast<const std::uint8_t*>(bytes.data());
        streamError = checkStream(data, bytes.size(), MAX_DEPTH);
        if (!streamError.empty()) {
            levels.push_back({ true, 0, 0 });
            return;
        }
        const Head root = headAt(data);
        levels.push_back({ false, root.size, root.argument / 2 });
        if (root.argument > 0 && keyAt(root.size) == CborSerializer::VERSION_KEY)
            versionValue = valueAfterKey(root.size);
    }

    Head head(std::size_t at) const { return headAt(data + at); }
    StringView keyAt(std::size_t at) const
    {
        const Head key = head(at);
        return { reinterpret_cast<const char*>(data + at + key.size), std::size_t(key.argument) };
    }
    std::size_t valueAfterKey(std::size_t at) const
    {
        const Head key = head(at);
        return at + key.size + key.argument;
    }
    // Past `count` items starting at `at`.
    std::size_t skip(std::size_t at, std::uint64_t count = 1) const
    {
        while (count > 0) {
            const Head item = head(at);
            at += item.size;
            --count;
            if (item.major == BytesMajor || item.major == TextMajor)
                at += item.argument;
            else if (item.major == ArrayMajor)
                count += item.argument;
            else if (item.major == MapMajor)
                count += 2 * item.argument;
        }
        return at;
    }
    // The member of a single-pair map with the key `key`, or nothing.
    Optional<std::size_t> wrapped(std::size_t at, StringView key) const
    {
        const Head map = head(at);
        if (map.major != MapMajor || map.argument != 1 || keyAt(at + 1) != key)
            return {};
        return valueAfterKey(at + 1);
    }

    String describeKey(StringView key) const
    {
        String path;
        for (std::size_t i = 1; i < levels.size(); ++i)
            path += (levels[i].isElement ? std::to_string(levels[i].element) : String(levels[i].name)) + "/";
        if (levels.back().isArray)
            return "value " + std::to_string(levels.back().consumed) + " of \"" + path.substr(0, path.size() - 1)
                + "\"";
        return "\"" + path + String(key) + "\"";
    }

    const char* kindName(std::size_t at) const
    {
        const Head value = head(at);
        switch (value.major) {
        case UnsignedMajor:
        case NegativeMajor:
            return "an integer";
        case BytesMajor:
            return "a byte array";
        case TextMajor:
            return "a string";
        case ArrayMajor:
            return "a record";
        case MapMajor:
            if (wrapped(at, CborSerializer::ARRAY_KEY))
                return "an array";
            if (wrapped(at, CborSerializer::ENTITY_KEY))
                return "an entity reference";
            return "an unknown structure";
        default:
            return value.info == 20 || value.info == 21 ? "a boolean"
                : value.info == 22                      ? "nothing"
                                                        : "a floating-point number";
        }
    }

    // The first unread value of `key` in a record, scanning on from the cursor when none was passed over; in an array
    // the next value. Pairs scanned past are remembered, which no reader can tell apart from not having looked.
    Expected<Slot, String> locate(StringView key)
    {
        if (!streamError.empty())
            return Unexpected<String>(streamError);
        Level& level = levels.back();
        if (level.isArray) {
            if (level.remaining == 0)
                return Unexpected<String>("No values are left in " + describeKey(key) + ".");
            return Slot { level.cursor, {}, -1 };
        }
        for (std::size_t i = 0; i < level.passed.size(); ++i)
            if (!level.passed[i].taken && level.passed[i].key == key)
                return Slot { level.passed[i].value, level.passed[i].key, std::ptrdiff_t(i) };
        while (level.remaining > 0) {
            const StringView found = keyAt(level.cursor);
            const std::size_t value = valueAfterKey(level.cursor);
            if (found == key)
                return Slot { value, found, -1 };
            level.passed.push_back({ found, value, level.consumed });
            level.cursor = skip(value);
            --level.remaining;
            ++level.consumed;
        }
        return Unexpected<String>("The stream has no value " + describeKey(key) + ".");
    }

    // Marks a located value read. A record or array entered at the cursor moves the cursor when it is left.
    void take(const Slot& slot, bool entered)
    {
        Level& level = levels.back();
        if (slot.passedIndex >= 0) {
            level.passed[std::size_t(slot.passedIndex)].taken = true;
            return;
        }
        if (!entered)
            level.cursor = skip(slot.value);
        --level.remaining;
        ++level.consumed;
    }

    void enter(const Slot& slot, bool isArray, std::size_t content, std::uint64_t count)
    {
        const Level& parent = levels.back();
        Level level { isArray, content, count };
        level.name = slot.key;
        level.isElement = parent.isArray;
        level.element = parent.consumed;
        level.advancesParent = slot.passedIndex < 0;
        take(slot, true);
        levels.push_back(std::move(level));
    }

    void leave(bool isArray)
    {
        if (levels.size() < 2 || levels.back().isArray != isArray)
            Detail::throwStopException("io/CborDeserializer", __LINE__);
        const Level& level = levels.back();
        const std::size_t end
            = level.advancesParent ? skip(level.cursor, isArray ? level.remaining : 2 * level.remaining) : 0;
        const bool advances = level.advancesParent;
        levels.pop_back();
        if (advances)
            levels.back().cursor = end;
    }

    String wrongKind(StringView key, std::size_t at, const char* wanted) const
    {
        return "The value " + describeKey(key) + " is " + kindName(at) + ", not " + wanted + ".";
    }

    template <class T, class Decode> Expected<T, String> read(StringView key, const char* wanted, Decode decode)
    {
        const auto slot = locate(key);
        if (!slot)
            return Unexpected<String>(slot.error());
        Optional<T> value = decode(head(slot->value), data + slot->value);
        if (!value)
            return Unexpected<String>(wrongKind(key, slot->value, wanted));
        take(*slot, false);
        return std::move(*value);
    }
};

CborDeserializer::CborDeserializer(ArrayView<const std::byte> bytes)
    : impl(std::make_unique<Impl>())
{
    impl->open(bytes);
}

CborDeserializer::CborDeserializer(Array<std::byte>&& bytes)
    : impl(std::make_unique<Impl>())
{
    impl->owned = std::move(bytes);
    impl->open(impl->owned);
}

CborDeserializer::~CborDeserializer() = default;

const String& CborDeserializer::getStreamError() const noexcept
{
    return impl->streamError;
}

IDeserializer::Result<std::uint32_t> CborDeserializer::deserializeFormatVersion()
{
    if (!impl->streamError.empty())
        return Unexpected<String>(impl->streamError);
    if (impl->levels.size() != 1)
        return Unexpected<String>("The format version is read at the top of the stream, outside every record.");
    if (impl->versionValue == 0)
        return Unexpected<String>("The stream has no format version.");
    Impl::Level& root = impl->levels.front();
    // The version is the first pair: still at the cursor, or the first of those passed over, or read.
    const bool atCursor = root.consumed == 0;
    const bool passed
        = !atCursor && !root.passed.empty() && root.passed.front().index == 0 && !root.passed.front().taken;
    if (!atCursor && !passed)
        return Unexpected<String>("The format version has been read already.");
    const Head value = impl->head(impl->versionValue);
    if (value.major != UnsignedMajor || value.argument > std::numeric_limits<std::uint32_t>::max())
        return Unexpected<String>("The format version of the stream is not a 32-bit unsigned integer.");
    impl->take({ impl->versionValue, CborSerializer::VERSION_KEY, atCursor ? -1 : 0 }, false);
    return static_cast<std::uint32_t>(value.argument);
}

IDeserializer::Result<void> CborDeserializer::enterRecord(StringView key)
{
    const auto slot = impl->locate(key);
    if (!slot)
        return Unexpected<String>(slot.error());
    const Head record = impl->head(slot->value);
    if (record.major != ArrayMajor)
        return Unexpected<String>(impl->wrongKind(key, slot->value, "a record"));
    impl->enter(*slot, false, slot->value + record.size, record.argument / 2);
    return {};
}

void CborDeserializer::leaveRecord()
{
    impl->leave(false);
}

IDeserializer::Result<std::size_t> CborDeserializer::enterArray(StringView key)
{
    const auto slot = impl->locate(key);
    if (!slot)
        return Unexpected<String>(slot.error());
    const auto values = impl->wrapped(slot->value, CborSerializer::ARRAY_KEY);
    if (!values)
        return Unexpected<String>(impl->wrongKind(key, slot->value, "an array"));
    const Head list = impl->head(*values);
    if (list.major != ArrayMajor)
        return Unexpected<String>("The stream is corrupted: " + impl->describeKey(key) + " holds no list of values.");
    impl->enter(*slot, true, *values + list.size, list.argument);
    return std::size_t(list.argument);
}

void CborDeserializer::leaveArray()
{
    impl->leave(true);
}

bool CborDeserializer::hasKey(StringView key) const
{
    if (!impl->streamError.empty())
        return false;
    const Impl::Level& level = impl->levels.back();
    if (level.isArray)
        return level.remaining > 0;
    for (const auto& pair : level.passed)
        if (!pair.taken && pair.key == key)
            return true;
    std::size_t at = level.cursor;
    for (std::uint64_t i = 0; i < level.remaining; ++i) {
        if (impl->keyAt(at) == key)
            return true;
        at = impl->skip(impl->valueAfterKey(at));
    }
    return false;
}

IDeserializer::Result<bool> CborDeserializer::readBool(StringView key)
{
    return impl->read<bool>(key, "a boolean", [](const Head& h, const std::uint8_t*) -> Optional<bool> {
        if (h.major != SimpleMajor || (h.info != 20 && h.info != 21))
            return {};
        return h.info == 21;
    });
}

IDeserializer::Result<std::int64_t> CborDeserializer::readInt(StringView key)
{
    return impl->read<std::int64_t>(
        key, "a signed 64-bit integer", [](const Head& h, const std::uint8_t*) -> Optional<std::int64_t> {
            constexpr auto largest = std::uint64_t(std::numeric_limits<std::int64_t>::max());
            if ((h.major != UnsignedMajor && h.major != NegativeMajor) || h.argument > largest)
                return {};
            // A negative item holds -1 - value.
            return h.major == UnsignedMajor ? std::int64_t(h.argument) : -1 - std::int64_t(h.argument);
        });
}

IDeserializer::Result<std::uint64_t> CborDeserializer::readUInt(StringView key)
{
    return impl->read<std::uint64_t>(
        key, "an unsigned 64-bit integer", [](const Head& h, const std::uint8_t*) -> Optional<std::uint64_t> {
            if (h.major != UnsignedMajor)
                return {};
            return h.argument;
        });
}

IDeserializer::Result<double> CborDeserializer::readFloat(StringView key)
{
    return impl->read<double>(
        key, "a floating-point number", [](const Head& h, const std::uint8_t*) -> Optional<double> {
            if (h.major != SimpleMajor)
                return {};
            if (h.info == 25)
                return halfToDouble(h.argument);
            if (h.info == 26)
                return double(std::bit_cast<float>(std::uint32_t(h.argument)));
            if (h.info == 27)
                return std::bit_cast<double>(h.argument);
            return {};
        });
}

IDeserializer::Result<String> CborDeserializer::readString(StringView key)
{
    return impl->read<String>(key, "a string", [](const Head& h, const std::uint8_t* at) -> Optional<String> {
        if (h.major != TextMajor)
            return {};
        return String(reinterpret_cast<const char*>(at + h.size), std::size_t(h.argument));
    });
}

IDeserializer::Result<Array<std::byte>> CborDeserializer::readBytes(StringView key)
{
    return impl->read<Array<std::byte>>(
        key, "a byte array", [](const Head& h, const std::uint8_t* at) -> Optional<Array<std::byte>> {
            if (h.major != BytesMajor)
                return {};
            const auto* begin = reinterpret_cast<const std::byte*>(at + h.size);
            return Array<std::byte>(begin, begin + h.argument);
        });
}

IDeserializer::Result<std::uint64_t> CborDeserializer::readEntityReference(StringView key)
{
    const Impl& reader = *impl;
    return impl->read<std::uint64_t>(
        key, "an entity reference", [&reader](const Head&, const std::uint8_t* at) -> Optional<std::uint64_t> {
            const auto id = reader.wrapped(std::size_t(at - reader.data), CborSerializer::ENTITY_KEY);
            if (!id || reader.head(*id).major != UnsignedMajor)
                return {};
            return reader.head(*id).argument;
        });
}

} // namespace Marlix
