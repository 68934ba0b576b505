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
    /// The version of the format the writer's caller uses; the first thing written, once.
    virtual void serializeFormatVersion(std::uint32_t version) = 0;

    /// Opens a nested record under \p key; the following values belong to it until endRecord().
    virtual void beginRecord(StringView key) = 0;
    virtual void endRecord() = 0; ///< Closes the innermost record.
    /// Opens an array of \p count values under \p key; exactly that many values follow, their keys ignored.
    virtual void beginArray(StringView key, std::size_t count) = 0;
    virtual void endArray() = 0; ///< Closes the innermost array.

    virtual void writeBool(StringView key, bool value) = 0; ///< Writes a boolean under \p key.
    virtual void writeInt(StringView key, std::int64_t value) = 0; ///< Writes a signed integer under \p key.
    virtual void writeUInt(StringView key, std::uint64_t value) = 0; ///< Writes an unsigned integer under \p key.
    /// Writes a floating-point number under \p key; NaN and infinities are kept as they are.
    virtual void writeFloat(StringView key, double value) = 0;
    virtual void writeString(StringView key, StringView value) = 0; ///< Writes UTF-8 text under \p key.
    virtual void writeBytes(StringView key, ArrayView<const std::byte> value) = 0; ///< Writes raw bytes under \p key.
    /// Writes a reference to the entity with identity \p entityId under \p key; 0 stands for "no entity".
    virtual void writeEntityReference(StringView key, std::uint64_t entityId) = 0;
};

} // namespace Marlix
