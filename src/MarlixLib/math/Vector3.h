#pragma once

#include <cmath>

namespace Marlix {

/// Three doubles with component-wise arithmetic: Euler angles, scale factors, shear. Positions and directions have
/// their own types (Pos, Dir) so that a point cannot be added to a point by mistake.
struct Vector3
{
    double x = 0.0; ///< The first component.
    double y = 0.0; ///< The second component.
    double z = 0.0; ///< The third component.

    constexpr Vector3() = default; ///< All components zero.
    /// The components (\p x, \p y, \p z).
    constexpr Vector3(double x, double y, double z)
        : x(x)
        , y(y)
        , z(z)
    {
    }

    /// Component \p i: 0 is x, 1 is y, any other index z.
    constexpr double operator[](int i) const { return i == 0 ? x : i == 1 ? y : z; }
    constexpr double& operator[](int i) { return i == 0 ? x : i == 1 ? y : z; } ///< \overload

    /// The component-wise sum.
    friend constexpr Vector3 operator+(const Vector3& a, const Vector3& b)
    {
        return { a.x + b.x, a.y + b.y, a.z + b.z };
    }
    /// The component-wise difference.
    friend constexpr Vector3 operator-(const Vector3& a, const Vector3& b)
    {
        return { a.x - b.x, a.y - b.y, a.z - b.z };
    }
    /// Scales every component by \p s.
    friend constexpr Vector3 operator*(const Vector3& a, double s) { return { a.x * s, a.y * s, a.z * s }; }
    /// Scales every component by \p s.
    friend constexpr Vector3 operator*(double s, const Vector3& a) { return a * s; }
    friend constexpr bool operator==(const Vector3&, const Vector3&) = default; ///< Exact component-wise comparison.
};

} // namespace Marlix
