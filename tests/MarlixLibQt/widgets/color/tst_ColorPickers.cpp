#include <MarlixLibQt/widgets/color/AlbedoColorPicker.h>
#include <MarlixLibQt/widgets/color/ColorPicker.h>
#include <MarlixLibQt/widgets/color/ColorSlider.h>
#include <MarlixLibQt/widgets/color/ColorSliderRow.h>
#include <MarlixLibQt/widgets/color/HwbColorPicker.h>
#include <MarlixLibQt/widgets/color/TemperatureColorPicker.h>

#include "MarlixLibQt/widgets/RecordingModel.h"

#include <QApplication>
#include <QMouseEvent>
#include <QTest>

#include <cmath>
#include <memory>

using namespace Marlix;
using namespace Marlix::Widgets;
using Marlix::Widgets::Testing::RecordingModel;
using Spec = QColorExtended::Specification;

namespace {

using ColorModel = RecordingModel<QColorExtended>;

// One step of a colour channel as QColor stores it (16 bits), with room for the hue's 1/36000 steps.
constexpr float CHANNEL_TOLERANCE = 2e-4f;

QPoint toPoint(double x, double y)
{
    return { static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)) };
}

QPoint sliderPoint(const ColorSlider* slider, float value)
{
    return toPoint(slider->getPositionOfValue(value), slider->height() / 2.0);
}

/// A left-button event at a sub-pixel position, which QTest's whole-pixel functions cannot express.
void sendMouse(QWidget* widget, QEvent::Type type, const QPointF& position)
{
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    const Qt::MouseButtons buttons = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, position, widget->mapToGlobal(position), button, buttons, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

// Compared premultiplied: that is how a translucent track is kept once it is a pixmap.
QRgb gradientPixel(const ColorSlider* slider, int x)
{
    return slider->getGradient().toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied).pixel(x, 0);
}

/// One of the four component panels, by the colour space it edits.
struct Panel
{
    std::unique_ptr<QFrame> widget;
    std::array<ColorSliderRow*, 4> rows {};
    int rowCount = 0;
};

Panel makePanel(Spec spec, const SharedPtr<Model<QColorExtended>>& color, const SharedPtr<Model<long long>>& type)
{
    Panel panel;
    const auto take = [&panel](auto* picker, int count) {
        panel.rowCount = count;
        std::copy(picker->getRows().begin(), picker->getRows().end(), panel.rows.begin());
        panel.widget.reset(picker);
    };
    switch (spec) {
    case Spec::RgbSpec:
        take(new RgbColorPicker(color, type), 3);
        break;
    case Spec::RgbaSpec:
        take(new RgbaColorPicker(color, type), 4);
        break;
    case Spec::HsvSpec:
        take(new HsvColorPicker(color, type), 3);
        break;
    case Spec::CmykSpec:
        take(new CmykColorPicker(color, type), 4);
        break;
    case Spec::HwbSpec:
        break;
    }
    panel.widget->resize(600, panel.rowCount * 40);
    panel.widget->show();
    return panel;
}

SharedPtr<Model<long long>> makeValueType(ColorValueType type = ColorValueType::SrgbByte)
{
    return makeSharedPtr<VariableModel<long long>>(static_cast<long long>(type));
}

} // namespace

