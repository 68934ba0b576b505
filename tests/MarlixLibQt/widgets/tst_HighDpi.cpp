#include "MarlixLibQt/widgets/RecordingModel.h"

#include <MarlixLibQt/Icons.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/color/ColorEditButton.h>
#include <MarlixLibQt/widgets/color/ColorPickerWidget.h>
#include <MarlixLibQt/widgets/color/ColorSlider.h>
#include <MarlixLibQt/widgets/color/GradientDisplay.h>
#include <MarlixLibQt/widgets/color/HwbColorPicker.h>
#include <MarlixLibQt/widgets/curves/Curves.h>
#include <MarlixLibQt/widgets/editors/Slider.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>

#include <QApplication>
#include <QDir>
#include <QFrame>
#include <QGroupBox>
#include <QScreen>
#include <QStyleOptionSlider>
#include <QStyleOptionSpinBox>
#include <QTemporaryFile>
#include <QTest>
#include <QtGui/private/qhighdpiscaling_p.h>

#include <algorithm>
#include <cmath>
#include <functional>

using namespace Marlix;
using namespace Marlix::Widgets;
using Marlix::Widgets::Testing::RecordingModel;

namespace {

// Every test runs on three screens (the global data): the standard one, the same at twice the pixels (as
// QT_SCALE_FACTOR=2 or a 4K panel at 200 %), and one whose desktop enlarges fonts to 144 DPI at one pixel per pixel.
double expectedRatio()
{
    QFETCH_GLOBAL(double, ratio);
    return ratio;
}

double expectedDpi()
{
    QFETCH_GLOBAL(double, dpi);
    return dpi;
}

/// Shows `widget` on the row's screen, away from its edges.
bool place(QWidget& widget)
{
    const QString name = expectedDpi() > 96.0 ? QStringLiteral("large-font") : QStringLiteral("standard");
    QScreen* target = QGuiApplication::primaryScreen();
    for (QScreen* screen : QGuiApplication::screens())
        if (screen->name() == name)
            target = screen;
    widget.setScreen(target);
    widget.move(target->geometry().topLeft() + QPoint(100, 100));
    widget.show();
    return QTest::qWaitForWindowExposed(&widget);
}

/// The share of neighbouring device pixels that differ along `count` steps from `from`: a cache made at a lower
/// resolution and stretched repeats every pixel, which shows as blur or steps.
double distinctShare(const QImage& image, QPoint from, QPoint step, int count)
{
    int distinct = 0;
    for (int i = 1; i < count; ++i)
        distinct += image.pixel(from + step * i) != image.pixel(from + step * (i - 1)) ? 1 : 0;
    return count > 1 ? double(distinct) / (count - 1) : 0.0;
}

/// How many pixels from `at` on, in steps of `step`, have the colour of the one at `at`.
int runLength(const QImage& image, QPoint at, QPoint step)
{
    const QRgb colour = image.pixel(at);
    int count = 0;
    for (QPoint p = at; image.rect().contains(p) && image.pixel(p) == colour; p += step)
        ++count;
    return count;
}

RgbBytes hueBytes(float t)
{
    const QColor c = QColor::fromHsvF(std::clamp(t, 0.0f, 1.0f) * 0.999f, 1.0f, 1.0f);
    return { std::uint8_t(c.red()), std::uint8_t(c.green()), std::uint8_t(c.blue()) };
}

/// Where a widget's cached ramp runs in its grabbed image, in device pixels: start, direction and length.
struct Ramp
{
    QPoint from;
    QPoint step;
    int count;
};

using RampProbe = std::function<Ramp(QWidget& shown, double ratio)>;
using RampMaker = std::function<std::unique_ptr<QWidget>()>;
using Measure = std::function<int(QWidget&)>;
using IconMaker = std::function<QIcon(QWidget&)>;

} // namespace

Q_DECLARE_METATYPE(RampMaker)
Q_DECLARE_METATYPE(RampProbe)
Q_DECLARE_METATYPE(Measure)
Q_DECLARE_METATYPE(IconMaker)

