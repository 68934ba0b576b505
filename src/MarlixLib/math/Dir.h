#pragma once

#include <cmath>

namespace Marlix {

/// A direction or displacement in 3D space (not necessarily of unit length). The difference of two Pos is a Dir.
struct Dir
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    constexpr Dir() = default;
    constexpr Dir(double x, double y, double z)
        : x(x)
        , y(y)
        , z(z)
    {
    }

    constexpr double operator[](int i) const { return i == 0 ? x : i == 1 ? y : z; }
    constexpr double& operator[](int i) { return i == 0 ? x : i == 1 ? y : z; }

    friend constexpr Dir operator+(const Dir& a, const Dir& b) { return { a.x + b.x, a.y + b.y, a.z + b.z }; }
    friend constexpr Dir operator-(const Dir& a, const Dir& b) { return { a.x - b.x, a.y - b.y, a.z - b.z }; }
    friend constexpr Dir operator-(const Dir& a) { return { -a.x, -a.y, -a.z }; }
    friend constexpr Dir operator*(const Dir& a, double s) { return { a.x * s, a.y * s, a.z * s }; }
    friend constexpr Dir operator*(double s, const Dir& a) { return a * s; }
    friend constexpr Dir operator/(const Dir& a, double s) { return { a.x / s, a.y / s, a.z / s }; }
    friend constexpr bool operator==(const Dir&, const Dir&) = default;

    constexpr double dot(const Dir& o) const { return x * o.x + y * o.y + z * o.z; }
    constexpr Dir cross(const Dir& o) const { return { y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x }; }
    constexpr double lengthSquared() const { return dot(*this); }
    double length() const { return std::sqrt(lengthSquared()); }
    /// The unit vector of the same direction; the zero vector stays zero.
    Dir normalized() const
    {
        const double l = length();
        return l > 0.0 ? *this / l : Dir {};
    }
};

} // namespace Marlix
