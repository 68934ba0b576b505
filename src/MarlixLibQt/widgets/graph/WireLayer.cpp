#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
#include <MarlixLibQt/widgets/graph/WireLayer.h>

#include <QPaintDevice>
#include <QPainter>

#include <cmath>

namespace Marlix::Widgets {

namespace {

// The image reaches this share of the visible size past each side, so a pan does not draw the wires again at once.
constexpr double REACH = 0.25;

} // namespace

void WireLayer::paint(QPainter& painter, ArrayView<ConnectionItem* const> wires, const QRectF& visible)
{
    const QTransform transform = painter.worldTransform();
    const double scale = transform.m11();
    const double pixelRatio = painter.device() ? painter.device()->devicePixelRatio() : 1.0;
    QRectF bounds;
    for (const ConnectionItem* wire : wires)
        if (wire->isVisible() && !wire->isLive())
            bounds |= wire->boundingRect();
    const QRectF needed = bounds & visible;
    if (needed.isEmpty())
        return;
    if (!valid || scale != zoom || pixelRatio != image.devicePixelRatio() || !area.contains(needed)) {
        QRectF region = bounds
            & visible.adjusted(
                -visible.width() * REACH, -visible.height() * REACH, visible.width() * REACH, visible.height() * REACH);
        // The image starts on a device pixel, so wires in it are antialiased as they would be on the screen.
        const QPointF corner = transform.map(region.topLeft());
        region.setTopLeft(transform.inverted().map(QPointF(std::floor(corner.x()), std::floor(corner.y()))));
        rebuild(wires, region, scale, pixelRatio);
    }
    // Whole device pixels: the copy stays a plain blend. Where the view's zoom is not a whole number a pan may move
    // by a fraction, and the wires then sit up to half a pixel from where they were drawn.
    const QPointF at = transform.map(area.topLeft());
    painter.save();
    painter.resetTransform();
    painter.drawImage(QPoint(qRound(at.x()), qRound(at.y())), image);
    painter.restore();
}

void WireLayer::rebuild(ArrayView<ConnectionItem* const> wires, const QRectF& region, double scale, double pixelRatio)
{
    area = region;
    zoom = scale;
    valid = true;
    // As many pixels as the screen has there, so a wire stays one device pixel wide on a high-density screen.
    const double pixels = scale * pixelRatio;
    const QSize size(static_cast<int>(std::ceil(area.width() * pixels)) + 1,
        static_cast<int>(std::ceil(area.height() * pixels)) + 1);
    if (image.size() != size)
        image = QImage(size, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(pixelRatio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setTransform(QTransform::fromScale(scale, scale).translate(-area.left(), -area.top()));
    for (const ConnectionItem* wire : wires)
        if (wire->isVisible() && !wire->isLive() && wire->boundingRect().intersects(area))
            paintConnectionPath(painter, wire->getPath());
}

} // namespace Marlix::Widgets
