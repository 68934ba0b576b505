#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/io/ISerializer.h>

namespace Marlix {

/// Writes a stream as CBOR (RFC 8949) into a byte array, encoding each value as it comes.
///
/// Layout: a record is a CBOR array of alternating keys and values, so that a key may repeat and the order is kept;
/// the stream is one root record whose first pair is VERSION_KEY with the format version. An array is a map with the
/// single key ARRAY_KEY holding a CBOR array of the values; an entity reference is a map with the single key
/// ENTITY_KEY holding the identity. Integers, floats, strings and byte arrays are the CBOR types of the same name.
class MARLIXLIB_EXPORT CborSerializer final : public ISerializer
{
public:
    static constexpr StringView VERSION_KEY = "@version"; ///< The key of the format version, first in the root record.
    static constexpr StringView ARRAY_KEY = "@"; ///< The one key of the map that wraps an array's values.
    static constexpr StringView ENTITY_KEY = "#"; ///< The one key of the map that wraps an entity identity.

    CborSerializer(); ///< An empty stream; serializeFormatVersion() comes next.
    ~CborSerializer() override;
    CborSerializer(const CborSerializer&) = delete;
    CborSerializer& operator=(const CborSerializer&) = delete;

    /// Must come first and only once; writing anything before it is a stop error.
    void serializeFormatVersion(std::uint32_t version) override;

    void beginRecord(StringView key) override;
    void endRecord() override;
    /// The array must receive exactly `count` values before endArray(); anything else is a stop error.
    void beginArray(StringView key, std::size_t count) override;
    void endArray() override;

    void writeBool(StringView key, bool value) override;
    void writeInt(StringView key, std::int64_t value) override;
    void writeUInt(StringView key, std::uint64_t value) override;
    void writeFloat(StringView key, double value) override;
    void writeString(StringView key, StringView value) override;
    void writeBytes(StringView key, ArrayView<const std::byte> value) override;
    void writeEntityReference(StringView key, std::uint64_t entityId) override;

    /// The encoded stream. Every record and array must be closed (a stop error otherwise).
    Array<std::byte> getBytes() const;
    /// getBytes() without the copy; the serializer starts over, empty.
    Array<std::byte> takeBytes();

private:
    struct Impl;
    UniquePtr<Impl> impl;
};

} // namespace Marlix
