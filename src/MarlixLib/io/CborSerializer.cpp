#include <MarlixLib/base/Exception.h>
#include <MarlixLib/io/CborSerializer.h>

#include <cstring>
#include <nlohmann/json.hpp>

namespace Marlix {

using Json = nlohmann::json;

struct CborSerializer::Impl
{
    struct Level
    {
        Json* values; // the pair list of a record, the value list of an array
        bool isArray;
        std::size_t declaredCount;
    };

    Json root = Json::array();
    Array<Level> levels { Level { &root, false, 0 } };
    bool versionWritten = false;

    // Appends one value under the key in the innermost level and returns it.
    Json& add(StringView key, Json value)
    {
        if (!versionWritten)
            Detail::throwStopException("io/CborSerializer", __LINE__);
        Level& level = levels.back();
        if (level.isArray) {
            if (level.values->size() >= level.declaredCount)
                Detail::throwStopException("io/CborSerializer", __LINE__);
        } else {
            level.values->push_back(String(key));
        }
        level.values->push_back(std::move(value));
        return level.values->back();
    }
};

CborSerializer::CborSerializer()
    : impl(std::make_unique<Impl>())
{
}

CborSerializer::~CborSerializer() = default;

void CborSerializer::serializeFormatVersion(std::uint32_t version)
{
    if (impl->versionWritten)
        Detail::throwStopException("io/CborSerializer", __LINE__);
    impl->root.push_back(String(VERSION_KEY));
    impl->root.push_back(version);
    impl->versionWritten = true;
}

void CborSerializer::beginRecord(StringView key)
{
    Json& record = impl->add(key, Json::array());
    impl->levels.push_back({ &record, false, 0 });
}

void CborSerializer::endRecord()
{
    if (impl->levels.size() < 2 || impl->levels.back().isArray)
        Detail::throwStopException("io/CborSerializer", __LINE__);
    impl->levels.pop_back();
}

void CborSerializer::beginArray(StringView key, std::size_t count)
{
    Json& wrapper = impl->add(key, Json::object());
    Json& values = wrapper[String(ARRAY_KEY)] = Json::array();
    values.get_ref<Json::array_t&>().reserve(count);
    impl->levels.push_back({ &values, true, count });
}

void CborSerializer::endArray()
{
    if (impl->levels.size() < 2 || !impl->levels.back().isArray)
        Detail::throwStopException("io/CborSerializer", __LINE__);
    // A short array would make the reader's element count a lie.
    if (impl->levels.back().values->size() != impl->levels.back().declaredCount)
        Detail::throwStopException("io/CborSerializer", __LINE__);
    impl->levels.pop_back();
}

void CborSerializer::writeBool(StringView key, bool value)
{
    impl->add(key, value);
}

void CborSerializer::writeInt(StringView key, std::int64_t value)
{
    impl->add(key, value);
}

void CborSerializer::writeUInt(StringView key, std::uint64_t value)
{
    impl->add(key, value);
}

void CborSerializer::writeFloat(StringView key, double value)
{
    impl->add(key, value);
}

void CborSerializer::writeString(StringView key, StringView value)
{
    impl->add(key, String(value));
}

void CborSerializer::writeBytes(StringView key, ArrayView<const std::byte> value)
{
    const auto* data = reinterpret_cast<const std::uint8_t*>(value.data());
    impl->add(key, Json::binary(Json::binary_t::container_type(data, data + value.size())));
}

void CborSerializer::writeEntityReference(StringView key, std::uint64_t entityId)
{
    Json reference = Json::object();
    reference[String(ENTITY_KEY)] = entityId;
    impl->add(key, std::move(reference));
}

Array<std::byte> CborSerializer::getBytes() const
{
    if (impl->levels.size() != 1 || !impl->versionWritten)
        Detail::throwStopException("io/CborSerializer", __LINE__);
    Array<std::byte> bytes;
    const std::vector<std::uint8_t> encoded = Json::to_cbor(impl->root);
    bytes.resize(encoded.size());
    std::memcpy(bytes.data(), encoded.data(), encoded.size());
    return bytes;
}

} // namespace Marlix
