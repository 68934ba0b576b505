#include <MarlixLibQt/widgets/curves/Curves.h>
#include <MarlixLibQt/widgets/curves/CurvesGuard.h>

#include <algorithm>
#include <cmath>

// Tones picked in the viewport while the widget holds its mouse: a press adds (or takes) the point of the tone under
// the mouse, dragging up and down sets its output.
namespace Marlix::Widgets {

using Detail::guardedCurves;

bool Curves::requestExclusiveMouseControl()
{
    return host && host->requestExclusiveMouseControl(*this);
}

void Curves::releaseExclusiveMouseControl()
{
    if (host && exclusiveControl)
        host->releaseExclusiveMouseControl(*this);
}

void Curves::onExclusiveMouseControlGained()
{
    exclusiveControl = true;
}

void Curves::onExclusiveMouseControlLost()
{
    exclusiveControl = false;
    exclusivePressY.reset();
    guardedCurves("control lost", [&] { finishGesture(); });
    Q_EMIT exclusiveMouseControlLost();
}

void Curves::onExclusiveMousePress(const Vector2& position)
{
    guardedCurves("pick", [&] {
        const Optional<float> tone
            = host ? host->getCurveChannelSample(position, histogramChannel(), layer) : Optional<float>();
        if (!tone || edited.isEmpty())
            return;
        exclusivePressY = position.y;
        setCurveCursor(*tone);
    });
}

void Curves::onExclusiveMouseRelease(const Vector2&)
{
    exclusivePressY.reset();
    guardedCurves("pick", [&] { finishGesture(); });
}

void Curves::onMouseMove(const Vector2& position)
{
    guardedCurves("pick", [&] {
        if (!host)
            return;
        if (exclusivePressY && dragged) {
            const double height = std::max(1.0, host->getViewportSize().y);
            setValueOnCursor(exclusiveStartValue + (*exclusivePressY - position.y) / height);
            return;
        }
        const Optional<float> tone = host->getCurveChannelSample(position, histogramChannel(), layer);
        cursorValue = tone ? Optional<double>(*tone) : Optional<double>();
        update();
    });
}

void Curves::onMouseLeave()
{
    cursorValue.reset();
    update();
}

void Curves::onViewportChanged()
{
    guardedCurves("histogram", [&] {
        // Viewport images hold 8-bit tones: bins finer than a tone step would only be empty ones between them, and
        // the drawing gathers the bins of each pixel column at any width.
        updateHistorgram(getActiveChannel(), Marlix::Histogram::DEFAULT_BIN_COUNT, {});
    });
}

Optional<QCursor> Curves::getExclusiveMouseCursor() const
{
    return QCursor(Qt::CrossCursor);
}

void Curves::setCurveCursor(double tone)
{
    Curve& curve = activeCurve();
    const double x = std::clamp(tone, 0.0, 1.0);
    cursorValue = x;
    finishGesture();
    // The tone's point, or the one already there within a tone step.
    Optional<std::size_t> index;
    const Array<CurvePoint>& points = curve.getPoints();
    for (std::size_t i = 0; i < points.size(); ++i)
        if (std::abs(points[i].position.x - x) < EPSILON)
            index = i;
    if (!index)
        index = curve.addPoint(Vector2 { x, curve.evaluate(x) });
    if (!index)
        return;
    dragged = Hit { *index, Part::Point };
    exclusiveStartValue = curve.getPoint(*index).position.y;
    gestureOpen = true;
    curvesModel->beginChange();
    storeToModel();
}

void Curves::setValueOnCursor(double value)
{
    if (!dragged)
        return;
    Curve& curve = activeCurve();
    const CurvePoint& point = curve.getPoint(dragged->index);
    curve.movePoint(dragged->index, Vector2 { point.position.x, std::min(value, 1.0) });
    storeToModel();
}

} // namespace Marlix::Widgets
