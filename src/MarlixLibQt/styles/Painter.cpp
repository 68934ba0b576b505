#include <MarlixLibQt/styles/Painter.h>

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace Marlix {

namespace {

bool isFinite(const QPointF& p)
{
    return std::isfinite(p.x()) && std::isfinite(p.y());
}

bool isFinite(const QLineF& line)
{
    return isFinite(line.p1()) && isFinite(line.p2());
}

// Applies the options for one call and puts the painter back as it was.
class ScopedOptions
{
public:
    ScopedOptions(QPainter& painter, Painter::Options options)
        : painter(painter)
        , oldAntialiasing(painter.testRenderHint(QPainter::Antialiasing))
        , changePen(options.has(Painter::Option::Cosmetic) && !painter.pen().isCosmetic())
        , changeHint(options.has(Painter::Option::Antialiased) && !oldAntialiasing)
    {
        if (changeHint)
            painter.setRenderHint(QPainter::Antialiasing, true);
        if (changePen) {
            oldPen = painter.pen();
            QPen pen = oldPen;
            pen.setCosmetic(true);
            painter.setPen(pen);
        }
    }
    ~ScopedOptions()
    {
        if (changePen)
            painter.setPen(oldPen);
        if (changeHint)
            painter.setRenderHint(QPainter::Antialiasing, oldAntialiasing);
    }
    ScopedOptions(const ScopedOptions&) = delete;
    ScopedOptions& operator=(const ScopedOptions&) = delete;

private:
    QPainter& painter;
    QPen oldPen;
    bool oldAntialiasing;
    bool changePen;
    bool changeHint;
};

bool hasPen(const QPainter& painter)
{
    return painter.pen().style() != Qt::NoPen;
}

} // namespace

void Painter::drawLines(QPainter& painter, ArrayView<const QLineF> lines, Options options)
{
    if (lines.empty() || !hasPen(painter))
        return;
    const ScopedOptions scoped(painter, options);
    if (std::all_of(lines.begin(), lines.end(), [](const QLineF& line) { return isFinite(line); })) {
        painter.drawLines(lines.data(), static_cast<int>(lines.size()));
        return;
    }
    QVarLengthArray<QLineF, 256> finite;
    for (const QLineF& line : lines) {
        if (isFinite(line))
            finite.append(line);
    }
    if (!finite.isEmpty())
        painter.drawLines(finite.constData(), static_cast<int>(finite.size()));
}

void Painter::drawLines(QPainter& painter, ArrayView<const QPointF> points, Options options)
{
    if (points.size() < 2 || !hasPen(painter))
        return;
    QVarLengthArray<QLineF, 256> lines;
    lines.reserve(static_cast<qsizetype>(points.size() / 2));
    for (std::size_t i = 0; i + 1 < points.size(); i += 2)
        lines.append(QLineF(points[i], points[i + 1]));
    drawLines(painter, ArrayView<const QLineF>(lines.constData(), lines.size()), options);
}

void Painter::drawPolyline(QPainter& painter, ArrayView<const QPointF> points, Options options)
{
    if (points.size() < 2 || !hasPen(painter))
        return;
    const ScopedOptions scoped(painter, options);
    std::size_t begin = 0;
    while (begin < points.size()) {
        while (begin < points.size() && !isFinite(points[begin]))
            ++begin;
        std::size_t end = begin;
        while (end < points.size() && isFinite(points[end]))
            ++end;
        if (end - begin >= 2)
            painter.drawPolyline(points.data() + begin, static_cast<int>(end - begin));
        begin = end;
    }
}

void Painter::drawPolygon(QPainter& painter, ArrayView<const QPointF> points, Qt::FillRule fillRule, Options options)
{
    if (points.size() < 3 || (!hasPen(painter) && painter.brush().style() == Qt::NoBrush))
        return;
    if (!std::all_of(points.begin(), points.end(), [](const QPointF& p) { return isFinite(p); }))
        return;
    const ScopedOptions scoped(painter, options);
    painter.drawPolygon(points.data(), static_cast<int>(points.size()), fillRule);
}

} // namespace Marlix
