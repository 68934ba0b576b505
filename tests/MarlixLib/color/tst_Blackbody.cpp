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

} // namespace

class TestBlackbody : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsPlanckianLocus_data();
    void followsPlanckianLocus();
    void brightestIsFull_data();
    void brightestIsFull();
    void rejectsBadTemperatures_data();
    void rejectsBadTemperatures();
};

void TestBlackbody::followsPlanckianLocus_data()
{
    QTest::addColumn<float>("kelvin");
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("y");
    // CIE 1931 2° chromaticities of the Planckian locus as tabulated in colorimetry references; 25000 K, beyond the
    // tables, from the published cubic spline of the locus (Kim et al.), which follows it to well under 0.001.
    QTest::newRow("1000 K") << 1000.f << 0.6528 << 0.3444;
    QTest::newRow("1500 K") << 1500.f << 0.5857 << 0.3931;
    QTest::newRow("2000 K") << 2000.f << 0.5267 << 0.4133;
    QTest::newRow("2500 K") << 2500.f << 0.4770 << 0.4137;
    QTest::newRow("3000 K") << 3000.f << 0.4369 << 0.4041;
    QTest::newRow("4000 K") << 4000.f << 0.3805 << 0.3768;
    QTest::newRow("5000 K") << 5000.f << 0.3451 << 0.3516;
    QTest::newRow("6500 K") << 6500.f << 0.3135 << 0.3236;
    QTest::newRow("10000 K") << 10000.f << 0.2807 << 0.2884;
    QTest::newRow("25000 K") << 25000.f << 0.2525 << 0.2523;
}

void TestBlackbody::followsPlanckianLocus()
{
    QFETCH(float, kelvin);
    QFETCH(double, x);
    QFETCH(double, y);
    double actualX = 0.0;
    double actualY = 0.0;
    toChromaticity(blackbodyColorRgb(kelvin), actualX, actualY);
    QVERIFY2(std::abs(actualX - x) <= 0.001, qPrintable(QStringLiteral("x %1").arg(actualX)));
    QVERIFY2(std::abs(actualY - y) <= 0.001, qPrintable(QStringLiteral("y %1").arg(actualY)));
}

void TestBlackbody::brightestIsFull_data()
{
    QTest::addColumn<float>("kelvin");
    QTest::newRow("far below glowing") << 10.f;
    QTest::newRow("daylight") << 6500.f;
    QTest::newRow("star core") << 1e7f;
}

void TestBlackbody::brightestIsFull()
{
    // The colour of the light, not its brightness: a hotter body is not a brighter colour.
    QFETCH(float, kelvin);
    const Rgb c = blackbodyColorRgb(kelvin);
    const float largest = std::max({ c.r, c.g, c.b });
    QVERIFY2(std::abs(largest - 1.f) < 1e-6f, qPrintable(QString::number(largest)));
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
