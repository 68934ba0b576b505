#include <MarlixLibQt/Icons.h>

#include <MarlixLib/base/Exception.h>

#include <QApplication>
#include <QCoreApplication>
#include <QIconEngine>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QStyle>
#include <QStyleOption>

#include <array>
#include <cmath>

namespace Marlix {

namespace {

constexpr QRgb CHECKER_LIGHT = 0xff999999;
constexpr QRgb CHECKER_DARK = 0xff666666;
constexpr QRgb PATCH_BORDER = 0xff202020;
constexpr std::array<int, 6> PRODUCT_ICON_SIZES = { 16, 24, 32, 48, 64, 256 };

// Product icons live until the application ends; QPixmaps must not outlive it.
struct ProductIcons
{
    QIcon* velkin = nullptr;
    QIcon* marlix = nullptr;
    bool releaseScheduled = false;
};

ProductIcons& productIcons()
{
    static ProductIcons icons;
    return icons;
}

void releaseProductIcons()
{
    delete std::exchange(productIcons().velkin, nullptr);
    delete std::exchange(productIcons().marlix, nullptr);
    productIcons().releaseScheduled = false;
}

const QIcon& cachedIcon(QIcon* ProductIcons::*slot, void (*draw)(QPainter&, qreal))
{
    QIcon*& icon = productIcons().*slot;
    if (!icon) {
        if (!QCoreApplication::instance())
            throw Exception("Icons can only be made while the application runs.");
        // Post routines run once per application object, so a later application registers again.
        if (!std::exchange(productIcons().releaseScheduled, true))
            qAddPostRoutine(releaseProductIcons);
        icon = new QIcon;
        for (const int side : PRODUCT_ICON_SIZES) {
            QPixmap pixmap(side, side);
            pixmap.fill(Qt::transparent);
            QPainter painter(&pixmap);
            painter.setRenderHint(QPainter::Antialiasing);
            draw(painter, side);
            painter.end();
            icon->addPixmap(pixmap);
        }
    }
    return *icon;
}

// A rounded square of night blue with a light "V" whose arms meet on an orange point, the scene's light source.
void drawVelkin(QPainter& p, qreal side)
{
    const qreal u = side / 16.0;
    QLinearGradient background(0, 0, 0, side);
    background.setColorAt(0.0, QColor(0x2b, 0x4a, 0x8c));
    background.setColorAt(1.0, QColor(0x10, 0x1c, 0x3a));
    p.setPen(Qt::NoPen);
    p.setBrush(background);
    p.drawRoundedRect(QRectF(0.5 * u, 0.5 * u, 15 * u, 15 * u), 3 * u, 3 * u);

    QPainterPath v;
    v.moveTo(3.5 * u, 3.5 * u);
    v.lineTo(8 * u, 12 * u);
    v.lineTo(12.5 * u, 3.5 * u);
    p.setPen(QPen(QColor(0xe8, 0xef, 0xfa), 2.2 * u, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(Qt::NoBrush);
    p.drawPath(v);

    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0xff, 0x9a, 0x2e));
    p.drawEllipse(QPointF(8 * u, 12 * u), 1.6 * u, 1.6 * u);
}

// A dark hexagon, the frame around the editors, holding three bars of a slider in the library's accent colours.
void drawMarlix(QPainter& p, qreal side)
{
    const qreal u = side / 16.0;
    QPolygonF hexagon;
    for (int i = 0; i < 6; ++i) {
        const double angle = (60.0 * i - 90.0) * 3.14159265358979323846 / 180.0;
        hexagon << QPointF(8 * u + 7.5 * u * std::cos(angle), 8 * u + 7.5 * u * std::sin(angle));
    }
    p.setPen(QPen(QColor(0x5c, 0x63, 0x70), 0.6 * u));
    p.setBrush(QColor(0x2a, 0x2d, 0x33));
    p.drawPolygon(hexagon);

    const std::array<QColor, 3> bars = { QColor(0xe0, 0x4f, 0x4f), QColor(0x5c, 0xc0, 0x5c), QColor(0x4f, 0x8f, 0xe0) };
    const std::array<qreal, 3> lengths = { 7.0, 4.5, 6.0 };
    p.setPen(Qt::NoPen);
    for (int i = 0; i < 3; ++i) {
        const qreal y = (5.0 + 2.5 * i) * u;
        p.setBrush(QColor(0x44, 0x48, 0x50));
        p.drawRoundedRect(QRectF(4.0 * u, y, 8.0 * u, 1.5 * u), 0.75 * u, 0.75 * u);
        p.setBrush(bars[std::size_t(i)]);
        p.drawRoundedRect(QRectF(4.0 * u, y, lengths[std::size_t(i)] * u, 1.5 * u), 0.75 * u, 0.75 * u);
    }
}

// The patch in logical pixels: the border is one logical pixel on any screen, laid on whole device pixels.
void drawColorPatch(QPainter& painter, const QRectF& inside, const QColor& color)
{
    painter.save();
    if (!color.isValid()) {
        painter.fillRect(inside, Qt::white);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(Qt::red, std::max(1.0, inside.height() / 8.0)));
        painter.drawLine(inside.bottomLeft(), inside.topRight());
    } else {
        if (color.alpha() < 255)
            painter.fillRect(inside, checkerboardBrush4X4());
        painter.fillRect(inside, color);
    }
    const QColor border = QColor::fromRgba(PATCH_BORDER);
    const qreal w = inside.width();
    const qreal h = inside.height();
    painter.fillRect(QRectF(inside.left(), inside.top(), w, 1.0), border);
    painter.fillRect(QRectF(inside.left(), inside.bottom() - 1.0, w, 1.0), border);
    painter.fillRect(QRectF(inside.left(), inside.top(), 1.0, h), border);
    painter.fillRect(QRectF(inside.right() - 1.0, inside.top(), 1.0, h), border);
    painter.restore();
}

// Draws the patch for whatever size and device pixel ratio it is asked, so that it stays sharp on scaled screens
// instead of being stretched from one pixmap.
class ColorPatchIconEngine final : public QIconEngine
{
public:
    ColorPatchIconEngine(const QColor& color, const QSize& size)
        : color(color)
        , size(size)
    {
    }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override
    {
        const qreal ratio = painter->device() ? painter->device()->devicePixelRatio() : 1.0;
        const QPixmap patch = scaledPixmap(rect.size() * ratio, mode, state, ratio);
        const QSizeF shown = patch.deviceIndependentSize();
        painter->drawPixmap(
            QPointF(rect.x() + (rect.width() - shown.width()) / 2.0, rect.y() + (rect.height() - shown.height()) / 2.0),
            patch);
    }

