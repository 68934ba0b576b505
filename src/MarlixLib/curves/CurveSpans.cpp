#include <MarlixLib/base/Exception.h>
#include <MarlixLib/curves/CurveSpans.h>

#include <algorithm>
#include <cmath>

namespace Marlix::Detail {

namespace {

double polynomial(const std::array<double, 4>& c, double u) noexcept
{
    return c[0] + u * (c[1] + u * (c[2] + u * c[3]));
}

double derivative(const std::array<double, 4>& c, double u) noexcept
{
    return c[1] + u * (2.0 * c[2] + u * 3.0 * c[3]);
}

// The cubic through a and b with the tangents ma and mb (per unit of u).
std::array<double, 4> hermite(double a, double b, double ma, double mb) noexcept
{
    return { a, ma, 3.0 * (b - a) - 2.0 * ma - mb, 2.0 * (a - b) + ma + mb };
}

CurveSpan linearSpan(const Vector2& a, const Vector2& b) noexcept
{
    return { { a.x, b.x - a.x, 0.0, 0.0 }, { a.y, b.y - a.y, 0.0, 0.0 }, true };
}

Array<CurveSpan> linearSpans(ArrayView<const CurvePoint> points)
{
    Array<CurveSpan> spans;
    for (std::size_t i = 0; i + 1 < points.size(); ++i)
        spans.push_back(linearSpan(points[i].position, points[i + 1].position));
    return spans;
}

// The natural spline: second derivatives zero at both ends, found by the tridiagonal (Thomas) solve.
Array<CurveSpan> naturalSplineSpans(ArrayView<const CurvePoint> points)
{
    const std::size_t n = points.size();
    Array<double> h(n - 1);
    for (std::size_t i = 0; i + 1 < n; ++i)
        h[i] = points[i + 1].position.x - points[i].position.x;
    const auto slope = [&](std::size_t i) { return (points[i + 1].position.y - points[i].position.y) / h[i]; };
    Array<double> m(n, 0.0);
    if (n > 2) {
        Array<double> diagonal(n - 2);
        Array<double> rhs(n - 2);
        for (std::size_t i = 1; i + 1 < n; ++i) {
            diagonal[i - 1] = 2.0 * (h[i - 1] + h[i]);
            rhs[i - 1] = 6.0 * (slope(i) - slope(i - 1));
        }
        for (std::size_t k = 1; k < n - 2; ++k) {
            const double factor = h[k] / diagonal[k - 1];
            diagonal[k] -= factor * h[k];
            rhs[k] -= factor * rhs[k - 1];
        }
        for (std::size_t k = n - 2; k-- > 0;)
            m[k + 1] = (rhs[k] - (k + 1 < n - 2 ? h[k + 1] * m[k + 2] : 0.0)) / diagonal[k];
    }
    Array<CurveSpan> spans;
    for (std::size_t i = 0; i + 1 < n; ++i) {
        const double hi = h[i];
        const double b = slope(i) - hi * (2.0 * m[i] + m[i + 1]) / 6.0;
        CurveSpan span = linearSpan(points[i].position, points[i + 1].position);
        // y as a cubic in t = x - x0, rewritten for u = t / h.
        span.y = { points[i].position.y, b * hi, m[i] / 2.0 * hi * hi, (m[i + 1] - m[i]) / 6.0 * hi * hi };
        spans.push_back(span);
    }
    return spans;
}

// Catmull-Rom in the plane, in the Barry-Goldman form with knot spacing |P(i+1) - P(i)|^alpha (0 uniform, 1 chordal).
// The ends get mirrored neighbours, so a straight run of points stays straight.
Array<CurveSpan> catmullRomSpans(ArrayView<const CurvePoint> points, double alpha)
{
    const std::size_t n = points.size();
    const auto at = [&](std::ptrdiff_t i) -> Vector2 {
        if (i < 0)
            return 2.0 * points[0].position - points[1].position;
        if (i >= std::ptrdiff_t(n))
            return 2.0 * points[n - 1].position - points[n - 2].position;
        return points[std::size_t(i)].position;
    };
    const auto knot = [alpha](const Vector2& a, const Vector2& b) { return std::pow((b - a).length(), alpha); };
    Array<CurveSpan> spans;
    for (std::size_t i = 0; i + 1 < n; ++i) {
        const auto s = std::ptrdiff_t(i);
        const Vector2 p0 = at(s - 1), p1 = at(s), p2 = at(s + 1), p3 = at(s + 2);
        const double d01 = knot(p0, p1), d12 = knot(p1, p2), d23 = knot(p2, p3);
        Vector2 m1 = d12 * ((p1 - p0) / d01 - (p2 - p0) / (d01 + d12) + (p2 - p1) / d12);
        Vector2 m2 = d12 * ((p2 - p1) / d12 - (p3 - p1) / (d12 + d23) + (p3 - p2) / d23);
        // A curve must stay a function of x: a tangent may not point back in x, and the tangents are shortened as
        // Fritsch and Carlson shorten slopes, which keeps x(u) rising over the span. Shortening whole tangents
        // rather than their x parts keeps a straight run of points straight.
        const double dx = p2.x - p1.x;
        m1.x = std::max(0.0, m1.x);
        m2.x = std::max(0.0, m2.x);
        const double a = m1.x / dx;
        const double b = m2.x / dx;
        if (const double r = a * a + b * b; r > 9.0) {
            const double tau = 3.0 / std::sqrt(r);
            m1 *= tau;
            m2 *= tau;
        }
        spans.push_back({ hermite(p1.x, p2.x, m1.x, m2.x), hermite(p1.y, p2.y, m1.y, m2.y), false });
    }
    return spans;
}

// Each span runs from a point through its right handle and the next point's left handle. Handles are held between the
// span's points in x, which keeps x(u) rising, so the span is a function of x whatever the user did with them.
Array<CurveSpan> bezierSpans(ArrayView<const CurvePoint> points)
{
    Array<CurveSpan> spans;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        const Vector2 p0 = points[i].position;
        const Vector2 p3 = points[i + 1].position;
        Vector2 c1 = points[i].rightHandle;
        Vector2 c2 = points[i + 1].leftHandle;
        c1.x = std::clamp(c1.x, p0.x, p3.x);
        c2.x = std::clamp(c2.x, p0.x, p3.x);
        const auto bernstein = [](double a, double b, double c, double d) {
            return std::array<double, 4> { a, 3.0 * (b - a), 3.0 * (c - 2.0 * b + a), d - 3.0 * c + 3.0 * b - a };
        };
        spans.push_back({ bernstein(p0.x, c1.x, c2.x, p3.x), bernstein(p0.y, c1.y, c2.y, p3.y), false });
    }
    return spans;
}

} // namespace

