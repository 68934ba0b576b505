// Draws the library's icons for a dark interface as 16x16 PNG files with @2x companions.
// Usage: icongen <output folder>, normally src/MarlixLibQt/resources/icons/ui.

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <cstdio>
#include <functional>
#include <vector>

namespace {

// Every icon is drawn on a 16x16 grid; strokes on half units stay crisp at 1x.
constexpr int GRID = 16;
const QColor INK(0xd2, 0xd2, 0xd2);
const QColor ACCENT(0x6f, 0xa0, 0xe0);
const QColor SOFT(0x8c, 0x8c, 0x8c);

QPen pen(const QColor& color, double width = 1.0)
{
    QPen p(color, width);
    p.setCapStyle(Qt::RoundCap);
    p.setJoinStyle(Qt::RoundJoin);
    return p;
}

void presets(QPainter& p)
{
    // A curve in its frame, and the drop-down mark of a menu of stored curves.
    p.setPen(pen(SOFT));
    p.drawRoundedRect(QRectF(1.5, 1.5, 10, 10), 1.5, 1.5);
    QPainterPath curve(QPointF(2.5, 10.5));
    curve.cubicTo(QPointF(7.0, 10.5), QPointF(6.0, 2.5), QPointF(10.5, 2.5));
    p.setPen(pen(INK, 1.25));
    p.drawPath(curve);
    p.setPen(Qt::NoPen);
    p.setBrush(ACCENT);
    p.drawPolygon(QPolygonF({ QPointF(10.0, 12.0), QPointF(16.0, 12.0), QPointF(13.0, 15.5) }));
}

void equalize(QPainter& p)
{
    // Uneven bars in the background, levelled ones in front.
    p.setPen(Qt::NoPen);
    p.setBrush(SOFT);
    const double uneven[] = { 6.0, 11.0, 3.0, 9.0 };
    for (int i = 0; i < 4; ++i)
        p.drawRect(QRectF(1.0 + i * 3.75, 15.0 - uneven[i], 2.75, uneven[i]));
    p.setBrush(ACCENT);
    for (int i = 0; i < 4; ++i)
        p.drawRect(QRectF(1.0 + i * 3.75, 8.0, 2.75, 7.0));
    p.setPen(pen(INK, 1.0));
    p.drawLine(QPointF(0.5, 5.5), QPointF(15.5, 5.5));
}

void clickAndDrag(QPainter& p)
{
    // A mouse pointer with an up-and-down arrow beside it.
    QPolygonF pointer({ QPointF(2.0, 1.5), QPointF(2.0, 12.0), QPointF(4.75, 9.5), QPointF(6.5, 13.5),
        QPointF(8.25, 12.75), QPointF(6.5, 8.75), QPointF(10.0, 8.75) });
    p.setPen(pen(QColor(0x1e, 0x1e, 0x1e), 1.0));
    p.setBrush(INK);
    p.drawPolygon(pointer);
    p.setPen(pen(ACCENT, 1.25));
    p.drawLine(QPointF(13.0, 2.0), QPointF(13.0, 14.0));
    p.drawPolyline(QPolygonF({ QPointF(11.0, 4.0), QPointF(13.0, 2.0), QPointF(15.0, 4.0) }));
    p.drawPolyline(QPolygonF({ QPointF(11.0, 12.0), QPointF(13.0, 14.0), QPointF(15.0, 12.0) }));
}

void undock(QPainter& p)
{
    // A window with an arrow leaving it to the upper right.
    p.setPen(pen(INK));
    p.setBrush(Qt::NoBrush);
    p.drawPolyline(QPolygonF(
        { QPointF(8.5, 3.5), QPointF(1.5, 3.5), QPointF(1.5, 14.5), QPointF(12.5, 14.5), QPointF(12.5, 7.5) }));
    p.drawLine(QPointF(1.5, 6.0), QPointF(6.5, 6.0));
    p.setPen(pen(ACCENT, 1.5));
    p.drawLine(QPointF(6.5, 9.5), QPointF(14.5, 1.5));
    p.drawPolyline(QPolygonF({ QPointF(9.5, 1.5), QPointF(14.5, 1.5), QPointF(14.5, 6.5) }));
}

void reset(QPainter& p)
{
    // An arrow turning back, counter-clockwise, to its start.
    p.setPen(pen(INK, 1.5));
    p.setBrush(Qt::NoBrush);
    p.drawArc(QRectF(2.5, 2.5, 11.0, 11.0), 150 * 16, 290 * 16);
    // The arc ends at the top; the head points left, along its counter-clockwise travel, into the gap.
    p.setPen(Qt::NoPen);
    p.setBrush(ACCENT);
    p.drawPolygon(QPolygonF({ QPointF(4.6, 2.75), QPointF(8.6, 0.25), QPointF(8.6, 5.25) }));
}

void eyedropper(QPainter& p)
{
    // A pipette pointing to the lower left with a drop of colour at its tip.
    p.save();
    p.translate(8.0, 8.0);
    p.rotate(45.0);
    p.setPen(Qt::NoPen);
    p.setBrush(INK);
    p.drawRoundedRect(QRectF(-2.0, -9.0, 4.0, 4.0), 1.0, 1.0);
    p.drawRect(QRectF(-3.25, -5.25, 6.5, 1.5));
    p.setPen(pen(INK, 1.0));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(-1.25, -3.75, 2.5, 8.5));
    p.setPen(Qt::NoPen);
    p.setBrush(ACCENT);
    p.drawRect(QRectF(-0.75, 0.5, 1.5, 4.0));
    p.restore();
    p.setPen(Qt::NoPen);
    p.setBrush(ACCENT);
    p.drawEllipse(QPointF(2.0, 14.0), 1.25, 1.25);
}

