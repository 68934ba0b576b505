#pragma once

#include <MarlixLib/color/Rgb.h>

#include <cmath>

namespace Marlix {

/// Hue, saturation and value of an RGB colour, all normalised: hue in [0, 1) as a fraction of the colour circle
/// (0 red, 1/3 green, 2/3 blue), saturation and value in [0, 1] for colours inside the unit cube. The conversions work
/// on the components as they are; they apply no transfer function.
struct Hsv
{
    float h = 0.0f; ///< Hue as a fraction of the colour circle, in [0, 1).
    float s = 0.0f; ///< Saturation, 0 grey to 1 pure.
    float v = 0.0f; ///< Value: the largest RGB component.
    float a = 1.0f; ///< Opacity, carried over unchanged.

    friend constexpr bool operator==(const Hsv&, const Hsv&) = default; ///< Exact comparison of all four components.

    /// The colour with these components; a hue outside [0, 1) wraps around the circle.
    constexpr Rgb toRgb() const
    {
        // A hue beyond ±2^23 has no fraction left in single precision and NaN has none at all: both read as 0, and
        // neither reaches the integer conversion, where they would be undefined.
        constexpr float NO_FRACTION = 8388608.0f;
        float hue = h > -NO_FRACTION && h < NO_FRACTION ? h - static_cast<float>(static_cast<long long>(h)) : 0.0f;
        if (hue < 0.0f)
            hue += 1.0f;
        const float sector = hue * 6.0f;
        const int i = static_cast<int>(sector) % 6;
        const float f = sector - static_cast<float>(static_cast<int>(sector));
        const float p = v * (1.0f - s);
        const float q = v * (1.0f - s * f);
        const float t = v * (1.0f - s * (1.0f - f));
        switch (i) {
        case 0:
            return { v, t, p, a };
        case 1:
            return { q, v, p, a };
        case 2:
            return { p, v, t, a };
        case 3:
            return { p, q, v, a };
        case 4:
            return { t, p, v, a };
        default:
            return { v, p, q, a };
        }
    }

    /// The hue, saturation and value of \p c; grey colours (no saturation) get hue 0.
    static constexpr Hsv fromRgb(const Rgb& c)
    {
        const float maximum = c.r > c.g ? (c.r > c.b ? c.r : c.b) : (c.g > c.b ? c.g : c.b);
        const float minimum = c.r < c.g ? (c.r < c.b ? c.r : c.b) : (c.g < c.b ? c.g : c.b);
        const float delta = maximum - minimum;
        Hsv result { 0.0f, maximum > 0.0f ? delta / maximum : 0.0f, maximum, c.a };
        if (delta <= 0.0f)
            return result;
        float hue;
        if (maximum == c.r)
            hue = (c.g - c.b) / delta;
        else if (maximum == c.g)
            hue = 2.0f + (c.b - c.r) / delta;
        else
            hue = 4.0f + (c.r - c.g) / delta;
        hue /= 6.0f;
        if (hue < 0.0f)
            hue += 1.0f;
        result.h = hue >= 1.0f ? 0.0f : hue;
        return result;
    }
};

} // namespace Marlix