class TestColorPickers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rowDragSetsOnlyItsComponent_data()
    {
        QTest::addColumn<int>("spec");
        QTest::addColumn<int>("component");
        const std::pair<Spec, int> panels[]
            = { { Spec::RgbSpec, 3 }, { Spec::RgbaSpec, 4 }, { Spec::HsvSpec, 3 }, { Spec::CmykSpec, 4 } };
        const char* names[] = { "rgb", "rgba", "hsv", "hwb", "cmyk" };
        for (const auto& [spec, count] : panels)
            for (int c = 0; c < count; ++c)
                QTest::addRow("%s component %d", names[static_cast<int>(spec)], c) << static_cast<int>(spec) << c;
    }

    void rowDragSetsOnlyItsComponent()
    {
        QFETCH(int, spec);
        QFETCH(int, component);
        const auto s = static_cast<Spec>(spec);
        auto color = makeSharedPtr<ColorModel>(QColorExtended(QColor::fromRgbF(0.2f, 0.5f, 0.7f, 0.6f)));
        const Panel panel = makePanel(s, color, makeValueType());
        const QColorExtended before = color->get();
        ColorSlider* slider = panel.rows[static_cast<std::size_t>(component)]->getSlider();

        color->resetCounts();
        QTest::mousePress(slider, Qt::LeftButton, {}, sliderPoint(slider, 0.25f));
        const QPoint end = sliderPoint(slider, 0.75f);
        QTest::mouseMove(slider, end);
        QTest::mouseRelease(slider, Qt::LeftButton, {}, end);

        QCOMPARE(color->begins, 1);
        QCOMPARE(color->commits, 1);
        QCOMPARE(color->setsOutsideBracket, 0);
        const QColorExtended after = color->get();
        const float expected = static_cast<float>(end.x()) / static_cast<float>(slider->width());
        QVERIFY2(std::abs(after.componentF(s, component) - expected) < CHANNEL_TOLERANCE,
            qPrintable(QString::number(after.componentF(s, component))));
        for (int other = 0; other < panel.rowCount; ++other)
            if (other != component)
                QVERIFY2(std::abs(after.componentF(s, other) - before.componentF(s, other)) < CHANNEL_TOLERANCE,
                    qPrintable(QStringLiteral("component %1 moved").arg(other)));
        if (s != Spec::RgbaSpec)
            QCOMPARE(after.alpha(), before.alpha());
        const ColorSliderRow* row = panel.rows[static_cast<std::size_t>(component)];
        QCOMPARE(row->getSpinBox()->text(), row->convertValueToText(after.componentF(s, component)));
    }

    void colorChangeRedrawsEveryRow_data()
    {
        QTest::addColumn<int>("spec");
        QTest::addColumn<int>("dragged");
        QTest::addColumn<int>("checked");
        QTest::newRow("rgb red redraws green") << static_cast<int>(Spec::RgbSpec) << 0 << 1;
        QTest::newRow("rgba alpha redraws blue") << static_cast<int>(Spec::RgbaSpec) << 3 << 2;
        QTest::newRow("rgba red redraws alpha") << static_cast<int>(Spec::RgbaSpec) << 0 << 3;
        QTest::newRow("hsv hue redraws saturation") << static_cast<int>(Spec::HsvSpec) << 0 << 1;
        QTest::newRow("hsv value redraws hue") << static_cast<int>(Spec::HsvSpec) << 2 << 0;
        QTest::newRow("cmyk key redraws cyan") << static_cast<int>(Spec::CmykSpec) << 3 << 0;
    }

    void colorChangeRedrawsEveryRow()
    {
        QFETCH(int, spec);
        QFETCH(int, dragged);
        QFETCH(int, checked);
        const auto s = static_cast<Spec>(spec);
        auto color = makeSharedPtr<ColorModel>(QColorExtended(QColor::fromRgbF(0.8f, 0.3f, 0.1f, 0.5f)));
        const Panel panel = makePanel(s, color, makeValueType());
        std::array<int, 4> updates {};
        for (int i = 0; i < panel.rowCount; ++i)
            updates[static_cast<std::size_t>(i)]
                = panel.rows[static_cast<std::size_t>(i)]->getSlider()->getGradientUpdateCount();

        ColorSlider* slider = panel.rows[static_cast<std::size_t>(dragged)]->getSlider();
        QTest::mouseClick(slider, Qt::LeftButton, {}, sliderPoint(slider, 0.1f));

        const ColorSlider* other = panel.rows[static_cast<std::size_t>(checked)]->getSlider();
        const QColorExtended current = color->get();
        const bool translucent = s == Spec::RgbaSpec;
        for (const int x : { 0, other->width() / 3, other->width() - 1 }) {
            const float t = static_cast<float>(x) / static_cast<float>(other->width() - 1);
            QRgb expected = QColorExtended::withComponent(current, s, checked, t).getColor().rgba();
            if (!translucent)
                expected |= 0xff000000u;
            QCOMPARE(gradientPixel(other, x), qPremultiply(expected));
        }
        // One colour change is one new gradient per row, the dragged row included, and nothing more.
        for (int i = 0; i < panel.rowCount; ++i)
            QCOMPARE(panel.rows[static_cast<std::size_t>(i)]->getSlider()->getGradientUpdateCount(),
                updates[static_cast<std::size_t>(i)] + color->sets);
    }

    void valueTypeRelabelsWithoutChangingColor_data()
    {
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("to");
        QTest::addColumn<double>("low");
        QTest::addColumn<double>("high");
        QTest::addColumn<bool>("linear");
        QTest::newRow("sRGB 255 to linear 1") << 0 << 4 << 0.0 << 1.0 << true;
        QTest::newRow("sRGB 255 to sRGB percent") << 0 << 2 << 0.0 << 100.0 << false;
        QTest::newRow("linear 255 to sRGB 1") << 3 << 1 << 0.0 << 1.0 << false;
        QTest::newRow("sRGB 1 to linear 255") << 1 << 3 << 0.0 << 255.0 << true;
        QTest::newRow("linear percent to sRGB 255") << 5 << 0 << 0.0 << 255.0 << false;
    }

    void valueTypeRelabelsWithoutChangingColor()
    {
        QFETCH(int, from);
        QFETCH(int, to);
        QFETCH(double, low);
        QFETCH(double, high);
        QFETCH(bool, linear);
        auto color = makeSharedPtr<ColorModel>(QColorExtended(QColor::fromRgbF(0.25f, 0.5f, 0.9f, 0.75f)));
        auto type = makeValueType(static_cast<ColorValueType>(from));
        // Two panels on one value type: both must follow the switch.
        const Panel rgba = makePanel(Spec::RgbaSpec, color, type);
        const Panel hsv = makePanel(Spec::HsvSpec, color, type);
        const QColorExtended before = color->get();
        color->resetCounts();

        type->set(to);

        QCOMPARE(color->sets, 0);
        QCOMPARE(color->get().getColor(), before.getColor());
        for (const Panel* panel : { &rgba, &hsv }) {
            const Spec s = panel == &rgba ? Spec::RgbaSpec : Spec::HsvSpec;
            for (int i = 0; i < panel->rowCount; ++i) {
                const SpinBox* field = panel->rows[static_cast<std::size_t>(i)]->getSpinBox();
                const double v = before.componentF(s, i);
                const double shown = low + (high - low) * (linear ? std::pow(v, 2.2) : v);
                const double halfDigit = 0.5 * std::pow(10.0, -field->decimals());
                QVERIFY2(std::abs(field->value() - shown) <= halfDigit + 1e-9,
                    qPrintable(QStringLiteral("row %1 shows %2, expected %3").arg(i).arg(field->text()).arg(shown)));
                QCOMPARE(field->maximum(), high);
            }
        }
    }

    void sliderOfFewPixels_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<bool>("translucent");
        QTest::newRow("one pixel") << 1 << false;
        QTest::newRow("one pixel translucent") << 1 << true;
        QTest::newRow("two pixels") << 2 << false;
        QTest::newRow("five pixels translucent") << 5 << true;
    }

    void sliderOfFewPixels()
    {
        QFETCH(int, width);
        QFETCH(bool, translucent);
        auto value = makeSharedPtr<RecordingModel<float>>(0.5f);
        const auto mapping = [](float t) { return QColor::fromRgbF(t, 0.0f, 1.0f - t, 0.25f + 0.5f * t); };
        ColorSlider slider(value, mapping, 100, translucent);
        slider.setFixedSize(width, 12);
        slider.show();

        const QImage gradient = slider.getGradient().toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
        QCOMPARE(gradient.width(), width);
        for (int x = 0; x < width; ++x) {
            const float t = width > 1 ? static_cast<float>(x) / static_cast<float>(width - 1) : 0.0f;
            QRgb expected = mapping(t).rgba();
            if (!translucent)
                expected |= 0xff000000u;
            QCOMPARE(gradient.pixel(x, 0), qPremultiply(expected));
            QCOMPARE(gradient.pixel(x, 11), qPremultiply(expected));
        }
        QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(0, 6));
        QCOMPARE(value->get(), 0.0f);
        QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(width + 3, 6));
        QCOMPARE(value->get(), 1.0f);
        QCOMPARE(value->begins, 2);
        QCOMPARE(value->commits, 2);
    }

    void hwbFieldBottomKeepsWhiteness_data()
    {
        QTest::addColumn<QColor>("start");
        QTest::addColumn<float>("hue");
        QTest::addColumn<float>("whiteness");
        QTest::addColumn<float>("blackness");
        QTest::addColumn<int>("beyondBottom");
        QTest::newRow("no whiteness goes black") << QColor() << 0.3f << 0.0f << 0.2f << 0;
        QTest::newRow("entered whiteness") << QColor() << 0.3f << 0.4f << 0.2f << 0;
        QTest::newRow("entered whiteness, released below") << QColor() << 0.7f << 0.25f << 0.5f << 40;
        QTest::newRow("entered sum over one") << QColor() << 0.55f << 0.8f << 0.6f << 0;
        QTest::newRow("derived from an RGB colour") << QColor(200, 150, 100) << 0.0f << 0.0f << 0.0f << 0;
    }

    void hwbFieldBottomKeepsWhiteness()
    {
        QFETCH(QColor, start);
        QFETCH(float, hue);
        QFETCH(float, whiteness);
        QFETCH(float, blackness);
        QFETCH(int, beyondBottom);
        const QColorExtended initial
            = start.isValid() ? QColorExtended(start) : QColorExtended::fromHwbF(hue, whiteness, blackness, 0.5f);
        auto color = makeSharedPtr<ColorModel>(initial);
        HwbColorPicker picker(color);
        picker.resize(420, 300);
        picker.show();
        HueBlacknessPicker* field = picker.getHueBlacknessPicker();
        const float w0 = initial.whitenessF();

        const QPointF startPoint(initial.hueF(), initial.blacknessF());
        const QPoint down = toPoint(field->getPositionOf(startPoint).x(), field->getPositionOf(startPoint).y());
        QTest::mousePress(field, Qt::LeftButton, {}, down);
        const QPoint bottom(down.x(), field->height() + beyondBottom);
        QTest::mouseMove(field, bottom);

        // Blackness 1 shares the field with the kept whiteness: a grey of w / (w + 1), black without whiteness.
        const QColorExtended atBottom = color->get();
        QCOMPARE(atBottom.blacknessF(), 1.0f);
        QCOMPARE(atBottom.whitenessF(), w0);
        QCOMPARE(atBottom.getColor().hsvSaturationF(), 0.0f);
        QVERIFY(std::abs(atBottom.getColor().valueF() - w0 / (w0 + 1.0f)) < CHANNEL_TOLERANCE);
        if (w0 == 0.0f)
            QCOMPARE(atBottom.red() + atBottom.green() + atBottom.blue(), 0);
        QCOMPARE(color->get().alphaF(), initial.alphaF());

        QTest::mouseMove(field, down);
        QTest::mouseRelease(field, Qt::LeftButton, {}, down);
        const auto x = static_cast<float>(static_cast<double>(down.x()) / field->width());
        const auto y = static_cast<float>(static_cast<double>(down.y()) / field->height());
        QCOMPARE(color->get().whitenessF(), w0);
        QCOMPARE(color->get().getColor(), QColorExtended::fromHwbF(x, w0, y, initial.alphaF()).getColor());
        QCOMPARE(color->begins, 1);
        QCOMPARE(color->commits, 1);
    }

    void hwbFieldOnlyWhileVisible()
    {
        auto color = makeSharedPtr<ColorModel>(QColorExtended(QColor(10, 120, 200)));
        HwbColorPicker picker(color);
        picker.resize(300, 200);
        HueBlacknessPicker* field = picker.getHueBlacknessPicker();
        color->set(QColor(200, 10, 10));
        QCOMPARE(field->getFieldUpdateCount(), 0);
        picker.show();
        QCOMPARE(field->getFieldUpdateCount(), 1);
        QCOMPARE(field->getField().size(), field->size());
        // The field does not depend on the colour: only the cursor moves.
        color->set(QColor(20, 200, 10));
        QCOMPARE(field->getFieldUpdateCount(), 1);
        // Every pixel is the HWB colour of its hue and blackness at whiteness 0, the black bottom row included.
        const QImage image = field->getField().toImage();
        for (int y = 0; y < image.height(); ++y) {
            const float blackness = static_cast<float>(y) / static_cast<float>(image.height() - 1);
            for (int x = 0; x < image.width(); ++x) {
                const float hue = static_cast<float>(x) / static_cast<float>(image.width() - 1);
                const QRgb expected = QColorExtended::fromHwbF(hue, 0.0f, blackness).getColor().rgb();
                if (image.pixel(x, y) != expected)
                    QFAIL(qPrintable(QStringLiteral("pixel %1, %2 is %3, not %4")
                                         .arg(x)
                                         .arg(y)
                                         .arg(image.pixel(x, y), 0, 16)
                                         .arg(expected, 0, 16)));
            }
        }
        QCOMPARE(image.pixel(image.width() / 2, image.height() - 1), qRgb(0, 0, 0));
    }

    void whitenessBarClick_data()
    {
        QTest::addColumn<float>("target");
        QTest::newRow("top") << 0.0f;
        QTest::newRow("quarter") << 0.25f;
        QTest::newRow("middle") << 0.5f;
        QTest::newRow("bottom edge") << 1.0f;
    }

    void whitenessBarClick()
    {
        QFETCH(float, target);
        auto color = makeSharedPtr<ColorModel>(QColorExtended::fromHwbF(0.4f, 0.1f, 0.3f, 0.8f));
        HwbColorPicker picker(color);
        picker.resize(400, 256);
        picker.show();
        WhitenessPicker* bar = picker.getWhitenessPicker();
        const int updates = bar->getBarUpdateCount();

        const int y = static_cast<int>(std::lround(bar->getPositionOf(target)));
        QTest::mouseClick(bar, Qt::LeftButton, {}, QPoint(bar->width() / 2, y));

        const QColorExtended after = color->get();
        QCOMPARE(after.whitenessF(), static_cast<float>(static_cast<double>(y) / bar->height()));
        QCOMPARE(after.blacknessF(), 0.3f);
        QVERIFY(std::abs(after.hueF() - 0.4f) < CHANNEL_TOLERANCE);
        QCOMPARE(after.alphaF(), QColorExtended::fromHwbF(0.4f, 0.1f, 0.3f, 0.8f).alphaF());
        QCOMPARE(bar->getBarUpdateCount(), updates + 1);
        const int row = bar->height() / 2;
        const float w = static_cast<float>(row) / static_cast<float>(bar->height() - 1);
        QCOMPARE(bar->getBar().toImage().pixel(1, row),
            QColorExtended::fromHwbF(after.hueF(), w, after.blacknessF()).getColor().rgb());
    }

    void temperatureWithinOneKelvin_data()
    {
        QTest::addColumn<float>("kelvin");
        QTest::addColumn<float>("pressOffset");
        QTest::addColumn<float>("moveOffset");
        QTest::addColumn<int>("setsAtPress");
        QTest::newRow("the stored 6500 K") << 6500.0f << -0.3f << 0.3f << 0;
        QTest::newRow("inside 3000 K") << 3000.0f << -0.4f << 0.4f << 1;
        QTest::newRow("inside 11111 K, moving back") << 11111.0f << 0.2f << -0.45f << 1;
        QTest::newRow("right end and beyond") << 15000.0f << 0.0f << 2000.0f << 1;
        QTest::newRow("left end and beyond") << 1700.0f << 0.0f << -500.0f << 1;
    }

    void temperatureWithinOneKelvin()
    {
        QFETCH(float, kelvin);
        QFETCH(float, pressOffset);
        QFETCH(float, moveOffset);
        QFETCH(int, setsAtPress);
        auto color = makeSharedPtr<ColorModel>(QColorExtended(QColor::fromRgbF(0.1f, 0.2f, 0.3f, 0.4f)));
        TemperatureColorPicker picker(color);
        picker.resize(400, 30);
        picker.show();
        ColorSlider* slider = picker.getRow()->getSlider();
        // A pixel spans dozens of kelvins: the moves are sub-pixel, as fine pointing devices deliver them.
        const auto at = [slider](float k) {
            return QPointF(slider->width() * (static_cast<double>(k) - 1700.0) / 13300.0, slider->height() / 2.0);
        };

        QCOMPARE(TemperatureColorPicker::temperatureToOriginalRange(picker.getTemperature()), 6500.0f);
        color->resetCounts();
        sendMouse(slider, QEvent::MouseButtonPress, at(kelvin + pressOffset));
        const float stored = picker.getTemperature();
        QCOMPARE(color->sets, setsAtPress);
        QCOMPARE(TemperatureColorPicker::temperatureToOriginalRange(stored), kelvin);

        sendMouse(slider, QEvent::MouseMove, at(kelvin + moveOffset));
        sendMouse(slider, QEvent::MouseButtonRelease, at(kelvin + moveOffset));
        QCOMPARE(color->sets, setsAtPress);
        QCOMPARE(picker.getTemperature(), stored);
        QCOMPARE(color->commits, 1);
        if (setsAtPress > 0) {
            const QColor expected = TemperatureColorPicker::temperatureToColor(stored);
            QCOMPARE(
                color->get().getColor(), QColor::fromRgbF(expected.redF(), expected.greenF(), expected.blueF(), 0.4f));
        }
        QCOMPARE(picker.getRow()->getSpinBox()->value(), static_cast<double>(kelvin));
    }

    void albedoRow_data()
    {
        QTest::addColumn<float>("target");
        QTest::newRow("black") << 0.0f;
        QTest::newRow("grey card") << 0.18f;
        QTest::newRow("half") << 0.5f;
        QTest::newRow("white") << 1.0f;
    }

    void albedoRow()
    {
        QFETCH(float, target);
        auto color = makeSharedPtr<ColorModel>(QColorExtended(QColor::fromRgbF(1.0f, 0.0f, 0.0f, 0.7f)));
        AlbedoColorPicker picker(color);
        picker.resize(400, 30);
        picker.show();
        QVERIFY(std::abs(picker.getRow()->getSpinBox()->value() - 1.0 / 3.0) < 1e-3);

        ColorSlider* slider = picker.getRow()->getSlider();
        const QPoint at = sliderPoint(slider, target);
        QTest::mouseClick(slider, Qt::LeftButton, {}, at);
        const float albedo = static_cast<float>(static_cast<double>(at.x()) / slider->width());
        const QColorExtended after = color->get();
        const QColor grey = AlbedoColorPicker::albedoToColor(albedo);
        QCOMPARE(after.red(), grey.red());
        QCOMPARE(after.green(), after.red());
        QCOMPARE(after.blue(), after.red());
        QCOMPARE(after.alphaF(), QColor::fromRgbF(0, 0, 0, 0.7f).alphaF());
        QVERIFY(std::abs(AlbedoColorPicker::colorToAlbedo(after) - albedo) < 1e-3f);
        QCOMPARE(picker.getValueText(), picker.convertValueToText(AlbedoColorPicker::colorToAlbedo(after)));
        QCOMPARE(picker.getRow()->getSpinBox()->text(), picker.getValueText());
    }
};

QTEST_MAIN(TestColorPickers)
#include "tst_ColorPickers.moc"
