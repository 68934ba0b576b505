#pragma once

#include <cmath>

namespace Marlix {

/// A 2D vector of doubles: viewport positions and sizes, curve points, texture coordinates.
struct Vector2
{
    double x = 0.0; ///< The X component.
    double y = 0.0; ///< The Y component.

    constexpr Vector2() = default; ///< The zero vector.
    /// The vector (\p x, \p y).
    constexpr Vector2(double x, double y)
        : x(x)
        , y(y)
    {
    }

    /// Adds \p o component-wise.
    constexpr Vector2& operator+=(const Vector2& o)
    {
        x += o.x;
        y += o.y;
        return *this;
    }
    /// Subtracts \p o component-wise.
    constexpr Vector2& operator-=(const Vector2& o)
    {
        x -= o.x;
        y -= o.y;
        return *this;
    }
    /// Scales both components by \p s.
    constexpr Vector2& operator*=(double s)
    {
        x *= s;
        y *= s;
        return *this;
    }

    friend constexpr Vector2 operator+(Vector2 a, const Vector2& b) { return a += b; } ///< The component-wise sum.
    /// The component-wise difference.
    friend constexpr Vector2 operator-(Vector2 a, const Vector2& b) { return a -= b; }
    friend constexpr Vector2 operator-(const Vector2& a) { return { -a.x, -a.y }; } ///< The opposite vector.
    friend constexpr Vector2 operator*(Vector2 a, double s) { return a *= s; } ///< Scales both components by \p s.
    friend constexpr Vector2 operator*(double s, Vector2 a) { return a *= s; } ///< Scales both components by \p s.
    /// Divides both components by \p s (no check for zero).
    friend constexpr Vector2 operator/(const Vector2& a, double s) { return { a.x / s, a.y / s }; }
    friend constexpr bool operator==(const Vector2&, const Vector2&) = default; ///< Exact component-wise comparison.

    constexpr double dot(const Vector2& o) const { return x * o.x + y * o.y; } ///< The dot product.
    /// The squared length, cheaper than length() for comparisons.
    constexpr double lengthSquared() const { return dot(*this); }
    double length() const { return std::hypot(x, y); } ///< The Euclidean length, without overflow for large components.
};

} // namespace Marlix
