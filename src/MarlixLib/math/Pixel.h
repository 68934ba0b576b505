#pragma once

#include <cstdint>

namespace Marlix {

/// A whole-pixel position or size in an image (x to the right, y down).
struct Pixel
{
    std::int32_t x = 0; ///< Pixels to the right of the origin.
    std::int32_t y = 0; ///< Pixels below the origin.

    constexpr Pixel() = default; ///< The origin (0, 0).
    /// The pixel (\p x, \p y).
    constexpr Pixel(std::int32_t x, std::int32_t y)
        : x(x)
        , y(y)
    {
    }

    /// The component-wise sum.
    friend constexpr Pixel operator+(const Pixel& a, const Pixel& b) { return { a.x + b.x, a.y + b.y }; }
    /// The component-wise difference.
    friend constexpr Pixel operator-(const Pixel& a, const Pixel& b) { return { a.x - b.x, a.y - b.y }; }
    friend constexpr bool operator==(const Pixel&, const Pixel&) = default; ///< Component-wise equality.
};

} // namespace Marlix
