#pragma once

#include <MarlixLib/math/Dir.h>

namespace Marlix {

/// A point in 3D space. Points are moved by directions, and two points give the direction between them.
struct Pos
{
    double x = 0.0; ///< The X coordinate.
    double y = 0.0; ///< The Y coordinate.
    double z = 0.0; ///< The Z coordinate.

    constexpr Pos() = default; ///< The origin.
    /// The point (\p x, \p y, \p z).
    constexpr Pos(double x, double y, double z)
        : x(x)
        , y(y)
        , z(z)
    {
    }

    /// Coordinate \p i: 0 is X, 1 is Y, any other index Z.
    constexpr double operator[](int i) const { return i == 0 ? x : i == 1 ? y : z; }
    constexpr double& operator[](int i) { return i == 0 ? x : i == 1 ? y : z; } ///< \overload

    /// The point moved by \p d.
    friend constexpr Pos operator+(const Pos& p, const Dir& d) { return { p.x + d.x, p.y + d.y, p.z + d.z }; }
    /// The point moved back by \p d.
    friend constexpr Pos operator-(const Pos& p, const Dir& d) { return { p.x - d.x, p.y - d.y, p.z - d.z }; }
    /// The direction from \p b to \p a.
    friend constexpr Dir operator-(const Pos& a, const Pos& b) { return { a.x - b.x, a.y - b.y, a.z - b.z }; }
    friend constexpr bool operator==(const Pos&, const Pos&) = default; ///< Exact coordinate-wise comparison.

    /// The displacement from the origin to this point.
    constexpr Dir toDir() const { return { x, y, z }; }
};

} // namespace Marlix
