#pragma once

#include <MarlixLib/curves/Curve.h>

namespace Marlix::Detail {

/// The spans of a curve whose points are valid (at least two, x increasing); one per pair of neighbours.
Array<CurveSpan> buildCurveSpans(ArrayView<const CurvePoint> points, CurveInterpolation interpolation);

/// y at x on a span whose x(u) rises from x(0) to x(1), with x between them.
double evaluateCurveSpan(const CurveSpan& span, double x) noexcept;

} // namespace Marlix::Detail
