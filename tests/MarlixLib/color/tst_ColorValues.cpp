#include <MarlixLib/color/Hsv.h>
#include <MarlixLib/color/Rgb.h>
#include <MarlixLib/color/RgbBytes.h>

#include <QtTest/QTest>

#include <limits>
#include <random>

using namespace Marlix;

class TestColorValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hsvOfPrimaries_data();
    void hsvOfPrimaries();
    void hsvRoundTrip();
    void hueWraps();
};

void TestColorValues::hsvOfPrimaries_data()
{
    QTest::addColumn<float>("r");
    QTest::addColumn<float>("g");
    QTest::addColumn<float>("b");
    QTest::addColumn<float>("h");
    QTest::addColumn<float>("s");
    QTest::addColumn<float>("v");
    QTest::newRow("red") << 1.f << 0.f << 0.f << 0.f << 1.f << 1.f;
    QTest::newRow("green") << 0.f << 1.f << 0.f << 1.f / 3 << 1.f << 1.f;
    QTest::newRow("half grey") << .5f << .5f << .5f << 0.f << 0.f << .5f;
    QTest::newRow("black") << 0.f << 0.f << 0.f << 0.f << 0.f << 0.f;
    QTest::newRow("dark orange") << .5f << .25f << 0.f << 1.f / 12 << 1.f << .5f;
}

void TestColorValues::hsvOfPrimaries()
{
    QFETCH(float, r);
    QFETCH(float, g);
    QFETCH(float, b);
    QFETCH(float, h);
    QFETCH(float, s);
    QFETCH(float, v);
    const Hsv hsv = Hsv::fromRgb({ r, g, b, 0.5f });
    QVERIFY(std::abs(hsv.h - h) < 1e-6f);
    QCOMPARE(hsv.s, s);
    QCOMPARE(hsv.v, v);
    QCOMPARE(hsv.a, 0.5f);
}

void TestColorValues::hsvRoundTrip()
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> component(0.f, 1.f);
    for (int i = 0; i < 1000; ++i) {
        const Rgb c(component(random), component(random), component(random), component(random));
        const Hsv hsv = Hsv::fromRgb(c);
        QVERIFY(hsv.h >= 0.f && hsv.h < 1.f);
        const Rgb back = hsv.toRgb();
        QVERIFY(std::abs(back.r - c.r) < 1e-5f && std::abs(back.g - c.g) < 1e-5f && std::abs(back.b - c.b) < 1e-5f);
        QCOMPARE(back.a, c.a);
    }
}

void TestColorValues::hueWraps()
{
    const Rgb red = Hsv { 1.0f, 1.f, 1.f, 1.f }.toRgb();
    QCOMPARE(red, Rgb(1.f, 0.f, 0.f));
    const Rgb blue = Hsv { -1.f / 3, 1.f, 1.f, 1.f }.toRgb();
    QVERIFY(std::abs(blue.b - 1.f) < 1e-6f && blue.r < 1e-6f && blue.g < 1e-6f);
    // Hues with no fraction left read as red, not as whatever an out-of-range integer conversion makes of them.
    for (const float hue : { std::numeric_limits<float>::quiet_NaN(), 1e30f, -1e30f }) {
        const Hsv hsv { hue, 1.f, 1.f, 1.f };
        QCOMPARE(hsv.toRgb(), Rgb(1.f, 0.f, 0.f));
    }
}

QTEST_GUILESS_MAIN(TestColorValues)
#include "tst_ColorValues.moc"
