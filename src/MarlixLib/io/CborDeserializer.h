#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/io/IDeserializer.h>

namespace Marlix {

/// Reads a stream written by CborSerializer.
///
/// The whole stream is checked in one pass when the reader is made, without building anything from it; values are
/// decoded where they lie when they are read. A stream that is truncated, corrupt or nested deeper than MAX_DEPTH
/// makes every read fail with the same message. Within a record, a read takes the first value of that key not read
/// yet, so repeated keys come back in the order they were written and distinct keys may be read in any order (reading
/// in the written order is the fast path). Inside an array the key is ignored and values come in order; hasKey() then
/// tells whether one is left. A read that fails changes nothing, so a caller can try another kind or skip an optional
/// key. Nothing is thrown: only leaving a record or array that is not open (a programming error) is a stop error.
class MARLIXLIB_EXPORT CborDeserializer final : public IDeserializer
{
public:
    static constexpr std::size_t MAX_DEPTH = 200; ///< Deeper nesting makes the stream an error (no stack overflow).

    /// Reads `bytes` in place: they must outlive the reader.
    explicit CborDeserializer(ArrayView<const std::byte> bytes);
    /// Keeps the bytes for as long as the reader lives.
    explicit CborDeserializer(Array<std::byte>&& bytes);
    ~CborDeserializer() override;
    CborDeserializer(const CborDeserializer&) = delete;
    CborDeserializer& operator=(const CborDeserializer&) = delete;

    /// Empty when the stream decoded; otherwise the message every read returns.
    const String& getStreamError() const noexcept;

    Result<std::uint32_t> deserializeFormatVersion() override;

    Result<void> enterRecord(StringView key) override;
    void leaveRecord() override;
    Result<std::size_t> enterArray(StringView key) override;
    void leaveArray() override;
    bool hasKey(StringView key) const override;

    Result<bool> readBool(StringView key) override;
    Result<std::int64_t> readInt(StringView key) override;
    Result<std::uint64_t> readUInt(StringView key) override;
    Result<double> readFloat(StringView key) override;
    Result<String> readString(StringView key) override;
    Result<Array<std::byte>> readBytes(StringView key) override;
    Result<std::uint64_t> readEntityReference(StringView key) override;

private:
    struct Impl;
    UniquePtr<Impl> impl;
};

} // namespace Marlix
