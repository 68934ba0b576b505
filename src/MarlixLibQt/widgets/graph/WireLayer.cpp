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

void WireLayer::paint(
    QPainter& painter, ArrayView<ConnectionItem* const> wires, const QRectF& visible, const Underlay& underlay)
{
    const QTransform transform = painter.worldTransform();
    const double scale = transform.m11();
    const double pixelRatio = painter.device() ? painter.device()->devicePixelRatio() : 1.0;
    if (!valid || scale != zoom || pixelRatio != image.devicePixelRatio() || !area.contains(visible)) {
        area = visible.adjusted(
            -visible.width() * REACH, -visible.height() * REACH, visible.width() * REACH, visible.height() * REACH);
        // The image starts on a device pixel, so what is in it is antialiased as it would be on the screen.
        const QPointF corner = transform.map(area.topLeft());
        area.setTopLeft(transform.inverted().map(QPointF(std::floor(corner.x()), std::floor(corner.y()))));
        rebuild(wires, underlay, scale, pixelRatio);
    }
    // Whole device pixels, so the copy is a plain one. Where the view's zoom is not a whole number a pan may move by
    // a fraction, and the canvas then sits up to half a pixel from where it was drawn.
    const QPointF at = transform.map(area.topLeft());
    painter.save();
    painter.resetTransform();
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(QPoint(qRound(at.x()), qRound(at.y())), image);
    painter.restore();
}

void WireLayer::rebuild(
    ArrayView<ConnectionItem* const> wires, const Underlay& underlay, double scale, double pixelRatio)
{
    zoom = scale;
    valid = true;
    // As many pixels as the screen has there, so a wire stays one device pixel wide on a high-density screen.
    const double pixels = scale * pixelRatio;
    const QSize size(static_cast<int>(std::ceil(area.width() * pixels)) + 1,
        static_cast<int>(std::ceil(area.height() * pixels)) + 1);
    if (image.size() != size)
        image = QImage(size, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(pixelRatio);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setTransform(QTransform::fromScale(scale, scale).translate(-area.left(), -area.top()));
    if (underlay)
        underlay(painter, area);
    else
        image.fill(Qt::transparent);
    for (const ConnectionItem* wire : wires)
        if (wire->isVisible() && !wire->isLive() && wire->boundingRect().intersects(area))
            paintConnectionPath(painter, wire->getPath());
}

} // namespace Marlix::Widgets