Array<CurveSpan> buildCurveSpans(ArrayView<const CurvePoint> points, CurveInterpolation interpolation)
{
    switch (interpolation) {
    case CurveInterpolation::CubicSpline:
        return naturalSplineSpans(points);
    case CurveInterpolation::Linear:
        return linearSpans(points);
    case CurveInterpolation::CubicUniform:
        return catmullRomSpans(points, 0.0);
    case CurveInterpolation::CubicChordal:
        return catmullRomSpans(points, 1.0);
    case CurveInterpolation::Bezier:
        return bezierSpans(points);
    }
    throwStopException("curves/Curve", __LINE__);
}

double evaluateCurveSpan(const CurveSpan& span, double x) noexcept
{
    const double x0 = span.x[0];
    const double x1 = polynomial(span.x, 1.0);
    double u = std::clamp((x - x0) / (x1 - x0), 0.0, 1.0);
    if (!span.linearInX) {
        // Newton's steps inside a shrinking bracket: x(u) rises, so the bracket always holds the root, and a step
        // that leaves it (a flat tangent) is replaced by bisection.
        double lo = 0.0;
        double hi = 1.0;
        for (int iteration = 0; iteration < 60; ++iteration) {
            const double error = polynomial(span.x, u) - x;
            if (std::abs(error) < 1e-12)
                break;
            (error < 0.0 ? lo : hi) = u;
            const double slope = derivative(span.x, u);
            const double next = slope > 0.0 ? u - error / slope : lo - 1.0;
            u = next > lo && next < hi ? next : 0.5 * (lo + hi);
            if (hi - lo < 1e-15)
                break;
        }
    }
    return polynomial(span.y, u);
}

} // namespace Marlix::Detail
