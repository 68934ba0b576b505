#include <MarlixLib/math/Vector2.h>
#include <MarlixLibQt/styles/Painter.h>

#include <QImage>
#include <QPainter>
#include <QTest>

#include <limits>
#include <vector>

using Marlix::Painter;
using Marlix::Vector2;

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double INF = std::numeric_limits<double>::infinity();

QImage canvas()
{
    QImage image(40, 40, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

bool painted(const QImage& image, int x, int y)
{
    return qAlpha(image.pixel(x, y)) > 0;
}

int paintedCount(const QImage& image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += painted(image, x, y) ? 1 : 0;
    return count;
}

bool hasPartialAlpha(const QImage& image)
{
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (const int a = qAlpha(image.pixel(x, y)); a > 0 && a < 255)
                return true;
    return false;
}

} // namespace

class tst_Painter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyInputDrawsNothing_data();
    void emptyInputDrawsNothing();
    void polylineBreaksAtNonFinitePoints();
    void linesSkipNonFiniteEnds();
    void pairsIgnoreOddLastPoint();
    void polygonWithNonFinitePointIsSkipped();
    void antialiasingIsForOneCall();
    void cosmeticPenIsForOneCall();
    void pointLikeArraysDrawLikeQPointF();
};

void tst_Painter::emptyInputDrawsNothing_data()
{
    QTest::addColumn<int>("call");
    QTest::addColumn<int>("count");
    QTest::newRow("polyline of none") << 0 << 0;
    QTest::newRow("polyline of one point") << 0 << 1;
    QTest::newRow("polygon of two points") << 1 << 2;
    QTest::newRow("pairs of one point") << 2 << 1;
    QTest::newRow("no lines") << 3 << 0;
}

void tst_Painter::emptyInputDrawsNothing()
{
    QFETCH(int, call);
    QFETCH(int, count);
    const std::vector<QPointF> all { { 5, 5 }, { 30, 30 }, { 5, 30 } };
    const Marlix::ArrayView<const QPointF> points(all.data(), std::size_t(count));
    QImage image = canvas();
    QPainter painter(&image);
    painter.setPen(QPen(Qt::white, 3));
    painter.setBrush(Qt::white);
    switch (call) {
    case 0:
        Painter::drawPolyline(painter, points, Painter::Option::Antialiased);
        break;
    case 1:
        Painter::drawPolygon(painter, points, Qt::OddEvenFill, Painter::Option::Antialiased);
        break;
    case 2:
        Painter::drawLines(painter, points, Painter::Option::Antialiased);
        break;
    default:
        Painter::drawLines(painter, Marlix::ArrayView<const QLineF>(), Painter::Option::Antialiased);
    }
    QVERIFY(!painter.testRenderHint(QPainter::Antialiasing));
    painter.end();
    QCOMPARE(paintedCount(image), 0);
}

void tst_Painter::polylineBreaksAtNonFinitePoints()
{
    const std::vector<QPointF> points { { 2, 5 }, { 12, 5 }, { NaN, 20 }, { 25, 30 }, { 35, 30 }, { INF, 0 } };
    QImage image = canvas();
    QPainter painter(&image);
    painter.setPen(QPen(Qt::white, 1));
    Painter::drawPolyline(painter, points);
    painter.end();

    QVERIFY(painted(image, 7, 5));
    QVERIFY(painted(image, 30, 30));
    // No segment joins the two runs across the gap.
    QVERIFY(!painted(image, 18, 17));
    QVERIFY(!painted(image, 18, 5));
    QVERIFY(!painted(image, 18, 30));
}

void tst_Painter::linesSkipNonFiniteEnds()
{
    const std::vector<QLineF> lines { QLineF(2, 5, 30, 5), QLineF(2, 20, NaN, 20), QLineF(2, 35, 30, 35) };
    QImage image = canvas();
    QPainter painter(&image);
    painter.setPen(QPen(Qt::white, 1));
    Painter::drawLines(painter, lines);
    painter.end();

    QVERIFY(painted(image, 15, 5));
    QVERIFY(!painted(image, 15, 20));
    QVERIFY(painted(image, 15, 35));
}

