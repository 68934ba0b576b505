#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/curves/Curves.h>
#include <MarlixLibQt/widgets/curves/CurvesGuard.h>

#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

// The drawing of the curve widget: grid, histogram and curve are cached as paths in widget pixels, rebuilt when the
// view or the curve changes, so that a repaint during a drag only strokes them.
namespace Marlix::Widgets {

void Curves::cache()
{
    curvePath = QPainterPath();
    if (edited.isEmpty())
        return;
    const Curve& curve = getActiveCurve();
    // One sample per pixel column of the area is as fine as the screen shows.
    const int columns = gridWidth();
    for (int column = 0; column <= columns; ++column) {
        const double x = unmap(QPointF(column, 0.0)).x();
        const QPointF at = toWidget(Vector2 { x, curve.evaluate(x) });
        if (column == 0)
            curvePath.moveTo(at);
        else
            curvePath.lineTo(at);
    }
}

void Curves::cacheGrid()
{
    gridPath = QPainterPath();
    const int divisions = int(GRID_FACTOR);
    for (int i = 0; i <= divisions; ++i) {
        const double t = double(i) / divisions;
        gridPath.moveTo(toWidget({ t, 0.0 }));
        gridPath.lineTo(toWidget({ t, 1.0 }));
        gridPath.moveTo(toWidget({ 0.0, t }));
        gridPath.lineTo(toWidget({ 1.0, t }));
    }
}

void Curves::cacheHistogram()
{
    histogramPath = QPainterPath();
    histogramImage = QImage();
    histogramCachedChannel = getActiveChannel();
    if (!histogram || histogram->getPixelCount() == 0)
        return;
    const int channel = histogramChannel();
    const ArrayView<const std::uint64_t> bins = histogram->getBins(channel);
    const HistogramType type = histogramTypeModel ? histogramTypeModel->get() : HistogramType::Linear;
    Stack<float> cumulative;
    if (type == HistogramType::Cumulative)
        cumulative = histogram->getCumulativeHistogram(channel);
    const double peak = double(histogram->getMaximum(channel));
    const double logPeak = std::log1p(peak);
    const auto shareOf = [&](std::size_t bin) {
        switch (type) {
        case HistogramType::Cumulative:
            return double(cumulative[bin]);
        case HistogramType::Logarithmic:
            return logPeak > 0.0 ? std::log1p(double(bins[bin])) / logPeak : 0.0;
        case HistogramType::Linear:
            break;
        }
        return peak > 0.0 ? bins[bin] / peak : 0.0;
    };
    // Each pixel column shows the tallest of the bins it covers, so that a narrow peak is never lost between columns.
    const int columns = gridWidth();
    const double binCount = double(bins.size());
    histogramPath.moveTo(fromArea(QPointF(0.0, offset.y())));
    for (int column = 0; column < columns; ++column) {
        const double from = std::clamp(unmap(QPointF(column, 0.0)).x(), 0.0, 1.0);
        const double to = std::clamp(unmap(QPointF(column + 1, 0.0)).x(), 0.0, 1.0);
        const auto first = std::min(std::size_t(from * binCount), bins.size() - 1);
        const auto last = std::clamp(std::size_t(std::ceil(to * binCount)), first + 1, bins.size());
        double tallest = 0.0;
        for (std::size_t bin = first; bin < last; ++bin)
            tallest = std::max(tallest, shareOf(bin));
        const double y = offset.y() + tallest * gridHeight() * zoomFactor;
        histogramPath.lineTo(fromArea(QPointF(column, y)));
        histogramPath.lineTo(fromArea(QPointF(column + 1, y)));
    }
    histogramPath.lineTo(fromArea(QPointF(columns, offset.y())));
    histogramPath.closeSubpath();

    // Filled once here: filling a path of a thousand edges on every repaint of a drag would cost more than the rest
    // of the repaint together.
    const qreal ratio = devicePixelRatioF();
    histogramImage = QImage(size() * ratio, QImage::Format_ARGB32_Premultiplied);
    histogramImage.setDevicePixelRatio(ratio);
    histogramImage.fill(Qt::transparent);
    QPainter painter(&histogramImage);
    const double m = margin();
    painter.setClipRect(QRectF(m, m, width() - 2 * m, height() - 2 * m));
    QColor fill = channelColor(getActiveChannel());
    fill.setAlpha(60);
    painter.fillPath(histogramPath, fill);
}

void Curves::paintEvent(QPaintEvent*)
{
    Detail::guardedCurves("paint", [&] {
        QPainter painter(this);
        const double m = margin();
        const QRectF area(m, m, width() - 2 * m, height() - 2 * m);
        const QPalette& colors = palette();
        painter.fillRect(rect(), colors.color(QPalette::Window));
        painter.fillRect(area, colors.color(QPalette::Base));
        painter.setClipRect(area.adjusted(-m, -m, m, m));

        if (!histogramImage.isNull())
            painter.drawImage(QPointF(0, 0), histogramImage);
        QColor gridColor = colors.color(QPalette::Text);
        gridColor.setAlpha(40);
        painter.setPen(QPen(gridColor, 0));
        painter.drawPath(gridPath);

        painter.setRenderHint(QPainter::Antialiasing);
        // The identity as a faint diagonal: the reference every tone curve is read against.
        painter.setPen(QPen(gridColor, 0, Qt::DashLine));
        painter.drawLine(toWidget({ 0.0, 0.0 }), toWidget({ 1.0, 1.0 }));

        const QColor pen = channelColor(getActiveChannel());
        painter.setPen(QPen(pen, getDeviceIndependentPixels(1.5, this, DipValueHandling::KeepNonZero)));
        painter.drawPath(curvePath);

        const double radius = getDeviceIndependentPixels(RADIUS, this);
        const double handleRadius = radius * 0.6;
        const Array<CurvePoint>& points = getActiveCurve().getPoints();
        for (std::size_t i = 0; i < points.size(); ++i) {
            const QPointF at = toWidget(points[i].position);
            if (showsHandles()) {
                painter.setPen(QPen(gridColor.darker(), 0));
                painter.setBrush(colors.color(QPalette::Base));
                for (const Vector2& handle : { points[i].leftHandle, points[i].rightHandle }) {
                    painter.drawLine(at, toWidget(handle));
                    painter.drawEllipse(toWidget(handle), handleRadius, handleRadius);
                }
            }
            const bool active = dragged && dragged->index == i;
            painter.setPen(QPen(pen, 0));
            painter.setBrush(active ? pen : colors.color(QPalette::Base));
            painter.drawEllipse(at, radius, radius);
        }

        if (cursorValue && !edited.isEmpty()) {
            const double x = *cursorValue;
            const double y = getActiveCurve().evaluate(x);
            painter.setPen(QPen(gridColor.darker(), 0, Qt::DotLine));
            painter.drawLine(toWidget({ x, 0.0 }), toWidget({ x, 1.0 }));
            painter.setClipping(false);
            painter.setPen(colors.color(QPalette::Text));
            const QString text = tr("In %1  Out %2").arg(x, 0, 'f', 3).arg(y, 0, 'f', 3);
            painter.drawText(area.adjusted(2 * m, m, -2 * m, -m), Qt::AlignLeft | Qt::AlignTop, text);
        }
    });
}

} // namespace Marlix::Widgets
