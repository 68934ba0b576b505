#include <MarlixLibQt/Color.h>

#include <MarlixLib/base/Exception.h>

#include <QTest>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace Marlix;
using namespace Marlix::Widgets;

using Spec = QColorExtended::Specification;

Q_DECLARE_METATYPE(QColorExtended)
Q_DECLARE_METATYPE(QColorExtended::Specification)
Q_DECLARE_METATYPE(Marlix::Widgets::ColorValueType)

namespace {

// Qt keeps components in 16 bits.
constexpr float TOLERANCE = 1.0f / 65535.0f * 2.0f;

bool near(double a, double b, double tolerance = TOLERANCE)
{
    return std::abs(a - b) <= tolerance;
}

const QColor ORANGE = QColor::fromRgbF(1.0f, 0.5f, 0.0f, 0.25f);

template <class F> bool stops(F&& function)
{
    try {
        function();
    } catch (const StopException& e) {
        return e.getUnit() == "Color";
    }
    return false;
}

} // namespace

class TestColor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void componentF_data();
    void componentF();
    void fromComponents_data();
    void fromComponents();
    void hwbKeepsTypedPair();
    void withComponent_data();
    void withComponent();
    void withComponentForgetsTypedPair();
    void derivedWhitenessAndBlackness_data();
    void derivedWhitenessAndBlackness();
    void temperatureColors();
    void albedoRoundTrip_data();
    void albedoRoundTrip();
    void displayConversions_data();
    void displayConversions();
    void rgbBoundary();
    void rgbBoundaryShowsBadValues_data();
    void rgbBoundaryShowsBadValues();
    void programmingErrorsStop();
};

void TestColor::componentF_data()
{
    QTest::addColumn<QColor>("color");
    QTest::addColumn<Spec>("spec");
    QTest::addColumn<int>("index");
    QTest::addColumn<float>("expected");
    QTest::newRow("rgb red") << ORANGE << Spec::RgbSpec << 0 << 1.0f;
    QTest::newRow("rgb green") << ORANGE << Spec::RgbSpec << 1 << 0.5f;
    QTest::newRow("rgb wraps over four") << ORANGE << Spec::RgbSpec << 5 << 0.5f;
    QTest::newRow("rgba alpha") << ORANGE << Spec::RgbaSpec << 3 << 0.25f;
    QTest::newRow("hsv hue") << ORANGE << Spec::HsvSpec << 0 << 30.0f / 360.0f;
    QTest::newRow("hsv wraps over three") << ORANGE << Spec::HsvSpec << 5 << 1.0f;
    QTest::newRow("hsv hue of grey") << QColor(128, 128, 128) << Spec::HsvSpec << 0 << 0.0f;
    QTest::newRow("hwb blackness") << QColor::fromRgbF(0.8f, 0.6f, 0.4f) << Spec::HwbSpec << 2 << 0.2f;
    QTest::newRow("cmyk key") << QColor::fromRgbF(0.5f, 0.5f, 0.25f) << Spec::CmykSpec << 3 << 0.5f;
}

void TestColor::componentF()
{
    QFETCH(QColor, color);
    QFETCH(Spec, spec);
    QFETCH(int, index);
    QFETCH(float, expected);
    const float actual = QColorExtended(color).componentF(spec, index);
    QVERIFY2(near(actual, expected), qPrintable(QString::number(actual)));
}

void TestColor::fromComponents_data()
{
    QTest::addColumn<Spec>("spec");
    QTest::addColumn<float>("c0");
    QTest::addColumn<float>("c1");
    QTest::addColumn<float>("c2");
    QTest::addColumn<float>("c3");
    QTest::addColumn<float>("alpha");
    QTest::addColumn<QColor>("expected");
    QTest::newRow("rgb takes the passed alpha")
        << Spec::RgbSpec << 1.f << .5f << 0.f << .9f << .25f << QColor::fromRgbF(1.f, .5f, 0.f, .25f);
    QTest::newRow("rgba takes the fourth component")
        << Spec::RgbaSpec << 1.f << .5f << 0.f << .9f << .25f << QColor::fromRgbF(1.f, .5f, 0.f, .9f);
    QTest::newRow("hsv") << Spec::HsvSpec << .5f << 1.f << 1.f << 0.f << 1.f << QColor::fromRgbF(0.f, 1.f, 1.f);
    QTest::newRow("hsv hue above one is red")
        << Spec::HsvSpec << 1.0001f << 1.f << 1.f << 0.f << 1.f << QColor::fromRgbF(1.f, 0.f, 0.f);
    QTest::newRow("hwb tint") << Spec::HwbSpec << 0.f << .5f << 0.f << 0.f << 1.f << QColor::fromRgbF(1.f, .5f, .5f);
    QTest::newRow("hwb sum above one is a grey")
        << Spec::HwbSpec << .5f << .8f << .6f << 0.f << 1.f << QColor::fromRgbF(.8f / 1.4f, .8f / 1.4f, .8f / 1.4f);
    QTest::newRow("hwb blackness one is black")
        << Spec::HwbSpec << .3f << 0.f << 1.f << 0.f << .5f << QColor::fromRgbF(0.f, 0.f, 0.f, .5f);
    QTest::newRow("cmyk") << Spec::CmykSpec << 0.f << 1.f << 1.f << .5f << 1.f << QColor::fromRgbF(.5f, 0.f, 0.f);
}

