#pragma once

#include <MarlixLib/math/Dir.h>
#include <MarlixLib/math/Pos.h>

#include <array>

namespace Marlix {

/// A 4x4 matrix of doubles, row-major, acting on column vectors (p' = M p): the translation sits in the last column
/// and an affine matrix has (0, 0, 0, 1) as its last row.
struct Matrix4
{
    /// The elements, m[row][column]; the identity by default.
    std::array<std::array<double, 4>, 4> m { { { 1, 0, 0, 0 }, { 0, 1, 0, 0 }, { 0, 0, 1, 0 }, { 0, 0, 0, 1 } } };

    /// The element at \p row, \p column (0 to 3, unchecked).
    constexpr double operator()(int row, int column) const { return m[row][column]; }
    constexpr double& operator()(int row, int column) { return m[row][column]; } ///< \overload

    static constexpr Matrix4 identity() { return {}; } ///< The identity matrix.

    /// The product a * b, which applies \p b first and then \p a.
    friend constexpr Matrix4 operator*(const Matrix4& a, const Matrix4& b)
    {
        Matrix4 r;
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) {
                double sum = 0.0;
                for (int k = 0; k < 4; ++k)
                    sum += a.m[i][k] * b.m[k][j];
                r.m[i][j] = sum;
            }
        return r;
    }

    /// Applies the affine part to a point (the last row is not used: no projective division).
    constexpr Pos transform(const Pos& p) const
    {
        return { m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3],
            m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3],
            m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3] };
    }
    /// Applies the linear part to a direction: translation does not move directions.
    constexpr Dir transform(const Dir& d) const
    {
        return { m[0][0] * d.x + m[0][1] * d.y + m[0][2] * d.z, m[1][0] * d.x + m[1][1] * d.y + m[1][2] * d.z,
            m[2][0] * d.x + m[2][1] * d.y + m[2][2] * d.z };
    }

    /// True when the last row is exactly (0, 0, 0, 1).
    constexpr bool isAffine() const { return m[3][0] == 0.0 && m[3][1] == 0.0 && m[3][2] == 0.0 && m[3][3] == 1.0; }

    /// True when no element differs by more than the tolerance.
    constexpr bool isNear(const Matrix4& o, double tolerance) const
    {
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) {
                const double d = m[i][j] - o.m[i][j];
                if (d > tolerance || -d > tolerance)
                    return false;
            }
        return true;
    }

    /// Exact element-wise comparison; use isNear() after arithmetic.
    friend constexpr bool operator==(const Matrix4&, const Matrix4&) = default;
};

} // namespace Marlix
