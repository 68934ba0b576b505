#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
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
    const double lod = QStyleOptionGraphicsItem::levelOfDetailFromTransform(painter.worldTransform());
    if (lod <= HAIRLINE_LEVEL_OF_DETAIL) {
        const bool antialiased = painter.testRenderHint(QPainter::Antialiasing);
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.setPen(QPen(WIRE_COLOR, 0.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(path);
        painter.setRenderHint(QPainter::Antialiasing, antialiased);
        return;
    }
    QPen pen;
    pen.setWidthF(WIRE_WIDTH);
    pen.setColor(WIRE_COLOR);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(path);
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

void ConnectionItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    paintConnectionPath(*painter, path);
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
