#include <MarlixLib/base/Exception.h>
#include <MarlixLib/io/CborDeserializer.h>
#include <MarlixLib/io/CborSerializer.h>

#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>

namespace Marlix {

using Json = nlohmann::json;

namespace {

// Builds the document from parser events, refusing nesting deeper than the limit before the recursive parser can
// exhaust the stack on a hostile stream.
class DocumentBuilder
{
public:
    Json root;
    String error;

    bool null() { return add(nullptr); }
    bool boolean(bool value) { return add(value); }
    bool number_integer(Json::number_integer_t value) { return add(value); }
    bool number_unsigned(Json::number_unsigned_t value) { return add(value); }
    bool number_float(Json::number_float_t value, const Json::string_t&) { return add(value); }
    bool string(Json::string_t& value) { return add(std::move(value)); }
    bool binary(Json::binary_t& value) { return add(Json::binary(std::move(value))); }
    bool start_object(std::size_t) { return open(Json::object()); }
    bool key(Json::string_t& key)
    {
        objectMember = &(*stack.back())[key];
        return true;
    }
    bool end_object() { return close(); }
    bool start_array(std::size_t) { return open(Json::array()); }
    bool end_array() { return close(); }
    bool parse_error(std::size_t position, const std::string&, const Json::exception& e)
    {
        error = "The stream is truncated or corrupted (at byte " + std::to_string(position) + "): " + e.what();
        return false;
    }

private:
    Json* insert(Json value)
    {
        if (stack.empty()) {
            root = std::move(value);
            return &root;
        }
        if (stack.back()->is_array()) {
            stack.back()->push_back(std::move(value));
            return &stack.back()->back();
        }
        *objectMember = std::move(value);
        return objectMember;
    }
    bool add(Json value)
    {
        insert(std::move(value));
        return true;
    }
    bool open(Json container)
    {
        if (stack.size() >= CborDeserializer::MAX_DEPTH) {
            error = "The stream is nested more than " + std::to_string(CborDeserializer::MAX_DEPTH) + " levels deep.";
            return false;
        }
        stack.push_back(insert(std::move(container)));
        return true;
    }
    bool close()
    {
        stack.pop_back();
        return true;
    }

    Array<Json*> stack;
    Json* objectMember = nullptr;
};

const char* kindName(const Json& value)
{
    switch (value.type()) {
    case Json::value_t::null:
        return "nothing";
    case Json::value_t::boolean:
        return "a boolean";
    case Json::value_t::number_integer:
    case Json::value_t::number_unsigned:
        return "an integer";
    case Json::value_t::number_float:
        return "a floating-point number";
    case Json::value_t::string:
        return "a string";
    case Json::value_t::binary:
        return "a byte array";
    case Json::value_t::array:
        return "a record";
    case Json::value_t::object:
        if (value.size() == 1 && value.contains(String(CborSerializer::ARRAY_KEY)))
            return "an array";
        if (value.size() == 1 && value.contains(String(CborSerializer::ENTITY_KEY)))
            return "an entity reference";
        return "an unknown structure";
    case Json::value_t::discarded:
        break;
    }
    return "an unknown value";
}

// The member of a single-member map used for arrays and entity references; null for anything else.
const Json* wrapped(const Json& value, StringView key)
{
    if (!value.is_object() || value.size() != 1)
        return nullptr;
    const auto it = value.find(String(key));
    return it == value.end() ? nullptr : &*it;
}

} // namespace

struct CborDeserializer::Impl
{
    struct Level
    {
        const Json* values; // the pair list of a record, the value list of an array
        bool isArray;
        String name;
        std::size_t next = 0; // arrays: next element; records: first pair that may be unread
        Array<bool> taken; // records: pairs already read
    };

    // Where a value was found: enough to mark it read once its kind has been checked.
    struct Slot
    {
        const Json* value;
        std::size_t index;
    };

    Json document;
    String streamError;
    Array<Level> levels;

    String describeKey(StringView key) const
    {
        String path;
        for (std::size_t i = 1; i < levels.size(); ++i)
            path += levels[i].name + "/";
        if (levels.back().isArray)
            return "value " + std::to_string(levels.back().next) + " of \"" + path.substr(0, path.size() - 1) + "\"";
        return "\"" + path + String(key) + "\"";
    }

