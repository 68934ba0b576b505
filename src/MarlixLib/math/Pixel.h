#pragma once

#include <cstdint>

namespace Marlix {

/// A whole-pixel position or size in an image (x to the right, y down).
struct Pixel
{
    std::int32_t x = 0;
    std::int32_t y = 0;

    constexpr Pixel() = default;
    constexpr Pixel(std::int32_t x, std::int32_t y)
        : x(x)
        , y(y)
    {
    }

    friend constexpr Pixel operator+(const Pixel& a, const Pixel& b) { return { a.x + b.x, a.y + b.y }; }
    friend constexpr Pixel operator-(const Pixel& a, const Pixel& b) { return { a.x - b.x, a.y - b.y }; }
    friend constexpr bool operator==(const Pixel&, const Pixel&) = default;
};

} // namespace Marlix
