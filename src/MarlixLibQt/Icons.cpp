#include <MarlixLibQt/Icons.h>

#include <MarlixLib/base/Exception.h>

#include <QCoreApplication>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

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

} // namespace

QIcon getColorPatchIcon(const QColor& color, const QSize& size)
{
    if (size.width() < 1 || size.height() < 1)
        throw Exception("A colour patch icon needs a width and a height of at least one pixel.");
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    const QRect inside = pixmap.rect();
    if (!color.isValid()) {
        painter.fillRect(inside, Qt::white);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(Qt::red, std::max(1.0, size.height() / 8.0)));
        painter.drawLine(QPointF(inside.bottomLeft()) + QPointF(0, 1), QPointF(inside.topRight()) + QPointF(1, 0));
        painter.setRenderHint(QPainter::Antialiasing, false);
    } else {
        if (color.alpha() < 255)
            painter.fillRect(inside, checkerboardBrush4X4());
        painter.fillRect(inside, color);
    }
    painter.setPen(QColor::fromRgba(PATCH_BORDER));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(inside.adjusted(0, 0, -1, -1));
    painter.end();
    return QIcon(pixmap);
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