    Optional<std::size_t> findPair(StringView key) const
    {
        const Level& level = levels.back();
        const auto& pairs = level.values->get_ref<const Json::array_t&>();
        const std::size_t count = pairs.size() / 2;
        for (std::size_t pass = 0; pass < 2; ++pass) {
            const std::size_t begin = pass == 0 ? level.next : 0;
            const std::size_t end = pass == 0 ? count : std::min(level.next, count);
            for (std::size_t i = begin; i < end; ++i)
                if (!level.taken[i] && pairs[2 * i].get_ref<const String&>() == key)
                    return i;
        }
        return {};
    }

    Expected<Slot, String> locate(StringView key) const
    {
        if (!streamError.empty())
            return Unexpected<String>(streamError);
        const Level& level = levels.back();
        if (level.isArray) {
            if (level.next >= level.values->size())
                return Unexpected<String>("No values are left in " + describeKey(key) + ".");
            return Slot { &(*level.values)[level.next], level.next };
        }
        const auto pair = findPair(key);
        if (!pair)
            return Unexpected<String>("The stream has no value " + describeKey(key) + ".");
        return Slot { &(*level.values)[2 * *pair + 1], *pair };
    }

    void take(const Slot& slot)
    {
        Level& level = levels.back();
        if (level.isArray) {
            ++level.next;
            return;
        }
        level.taken[slot.index] = true;
        while (level.next < level.taken.size() && level.taken[level.next])
            ++level.next;
    }

    String wrongKind(StringView key, const Json& value, const char* wanted) const
    {
        return "The value " + describeKey(key) + " is " + kindName(value) + ", not " + wanted + ".";
    }

    // A record must be a list of string keys each followed by a value.
    static bool isWellFormedRecord(const Json& value)
    {
        if (!value.is_array() || value.size() % 2 != 0)
            return false;
        for (std::size_t i = 0; i < value.size(); i += 2)
            if (!value[i].is_string())
                return false;
        return true;
    }

    void push(const Json* values, bool isArray, StringView name)
    {
        Level level { values, isArray, String(name) };
        if (!isArray)
            level.taken.assign(values->size() / 2, false);
        levels.push_back(std::move(level));
    }

