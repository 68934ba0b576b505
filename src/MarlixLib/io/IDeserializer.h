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
    template <class T> using Result = Expected<T, String>; ///< A value read, or the message of what is wrong.

    /// The version the stream was written with; read it first to choose how to read the rest.
    virtual Result<std::uint32_t> deserializeFormatVersion() = 0;

    /// Enters the record under \p key; the following reads look inside it until leaveRecord().
    virtual Result<void> enterRecord(StringView key) = 0;
    /// Leaves the innermost record entered; values not read are skipped. Leaving none is a stop error.
    virtual void leaveRecord() = 0;
    /// Enters an array and returns its length; its values are then read in order with any key.
    virtual Result<std::size_t> enterArray(StringView key) = 0;
    virtual void leaveArray() = 0; ///< Leaves the innermost array entered; values not read are skipped.
    /// Whether a value under \p key is left to read here; inside an array, whether any value is left.
    virtual bool hasKey(StringView key) const = 0;

    /// The boolean under \p key; an error when it is missing or of another kind.
    virtual Result<bool> readBool(StringView key) = 0;
    /// The signed integer under \p key; an error when it is missing, of another kind or out of range.
    virtual Result<std::int64_t> readInt(StringView key) = 0;
    /// The unsigned integer under \p key; an error when it is missing, negative or of another kind.
    virtual Result<std::uint64_t> readUInt(StringView key) = 0;
    /// The floating-point number under \p key; an error when it is missing or an integer.
    virtual Result<double> readFloat(StringView key) = 0;
    virtual Result<String> readString(StringView key) = 0; ///< The UTF-8 text under \p key, or an error.
    virtual Result<Array<std::byte>> readBytes(StringView key) = 0; ///< The bytes under \p key, or an error.
    /// The identity written by ISerializer::writeEntityReference; 0 for "no entity".
    virtual Result<std::uint64_t> readEntityReference(StringView key) = 0;
};

} // namespace Marlix