void TestColor::fromComponents()
{
    QFETCH(Spec, spec);
    QFETCH(float, c0);
    QFETCH(float, c1);
    QFETCH(float, c2);
    QFETCH(float, c3);
    QFETCH(float, alpha);
    QFETCH(QColor, expected);
    const float components[4] = { c0, c1, c2, c3 };
    const QColor actual = QColorExtended::fromComponents(spec, components, alpha);
    QVERIFY(actual.isValid());
    QVERIFY2(near(actual.redF(), expected.redF()) && near(actual.greenF(), expected.greenF())
            && near(actual.blueF(), expected.blueF()) && near(actual.alphaF(), expected.alphaF()),
        qPrintable(actual.name(QColor::HexArgb) + QStringLiteral(" instead of ") + expected.name(QColor::HexArgb)));
}

void TestColor::hwbKeepsTypedPair()
{
    const QColorExtended grey = QColorExtended::fromComponents(Spec::HwbSpec, { .5f, .8f, .6f, 0.f }, 1.f);
    QCOMPARE(grey.componentF(Spec::HwbSpec, 1), .8f);
    QCOMPARE(grey.componentF(Spec::HwbSpec, 2), .6f);
    QVERIFY(near(grey.getColor().valueF(), 1.f - .6f / 1.4f));
    QCOMPARE(grey.getColor().hsvSaturationF(), 0.f);
    // The typed pair is how the colour was entered, not what it is: equal colours compare equal.
    QVERIFY(grey == QColorExtended(grey.getColor()));

    // Blackness 1 is black without dividing by zero for the saturation.
    const QColorExtended black = QColorExtended::fromHwbF(.25f, 0.f, 1.f, .5f);
    QCOMPARE(black.getColor().rgba(), QColor::fromRgbF(0.f, 0.f, 0.f, .5f).rgba());
    QCOMPARE(black.blacknessF(), 1.f);
    QCOMPARE(black.whitenessF(), 0.f);
    // With a whiteness the pair is normalised, so the colour is a dark grey; the typed pair is still read back.
    const QColorExtended dark = QColorExtended::fromHwbF(.25f, .4f, 1.f);
    QVERIFY(near(dark.getColor().valueF(), 1.f - 1.f / 1.4f));
    QCOMPARE(dark.whitenessF(), .4f);
    QCOMPARE(dark.blacknessF(), 1.f);
    QCOMPARE(dark.whiteness(), 102);
    QCOMPARE(QColorExtended::fromHwbF(1.f, 0.f, 0.f).hueF(), 1.f);
    QCOMPARE(QColorExtended::fromHwbF(1.0001f, 0.f, 0.f).hueF(), 0.f);
}

void TestColor::withComponent_data()
{
    QTest::addColumn<Spec>("spec");
    QTest::addColumn<int>("index");
    QTest::addColumn<float>("value");
    QTest::addColumn<QColor>("expected");
    QTest::newRow("rgb blue") << Spec::RgbSpec << 2 << 1.f << QColor::fromRgbF(1.f, .5f, 1.f, .25f);
    QTest::newRow("rgb index wraps over three") << Spec::RgbSpec << 3 << 0.f << QColor::fromRgbF(0.f, .5f, 0.f, .25f);
    QTest::newRow("rgba alpha") << Spec::RgbaSpec << 3 << 1.f << QColor::fromRgbF(1.f, .5f, 0.f, 1.f);
    QTest::newRow("hsv value") << Spec::HsvSpec << 2 << .5f << QColor::fromRgbF(.5f, .25f, 0.f, .25f);
    QTest::newRow("hwb whiteness") << Spec::HwbSpec << 1 << .5f << QColor::fromRgbF(1.f, .75f, .5f, .25f);
    QTest::newRow("cmyk cyan") << Spec::CmykSpec << 0 << 1.f << QColor::fromRgbF(0.f, .5f, 0.f, .25f);
}

