#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Polymorphic.h>

#include <cstddef>
#include <cstdint>

namespace Marlix {

/// Reads what an ISerializer wrote. Every failure (a missing key, a value of another kind, a truncated or corrupt
/// stream) is an error message; nothing is thrown and nothing outside the reader changes.
class MARLIXLIB_EXPORT IDeserializer : public Polymorphic
{
public:
    template <class T> using Result = Expected<T, String>;

    virtual Result<std::uint32_t> deserializeFormatVersion() = 0;

    virtual Result<void> enterRecord(StringView key) = 0;
    virtual void leaveRecord() = 0;
    /// Enters an array and returns its length; its values are then read in order with any key.
    virtual Result<std::size_t> enterArray(StringView key) = 0;
    virtual void leaveArray() = 0;
    virtual bool hasKey(StringView key) const = 0;

    virtual Result<bool> readBool(StringView key) = 0;
    virtual Result<std::int64_t> readInt(StringView key) = 0;
    virtual Result<std::uint64_t> readUInt(StringView key) = 0;
    virtual Result<double> readFloat(StringView key) = 0;
    virtual Result<String> readString(StringView key) = 0;
    virtual Result<Array<std::byte>> readBytes(StringView key) = 0;
    /// The identity written by ISerializer::writeEntityReference; 0 for "no entity".
    virtual Result<std::uint64_t> readEntityReference(StringView key) = 0;
};

} // namespace Marlix
