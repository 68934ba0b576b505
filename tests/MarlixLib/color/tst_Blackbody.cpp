#include <MarlixLib/base/Exception.h>
#include <MarlixLib/color/Blackbody.h>

#include <QtTest/QTest>

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

} // namespace

class TestBlackbody : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsPlanckianLocus_data();
    void followsPlanckianLocus();
    void referenceWhite();
    void hotterIsBrighterAndBluer();
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
    // neutral.
    const Rgb white = blackbodyColorRgb(6500.f);
    QVERIFY(white.r > 0.f && white.g > 0.f && white.b > 0.f);
    QCOMPARE(white.a, 1.f);
    QVERIFY(std::abs(white.r / white.g - 1.f) < 0.1f);
    QVERIFY(std::abs(white.b / white.g - 1.f) < 0.1f);
    // Not normalised: the caller divides.
    QVERIFY(white.g > 1.f);
    const Rgb again = blackbodyColorRgb(6500.f);
    QCOMPARE(again, white);
}

void TestBlackbody::hotterIsBrighterAndBluer()
{
    Rgb previous = blackbodyColorRgb(1700.f);
    for (float kelvin = 2000.f; kelvin <= 15000.f; kelvin += 500.f) {
        const Rgb c = blackbodyColorRgb(kelvin);
        QVERIFY(c.g > previous.g);
        QVERIFY(c.b / c.r > previous.b / previous.r);
        previous = c;
    }
    const Rgb candle = blackbodyColorRgb(1700.f);
    QVERIFY(candle.r > candle.g);
    const Rgb sky = blackbodyColorRgb(15000.f);
    QVERIFY(sky.b > sky.r);
    // Far below visible glow the colour is black, not a division by an infinite exponential.
    const Rgb cold = blackbodyColorRgb(10.f);
    QCOMPARE(cold.g, 0.f);
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
