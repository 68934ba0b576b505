#pragma once

#include <cstdint>

namespace Marlix {

/// An 8-bit colour as images and displays store it. No transfer function is implied: the owner of the bytes says
/// whether they are linear or display-encoded.
struct RgbBytes
{
    std::uint8_t r = 0;
    std::uint8_t g = 0;
    std::uint8_t b = 0;

    friend constexpr bool operator==(const RgbBytes&, const RgbBytes&) = default;
};

/// RgbBytes with an 8-bit straight alpha.
struct RgbaBytes
{
    std::uint8_t r = 0;
    std::uint8_t g = 0;
    std::uint8_t b = 0;
    std::uint8_t a = 255;

    friend constexpr bool operator==(const RgbaBytes&, const RgbaBytes&) = default;
};

static_assert(sizeof(RgbBytes) == 3 && sizeof(RgbaBytes) == 4, "pixel types are stored packed in bitmaps");

} // namespace Marlix
