#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/curves/CurveInterpolation.h>
#include <MarlixLib/math/Vector2.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace Marlix {

/// One point of a curve with its two tangent handles, all in curve space. Every point keeps its handles whatever the
/// interpolation, so that switching to Bézier and back loses nothing; only Bézier curves read them.
struct CurvePoint
{
    Vector2 position; ///< x is the input tone, y the output tone, both in [0, 1].
    Vector2 leftHandle; ///< The tangent handle towards the previous point, in curve space.
    Vector2 rightHandle; ///< The tangent handle towards the next point, in curve space.

    /// A point whose handles lie at the default offset down-left and up-right of it.
    static CurvePoint at(const Vector2& position) noexcept;

    friend constexpr bool operator==(const CurvePoint&, const CurvePoint&) = default; ///< Same position and handles.
};

namespace Detail {
/// One span of a curve as two cubics in a parameter u over [0, 1]: x(u) and y(u), both given by their coefficients of
/// u^0 to u^3. For the spline and linear modes x(u) is linear, and u follows from x directly.
struct CurveSpan
{
    std::array<double, 4> x {};
    std::array<double, 4> y {};
    bool linearInX = true;
};
} // namespace Detail

/// A tone curve: a function from [0, 1] to [0, 1] given by at least two points sorted by x, at least EPSILON apart, and
/// an interpolation between them. Before the first point and after the last one the end values hold.
class MARLIXLIB_EXPORT Curve
{
public:
    /// The smallest distance in x between neighbouring points: one 8-bit tone step, so that a curve always survives
    /// being written with 8-bit inputs.
    static constexpr double EPSILON = 1.0 / 255.0;
    /// How far a new point's handles lie from it along each axis.
    static constexpr double HANDLE_OFFSET = 0.1;
    static constexpr std::size_t MIN_POINT_COUNT = 2; ///< A curve never has fewer points.

    /// The identity, interpolated by cubic spline.
    Curve();
    /// The two points of \p type; an unknown interpolation stops the program (a programming error).
    explicit Curve(DefaultCurveType type, CurveInterpolation interpolation = CurveInterpolation::CubicSpline);
    /// Throws Exception, naming the point, when the points break the rules above or the interpolation is unknown.
    Curve(Array<CurvePoint> points, CurveInterpolation interpolation);
    /// Points with default handles; throws like the constructor above.
    Curve(const Array<Vector2>& positions, CurveInterpolation interpolation);
    /// The constructor's checks without the throw, for readers of outside data.
    static Expected<Curve, String> make(Array<CurvePoint> points, CurveInterpolation interpolation);

    CurveInterpolation getInterpolation() const noexcept { return interpolation; } ///< How the points are joined.
    /// An unknown value stops the program (a programming error).
    void setInterpolation(CurveInterpolation newInterpolation);

    const Array<CurvePoint>& getPoints() const noexcept { return points; } ///< The points, sorted by x.
    std::size_t getPointCount() const noexcept { return points.size(); } ///< At least MIN_POINT_COUNT.
    /// An index past the end stops the program.
    const CurvePoint& getPoint(std::size_t index) const;

    /// Inserts a point at its place in x order and returns its index; nothing is added (an empty result) when the
    /// position is not finite, lies outside [0, 1]², or is closer than EPSILON in x to an existing point.
    Optional<std::size_t> addPoint(const Vector2& position);
    /// \overload
    /// The point keeps its own handles.
    Optional<std::size_t> addPoint(const CurvePoint& point);
    /// Moves a point, its handles following it. The position is clamped into [0, 1]² and to at least EPSILON from its
    /// neighbours in x, so a point never passes another; returns the position it took. A position that is not finite
    /// leaves the point where it was.
    Vector2 movePoint(std::size_t index, const Vector2& position);
    /// Sets a point's handles (anywhere in the plane); Bézier spans use only the part of a handle between the
    /// span's points in x. A handle that is not finite leaves both unchanged and returns false.
    bool setHandles(std::size_t index, const Vector2& left, const Vector2& right);
    /// Removes a point; false (and nothing removed) when only MIN_POINT_COUNT points remain.
    bool removePoint(std::size_t index);
    /// Back to the two points of `type`, keeping the interpolation.
    void reset(DefaultCurveType type);

    /// The curve at x; x is clamped into [0, 1] (a NaN reads as 0) and so is the result.
    float operator()(float x) const noexcept { return static_cast<float>(evaluate(x)); }
    double evaluate(double x) const noexcept; ///< The curve at x in double precision, clamped as operator() is.
    /// `count` values at evenly spaced x from 0 to 1 (both included when count > 1): a lookup table for images.
    Array<float> sample(std::size_t count) const;
    /// Fills the table the same way.
    void sample(ArrayView<float> table) const noexcept;
    /// The curve applied to 8-bit tones, rounded: out[v] = round(255 * curve(v / 255)).
    std::array<std::uint8_t, 256> makeByteTable() const noexcept;

    /// Same interpolation and the same points with the same handles.
    friend bool operator==(const Curve& a, const Curve& b) noexcept
    {
        return a.interpolation == b.interpolation && a.points == b.points;
    }

private:
    Curve(Array<CurvePoint> points, CurveInterpolation interpolation, bool checked);
    void rebuild();
    std::size_t checkedIndex(std::size_t index, int line) const;

    Array<CurvePoint> points;
    CurveInterpolation interpolation = CurveInterpolation::CubicSpline;
    // One per span between neighbouring points, rebuilt after every change; never compared.
    Array<Detail::CurveSpan> spans;
};

} // namespace Marlix
