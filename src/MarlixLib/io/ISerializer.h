#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Polymorphic.h>

#include <cstddef>
#include <cstdint>

namespace Marlix {

/// Writes keyed records. A stream starts with its format version; records nest; inside an array the keys of the
/// values are ignored and the order counts. Entity references are written as identities and resolved by the reader.
class MARLIXLIB_EXPORT ISerializer : public Polymorphic
{
public:
    virtual void serializeFormatVersion(std::uint32_t version) = 0;

    virtual void beginRecord(StringView key) = 0;
    virtual void endRecord() = 0;
    virtual void beginArray(StringView key, std::size_t count) = 0;
    virtual void endArray() = 0;

    virtual void writeBool(StringView key, bool value) = 0;
    virtual void writeInt(StringView key, std::int64_t value) = 0;
    virtual void writeUInt(StringView key, std::uint64_t value) = 0;
    virtual void writeFloat(StringView key, double value) = 0;
    virtual void writeString(StringView key, StringView value) = 0;
    virtual void writeBytes(StringView key, ArrayView<const std::byte> value) = 0;
    /// 0 stands for "no entity".
    virtual void writeEntityReference(StringView key, std::uint64_t entityId) = 0;
};

} // namespace Marlix
