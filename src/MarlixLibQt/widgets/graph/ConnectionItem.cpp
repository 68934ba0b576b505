#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>

#include <QPainter>
#include <QStyleOptionGraphicsItem>

#include <algorithm>
#include <cmath>

namespace Marlix::Widgets {

namespace {

constexpr double SLOT_RADIUS = 5.0;
constexpr double MAX_CORNER_RADIUS = 40.0;
constexpr double WIRE_WIDTH = 2.0;
const QColor WIRE_COLOR(255, 255, 0);
// Below this many pixels per unit a 2-unit wire is a fraction of a pixel wide.
constexpr double HAIRLINE_LEVEL_OF_DETAIL = 0.15;
// Wires are cut this many pixels outside the screen, so that their ends and width at the border are never seen.
constexpr double CLIP_MARGIN = 16.0;

const QPen& widePen()
{
    static const QPen pen(WIRE_COLOR, WIRE_WIDTH);
    return pen;
}

const QPen& hairlinePen()
{
    static const QPen pen(WIRE_COLOR, 0.0);
    return pen;
}

// Cuts the segment to `rect` (Liang-Barsky); false when nothing of it is inside.
bool clipSegment(QPointF& a, QPointF& b, const QRectF& rect)
{
    const double dx = b.x() - a.x();
    const double dy = b.y() - a.y();
    double enter = 0.0;
    double leave = 1.0;
    const auto edge = [&](double p, double q) {
        if (p == 0.0)
            return q >= 0.0;
        const double t = q / p;
        if (p < 0.0) {
            if (t > leave)
                return false;
            enter = std::max(enter, t);
        } else {
            if (t < enter)
                return false;
            leave = std::min(leave, t);
        }
        return true;
    };
    if (!edge(-dx, a.x() - rect.left()) || !edge(dx, rect.right() - a.x()) || !edge(-dy, a.y() - rect.top())
        || !edge(dy, rect.bottom() - a.y()))
        return false;
    const QPointF start = a;
    a = start + QPointF(dx, dy) * enter;
    b = start + QPointF(dx, dy) * leave;
    return true;
}

// Flattens the path on the device and strokes the pieces of it inside `deviceRect` as separate lines: the raster
// engine draws antialiased wide lines straight into the image, where a path goes through the general stroker and a
// fill of the outline, many times slower for a thousand wires on screen. Each piece keeps the pen's square caps, so
// consecutive pieces overlap at their joints and the wire reads as one stroke.
void drawVisibleLines(QPainter& painter, const QPainterPath& path, const QRectF& deviceRect)
{
    const QTransform& transform = painter.worldTransform();
    const QTransform back = transform.inverted();
    thread_local Array<QLineF> lines;
    lines.clear();
    for (const QPolygonF& polygon : path.toSubpathPolygons(transform)) {
        for (qsizetype i = 1; i < polygon.size(); ++i) {
            QPointF a = polygon[i - 1];
            QPointF b = polygon[i];
            if (clipSegment(a, b, deviceRect))
                lines.emplace_back(back.map(a), back.map(b));
        }
    }
    if (!lines.empty())
        painter.drawLines(lines.data(), static_cast<int>(lines.size()));
}

QRectF boundsOf(const QPainterPath& path)
{
    return path.controlPointRect().adjusted(-1.0, -1.0, 1.0, 1.0);
}

} // namespace

QPainterPath makeConnectionPath(QPointF start, QPointF end)
{
    const double x0 = start.x() + SLOT_RADIUS;
    const double y0 = start.y();
    const double x1 = end.x() - SLOT_RADIUS;
    const double y1 = end.y();

    const double dy = y1 - y0;
    const double h = std::abs(dy);
    const double r = std::min(MAX_CORNER_RADIUS, h * 0.25);
    const double gap = x1 - x0 - r;
    const double half = r * 0.5;
    const double lead = std::max(gap, 0.0) * 0.25 + half;
    const double k = std::max(1.0 - h / (std::max(gap, 1.0) + h), r / std::max(h, std::max(2.0 * r, 1.0)));
    const double run = std::max((x1 - x0) * 0.5 - lead, 0.0) * k + lead;
    const double sign = dy > 0.0 ? 1.0 : (dy < 0.0 ? -1.0 : 0.0);
    const double rise = sign * k * h;
    const double halfRise = rise * 0.5;

    QPainterPath path(QPointF(x0, y0));
    path.quadTo(QPointF(x0 + lead, y0), QPointF(x0 + run, y0 + halfRise));
    const double xa = x0 + run;
    const double xb = x1 - run;
    const double ym = (y0 + y1) * 0.5;
    if (gap >= 0.0) {
        path.lineTo(xb, y1 - halfRise);
    } else if (std::min(std::abs(gap), h * 0.5) >= r) {
        // Far enough apart vertically to run back between the nodes with two rounded corners.
        path.lineTo(xa, ym - sign * half);
        path.quadTo(QPointF(xa, ym), QPointF(xa - half, ym));
        path.lineTo(xb + half, ym);
        path.quadTo(QPointF(xb, ym), QPointF(xb, ym + sign * half));
        path.lineTo(xb, y1 - halfRise);
    } else {
        path.quadTo(QPointF(xa, y0 + rise), QPointF(xa * 0.5 + (x0 + x1) * 0.25, y0 * 0.5 + halfRise + ym * 0.5));
        path.lineTo(xb * 0.5 + (x0 + x1) * 0.25, (y1 - rise) * 0.5 + ym * 0.5);
        path.quadTo(QPointF(xb, y1 - rise), QPointF(xb, y1 - halfRise));
    }
    path.quadTo(QPointF(x1 - lead, y1), QPointF(x1, y1));
    return path;
}

void paintConnectionPath(QPainter& painter, const QPainterPath& path)
{
    const QTransform& transform = painter.worldTransform();
    const double lod = QStyleOptionGraphicsItem::levelOfDetailFromTransform(transform);
    const bool hairline = lod <= HAIRLINE_LEVEL_OF_DETAIL;
    const bool antialiased = painter.testRenderHint(QPainter::Antialiasing);
    if (hairline)
        painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(hairline ? hairlinePen() : widePen());
    painter.setBrush(Qt::NoBrush);
    const QRectF device
        = painter.device() ? QRectF(0.0, 0.0, painter.device()->width(), painter.device()->height()) : QRectF();
    if (hairline || device.isEmpty() || !transform.isInvertible())
        painter.drawPath(path);
    else
        drawVisibleLines(painter, path, device.adjusted(-CLIP_MARGIN, -CLIP_MARGIN, CLIP_MARGIN, CLIP_MARGIN));
    if (hairline)
        painter.setRenderHint(QPainter::Antialiasing, antialiased);
}

ConnectionItem::ConnectionItem(QPointer<NodeItem> from, QPointer<NodeItem> to, StringView inputName)
    : from(std::move(from))
    , to(std::move(to))
    , inputName(inputName)
{
    setFlag(ItemIsSelectable, false);
    setAcceptedMouseButtons(Qt::NoButton);
    updatePath();
}

void ConnectionItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget* widget)
{
    // The view draws every wire but the live ones at once from its cached layer, under the nodes as the items would
    // be.
    const GraphView* view = from ? from->getView() : nullptr;
    if (!live && view && widget == view->viewport())
        return;
    paintConnectionPath(*painter, path);
}

