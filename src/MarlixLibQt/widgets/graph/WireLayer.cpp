#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
#include <MarlixLibQt/widgets/graph/WireLayer.h>

#include <QPaintDevice>
#include <QPainter>
#include <QRegion>

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
    const QRectF wanted = visible.adjusted(
        -visible.width() * REACH, -visible.height() * REACH, visible.width() * REACH, visible.height() * REACH);
    if (!valid || scale != zoom || pixelRatio != image.devicePixelRatio()) {
        area = wanted;
        // The image starts on a device pixel, so what is in it is antialiased as it would be on the screen.
        const QPointF corner = transform.map(area.topLeft());
        area.setTopLeft(transform.inverted().map(QPointF(std::floor(corner.x()), std::floor(corner.y()))));
        rebuild(wires, underlay, scale, pixelRatio);
    } else if (!area.contains(visible.adjusted(-visible.width() * REACH * 0.5, -visible.height() * REACH * 0.5,
                   visible.width() * REACH * 0.5, visible.height() * REACH * 0.5))) {
        // Moved on before the screen reaches the edge, so each step draws a narrow strip.
        scroll(wires, underlay, wanted);
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

QSize WireLayer::pixelSize(const QRectF& rect, double pixelRatio) const
{
    const double pixels = zoom * pixelRatio;
    return { static_cast<int>(std::ceil(rect.width() * pixels)) + 1,
        static_cast<int>(std::ceil(rect.height() * pixels)) + 1 };
}

void WireLayer::rebuild(
    ArrayView<ConnectionItem* const> wires, const Underlay& underlay, double scale, double pixelRatio)
{
    zoom = scale;
    valid = true;
    // As many pixels as the screen has there, so a wire stays one device pixel wide on a high-density screen.
    const QSize size = pixelSize(area, pixelRatio);
    if (image.size() != size)
        image = QImage(size, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(pixelRatio);
    draw(wires, underlay, image.rect());
}

void WireLayer::scroll(ArrayView<ConnectionItem* const> wires, const Underlay& underlay, const QRectF& wanted)
{
    // The new area keeps the pixel grid of the old one, so what both show is copied and only the rest is drawn: a
    // long pan never draws the whole canvas at once.
    const double pixels = zoom * image.devicePixelRatio();
    const QPoint shift(static_cast<int>(std::floor((wanted.left() - area.left()) * pixels)),
        static_cast<int>(std::floor((wanted.top() - area.top()) * pixels)));
    const QRect kept = image.rect().translated(-shift);
    area = QRectF(area.topLeft() + QPointF(shift) / pixels, wanted.size());
    const double pixelRatio = image.devicePixelRatio();
    image = image.copy(QRect(shift, pixelSize(area, pixelRatio)));
    image.setDevicePixelRatio(pixelRatio);
    for (const QRect& exposed : QRegion(image.rect()).subtracted(QRegion(kept)))
        draw(wires, underlay, exposed);
}

void WireLayer::draw(ArrayView<ConnectionItem* const> wires, const Underlay& underlay, const QRect& pixelRect)
{
    const double pixelRatio = image.devicePixelRatio();
    const double pixels = zoom * pixelRatio;
    const QRectF region(area.topLeft() + QPointF(pixelRect.topLeft()) / pixels, QSizeF(pixelRect.size()) / pixels);
    if (!underlay)
        image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setClipRect(QRectF(QPointF(pixelRect.topLeft()) / pixelRatio, QSizeF(pixelRect.size()) / pixelRatio));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setTransform(QTransform::fromScale(zoom, zoom).translate(-area.left(), -area.top()));
    if (underlay)
        underlay(painter, region);
    for (const ConnectionItem* wire : wires)
        if (wire->isVisible() && !wire->isLive() && wire->boundingRect().intersects(region))
            paintConnectionPath(painter, wire->getPath());
}

} // namespace Marlix::Widgets
