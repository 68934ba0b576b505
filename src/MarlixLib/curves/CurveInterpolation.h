#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>

#include <cstdint>

namespace Marlix {

/// How a curve passes from one of its points to the next. The values are stored in scenes: never renumber them.
enum class CurveInterpolation : std::uint8_t
{
    /// Natural cubic spline through the points (smooth; may overshoot between points of a steep step).
    CubicSpline = 0,
    Linear = 1, ///< Straight lines between the points.
    /// Catmull-Rom through the points, every span given the same parameter length.
    CubicUniform = 2,
    /// Catmull-Rom through the points, spans parametrised by their length, which keeps uneven spacing tight.
    CubicChordal = 3,
    /// Cubic Bézier spans shaped by each point's tangent handles; the mode in which editors show the handles.
    Bezier = 4,
};

inline constexpr int CURVE_INTERPOLATION_COUNT = 5; ///< The number of interpolations; values 0 to 4 are valid.

/// The name of an interpolation in the text form of curves ("cubic", "linear", "cubic uniform", "cubic chordal",
/// "bezier"); an unknown value gives the empty view.
MARLIXLIB_EXPORT StringView getCurveInterpolationName(CurveInterpolation interpolation) noexcept;
/// The interpolation of a name that getCurveInterpolationName gives; an error names the valid ones.
MARLIXLIB_EXPORT Expected<CurveInterpolation, String> parseCurveInterpolation(StringView name);

/// The curve a channel gets when reset.
enum class DefaultCurveType : std::uint8_t
{
    /// From (0, 0) to (1, 1): the tones pass unchanged.
    Identity = 0,
    /// From (0, 1) to (1, 1): every tone becomes 1.
    ConstantOne = 1,
};

} // namespace Marlix