void ConnectionItem::setLive(bool next)
{
    if (live == next)
        return;
    live = next;
    invalidateWireLayer();
    update();
}

QVariant ConnectionItem::itemChange(GraphicsItemChange change, const QVariant& value)
{
    if (change == ItemVisibleHasChanged)
        invalidateWireLayer();
    return QGraphicsObject::itemChange(change, value);
}

void ConnectionItem::invalidateWireLayer() const
{
    if (GraphView* view = from ? from->getView() : nullptr)
        view->invalidateWireLayer();
}

void ConnectionItem::onNodeItemPositionChange(const NodeItem& item, QPointF position)
{
    if (!from || !to)
        return;
    setPath(from == &item ? position : from->pos(), to == &item ? position : to->pos());
}

void ConnectionItem::updatePath()
{
    if (from && to)
        setPath(from->pos(), to->pos());
}

void ConnectionItem::setPath(QPointF fromPosition, QPointF toPosition)
{
    QPainterPath next
        = makeConnectionPath(fromPosition + from->outSlotPosition(), toPosition + to->inSlotPosition(inputName));
    const QRectF nextBounds = boundsOf(next);
    if (nextBounds != bounds)
        prepareGeometryChange();
    else
        update();
    path = std::move(next);
    bounds = nextBounds;
    if (!live)
        invalidateWireLayer();
}

ConnectionPreviewItem::ConnectionPreviewItem(QPointer<NodeItem> anchor, StringView inputName, QPointF end)
    : anchor(std::move(anchor))
    , anchorInput(inputName)
    , end(end)
{
    setAcceptedMouseButtons(Qt::NoButton);
    // Above every node, so the dragged end stays visible over the node it is dropped on.
    setZValue(3.0);
    rebuild();
}

void ConnectionPreviewItem::setEnd(QPointF point)
{
    end = point;
    rebuild();
}

void ConnectionPreviewItem::rebuild()
{
    if (!anchor)
        return;
    const QPointF anchorPoint = startsAtOutput() ? anchor->scenePos() + anchor->outSlotPosition()
                                                 : anchor->scenePos() + anchor->inSlotPosition(anchorInput);
    QPainterPath next = startsAtOutput() ? makeConnectionPath(anchorPoint, end) : makeConnectionPath(end, anchorPoint);
    prepareGeometryChange();
    path = std::move(next);
    bounds = boundsOf(path);
}

void ConnectionPreviewItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    paintConnectionPath(*painter, path);
}

} // namespace Marlix::Widgets