class tst_HighDpi : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data()
    {
        QTest::addColumn<double>("ratio");
        QTest::addColumn<double>("dpi");
        QTest::newRow("scale 1") << 1.0 << 96.0;
        QTest::newRow("scale 2") << 2.0 << 96.0;
        QTest::newRow("144 DPI") << 1.0 << 144.0;
    }

    // Qt's own switch behind QT_SCALE_FACTOR; it is read when a window is made, so each test makes new top levels.
    void init() { QHighDpiScaling::setGlobalFactor(expectedRatio()); }
    void cleanup() { QHighDpiScaling::setGlobalFactor(1.0); }

    void sliderPressAndDrag_data()
    {
        QTest::addColumn<double>("press");
        QTest::addColumn<double>("release");
        QTest::newRow("left end to a third") << 0.0 << 1.0 / 3.0;
        QTest::newRow("middle to past the right end") << 0.5 << 1.25;
        QTest::newRow("three quarters to before the left end") << 0.75 << -0.5;
    }

    void sliderPressAndDrag()
    {
        QFETCH(double, press);
        QFETCH(double, release);
        auto model = makeSharedPtr<RecordingModel<double>>(0.5);
        Slider slider(model);
        slider.resize(240, slider.sizeHint().height());
        QVERIFY(place(slider));
        QCOMPARE(slider.devicePixelRatioF(), expectedRatio());

        const int left = slider.getTrackLeft();
        const int span = slider.getTrackRight() - left;
        const auto at
            = [&](double share) { return QPoint(left + int(std::lround(share * span)), slider.height() / 2); };
        const auto valueAt
            = [&](double share) { return std::clamp(std::lround(share * span) / double(span), 0.0, 1.0); };
        QTest::mousePress(&slider, Qt::LeftButton, {}, at(press));
        QCOMPARE(slider.getPosition(), valueAt(press));
        for (int step = 1; step <= 4; ++step)
            QTest::mouseMove(&slider, at(press + (release - press) * step / 4));
        QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(release));
        QCOMPARE(model->get(), valueAt(release));
        QCOMPARE(model->begins, 1);
        QCOMPARE(model->commits, 1);
    }

    void spinBoxDrag_data()
    {
        QTest::addColumn<int>("pixels");
        QTest::addColumn<double>("change");
        QTest::newRow("ten pixels up") << 10 << 1.0;
        QTest::newRow("seven pixels down") << -7 << -0.7;
    }

    // A pixel of drag is a step wherever the screen's pixels are, so a gesture covers the same range of values.
    void spinBoxDrag()
    {
        QFETCH(int, pixels);
        QFETCH(double, change);
        auto model = makeSharedPtr<RecordingModel<double>>(5.0);
        SpinBox spinBox(model, 0.0);
        spinBox.setLocale(QLocale::c());
        // The press lands on the arrow towards the bound, which cannot step, so only the drag changes the value.
        spinBox.setRange(pixels > 0 ? 5.0 : -100.0, pixels > 0 ? 100.0 : 5.0, 0.1, 3);
        spinBox.resize(160, spinBox.sizeHint().height());
        QVERIFY(place(spinBox));
        model->resetCounts();

        QStyleOptionSpinBox option;
        option.initFrom(&spinBox);
        option.frame = true;
        option.subControls = QStyle::SC_SpinBoxUp | QStyle::SC_SpinBoxDown;
        option.stepEnabled = QAbstractSpinBox::StepUpEnabled | QAbstractSpinBox::StepDownEnabled;
        const QStyle::SubControl arrow = pixels > 0 ? QStyle::SC_SpinBoxDown : QStyle::SC_SpinBoxUp;
        const QPoint press = spinBox.style()->subControlRect(QStyle::CC_SpinBox, &option, arrow, &spinBox).center();
        QTest::mousePress(&spinBox, Qt::LeftButton, {}, press);
        for (int i = 1; i <= std::abs(pixels); ++i)
            QTest::mouseMove(&spinBox, press - QPoint(0, pixels > 0 ? i : -i));
        QTest::mouseRelease(&spinBox, Qt::LeftButton, {}, press - QPoint(0, pixels));
        QVERIFY2(std::abs(model->get() - (5.0 + change)) < 1e-9, qPrintable(QString::number(model->get())));
        QCOMPARE(model->begins, 1);
        QCOMPARE(model->commits, 1);
    }

    void curvesPointHit_data()
    {
        QTest::addColumn<double>("offset");
        QTest::addColumn<bool>("picked");
        QTest::newRow("on the point") << 0.0 << true;
        QTest::newRow("just inside the reach") << Widgets::Curves::HIT_DISTANCE - 1.0 << true;
        QTest::newRow("just beyond the reach") << Widgets::Curves::HIT_DISTANCE + 2.0 << false;
    }

    // The reach is a length at 96 DPI: a finger's worth on any screen, the same share of the grid at any scale.
    void curvesPointHit()
    {
        QFETCH(double, offset);
        QFETCH(bool, picked);
        Marlix::Curves start(1, DefaultCurveType::Identity);
        start.setChannel(
            0, Curve(Array<Vector2> { { 0.0, 0.0 }, { 0.5, 0.6 }, { 1.0, 1.0 } }, CurveInterpolation::CubicSpline));
        auto model = makeSharedPtr<RecordingModel<Marlix::Curves>>(start);
        Widgets::Curves curves(model, makeSharedPtr<VariableModel<int>>(0),
            makeSharedPtr<VariableModel<CurveInterpolation>>(CurveInterpolation::CubicSpline));
        curves.resize(320, 320);
        QVERIFY(place(curves));
        model->resetCounts();

        const QPoint point = curves.toWidget({ 0.5, 0.6 }).toPoint();
        const QPoint press = point + QPoint(getDeviceIndependentPixels(offset, &curves), 0);
        const QPoint release = press + scaleByDpi(QPoint(12, -20), &curves);
        QTest::mousePress(&curves, Qt::LeftButton, {}, press);
        for (int step = 1; step <= 4; ++step)
            QTest::mouseMove(&curves, press + (release - press) * step / 4);
        QTest::mouseRelease(&curves, Qt::LeftButton, {}, release);

        const Curve curve = model->get().getChannel(0);
        // A press that misses every point adds one where it is and drags that instead.
        QCOMPARE(curve.getPointCount(), picked ? 3u : 4u);
        const Vector2 expected = curves.fromWidget(release);
        const Vector2 moved = curve.getPoint(picked ? 1 : 2).position;
        QVERIFY2(std::abs(moved.x - expected.x) < 1e-9 && std::abs(moved.y - expected.y) < 1e-9,
            qPrintable(QStringLiteral("%1, %2").arg(moved.x).arg(moved.y)));
        if (!picked)
            QVERIFY(curve.getPoint(1).position == (Vector2 { 0.5, 0.6 }));
        QCOMPARE(model->begins, 1);
        QCOMPARE(model->commits, 1);
    }

    void lengthsFollowLogicalDpi_data()
    {
        QTest::addColumn<Measure>("measure");
        QTest::addColumn<double>("standard");
        const auto sliderMetric = [](QStyle::PixelMetric metric) {
            return [metric](QWidget& widget) {
                QStyleOptionSlider option;
                option.initFrom(&widget);
                return widget.style()->pixelMetric(metric, &option, &widget);
            };
        };
        QTest::newRow("colour slider handle") << Measure(sliderMetric(QStyle::PM_SliderLength)) << 6.0;
        QTest::newRow("spin box arrow width") << Measure([](QWidget& widget) {
            QStyleOptionSpinBox option;
            option.initFrom(&widget);
            option.frame = true;
            return widget.style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxUp, &widget).width();
        }) << 14.0;
    }

    // Pixel metrics of the library's style are written for 96 DPI: the same at scale 2 (Qt doubles the pixels), and
    // half as large again where the desktop asks for 144 DPI.
    void lengthsFollowLogicalDpi()
    {
        QFETCH(Measure, measure);
        QFETCH(double, standard);
        auto value = makeSharedPtr<VariableModel<float>>(0.0f);
        ColorSlider slider(
            value, [](float) { return QColor(Qt::red); }, 100, false);
        QVERIFY(place(slider));
        QCOMPARE(slider.logicalDpiX(), int(expectedDpi()));
        const int expected = int(std::lround(standard * expectedDpi() / 96.0));
        QCOMPARE(measure(slider), expected);
        QCOMPARE(getDeviceIndependentPixels(standard, &slider), expected);
    }

    void cachesAtDeviceResolution_data()
    {
        QTest::addColumn<RampMaker>("make");
        QTest::addColumn<RampProbe>("probe");
        const auto across = [](QWidget& shown, double ratio) {
            const int margin = int(20 * ratio);
            return Ramp { QPoint(margin, int(shown.height() * ratio / 2)), QPoint(1, 0),
                int(shown.width() * ratio) - 2 * margin };
        };
        QTest::newRow("colour slider track") << RampMaker([] {
            return std::make_unique<ColorSlider>(
                makeSharedPtr<VariableModel<float>>(0.0f),
                [](float t) { return QColor::fromHsvF(t * 0.999f, 1.0f, 1.0f); }, 200, false);
        }) << RampProbe(across);
        QTest::newRow("gradient ramp") << RampMaker([] {
            auto display = std::make_unique<GradientDisplay>(hueBytes);
            display->resize(240, display->minimumSizeHint().height() * 2);
            return display;
        }) << RampProbe([](QWidget& shown, double ratio) {
            const QRect ramp = static_cast<GradientDisplay&>(shown).getGradientRectangle();
            return Ramp { QPoint(int(ramp.left() * ratio), int(ramp.center().y() * ratio)), QPoint(1, 0),
                int(ramp.width() * ratio) };
        });
        QTest::newRow("hue and blackness field") << RampMaker([] {
            // The cross-hair stands in the bottom corner, out of the probed row.
            return std::make_unique<HueBlacknessPicker>(makeSharedPtr<VariableModel<QPointF>>(QPointF(0.0, 1.0)));
        }) << RampProbe(across);
        QTest::newRow("whiteness bar") << RampMaker([] {
            auto bar = std::make_unique<WhitenessPicker>(
                makeSharedPtr<VariableModel<QColorExtended>>(QColorExtended::fromHwbF(0.6f, 0.0f, 0.2f)));
            bar->resize(30, 100);
            return bar;
        }) << RampProbe([](QWidget& shown, double ratio) {
            const int margin = int(20 * ratio);
            return Ramp { QPoint(int(shown.width() * ratio / 2), margin), QPoint(0, 1),
                int(shown.height() * ratio) - 2 * margin };
        });
    }

    // Colour ramps are cached as images: made at the widget's device pixel ratio they stay as fine as the screen,
    // made at one pixel per logical pixel and stretched they repeat every pixel.
    void cachesAtDeviceResolution()
    {
        QFETCH(RampMaker, make);
        QFETCH(RampProbe, probe);
        const std::unique_ptr<QWidget> widget = make();
        QVERIFY(place(*widget));
        const QImage shot = widget->grab().toImage();
        QCOMPARE(shot.devicePixelRatio(), expectedRatio());
        const Ramp ramp = probe(*widget, expectedRatio());
        const double share = distinctShare(shot, ramp.from, ramp.step, ramp.count);
        QVERIFY2(share > 0.9, qPrintable(QStringLiteral("%1 of the pixels differ from their neighbour").arg(share)));
    }

    void framesOnWholeDevicePixels_data()
    {
        QTest::addColumn<RampMaker>("make");
        QTest::addColumn<bool>("framedBothSides");
        const auto red = [](QWidget& widget) {
            QPalette palette = widget.palette();
            palette.setColor(QPalette::Window, Qt::red);
            widget.setPalette(palette);
            widget.setAutoFillBackground(true);
        };
        QTest::newRow("styled panel") << RampMaker([red] {
            auto frame = std::make_unique<QFrame>();
            frame->setFrameShape(QFrame::StyledPanel);
            red(*frame);
            frame->resize(60, 30);
            return frame;
        }) << true;
        QTest::newRow("flat group box") << RampMaker([red] {
            auto box = std::make_unique<QGroupBox>();
            box->setFlat(true);
            red(*box);
            box->resize(60, 30);
            return box;
        }) << false;
        QTest::newRow("colour button swatch") << RampMaker([] {
            auto button = std::make_unique<ColorEditButton>(makeSharedPtr<VariableModel<Rgb>>(Rgb(1.0f, 0.0f, 0.0f)));
            button->resize(60, 24);
            return button;
        }) << true;
        QTest::newRow("colour comparison") << RampMaker([] {
            auto picker = std::make_unique<ColorPickerWidget>(ColorFormat::Rgb);
            picker->setValue(Rgb(1.0f, 0.0f, 0.0f));
            return picker;
        }) << true;
    }

    // A one-pixel frame is one logical pixel of whole device pixels around what it frames: drawn on the edge of the
    // rectangle it would straddle device pixels at scale 2, half outside the widget and a sliver of the fill beyond.
    void framesOnWholeDevicePixels()
    {
        QFETCH(RampMaker, make);
        QFETCH(bool, framedBothSides);
        const std::unique_ptr<QWidget> widget = make();
        QVERIFY(place(*widget));
        auto* picker = qobject_cast<ColorPickerWidget*>(widget.get());
        QWidget* framed = picker ? picker->getComparison() : widget.get();
        const QImage shot = framed->grab().toImage();
        const int ratio = int(expectedRatio());
        // Across the middle for frames all round, down the middle for the line over a flat group.
        const QPoint step = framedBothSides ? QPoint(1, 0) : QPoint(0, 1);
        const QPoint start = framedBothSides ? QPoint(0, shot.height() / 2) : QPoint(shot.width() / 2, 0);
        QPoint first = start;
        while (shot.rect().contains(first) && shot.pixelColor(first) != QColor(Qt::red))
            first += step;
        QVERIFY2(shot.rect().contains(first), "nothing of the fill is seen");
        QVERIFY(first != start);
        QCOMPARE(runLength(shot, first - step, -step), ratio);
        if (!framedBothSides)
            return;
        const QPoint last = first + step * (runLength(shot, first, step) - 1);
        QVERIFY(shot.rect().contains(last + step));
        QCOMPARE(runLength(shot, last + step, step), ratio);
        QCOMPARE(shot.pixel(last + step), shot.pixel(first - step));
        // Nothing of the fill beyond the frame.
        const QPoint beyond = last + step * (ratio + 1);
        QVERIFY(!shot.rect().contains(beyond) || shot.pixelColor(beyond) != QColor(Qt::red));
    }

    void iconsAtDeviceResolution_data()
    {
        QTest::addColumn<IconMaker>("make");
        QTest::newRow("colour patch") << IconMaker([](QWidget&) { return getColorPatchIcon(Qt::red, QSize(16, 12)); });
        QTest::newRow("no colour patch") << IconMaker([](QWidget&) { return getColorPatchIcon({}, QSize(16, 12)); });
        QTest::newRow("undock button") << IconMaker([](QWidget& widget) {
            return widget.style()->standardIcon(QStyle::SP_TitleBarNormalButton, nullptr, &widget);
        });
    }

    // Icons the library makes or chooses have pixels for the screen, rather than being stretched from fewer.
    void iconsAtDeviceResolution()
    {
        QFETCH(IconMaker, make);
        QWidget widget;
        QVERIFY(place(widget));
        const double ratio = widget.devicePixelRatioF();
        QCOMPARE(ratio, expectedRatio());
        const QSize size = make(widget).actualSize(QSize(16, 16));
        const QPixmap pixmap = make(widget).pixmap(size, ratio);
        QCOMPARE(pixmap.size(), size * ratio);
        QCOMPARE(pixmap.devicePixelRatio(), ratio);
    }
};

int main(int argc, char** argv)
{
    // Under the offscreen platform a desk of two screens: the standard one and one whose desktop asks for 144 DPI,
    // which the library's rounding policy leaves at one device pixel per logical pixel.
    QTemporaryFile desk(QDir::tempPath() + QStringLiteral("/screens-XXXXXX.json"));
    if (qgetenv("QT_QPA_PLATFORM") == "offscreen" && desk.open()) {
        desk.write(R"({ "windowFrameMargins": false, "screens": [
            { "name": "standard", "x": 0, "y": 0, "width": 1920, "height": 1080, "logicalDpi": 96 },
            { "name": "large-font", "x": 1920, "y": 0, "width": 1920, "height": 1080, "logicalDpi": 144 } ] })");
        desk.flush();
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + QFile::encodeName(desk.fileName()));
        qunsetenv("QT_FONT_DPI");
    }
    LibQt::startup("High DPI test", LibQt::ApplicationType::Gui, {}, Io::Path(argv[0]));
    int result = 0;
    {
        tst_HighDpi test;
        result = QTest::qExec(&test, argc, argv);
    }
    LibQt::shutdown();
    return result;
}

#include "tst_HighDpi.moc"