void tst_Painter::pairsIgnoreOddLastPoint()
{
    const std::vector<QPointF> points { { 2, 5 }, { 30, 5 }, { 2, 35 } };
    QImage image = canvas();
    QPainter painter(&image);
    painter.setPen(QPen(Qt::white, 1));
    Painter::drawLines(painter, points);
    painter.end();

    QVERIFY(painted(image, 15, 5));
    QCOMPARE(paintedCount(image), 29);
}

void tst_Painter::polygonWithNonFinitePointIsSkipped()
{
    QImage image = canvas();
    QPainter painter(&image);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    const std::vector<QPointF> broken { { 0, 0 }, { 30, 0 }, { NaN, 30 } };
    Painter::drawPolygon(painter, broken);
    QCOMPARE(paintedCount(image), 0);
    const std::vector<QPointF> square { { 0, 0 }, { 10, 0 }, { 10, 10 }, { 0, 10 } };
    Painter::drawPolygon(painter, square);
    painter.end();
    QCOMPARE(paintedCount(image), 100);
}

void tst_Painter::antialiasingIsForOneCall()
{
    const std::vector<QPointF> diagonal { { 2, 3 }, { 37, 20 } };
    QImage aliased = canvas();
    QImage smooth = canvas();
    {
        QPainter painter(&aliased);
        painter.setPen(QPen(Qt::white, 1.5));
        Painter::drawPolyline(painter, diagonal);
    }
    {
        QPainter painter(&smooth);
        painter.setPen(QPen(Qt::white, 1.5));
        Painter::drawPolyline(painter, diagonal, Painter::Option::Antialiased);
        QVERIFY(!painter.testRenderHint(QPainter::Antialiasing));
    }
    QVERIFY(!hasPartialAlpha(aliased));
    QVERIFY(hasPartialAlpha(smooth));
}

void tst_Painter::cosmeticPenIsForOneCall()
{
    const std::vector<QPointF> line { { 0, 2 }, { 3, 2 } };
    const auto thickness = [&](Painter::Options options) {
        QImage image = canvas();
        QPainter painter(&image);
        painter.scale(10, 10);
        painter.setPen(QPen(Qt::white, 1));
        Painter::drawPolyline(painter, line, options);
        const bool stillCosmetic = painter.pen().isCosmetic();
        painter.end();
        int rows = 0;
        for (int y = 0; y < image.height(); ++y)
            rows += painted(image, 15, y) ? 1 : 0;
        return stillCosmetic ? -1 : rows;
    };
    QCOMPARE(thickness({}), 10);
    QCOMPARE(thickness(Painter::Option::Cosmetic), 1);
}

void tst_Painter::pointLikeArraysDrawLikeQPointF()
{
    const std::vector<Vector2> vectors { { 2, 3 }, { 30, 8 }, { 12, 35 }, { 3, 20 } };
    std::vector<QPointF> points;
    for (const Vector2& v : vectors)
        points.emplace_back(v.x, v.y);

    const auto render = [](const auto& input) {
        QImage image = canvas();
        QPainter painter(&image);
        painter.setPen(QPen(Qt::white, 2));
        painter.setBrush(Qt::gray);
        Painter::drawPolygon(painter, input, Qt::WindingFill, Painter::Option::Antialiased);
        Painter::drawPolyline(painter, input, Painter::Option::Antialiased);
        Painter::drawLines(painter, input);
        return image;
    };
    const QImage fromVectors = render(vectors);
    QVERIFY(paintedCount(fromVectors) > 100);
    QCOMPARE(fromVectors, render(points));
}

QTEST_MAIN(tst_Painter)
#include "tst_Painter.moc"
