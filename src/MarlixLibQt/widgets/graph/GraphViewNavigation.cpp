// The view's navigation: zoom, framing, pixel snapping, panning, scrolling at the edges and the grid.
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>
#include <MarlixLibQt/widgets/thumbnails/ThumbnailManager.h>

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace Marlix::Widgets {

namespace {

const QColor GRID_COLOR(255, 255, 255, 16);

// Zooms within 10 % of a whole number, or of the reciprocal of one, land on it exactly.
double snapZoom(double z)
{
    if (z >= 1.0) {
        const double n = std::floor(z + 0.5);
        return std::abs(z - n) < n * 0.1 ? n : z;
    }
    const double inverse = 1.0 / z;
    double m = std::round(inverse);
    if (std::abs(inverse - m) >= m * 0.1)
        m = inverse;
    return 1.0 / m;
}

QPointF roundPoint(QPointF point)
{
    return { std::round(point.x()), std::round(point.y()) };
}

} // namespace

void GraphView::zoom(QPointF anchor, double factor, bool relative)
{
    const double z = snapZoom(relative ? factor * zoomFactor : factor);
    if (!(z <= MAX_ZOOM && z >= MIN_ZOOM))
        return;
    const QPointF pixel = roundPoint(anchor);
    const QPointF before = roundPoint(toScene(pixel));
    setTransform(QTransform::fromScale(z, z));
    const QPointF after = roundPoint(toScene(pixel));
    translate(after.x() - before.x(), after.y() - before.y());
    const bool wasFar = wiresWithoutContents();
    zoomFactor = z;
    if (wiresWithoutContents() != wasFar)
        for (ConnectionItem* connection : connections)
            connection->setFlag(QGraphicsItem::ItemHasNoContents, !wasFar && !connection->isLive());
    if (thumbnails) {
        const QSize size(getThumbnailSize(), getThumbnailSize());
        if (!size.isEmpty())
            thumbnails->setThumbnailSize(size);
    }
    snapContentPosition();
    invalidateGrid();
}

double GraphView::getScaleToFitInView(const QRectF& rect, double margin) const
{
    const QSizeF view = viewport()->size();
    if (rect.width() * rect.height() <= 0.0 || view.width() < 2.0 * margin || view.height() < 2.0 * margin)
        return 1.0;
    const double scale
        = std::min((view.width() - 2.0 * margin) / rect.width(), (view.height() - 2.0 * margin) / rect.height());
    return std::clamp(scale, MIN_ZOOM, MAX_ZOOM);
}

QRectF GraphView::nodeItemsBoundingRect(ArrayView<NodeItem* const> items)
{
    QRectF result;
    for (const NodeItem* item : items)
        result |= item->geometryBoundingRect().adjusted(-1.0, -1.0, 1.0, 1.0).translated(item->pos());
    return result;
}

void GraphView::zoomToNodes(ArrayView<NodeItem* const> items)
{
    if (items.empty())
        return;
    const QRectF rect = nodeItemsBoundingRect(items);
    const double z = getScaleToFitInView(rect, getDeviceIndependentPixels(FIT_MARGIN, this));
    zoom(toViewport(rect.center()), z, false);
    const QPointF centre = toScene(QPointF(viewport()->width() * 0.5, viewport()->height() * 0.5));
    translate(centre.x() - rect.center().x(), centre.y() - rect.center().y());
    snapContentPosition();
    invalidateGrid();
}

void GraphView::onZoomToAll()
{
    zoomToNodes(getNodeItems());
}

void GraphView::onZoomToAllOrSelection()
{
    const Array<NodeItem*> selected = getSelectedNodeItems();
    zoomToNodes(selected.empty() ? getNodeItems() : selected);
}

void GraphView::snapContentPosition()
{
    const QPointF origin = toScene(QPointF(0.0, 0.0));
    // The offset to the nearest whole unit: a corner a rounding error below one is already there.
    const double dx = origin.x() - std::round(origin.x());
    const double dy = origin.y() - std::round(origin.y());
    if (dx != 0.0 || dy != 0.0)
        translate(dx, dy);
}

void GraphView::updateViewportScrolling(QPointF position, bool absolute)
{
    const QPointF delta = absolute ? position : position - lastMousePosition;
    translate(delta.x() / zoomFactor, delta.y() / zoomFactor);
    snapContentPosition();
    invalidateGrid();
}

void GraphView::onTimeout()
{
    const int margin = getDeviceIndependentPixels(AUTO_SCROLL_MARGIN, this);
    const QRectF inner = QRectF(toScene(QPointF(margin, margin)),
        toScene(QPointF(viewport()->width() - margin, viewport()->height() - margin)));
    const QPointF cursor = toScene(lastMousePosition);
    const double dx = 0.2 * (std::max(inner.left() - cursor.x(), 0.0) + std::min(inner.right() - cursor.x(), 0.0));
    const double dy = 0.2 * (std::max(inner.top() - cursor.y(), 0.0) + std::min(inner.bottom() - cursor.y(), 0.0));
    if (dx != 0.0 || dy != 0.0) {
        translate(dx, dy);
        snapContentPosition();
        invalidateGrid();
        // What follows the mouse (dragged nodes, the band) follows the scene point now under it.
        if (state == State::MovingNodes || state == State::RubberBand) {
            QMouseEvent move(QEvent::MouseMove, lastMousePosition, mapToGlobal(lastMousePosition.toPoint()),
                Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
            QGraphicsView::mouseMoveEvent(&move);
        }
    }
    if (preview) {
        const QPointF end = toScene(lastMousePosition);
        lastFocusedNode = nodeItemAt(lastMousePosition);
        preview->setEnd(end);
    }
}

void GraphView::drawBackground(QPainter* painter, const QRectF& rect)
{
    wireLayer.paint(*painter, connections, rect, [this](QPainter& layer, const QRectF& area) {
        QGraphicsView::drawBackground(&layer, area);
        drawGrid(layer, area);
    });
}

void GraphView::drawGrid(QPainter& painter, const QRectF& rect)
{
    // The lines of the whole area under the wire layer, made each time the layer is drawn again: the layer keeps
    // them while the view only scrolls.
    gridLines.clear();
    if (zoomFactor < GRID_MIN_ZOOM)
        return;
    const double first = rect.left() - std::fmod(std::trunc(rect.left()), GRID_SPACING);
    for (double x = first; x < rect.right(); x += GRID_SPACING)
        gridLines.emplace_back(x + 0.5, rect.top(), x + 0.5, rect.bottom());
    const double top = rect.top() - std::fmod(std::trunc(rect.top()), GRID_SPACING);
    for (double y = top; y < rect.bottom(); y += GRID_SPACING)
        gridLines.emplace_back(rect.left(), y + 0.5, rect.right(), y + 0.5);
    const bool antialiased = painter.testRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(QPen(GRID_COLOR, 1.0));
    painter.drawLines(gridLines.data(), static_cast<int>(gridLines.size()));
    painter.setRenderHint(QPainter::Antialiasing, antialiased);
}

} // namespace Marlix::Widgets
