#pragma once

namespace Marlix {

/// A colour in linear RGB with straight (not premultiplied) alpha. Components are normalised so that 1 is full
/// intensity; light sources may go above 1.
struct Rgb
{
    float r = 0.0f;
    float g = 0.0f;
    float b = 0.0f;
    float a = 1.0f;

    constexpr Rgb() = default;
    constexpr Rgb(float r, float g, float b, float a = 1.0f)
        : r(r)
        , g(g)
        , b(b)
        , a(a)
    {
    }

    friend constexpr Rgb operator+(const Rgb& x, const Rgb& y)
    {
        return { x.r + y.r, x.g + y.g, x.b + y.b, x.a + y.a };
    }
    /// Scales the colour; alpha stays.
    friend constexpr Rgb operator*(const Rgb& x, float s) { return { x.r * s, x.g * s, x.b * s, x.a }; }
    friend constexpr bool operator==(const Rgb&, const Rgb&) = default;
};

} // namespace Marlix
