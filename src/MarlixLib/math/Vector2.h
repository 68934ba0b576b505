#pragma once

#include <cmath>

namespace Marlix {

/// A 2D vector of doubles: viewport positions and sizes, curve points, texture coordinates.
struct Vector2
{
    double x = 0.0;
    double y = 0.0;

    constexpr Vector2() = default;
    constexpr Vector2(double x, double y)
        : x(x)
        , y(y)
    {
    }

    constexpr Vector2& operator+=(const Vector2& o)
    {
        x += o.x;
        y += o.y;
        return *this;
    }
    constexpr Vector2& operator-=(const Vector2& o)
    {
        x -= o.x;
        y -= o.y;
        return *this;
    }
    constexpr Vector2& operator*=(double s)
    {
        x *= s;
        y *= s;
        return *this;
    }

    friend constexpr Vector2 operator+(Vector2 a, const Vector2& b) { return a += b; }
    friend constexpr Vector2 operator-(Vector2 a, const Vector2& b) { return a -= b; }
    friend constexpr Vector2 operator-(const Vector2& a) { return { -a.x, -a.y }; }
    friend constexpr Vector2 operator*(Vector2 a, double s) { return a *= s; }
    friend constexpr Vector2 operator*(double s, Vector2 a) { return a *= s; }
    friend constexpr Vector2 operator/(const Vector2& a, double s) { return { a.x / s, a.y / s }; }
    friend constexpr bool operator==(const Vector2&, const Vector2&) = default;

    constexpr double dot(const Vector2& o) const { return x * o.x + y * o.y; }
    constexpr double lengthSquared() const { return dot(*this); }
    double length() const { return std::hypot(x, y); }
};

} // namespace Marlix
