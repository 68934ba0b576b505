#pragma once

#include <cmath>

namespace Marlix {

/// A direction or displacement in 3D space (not necessarily of unit length). The difference of two Pos is a Dir.
struct Dir
{
    double x = 0.0; ///< The X component.
    double y = 0.0; ///< The Y component.
    double z = 0.0; ///< The Z component.

    constexpr Dir() = default; ///< The zero vector.
    /// The vector (\p x, \p y, \p z).
    constexpr Dir(double x, double y, double z)
        : x(x)
        , y(y)
        , z(z)
    {
    }

    /// Component \p i: 0 is X, 1 is Y, any other index Z.
    constexpr double operator[](int i) const { return i == 0 ? x : i == 1 ? y : z; }
    constexpr double& operator[](int i) { return i == 0 ? x : i == 1 ? y : z; } ///< \overload

    /// The component-wise sum.
    friend constexpr Dir operator+(const Dir& a, const Dir& b) { return { a.x + b.x, a.y + b.y, a.z + b.z }; }
    /// The component-wise difference.
    friend constexpr Dir operator-(const Dir& a, const Dir& b) { return { a.x - b.x, a.y - b.y, a.z - b.z }; }
    friend constexpr Dir operator-(const Dir& a) { return { -a.x, -a.y, -a.z }; } ///< The opposite direction.
    /// Scales every component by \p s.
    friend constexpr Dir operator*(const Dir& a, double s) { return { a.x * s, a.y * s, a.z * s }; }
    friend constexpr Dir operator*(double s, const Dir& a) { return a * s; } ///< Scales every component by \p s.
    /// Divides every component by \p s (no check for zero).
    friend constexpr Dir operator/(const Dir& a, double s) { return { a.x / s, a.y / s, a.z / s }; }
    friend constexpr bool operator==(const Dir&, const Dir&) = default; ///< Exact component-wise comparison.

    constexpr double dot(const Dir& o) const { return x * o.x + y * o.y + z * o.z; } ///< The dot product.
    /// The right-handed cross product this x \p o.
    constexpr Dir cross(const Dir& o) const { return { y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x }; }
    /// The squared length, cheaper than length() for comparisons.
    constexpr double lengthSquared() const { return dot(*this); }
    double length() const { return std::sqrt(lengthSquared()); } ///< The Euclidean length.
    /// The unit vector of the same direction; the zero vector stays zero.
    Dir normalized() const
    {
        const double l = length();
        return l > 0.0 ? *this / l : Dir {};
    }
};

} // namespace Marlix
