#pragma once

#include <cstdint>

namespace Marlix {

/// An 8-bit colour as images and displays store it. No transfer function is implied: the owner of the bytes says
/// whether they are linear or display-encoded.
struct RgbBytes
{
    std::uint8_t r = 0; ///< Red, 0 to 255.
    std::uint8_t g = 0; ///< Green, 0 to 255.
    std::uint8_t b = 0; ///< Blue, 0 to 255.

    friend constexpr bool operator==(const RgbBytes&, const RgbBytes&) = default; ///< Same bytes.
};

/// RgbBytes with an 8-bit straight alpha.
struct RgbaBytes
{
    std::uint8_t r = 0; ///< Red, 0 to 255.
    std::uint8_t g = 0; ///< Green, 0 to 255.
    std::uint8_t b = 0; ///< Blue, 0 to 255.
    std::uint8_t a = 255; ///< Opacity, 0 transparent to 255 opaque; the colour is not premultiplied by it.

    friend constexpr bool operator==(const RgbaBytes&, const RgbaBytes&) = default; ///< Same bytes.
};

static_assert(sizeof(RgbBytes) == 3 && sizeof(RgbaBytes) == 4, "pixel types are stored packed in bitmaps");

} // namespace Marlix
