#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Flags.h>
#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QLineF>
#include <QPointF>
#include <QVarLengthArray>

#include <concepts>
#include <cstdint>
#include <ranges>
#include <utility>

class QPainter;

namespace Marlix {

/// A point type of the core framework or a view with public `x` and `y` fields (`Vector2`, curve points).
template <class P>
concept PointLike = std::convertible_to<decltype(std::declval<const P&>().x),
    double> && std::convertible_to<decltype(std::declval<const P&>().y), double>;

/// A contiguous array (`Array`, `ArrayView`, C array) of `PointLike` points.
template <class R>
concept PointRange
    = std::ranges::contiguous_range<R> && std::ranges::sized_range<R> && PointLike<std::ranges::range_value_t<R>>;

/// Drawing helpers for views that keep their geometry in plain arrays (graph wires, curves, histograms).
class MARLIXLIBQT_EXPORT Painter
{
public:
    /// What a drawing call changes on the painter for its own duration only.
    enum class Option : std::uint8_t
    {
        /// Antialiasing for this call only; the painter's render hints are restored afterwards.
        Antialiased = 1 << 0,
        /// The pen keeps its width in device pixels under the painter's transform, for this call only.
        Cosmetic = 1 << 1,
    };
    using Options = Flags<Option>; ///< A combination of Option values; empty draws with the painter as it is.

    /// QPainter::drawLines over a span, skipping lines with a non-finite end and doing nothing without a pen.
    static void drawLines(QPainter& painter, ArrayView<const QLineF> lines, Options options = {});
    /// Lines between the pairs (0, 1), (2, 3), ... of `points`; an odd last point is ignored, as is a pair with a
    /// non-finite point.
    static void drawLines(QPainter& painter, ArrayView<const QPointF> points, Options options = {});
    /// QPainter::drawPolyline over a span, broken into separate runs at non-finite points instead of handing
    /// them to the rasteriser.
    static void drawPolyline(QPainter& painter, ArrayView<const QPointF> points, Options options = {});
    /// QPainter::drawPolygon over a span; fewer than three points, or any non-finite point, draws nothing.
    static void drawPolygon(QPainter& painter, ArrayView<const QPointF> points, Qt::FillRule fillRule = Qt::OddEvenFill,
        Options options = {});

    /// The same for any contiguous array of `PointLike` points, converted on the stack for up to 256 points.
    template <class R>
    requires PointRange<R>
    static void drawLines(QPainter& painter, const R& points, Options options = {})
    {
        const auto converted = toPoints(points);
        drawLines(painter, ArrayView<const QPointF>(converted.constData(), converted.size()), options);
    }
    /// drawPolyline() for any contiguous array of `PointLike` points.
    template <class R>
    requires PointRange<R>
    static void drawPolyline(QPainter& painter, const R& points, Options options = {})
    {
        const auto converted = toPoints(points);
        drawPolyline(painter, ArrayView<const QPointF>(converted.constData(), converted.size()), options);
    }
    /// drawPolygon() for any contiguous array of `PointLike` points.
    template <class R>
    requires PointRange<R>
    static void drawPolygon(
        QPainter& painter, const R& points, Qt::FillRule fillRule = Qt::OddEvenFill, Options options = {})
    {
        const auto converted = toPoints(points);
        drawPolygon(painter, ArrayView<const QPointF>(converted.constData(), converted.size()), fillRule, options);
    }

private:
    template <class R> static QVarLengthArray<QPointF, 256> toPoints(const R& points)
    {
        QVarLengthArray<QPointF, 256> converted;
        converted.reserve(static_cast<qsizetype>(std::ranges::size(points)));
        for (const auto& p : points)
            converted.append(QPointF(static_cast<double>(p.x), static_cast<double>(p.y)));
        return converted;
    }
};

} // namespace Marlix