void TestColor::withComponent()
{
    QFETCH(Spec, spec);
    QFETCH(int, index);
    QFETCH(float, value);
    QFETCH(QColor, expected);
    const QColor actual = QColorExtended::withComponent(ORANGE, spec, index, value);
    QVERIFY2(near(actual.redF(), expected.redF(), 1e-3) && near(actual.greenF(), expected.greenF(), 1e-3)
            && near(actual.blueF(), expected.blueF(), 1e-3) && near(actual.alphaF(), expected.alphaF()),
        qPrintable(actual.name(QColor::HexArgb) + QStringLiteral(" instead of ") + expected.name(QColor::HexArgb)));
}

void TestColor::withComponentForgetsTypedPair()
{
    const QColorExtended grey = QColorExtended::fromHwbF(.5f, .8f, .6f, .5f);
    const QColorExtended changed = QColorExtended::withComponent(grey, Spec::HwbSpec, 0, .25f);
    // The whiteness now derives from the normalised colour, not from the typed 0.8.
    QVERIFY(near(changed.whitenessF(), .8f / 1.4f, 1e-3));
    QVERIFY(near(changed.blacknessF(), .6f / 1.4f, 1e-3));
    QVERIFY(near(changed.alphaF(), .5f));
    // The rebuilt colour is an HWB one again, carrying the pair it was rebuilt from.
    QVERIFY(changed.hasExplicitHwb());
    QVERIFY(!QColorExtended::withComponent(grey, Spec::RgbSpec, 0, .25f).hasExplicitHwb());
}

void TestColor::derivedWhitenessAndBlackness_data()
{
    QTest::addColumn<QColor>("color");
    QTest::addColumn<float>("whiteness");
    QTest::addColumn<float>("blackness");
    QTest::addColumn<int>("whitenessByte");
    QTest::addColumn<float>("hue");
    QTest::newRow("black") << QColor(Qt::black) << 0.f << 1.f << 0 << 0.f;
    QTest::newRow("tint") << QColor(255, 128, 128) << 128.f / 255.f << 0.f << 128 << 0.f;
    QTest::newRow("shade") << QColor(0, 0, 100) << 0.f << 155.f / 255.f << 0 << 2.f / 3.f;
    // In whole numbers the saturation is 127 of 255, and the whiteness truncates to 99.
    QTest::newRow("tone") << QColor(200, 100, 200) << 100.f / 255.f << 55.f / 255.f << 99 << 5.f / 6.f;
}

void TestColor::derivedWhitenessAndBlackness()
{
    QFETCH(QColor, color);
    QFETCH(float, whiteness);
    QFETCH(float, blackness);
    QFETCH(int, whitenessByte);
    QFETCH(float, hue);
    const QColorExtended extended(color);
    QVERIFY(!extended.hasExplicitHwb());
    QVERIFY2(near(extended.whitenessF(), whiteness, 1e-3), qPrintable(QString::number(extended.whitenessF())));
    QVERIFY(near(extended.blacknessF(), blackness, 1e-3));
    QCOMPARE(extended.whiteness(), whitenessByte);
    QVERIFY(near(extended.hueF(), hue, 1e-3));
}

void TestColor::temperatureColors()
{
    const QColor white = temperatureToColor((6500.f - 1700.f) / 13300.f);
    QCOMPARE(white.redF(), 1.f);
    QCOMPARE(white.greenF(), 1.f);
    QCOMPARE(white.blueF(), 1.f);
    // The ends of the range: a deep orange and a light blue.
    QVERIFY(temperatureToColor(0.f).blueF() < .05f);
    QVERIFY(temperatureToColor(1.f).redF() < temperatureToColor(1.f).greenF());
}

void TestColor::albedoRoundTrip_data()
{
    QTest::addColumn<float>("albedo");
    QTest::newRow("black") << 0.f;
    QTest::newRow("grass") << .25f;
    QTest::newRow("snow") << .9f;
}

void TestColor::albedoRoundTrip()
{
    QFETCH(float, albedo);
    const QColor grey = albedoToColor(albedo);
    QCOMPARE(grey.redF(), grey.greenF());
    QCOMPARE(grey.redF(), grey.blueF());
    QVERIFY(near(grey.redF(), std::pow(albedo, 1.f / 2.2f), 1e-4));
    QVERIFY2(near(colorToAlbedo(grey), albedo, 1e-4), qPrintable(QString::number(colorToAlbedo(grey))));
}

void TestColor::displayConversions_data()
{
    QTest::addColumn<ColorValueType>("type");
    QTest::addColumn<double>("component");
    QTest::addColumn<double>("low");
    QTest::addColumn<double>("high");
    QTest::addColumn<double>("shown");
    QTest::newRow("srgb bytes") << ColorValueType::SrgbByte << .5 << 0. << 255. << 127.5;
    QTest::newRow("srgb percent") << ColorValueType::SrgbPercent << .25 << 0. << 100. << 25.;
    QTest::newRow("linear bytes") << ColorValueType::LinearByte << .5 << 0. << 255. << std::pow(.5, 2.2) * 255.;
    QTest::newRow("linear percent") << ColorValueType::LinearPercent << 1. << 0. << 100. << 100.;
}

