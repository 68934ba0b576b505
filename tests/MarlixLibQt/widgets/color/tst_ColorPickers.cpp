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
    if (spec == Spec::RgbSpec)
        take(new RgbColorPicker(color, type), 3);
    else if (spec == Spec::RgbaSpec)
        take(new RgbaColorPicker(color, type), 4);
    else if (spec == Spec::HsvSpec)
        take(new HsvColorPicker(color, type), 3);
    else
        take(new CmykColorPicker(color, type), 4);
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

        std::array<int, 4> updates {};
        for (int i = 0; i < panel.rowCount; ++i)
            updates[static_cast<std::size_t>(i)]
                = panel.rows[static_cast<std::size_t>(i)]->getSlider()->getGradientUpdateCount();
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

        // Every row's track shows what its component would give with the new colour; one new track per row and
        // colour change, the dragged row included, and nothing more.
        const ColorSlider* other = panel.rows[static_cast<std::size_t>((component + 1) % panel.rowCount)]->getSlider();
        for (const int x : { 0, other->width() / 3, other->width() - 1 }) {
            const float t = static_cast<float>(x) / static_cast<float>(other->width() - 1);
            QRgb expected
                = QColorExtended::withComponent(after, s, (component + 1) % panel.rowCount, t).getColor().rgba();
            if (s != Spec::RgbaSpec)
                expected |= 0xff000000u;
            QCOMPARE(gradientPixel(other, x), qPremultiply(expected));
        }
        for (int i = 0; i < panel.rowCount; ++i)
            QCOMPARE(panel.rows[static_cast<std::size_t>(i)]->getSlider()->getGradientUpdateCount(),
                updates[static_cast<std::size_t>(i)] + color->sets);
    }

    void sliderOfFewPixels_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<bool>("translucent");
        QTest::newRow("one pixel") << 1 << false;
        QTest::newRow("five pixels translucent") << 5 << true;
    }

    void sliderOfFewPixels()
    {
        QFETCH(int, width);
        QFETCH(bool, translucent);
        auto value = makeSharedPtr<VariableModel<float>>(0.5f);
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
    }

    void hwbFieldBottomKeepsWhiteness_data()
    {
        QTest::addColumn<QColor>("start");
        QTest::addColumn<float>("hue");
        QTest::addColumn<float>("whiteness");
        QTest::addColumn<float>("blackness");
        QTest::addColumn<int>("beyondBottom");
        QTest::newRow("no whiteness goes black") << QColor() << 0.3f << 0.0f << 0.2f << 0;
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
        picker.show();
        QCOMPARE(field->getFieldUpdateCount(), 1);
        QCOMPARE(field->getField().size(), field->size());
        // Every pixel is the HWB colour of its hue and blackness at whiteness 0, the black bottom row included.
        const QImage image = field->getField().toImage();
        for (int y = 0; y < image.height(); ++y) {
            const float blackness = static_cast<float>(y) / static_cast<float>(image.height() - 1);
            for (int x = 0; x < image.width(); ++x) {
                const float hue = static_cast<float>(x) / static_cast<float>(image.width() - 1);
                if (image.pixel(x, y) != QColorExtended::fromHwbF(hue, 0.0f, blackness).getColor().rgb())
                    QFAIL(qPrintable(QStringLiteral("pixel %1, %2").arg(x).arg(y)));
            }
        }
        QCOMPARE(image.pixel(image.width() / 2, image.height() - 1), qRgb(0, 0, 0));
    }

    void whitenessBarClick_data()
    {
        QTest::addColumn<float>("target");
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
