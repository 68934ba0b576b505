#include <MarlixLib/base/Exception.h>
#include <MarlixLib/color/Blackbody.h>

#include <QtTest/QTest>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace Marlix;

namespace {

// Linear Rec.709 back to CIE 1931 XYZ (D65), the inverse of the matrix the colour is made with.
void toChromaticity(const Rgb& c, double& x, double& y)
{
    const double bigX = 0.4124564 * c.r + 0.3575761 * c.g + 0.1804375 * c.b;
    const double bigY = 0.2126729 * c.r + 0.7151522 * c.g + 0.0721750 * c.b;
    const double bigZ = 0.0193339 * c.r + 0.1191920 * c.g + 0.9503041 * c.b;
    const double sum = bigX + bigY + bigZ;
    x = bigX / sum;
    y = bigY / sum;
}

float largest(const Rgb& c)
{
    return std::max({ c.r, c.g, c.b });
}

} // namespace

class TestBlackbody : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsPlanckianLocus_data();
    void followsPlanckianLocus();
    void referenceWhite();
    void brightestIsFull_data();
    void brightestIsFull();
    void hotterIsBluer();
    void rejectsBadTemperatures_data();
    void rejectsBadTemperatures();
};

void TestBlackbody::followsPlanckianLocus_data()
{
    QTest::addColumn<float>("kelvin");
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("y");
    // CIE 1931 2° chromaticities of the Planckian locus as published in colorimetry tables.
    QTest::newRow("2000 K") << 2000.f << 0.5267 << 0.4133;
    QTest::newRow("2500 K") << 2500.f << 0.4770 << 0.4137;
    QTest::newRow("3000 K") << 3000.f << 0.4369 << 0.4041;
    QTest::newRow("3500 K") << 3500.f << 0.4053 << 0.3907;
    QTest::newRow("4000 K") << 4000.f << 0.3805 << 0.3768;
    QTest::newRow("5000 K") << 5000.f << 0.3451 << 0.3516;
    QTest::newRow("6000 K") << 6000.f << 0.3221 << 0.3318;
    QTest::newRow("6500 K") << 6500.f << 0.3135 << 0.3236;
    QTest::newRow("7000 K") << 7000.f << 0.3064 << 0.3166;
    QTest::newRow("8000 K") << 8000.f << 0.2952 << 0.3048;
    QTest::newRow("10000 K") << 10000.f << 0.2807 << 0.2884;
}

void TestBlackbody::followsPlanckianLocus()
{
    QFETCH(float, kelvin);
    QFETCH(double, x);
    QFETCH(double, y);
    double actualX = 0.0;
    double actualY = 0.0;
    toChromaticity(blackbodyColorRgb(kelvin), actualX, actualY);
    QVERIFY2(std::abs(actualX - x) <= 0.003, qPrintable(QStringLiteral("x %1").arg(actualX)));
    QVERIFY2(std::abs(actualY - y) <= 0.003, qPrintable(QStringLiteral("y %1").arg(actualY)));
}

void TestBlackbody::referenceWhite()
{
    // The white of the display primaries is D65, which lies next to 6500 K, so the black body there is nearly
    // neutral; it is not made white, which is left to the caller.
    const Rgb white = blackbodyColorRgb(6500.f);
    QCOMPARE(white.a, 1.f);
    QVERIFY(std::abs(white.r / white.g - 1.f) < 0.1f);
    QVERIFY(std::abs(white.b / white.g - 1.f) < 0.1f);
    QVERIFY(white.r != white.g || white.g != white.b);
    QCOMPARE(blackbodyColorRgb(6500.f), white);
}

void TestBlackbody::brightestIsFull_data()
{
    QTest::addColumn<float>("kelvin");
    QTest::newRow("far below glowing") << 10.f;
    QTest::newRow("candle") << 1700.f;
    QTest::newRow("daylight") << 6500.f;
    QTest::newRow("blue sky") << 15000.f;
    QTest::newRow("star core") << 1e7f;
}

void TestBlackbody::brightestIsFull()
{
    // The colour of the light, not its brightness: a hotter body is not a brighter colour.
    QFETCH(float, kelvin);
    const Rgb c = blackbodyColorRgb(kelvin);
    QVERIFY2(std::abs(largest(c) - 1.f) < 1e-6f, qPrintable(QString::number(largest(c))));
}

void TestBlackbody::hotterIsBluer()
{
    Rgb previous = blackbodyColorRgb(1000.f);
    for (float kelvin = 1500.f; kelvin <= 40000.f; kelvin += 500.f) {
        const Rgb c = blackbodyColorRgb(kelvin);
        QVERIFY(c.b / c.r > previous.b / previous.r);
        QVERIFY(c.g / c.r > previous.g / previous.r);
        previous = c;
    }
    const Rgb candle = blackbodyColorRgb(1700.f);
    QCOMPARE(candle.r, 1.f);
    QVERIFY(candle.g < .3f && candle.b < .01f);
    const Rgb sky = blackbodyColorRgb(15000.f);
    QCOMPARE(sky.b, 1.f);
    QVERIFY(sky.r < .5f);
}

void TestBlackbody::rejectsBadTemperatures_data()
{
    QTest::addColumn<float>("kelvin");
    QTest::newRow("zero") << 0.f;
    QTest::newRow("negative") << -300.f;
    QTest::newRow("not a number") << std::numeric_limits<float>::quiet_NaN();
    QTest::newRow("infinite") << std::numeric_limits<float>::infinity();
}

void TestBlackbody::rejectsBadTemperatures()
{
    QFETCH(float, kelvin);
    try {
        blackbodyColorRgb(kelvin);
        QFAIL("no exception");
    } catch (const Exception& e) {
        QVERIFY(QString::fromStdString(e.getMessage()).contains(QStringLiteral("temperature")));
    }
}

QTEST_GUILESS_MAIN(TestBlackbody)
#include "tst_Blackbody.moc"
