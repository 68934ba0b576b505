#pragma once

// The CBOR items of the scene stream format, shared by its reader and the reader's stream check. Not part of the API.

#include <MarlixLib/base/Aliases.h>

#include <cstddef>
#include <cstdint>

namespace Marlix::Detail::Cbor {

enum Major : std::uint8_t
{
    UnsignedMajor = 0,
    NegativeMajor = 1,
    BytesMajor = 2,
    TextMajor = 3,
    ArrayMajor = 4,
    MapMajor = 5,
    TagMajor = 6,
    SimpleMajor = 7,
};

/// The head of an item: its major type, the low five bits and the argument they announce. For floats the argument is
/// the bits of the number; `size` counts the head's bytes, those bits included.
struct Head
{
    std::uint8_t major;
    std::uint8_t info;
    std::uint64_t argument;
    std::size_t size;
};

// Only for a stream already checked: no bounds, no reserved values.
inline Head headAt(const std::uint8_t* at)
{
    Head head { std::uint8_t(at[0] >> 5), std::uint8_t(at[0] & 31), 0, 1 };
    if (head.info < 24) {
        head.argument = head.info;
        return head;
    }
    const std::size_t length = std::size_t(1) << (head.info - 24);
    for (std::size_t i = 0; i < length; ++i)
        head.argument = (head.argument << 8) | at[1 + i];
    head.size += length;
    return head;
}

/// Checks a whole stream in one pass: well-formed CBOR of the kinds the writer uses, nesting at most `maxDepth` deep,
/// one root item and nothing after it, and the shape of the format: every CBOR array outside an array wrapper is a
/// record of string keys each followed by a value. Returns the message for the first problem, or nothing.
String checkStream(const std::uint8_t* data, std::size_t size, std::size_t maxDepth);

} // namespace Marlix::Detail::Cbor