void plus(QPainter& p)
{
    p.setPen(pen(INK, 2.0));
    p.drawLine(QPointF(8.0, 3.0), QPointF(8.0, 13.0));
    p.drawLine(QPointF(3.0, 8.0), QPointF(13.0, 8.0));
}

void minus(QPainter& p)
{
    p.setPen(pen(INK, 2.0));
    p.drawLine(QPointF(3.0, 8.0), QPointF(13.0, 8.0));
}

void pin(QPainter& p)
{
    // A push pin, head up to the right, needle down to the left.
    p.save();
    p.translate(8.0, 8.0);
    p.rotate(45.0);
    p.setPen(Qt::NoPen);
    p.setBrush(ACCENT);
    p.drawRoundedRect(QRectF(-2.5, -8.0, 5.0, 2.0), 0.75, 0.75);
    p.drawRect(QRectF(-1.5, -6.0, 3.0, 4.5));
    p.drawRoundedRect(QRectF(-4.0, -1.75, 8.0, 2.0), 0.75, 0.75);
    p.setPen(pen(INK, 1.0));
    p.drawLine(QPointF(0.0, 0.5), QPointF(0.0, 7.5));
    p.restore();
}

struct Icon
{
    const char* path;
    std::function<void(QPainter&)> draw;
};

bool writeIcon(const QDir& root, const Icon& icon, int scale)
{
    QImage image(GRID * scale, GRID * scale, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing, true);
        painter.scale(scale, scale);
        icon.draw(painter);
    }
    QString file = QString::fromLatin1(icon.path);
    if (scale > 1)
        file.replace(QLatin1String(".png"), QStringLiteral("@%1x.png").arg(scale));
    const QString target = root.filePath(file);
    if (!root.mkpath(QFileInfo(target).path()) || !image.save(target, "PNG")) {
        std::fprintf(stderr, "icongen: cannot write %s\n", qPrintable(target));
        return false;
    }
    std::printf("%s\n", qPrintable(target));
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: icongen <output folder>\n");
        return 2;
    }
    const QDir root(QDir(QString::fromLocal8Bit(argv[1])).absolutePath());
    const std::vector<Icon> icons {
        { "Zorva.CurveEditor/Presets.png", presets },
        { "Zorva.CurveEditor/Equalize.png", equalize },
        { "Zorva.CurveEditor/ClickAndDrag.png", clickAndDrag },
        { "Zorva.Dock/Undock.png", undock },
        { "Zorva.Common/Reset.png", reset },
        { "Zorva.Common/Add.png", plus },
        { "Zorva.Common/Remove.png", minus },
        { "Zorva.Common/Pin.png", pin },
        { "Zorva.ColorPicker/Eyedropper.png", eyedropper },
    };
    bool ok = true;
    for (const Icon& icon : icons) {
        for (const int scale : { 1, 2 })
            ok = writeIcon(root, icon, scale) && ok;
    }
    return ok ? 0 : 1;
}
