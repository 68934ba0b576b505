#pragma once

#include <limits>

namespace Marlix {

/// A colour in linear RGB with straight (not premultiplied) alpha. Components are normalised so that 1 is full
/// intensity; light sources may go above 1.
struct Rgb
{
    float r = 0.0f; ///< Red, linear.
    float g = 0.0f; ///< Green, linear.
    float b = 0.0f; ///< Blue, linear.
    float a = 1.0f; ///< Opacity, 0 transparent to 1 opaque.

    constexpr Rgb() = default; ///< Opaque black.
    /// The components as given; nothing is clamped.
    constexpr Rgb(float r, float g, float b, float a = 1.0f)
        : r(r)
        , g(g)
        , b(b)
        , a(a)
    {
    }

    /// The component-wise sum, alpha included (for blending weighted colours).
    friend constexpr Rgb operator+(const Rgb& x, const Rgb& y)
    {
        return { x.r + y.r, x.g + y.g, x.b + y.b, x.a + y.a };
    }
    /// Scales the colour; alpha stays.
    friend constexpr Rgb operator*(const Rgb& x, float s) { return { x.r * s, x.g * s, x.b * s, x.a }; }
    friend constexpr bool operator==(const Rgb&, const Rgb&) = default; ///< Exact comparison of all four components.

    /// The colour with a finite number in every component, for colours that come from outside: a component that is
    /// not a number reads as 0 (alpha as 1, so that the colour stays visible), an infinity as 1 or 0 by its sign.
    constexpr Rgb toFinite() const
    {
        const auto finite = [](float c, float ifNaN) {
            if (c != c) // NaN
                return ifNaN;
            if (c > std::numeric_limits<float>::max())
                return 1.0f;
            return c < std::numeric_limits<float>::lowest() ? 0.0f : c;
        };
        return { finite(r, 0.0f), finite(g, 0.0f), finite(b, 0.0f), finite(a, 1.0f) };
    }
};

} // namespace Marlix