    // Never larger than the size it was made for, as an icon of one pixmap of that size would be.
    QSize actualSize(const QSize& requested, QIcon::Mode, QIcon::State) override
    {
        return size.scaled(size.boundedTo(requested), Qt::KeepAspectRatio);
    }

    QPixmap pixmap(const QSize& requested, QIcon::Mode mode, QIcon::State state) override
    {
        return scaledPixmap(requested, mode, state, 1.0);
    }

    // `requested` counts device pixels.
    QPixmap scaledPixmap(const QSize& requested, QIcon::Mode mode, QIcon::State state, qreal scale) override
    {
        const qreal ratio = scale > 0.0 ? scale : 1.0;
        const QSize logical = actualSize((QSizeF(requested) / ratio).toSize(), mode, state);
        if (logical.isEmpty())
            return {};
        QPixmap pixmap((QSizeF(logical) * ratio).toSize());
        pixmap.setDevicePixelRatio(ratio);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        drawColorPatch(painter, QRectF(QPointF(), QSizeF(logical)), color);
        painter.end();
        if (mode != QIcon::Normal && qobject_cast<QApplication*>(QCoreApplication::instance())) {
            QStyleOption option;
            option.palette = QApplication::palette();
            return QApplication::style()->generatedIconPixmap(mode, pixmap, &option);
        }
        return pixmap;
    }

    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override { return { size }; }
    QString key() const override { return QStringLiteral("MarlixColorPatch"); }
    QIconEngine* clone() const override { return new ColorPatchIconEngine(color, size); }

private:
    QColor color;
    QSize size;
};

} // namespace

QIcon getColorPatchIcon(const QColor& color, const QSize& size)
{
    if (size.width() < 1 || size.height() < 1)
        throw Exception("A colour patch icon needs a width and a height of at least one pixel.");
    return QIcon(new ColorPatchIconEngine(color, size));
}

const QIcon& getVelkinIcon()
{
    return cachedIcon(&ProductIcons::velkin, drawVelkin);
}

const QIcon& getMarlixIcon()
{
    return cachedIcon(&ProductIcons::marlix, drawMarlix);
}

QBrush checkerboardBrush4X4()
{
    QImage tile(8, 8, QImage::Format_RGB32);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            tile.setPixel(x, y, ((x / 4) + (y / 4)) % 2 == 0 ? CHECKER_LIGHT : CHECKER_DARK);
    return QBrush(tile);
}

QImage convertToGrayscale(const QImage& image)
{
    if (image.isNull())
        return {};
    QImage result = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < result.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(result.scanLine(y));
        for (int x = 0; x < result.width(); ++x) {
            const QRgb p = line[x];
            const int luma = int(std::lround(0.2126 * qRed(p) + 0.7152 * qGreen(p) + 0.0722 * qBlue(p)));
            line[x] = qRgba(luma, luma, luma, qAlpha(p));
        }
    }
    return result;
}

} // namespace Marlix
