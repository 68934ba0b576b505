#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/math/Matrix4.h>
#include <MarlixLib/math/Pos.h>
#include <MarlixLib/math/Vector3.h>

namespace Marlix {

/// An affine transformation in editable parts: position, rotation, scale and shear.
///
/// The matrix is T * R * H * S (applied to column vectors, so the scale acts first):
/// - S scales the axes by `scale`;
/// - H is the unit upper-triangular shear: x += shear.x * y + shear.y * z, y += shear.z * z;
/// - R rotates by the Euler angles `rotation` in radians about the fixed axes X, then Y, then Z (R = Rz * Ry * Rx,
///   right-handed, counter-clockwise seen from the positive axis);
/// - T moves by `position`.
/// Every invertible affine matrix has exactly one such decomposition with scale.x > 0, scale.y > 0 (a mirroring shows
/// as a negative scale.z), rotation.x and rotation.z in (-pi, pi] and rotation.y in [-pi/2, pi/2]; at rotation.y =
/// +-pi/2 (gimbal lock) rotation.z is 0.
struct MARLIXLIB_EXPORT PosRotScaleTm
{
    Pos position; ///< The translation T.
    Vector3 rotation; ///< The Euler angles of R, in radians.
    Vector3 scale { 1.0, 1.0, 1.0 }; ///< The scale factors of S along X, Y and Z.
    Vector3 shear; ///< The shear factors of H: x by y, x by z, y by z.

    /// The 3x3 rotation R of the Euler angles, in the top-left corner of an otherwise identity matrix.
    static Matrix4 rotationMatrix(const Vector3& eulerAngles);

    Matrix4 toMatrix() const; ///< The affine matrix T * R * H * S.
    /// The unique decomposition described above; an error when the matrix is not affine or its linear part is singular.
    static Expected<PosRotScaleTm, String> fromMatrix(const Matrix4& matrix);

    /// True when every part has exactly its default value.
    bool isIdentity() const { return *this == PosRotScaleTm {}; }
    /// True when every part is within the tolerance (angles compared as they are, not modulo 2 pi).
    bool isNear(const PosRotScaleTm& o, double tolerance) const;

    friend bool operator==(const PosRotScaleTm&, const PosRotScaleTm&) = default; ///< Exact part-wise comparison.
};

} // namespace Marlix
