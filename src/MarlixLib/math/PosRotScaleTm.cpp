#include <MarlixLib/math/PosRotScaleTm.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Marlix {

namespace {

// Relative to the largest column: below this a column counts as lying in the span of the others.
constexpr double SINGULAR_TOLERANCE = 1e-12;
// cos(rotation.y) below this is treated as gimbal lock, where the X and Z rotations act about the same axis.
constexpr double GIMBAL_TOLERANCE = 1e-9;

Dir column(const Matrix4& m, int j)
{
    return { m(0, j), m(1, j), m(2, j) };
}

// atan2 returns [-pi, pi]; the canonical decomposition uses (-pi, pi] so that -pi and pi do not both appear.
double canonicalAngle(double a)
{
    return a <= -std::numbers::pi ? a + 2.0 * std::numbers::pi : a;
}

bool near(const Vector3& a, const Vector3& b, double tolerance)
{
    return std::abs(a.x - b.x) <= tolerance && std::abs(a.y - b.y) <= tolerance && std::abs(a.z - b.z) <= tolerance;
}

} // namespace

Matrix4 PosRotScaleTm::rotationMatrix(const Vector3& e)
{
    const double cx = std::cos(e.x), sx = std::sin(e.x);
    const double cy = std::cos(e.y), sy = std::sin(e.y);
    const double cz = std::cos(e.z), sz = std::sin(e.z);
    Matrix4 r;
    r(0, 0) = cy * cz;
    r(0, 1) = cz * sy * sx - sz * cx;
    r(0, 2) = cz * sy * cx + sz * sx;
    r(1, 0) = cy * sz;
    r(1, 1) = sz * sy * sx + cz * cx;
    r(1, 2) = sz * sy * cx - cz * sx;
    r(2, 0) = -sy;
    r(2, 1) = cy * sx;
    r(2, 2) = cy * cx;
    return r;
}

Matrix4 PosRotScaleTm::toMatrix() const
{
    // H * S, upper triangular.
    Matrix4 u;
    u(0, 0) = scale.x;
    u(0, 1) = shear.x * scale.y;
    u(0, 2) = shear.y * scale.z;
    u(1, 1) = scale.y;
    u(1, 2) = shear.z * scale.z;
    u(2, 2) = scale.z;
    Matrix4 m = rotationMatrix(rotation) * u;
    m(0, 3) = position.x;
    m(1, 3) = position.y;
    m(2, 3) = position.z;
    return m;
}

Expected<PosRotScaleTm, String> PosRotScaleTm::fromMatrix(const Matrix4& m)
{
    if (!m.isAffine())
        return Unexpected<String>("The matrix is not affine: its last row is not (0, 0, 0, 1).");
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            if (!std::isfinite(m(i, j)))
                return Unexpected<String>("The matrix has an element that is not a finite number.");

    // Gram-Schmidt on the columns: L = Q * U with Q orthonormal and U upper triangular = H * S.
    const Dir c0 = column(m, 0), c1 = column(m, 1), c2 = column(m, 2);
    const double largest = std::max({ c0.length(), c1.length(), c2.length() });
    const double epsilon = largest * SINGULAR_TOLERANCE;
    if (!(largest > 0.0))
        return Unexpected<String>("The matrix has no scale: its linear part is zero.");

    PosRotScaleTm tm;
    tm.position = { m(0, 3), m(1, 3), m(2, 3) };

    const double sx = c0.length();
    if (sx <= epsilon)
        return Unexpected<String>("The matrix is singular: its X axis has zero length.");
    const Dir q0 = c0 / sx;

    const double u01 = q0.dot(c1);
    const Dir r1 = c1 - q0 * u01;
    const double sy = r1.length();
    if (sy <= epsilon)
        return Unexpected<String>("The matrix is singular: its Y axis is parallel to its X axis.");
    const Dir q1 = r1 / sy;

    const double u02 = q0.dot(c2);
    const double u12 = q1.dot(c2);
    const Dir r2 = c2 - q0 * u02 - q1 * u12;
    double sz = r2.length();
    if (sz <= epsilon)
        return Unexpected<String>("The matrix is singular: its Z axis lies in the plane of its X and Y axes.");
    Dir q2 = r2 / sz;
    // A mirroring leaves Q left-handed; move the reflection into the Z scale so that Q is a rotation.
    if (q0.cross(q1).dot(q2) < 0.0) {
        q2 = -q2;
        sz = -sz;
    }

    tm.scale = { sx, sy, sz };
    tm.shear = { u01 / sy, u02 / sz, u12 / sz };

    // Euler angles of R = Rz * Ry * Rx with R = (q0 q1 q2) as columns.
    const double cy = std::hypot(q0.x, q0.y);
    if (cy > GIMBAL_TOLERANCE) {
        tm.rotation.x = canonicalAngle(std::atan2(q1.z, q2.z));
        tm.rotation.y = std::atan2(-q0.z, cy);
        tm.rotation.z = canonicalAngle(std::atan2(q0.y, q0.x));
    } else {
        // Gimbal lock: only rotation.x - rotation.z (or their sum) is defined; put it all into rotation.x.
        tm.rotation.y = q0.z < 0.0 ? std::numbers::pi / 2 : -std::numbers::pi / 2;
        tm.rotation.x = canonicalAngle(std::atan2(-q2.y, q1.y));
        tm.rotation.z = 0.0;
    }
    return tm;
}

bool PosRotScaleTm::isNear(const PosRotScaleTm& o, double tolerance) const
{
    return near({ position.x, position.y, position.z }, { o.position.x, o.position.y, o.position.z }, tolerance)
        && near(rotation, o.rotation, tolerance) && near(scale, o.scale, tolerance) && near(shear, o.shear, tolerance);
}

} // namespace Marlix