    template <class T, class Check> Expected<T, String> read(StringView key, const char* wanted, Check check)
    {
        const auto slot = locate(key);
        if (!slot)
            return Unexpected<String>(slot.error());
        Optional<T> value = check(*slot->value);
        if (!value)
            return Unexpected<String>(wrongKind(key, *slot->value, wanted));
        take(*slot);
        return std::move(*value);
    }
};

CborDeserializer::CborDeserializer(ArrayView<const std::byte> bytes)
    : impl(std::make_unique<Impl>())
{
    DocumentBuilder builder;
    const auto* begin = reinterpret_cast<const std::uint8_t*>(bytes.data());
    bool parsed = false;
    try {
        parsed = Json::sax_parse(begin, begin + bytes.size(), &builder, Json::input_format_t::cbor, true);
    } catch (const std::exception& e) {
        // The parser reports through parse_error; this only catches what escapes it (out of memory and the like).
        builder.error = String("The stream cannot be read: ") + e.what();
    }
    if (!parsed || !builder.error.empty()) {
        impl->streamError = builder.error.empty() ? "The stream is truncated or corrupted." : builder.error;
        impl->push(&impl->document, true, {});
        return;
    }
    impl->document = std::move(builder.root);
    if (!Impl::isWellFormedRecord(impl->document)) {
        impl->streamError = "The stream is corrupted: it does not start with a record.";
        impl->document = Json::array();
    }
    impl->push(&impl->document, false, {});
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
    const Json& root = impl->document;
    if (root.size() < 2 || root[0].get_ref<const String&>() != CborSerializer::VERSION_KEY)
        return Unexpected<String>("The stream has no format version.");
    if (impl->levels.back().taken[0])
        return Unexpected<String>("The format version has been read already.");
    if (!root[1].is_number_unsigned() || root[1].get<std::uint64_t>() > std::numeric_limits<std::uint32_t>::max())
        return Unexpected<String>("The format version of the stream is not a 32-bit unsigned integer.");
    impl->take({ &root[1], 0 });
    return static_cast<std::uint32_t>(root[1].get<std::uint64_t>());
}

IDeserializer::Result<void> CborDeserializer::enterRecord(StringView key)
{
    const auto slot = impl->locate(key);
    if (!slot)
        return Unexpected<String>(slot.error());
    if (!slot->value->is_array())
        return Unexpected<String>(impl->wrongKind(key, *slot->value, "a record"));
    if (!Impl::isWellFormedRecord(*slot->value))
        return Unexpected<String>(
            "The stream is corrupted: " + impl->describeKey(key) + " is not a list of keys and values.");
    const String name = impl->levels.back().isArray ? std::to_string(impl->levels.back().next) : String(key);
    impl->take(*slot);
    impl->push(slot->value, false, name);
    return {};
}

void CborDeserializer::leaveRecord()
{
    if (impl->levels.size() < 2 || impl->levels.back().isArray)
        Detail::throwStopException("io/CborDeserializer", __LINE__);
    impl->levels.pop_back();
}

IDeserializer::Result<std::size_t> CborDeserializer::enterArray(StringView key)
{
    const auto slot = impl->locate(key);
    if (!slot)
        return Unexpected<String>(slot.error());
    const Json* values = wrapped(*slot->value, CborSerializer::ARRAY_KEY);
    if (!values)
        return Unexpected<String>(impl->wrongKind(key, *slot->value, "an array"));
    if (!values->is_array())
        return Unexpected<String>("The stream is corrupted: " + impl->describeKey(key) + " holds no list of values.");
    const String name = impl->levels.back().isArray ? std::to_string(impl->levels.back().next) : String(key);
    impl->take(*slot);
    impl->push(values, true, name);
    return values->size();
}

void CborDeserializer::leaveArray()
{
    if (impl->levels.size() < 2 || !impl->levels.back().isArray)
        Detail::throwStopException("io/CborDeserializer", __LINE__);
    impl->levels.pop_back();
}

bool CborDeserializer::hasKey(StringView key) const
{
    if (!impl->streamError.empty())
        return false;
    const auto& level = impl->levels.back();
    if (level.isArray)
        return level.next < level.values->size();
    return impl->findPair(key).has_value();
}

IDeserializer::Result<bool> CborDeserializer::readBool(StringView key)
{
    return impl->read<bool>(key, "a boolean",
        [](const Json& v) -> Optional<bool> { return v.is_boolean() ? Optional<bool>(v.get<bool>()) : std::nullopt; });
}

IDeserializer::Result<std::int64_t> CborDeserializer::readInt(StringView key)
{
    return impl->read<std::int64_t>(key, "a signed 64-bit integer", [](const Json& v) -> Optional<std::int64_t> {
        if (v.is_number_integer() && !v.is_number_unsigned())
            return v.get<std::int64_t>();
        if (v.is_number_unsigned() && v.get<std::uint64_t>() <= std::uint64_t(std::numeric_limits<std::int64_t>::max()))
            return static_cast<std::int64_t>(v.get<std::uint64_t>());
        return {};
    });
}

IDeserializer::Result<std::uint64_t> CborDeserializer::readUInt(StringView key)
{
    return impl->read<std::uint64_t>(key, "an unsigned 64-bit integer", [](const Json& v) -> Optional<std::uint64_t> {
        if (v.is_number_unsigned())
            return v.get<std::uint64_t>();
        if (v.is_number_integer() && v.get<std::int64_t>() >= 0)
            return static_cast<std::uint64_t>(v.get<std::int64_t>());
        return {};
    });
}

IDeserializer::Result<double> CborDeserializer::readFloat(StringView key)
{
    return impl->read<double>(key, "a floating-point number", [](const Json& v) -> Optional<double> {
        return v.is_number_float() ? Optional<double>(v.get<double>()) : std::nullopt;
    });
}

IDeserializer::Result<String> CborDeserializer::readString(StringView key)
{
    return impl->read<String>(key, "a string", [](const Json& v) -> Optional<String> {
        return v.is_string() ? Optional<String>(v.get_ref<const String&>()) : std::nullopt;
    });
}

IDeserializer::Result<Array<std::byte>> CborDeserializer::readBytes(StringView key)
{
    return impl->read<Array<std::byte>>(key, "a byte array", [](const Json& v) -> Optional<Array<std::byte>> {
        if (!v.is_binary() || v.get_binary().has_subtype())
            return {};
        const auto& source = v.get_binary();
        Array<std::byte> bytes(source.size());
        if (!source.empty())
            std::memcpy(bytes.data(), source.data(), source.size());
        return bytes;
    });
}

IDeserializer::Result<std::uint64_t> CborDeserializer::readEntityReference(StringView key)
{
    return impl->read<std::uint64_t>(key, "an entity reference", [](const Json& v) -> Optional<std::uint64_t> {
        const Json* id = wrapped(v, CborSerializer::ENTITY_KEY);
        if (!id || !id->is_number_unsigned())
            return {};
        return id->get<std::uint64_t>();
    });
}

} // namespace Marlix