void TestColor::displayConversions()
{
    QFETCH(ColorValueType, type);
    QFETCH(double, component);
    QFETCH(double, low);
    QFETCH(double, high);
    QFETCH(double, shown);
    const double actual = componentToDisplay(type, component, low, high);
    QVERIFY2(near(actual, shown, 1e-9 * std::abs(high)), qPrintable(QString::number(actual, 'g', 17)));
    // Back through the float exponent, which is not exactly 1/2.2: the round trip is close, not exact.
    QVERIFY(near(displayToComponent(type, actual, low, high), component, 1e-7));
    if (isLinear(type) && component > 0.0 && component < 1.0)
        QCOMPARE(displayToComponent(type, actual, low, high),
            std::pow(std::pow(component, 2.2), 0.45454543828964233));
}

void TestColor::rgbBoundary()
{
    // 0.3 is no 8-bit level: the value leaving the dialog is that of the nearest level, 77.
    const QColor color = QColor::fromRgbF(.3f, 1.f, 0.f, .5f);
    const Rgb opaque = toRgb(color, false);
    QVERIFY(near(opaque.r, std::pow(77.f / 255.f, 2.2f), 1e-6));
    QVERIFY(near(opaque.g, 1.f, 1e-6));
    QCOMPARE(opaque.b, 0.f);
    QVERIFY(near(opaque.a, 1.f, 1e-6));
    const Rgb translucent = toRgb(color, true);
    QVERIFY(near(translucent.a, 128.f / 255.f, 1e-6));

    const QColorExtended back = fromRgb(Rgb(.2f, .5f, 0.f, .25f), false);
    QVERIFY(near(back.redF(), std::pow(.2f, 1.f / 2.2f), 1e-4));
    QVERIFY(near(back.greenF(), std::pow(.5f, 1.f / 2.2f), 1e-4));
    QCOMPARE(back.alphaF(), 1.f);
    QVERIFY(near(fromRgb(Rgb(.2f, .5f, 0.f, .25f), true).alphaF(), .25f));
    // A light brighter than white is kept, a negative component is shown as none of that primary.
    QVERIFY(fromRgb(Rgb(4.f, -1.f, 0.f), false).redF() > 1.f);
    QCOMPARE(fromRgb(Rgb(4.f, -1.f, 0.f), false).greenF(), 0.f);

    // Every 8-bit level survives the way out and back.
    for (int level = 0; level < 256; ++level) {
        const QColor grey(level, level, level);
        QCOMPARE(fromRgb(toRgb(grey, false), false).getColor().red(), level);
    }
}

void TestColor::rgbBoundaryShowsBadValues_data()
{
    // Colours from files reach paint events through here: each bad value is shown as a defined colour.
    QTest::addColumn<Rgb>("rgb");
    QTest::addColumn<QColor>("shown");
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    QTest::newRow("component not a number") << Rgb(nan, 1.f, 0.f) << QColor(0, 255, 0);
    QTest::newRow("infinite components") << Rgb(inf, -inf, 0.f) << QColor(255, 0, 0);
    QTest::newRow("alpha not a number") << Rgb(0.f, 0.f, 1.f, nan) << QColor(0, 0, 255);
    QTest::newRow("alpha infinite") << Rgb(0.f, 0.f, 1.f, inf) << QColor(0, 0, 255);
    QTest::newRow("alpha above one") << Rgb(0.f, 0.f, 1.f, 2.f) << QColor(0, 0, 255);
    QTest::newRow("alpha below zero") << Rgb(0.f, 0.f, 1.f, -1.f) << QColor(0, 0, 255, 0);
}

void TestColor::rgbBoundaryShowsBadValues()
{
    QFETCH(Rgb, rgb);
    QFETCH(QColor, shown);
    QCOMPARE(fromRgb(rgb, true).getColor().rgba(), shown.rgba());
}

void TestColor::programmingErrorsStop()
{
    const QColorExtended color(ORANGE);
    QVERIFY(stops([&] { color.componentF(Spec::RgbSpec, -1); }));
    QVERIFY(stops([&] { color.componentF(static_cast<Spec>(5), 0); }));
    QVERIFY(stops([&] { QColorExtended::fromComponents(static_cast<Spec>(-1), { 0.f, 0.f, 0.f, 0.f }, 1.f); }));
    QVERIFY(stops([&] { toColorValueType(6); }));
    QVERIFY(stops([&] { componentToDisplay(ColorValueType::SrgbUnit, .5, 1., 1.); }));
}

QTEST_MAIN(TestColor)
#include "tst_Color.moc"
