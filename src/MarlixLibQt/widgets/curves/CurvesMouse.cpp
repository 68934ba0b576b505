#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/curves/Curves.h>
#include <MarlixLibQt/widgets/curves/CurvesGuard.h>

#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

// The mouse on the curve area: a left press takes the point or handle under it or adds a point, a drag moves it as
// one gesture of the model, a right click removes a point, the middle button pans and Shift with the wheel zooms.
namespace Marlix::Widgets {

using Detail::guardedCurves;

namespace {

double distance(const QPointF& a, const QPointF& b)
{
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

} // namespace

Optional<Curves::Hit> Curves::hitTest(const QPointF& position) const
{
    const double reach = getDeviceIndependentPixels(HIT_DISTANCE, this);
    Optional<Hit> best;
    double bestDistance = reach;
    const auto consider = [&](const Vector2& point, std::size_t index, Part part) {
        const double d = distance(toWidget(point), position);
        if (d <= bestDistance) {
            bestDistance = d;
            best = Hit { index, part };
        }
    };
    const Array<CurvePoint>& points = getActiveCurve().getPoints();
    for (std::size_t i = 0; i < points.size(); ++i) {
        consider(points[i].position, i, Part::Point);
        if (showsHandles()) {
            consider(points[i].leftHandle, i, Part::LeftHandle);
            consider(points[i].rightHandle, i, Part::RightHandle);
        }
    }
    // A point under its own handle is the one meant.
    if (best && best->part != Part::Point && distance(toWidget(points[best->index].position), position) <= reach)
        best->part = Part::Point;
    return best;
}

void Curves::mousePressEvent(QMouseEvent* event)
{
    event->accept();
    guardedCurves("press", [&] { press(event); });
}

void Curves::press(QMouseEvent* event)
{
    const QPointF position = event->position();
    if (event->button() == Qt::MiddleButton) {
        panStart = position;
        panStartOffset = offset;
        return;
    }
    if (edited.isEmpty())
        return;
    Curve& curve = activeCurve();
    if (event->button() == Qt::RightButton) {
        const Optional<Hit> hit = hitTest(position);
        const std::size_t last = curve.getPointCount() - 1;
        // The end points hold the curve's range; they move but never go.
        if (hit && hit->part == Part::Point && hit->index != 0 && hit->index != last
            && curve.getPointCount() > Curve::MIN_POINT_COUNT) {
            finishGesture();
            curve.removePoint(hit->index);
            storeToModel();
        }
        return;
    }
    if (event->button() != Qt::LeftButton)
        return;
    finishGesture();
    const Optional<Hit> hit = hitTest(position);
    if (hit) {
        dragged = hit;
    } else {
        const Vector2 at = fromWidget(position);
        if (at.x < 0.0 || at.x > 1.0 || at.y < 0.0 || at.y > 1.0)
            return;
        Optional<std::size_t> added = curve.addPoint(at);
        if (added && showsHandles()) {
            // A Bézier point between the facing handles of its neighbours, or closer to one than its handle reaches,
            // would fold the curve back on itself.
            const Array<CurvePoint>& points = curve.getPoints();
            const std::size_t i = *added;
            bool fits = true;
            if (i > 0) {
                const CurvePoint& before = points[i - 1];
                fits = fits && at.x > before.rightHandle.x
                    && at.x - before.position.x > std::abs(before.rightHandle.x - before.position.x);
            }
            if (i + 1 < points.size()) {
                const CurvePoint& next = points[i + 1];
                fits = fits && at.x < next.leftHandle.x
                    && next.position.x - at.x > std::abs(next.position.x - next.leftHandle.x);
            }
            if (!fits) {
                curve.removePoint(i);
                added.reset();
            }
        }
        if (!added) {
            setForbiddenCursor(true);
            return;
        }
        dragged = Hit { *added, Part::Point };
    }
    setForbiddenCursor(false);
    gestureOpen = true;
    curvesModel->beginChange();
    // A new point is an edit by itself; a press on an existing one changes nothing until it moves.
    if (!hit)
        storeToModel();
}

void Curves::mouseMoveEvent(QMouseEvent* event)
{
    event->accept();
    guardedCurves("move", [&] {
        const QPointF position = event->position();
        if (panStart) {
            pan(panStartOffset + QPointF(position.x() - panStart->x(), panStart->y() - position.y()));
            return;
        }
        if (dragged && (event->buttons() & Qt::LeftButton)) {
            dragTo(position);
            return;
        }
        // A refused click shows its cursor until the mouse moves on.
        if (forbiddenCursor && event->buttons() == Qt::NoButton)
            setForbiddenCursor(false);
        const double x = fromWidget(position).x;
        cursorValue = std::clamp(x, 0.0, 1.0);
        update();
    });
}

void Curves::dragTo(const QPointF& position)
{
    Curve& curve = activeCurve();
    const Vector2 to = fromWidget(position);
    const CurvePoint& point = curve.getPoint(dragged->index);
    if (dragged->part == Part::Point) {
        cursorValue = curve.movePoint(dragged->index, to).x;
    } else {
        // The partner handle turns with the dragged one and keeps its length, so the curve stays smooth there.
        const bool left = dragged->part == Part::LeftHandle;
        const Vector2 partner = left ? point.rightHandle : point.leftHandle;
        const double dx = to.x - point.position.x;
        const double dy = to.y - point.position.y;
        const double length = std::hypot(dx, dy);
        const double partnerLength = std::hypot(partner.x - point.position.x, partner.y - point.position.y);
        Vector2 mirrored = partner;
        if (length > 0.0)
            mirrored
                = { point.position.x - dx / length * partnerLength, point.position.y - dy / length * partnerLength };
        // A left handle stays left of its point and a right one right, or the span would run backwards.
        Vector2 moved = to;
        moved.x = left ? std::min(moved.x, point.position.x) : std::max(moved.x, point.position.x);
        mirrored.x = left ? std::max(mirrored.x, point.position.x) : std::min(mirrored.x, point.position.x);
        if (left)
            curve.setHandles(dragged->index, moved, mirrored);
        else
            curve.setHandles(dragged->index, mirrored, moved);
    }
    storeToModel();
}

void Curves::mouseReleaseEvent(QMouseEvent* event)
{
    event->accept();
    guardedCurves("release", [&] {
        if (event->button() == Qt::MiddleButton) {
            panStart.reset();
            return;
        }
        if (event->button() == Qt::LeftButton)
            finishGesture();
    });
}

void Curves::finishGesture()
{
    dragged.reset();
    if (!gestureOpen)
        return;
    gestureOpen = false;
    curvesModel->commitChange();
}

void Curves::wheelEvent(QWheelEvent* event)
{
    if (!(event->modifiers() & Qt::ShiftModifier)) {
        event->ignore();
        return;
    }
    event->accept();
    guardedCurves("wheel", [&] {
        // Some platforms turn Shift with a vertical wheel into horizontal scrolling.
        const QPoint delta = event->angleDelta();
        const int steps = delta.y() != 0 ? delta.y() : delta.x();
        zoom(std::pow(2.0, steps / 360.0), toArea(event->position()));
    });
}

void Curves::resizeEvent(QResizeEvent* event)
{
    Container::resizeEvent(event);
    guardedCurves("resize", [&] {
        if (!pan(offset)) {
            cache();
            cacheGrid();
            cacheHistogram();
        }
    });
}

void Curves::leaveEvent(QEvent* event)
{
    Container::leaveEvent(event);
    cursorValue.reset();
    update();
}

} // namespace Marlix::Widgets
