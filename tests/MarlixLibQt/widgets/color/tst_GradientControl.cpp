#include <MarlixLibQt/widgets/color/ColorPickerDialog.h>
#include <MarlixLibQt/widgets/color/GradientControl.h>

#include "MarlixLibQt/widgets/RecordingModel.h"

#include <QApplication>
#include <QTest>
#include <QTimer>

#include <cmath>
#include <limits>

using namespace Marlix;
using namespace Marlix::Widgets;
using Marlix::Widgets::Testing::RecordingModel;

namespace {
const Rgb RED { 1.0f, 0.0f, 0.0f, 1.0f };
const Rgb GREEN { 0.0f, 1.0f, 0.0f, 1.0f };
const Rgb BLUE { 0.0f, 0.0f, 1.0f, 1.0f };

ColorGradient threeStops()
{
    return ColorGradient({ { RED, 0.2f }, { GREEN, 0.5f }, { BLUE, 0.8f } });
}

bool near(const Rgb& a, const Rgb& b, float epsilon = 1e-5f)
{
    return std::abs(a.r - b.r) < epsilon && std::abs(a.g - b.g) < epsilon && std::abs(a.b - b.b) < epsilon
        && std::abs(a.a - b.a) < epsilon;
}

/// What the next modal colour dialog showed, answered from inside its event loop: accepted with `answer`, or rejected
/// when it is empty.
struct DialogSeen
{
    bool modal = false;
    QString title;
    Rgb start;
};

void answerNextDialog(Optional<Rgb> answer, DialogSeen& seen)
{
    QTimer::singleShot(0, [answer, &seen] {
        auto* dialog = qobject_cast<ColorPickerDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        seen = { true, dialog->windowTitle(), dialog->value() };
        if (answer)
            dialog->setValue(*answer);
        answer ? dialog->accept() : dialog->reject();
    });
}
} // namespace

class TestGradientControl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void rampShowsGradient();
    void dragPastNeighbours();
    void clickWithoutMovingWritesNothing();
    void rightClick_data();
    void rightClick();
    void doubleClickAdds_data();
    void doubleClickAdds();
    void doubleClickOnStopRecolours_data();
    void doubleClickOnStopRecolours();
    void followsModel();

private:
    QPoint handleCentre(int stop) const
    {
        // Halfway down the handle strip, under the handle's tip.
        return control->getControlPointPosition(stop).toPoint() + QPoint(0, control->getMarginSize() / 2);
    }
    int xOf(float position) const
    {
        const QRect rect = control->getGradientRectangle();
        return rect.x() + static_cast<int>(std::lround(position * static_cast<float>(rect.width() - 1)));
    }

    SharedPtr<RecordingModel<ColorGradient>> model;
    GradientControl* control = nullptr;
};

void TestGradientControl::init()
{
    model = makeSharedPtr<RecordingModel<ColorGradient>>(threeStops());
    control = new GradientControl(model);
    control->resize(312, 30);
    control->show();
    QVERIFY(QTest::qWaitForWindowExposed(control));
    model->resetCounts();
}

void TestGradientControl::cleanup()
{
    delete control;
    control = nullptr;
    model.reset();
}

void TestGradientControl::rampShowsGradient()
{
    control->grab();
    const QImage ramp = control->getRamp().toImage();
    QCOMPARE(ramp.size(), control->getGradientRectangle().size());
    const int y = ramp.height() / 2;
    QCOMPARE(ramp.pixel(0, y), qRgb(255, 0, 0));
    QCOMPARE(ramp.pixel(ramp.width() - 1, y), qRgb(0, 0, 255));
    // Every column shows the linear mix of the gradient there, display-encoded with the power 1 / 2.2.
    const auto encode
        = [](float linear) { return static_cast<int>(std::lround(std::pow(linear, 1.0f / 2.2f) * 255.0f)); };
    for (int x = 0; x < ramp.width(); x += 7) {
        const Rgb expected = threeStops().getRgbAt(static_cast<float>(x) / static_cast<float>(ramp.width() - 1));
        const QRgb shown = ramp.pixel(x, y);
        QVERIFY2(std::abs(qRed(shown) - encode(expected.r)) <= 1 && std::abs(qGreen(shown) - encode(expected.g)) <= 1
                && std::abs(qBlue(shown) - encode(expected.b)) <= 1,
            qPrintable(QStringLiteral("column %1: %2").arg(x).arg(shown, 0, 16)));
    }
}

void TestGradientControl::dragPastNeighbours()
{
    QTest::mousePress(control, Qt::LeftButton, {}, handleCentre(0));
    QCOMPARE(control->getSelectedStop(), Optional<int>(0));
    // Past the green stop, then past the blue one.
    for (float position : { 0.4f, 0.6f, 0.9f }) {
        QTest::mouseMove(control, QPoint(xOf(position), handleCentre(0).y()));
        const int expected = position < 0.5f ? 0 : position < 0.8f ? 1 : 2;
        QCOMPARE(control->getSelectedStop(), Optional<int>(expected));
        QCOMPARE(control->getStops()[static_cast<std::size_t>(expected)].color, RED);
        QVERIFY(std::abs(control->getStops()[static_cast<std::size_t>(expected)].position - position) < 0.005f);
    }
    QCOMPARE(model->sets, 0);
    QTest::mouseRelease(control, Qt::LeftButton, {}, QPoint(xOf(0.9f), handleCentre(0).y()));
    QCOMPARE(model->sets, 1);
    QCOMPARE(control->getSelectedStop(), Optional<int>());
    const ColorGradient written = model->get();
    const auto& stops = written.getStops();
    QCOMPARE(stops.size(), std::size_t(3));
    QCOMPARE(stops[0], (ColorGradient::Stop { GREEN, 0.5f }));
    QCOMPARE(stops[1], (ColorGradient::Stop { BLUE, 0.8f }));
    QCOMPARE(stops[2].color, RED);
    QCOMPARE(stops[2].position, control->getRelativePosition(xOf(0.9f)));
}

void TestGradientControl::clickWithoutMovingWritesNothing()
{
    QTest::mouseClick(control, Qt::LeftButton, {}, handleCentre(1));
    QTest::mouseClick(control, Qt::LeftButton, {}, QPoint(xOf(0.35f), 5));
    QCOMPARE(model->sets, 0);
    QCOMPARE(model->get(), threeStops());
}

void TestGradientControl::rightClick_data()
{
    QTest::addColumn<int>("stop"); // -1: empty space at `position`
    QTest::addColumn<float>("position");
    QTest::addColumn<int>("sets");
    QTest::addColumn<ColorGradient>("expected");
    QTest::newRow("first stop") << 0 << 0.0f << 1 << ColorGradient({ { GREEN, 0.5f }, { BLUE, 0.8f } });
    QTest::newRow("last stop") << 2 << 0.0f << 1 << ColorGradient({ { RED, 0.2f }, { GREEN, 0.5f } });
    QTest::newRow("empty ramp") << -1 << 0.35f << 0 << threeStops();
    QTest::newRow("empty handle strip") << -1 << 0.65f << 0 << threeStops();
}

void TestGradientControl::rightClick()
{
    QFETCH(int, stop);
    QFETCH(float, position);
    QFETCH(int, sets);
    QFETCH(ColorGradient, expected);
    const QPoint point = stop >= 0 ? handleCentre(stop) : QPoint(xOf(position), position < 0.5f ? 5 : 28);
    QTest::mouseClick(control, Qt::RightButton, {}, point);
    QCOMPARE(model->sets, sets);
    QCOMPARE(model->get(), expected);
    QCOMPARE(control->getStops(), expected.getStops());
}

void TestGradientControl::doubleClickAdds_data()
{
    QTest::addColumn<float>("position");
    QTest::addColumn<int>("y");
    QTest::addColumn<bool>("adds");
    QTest::newRow("inside the ramp") << 0.35f << 10 << true;
    QTest::newRow("handle strip between handles") << 0.35f << 27 << false;
    QTest::newRow("left margin") << -0.01f << 10 << false;
}

void TestGradientControl::doubleClickAdds()
{
    QFETCH(float, position);
    QFETCH(int, y);
    QFETCH(bool, adds);
    const QPoint point(position < 0.0f ? 1 : xOf(position), y);
    QTest::mouseDClick(control, Qt::LeftButton, {}, point);
    if (!adds) {
        QCOMPARE(model->sets, 0);
        QCOMPARE(model->get(), threeStops());
        return;
    }
    QCOMPARE(model->sets, 1);
    const ColorGradient result = model->get();
    QCOMPARE(result.getStopCount(), std::size_t(4));
    const float at = control->getRelativePosition(point.x());
    const auto added = std::find_if(result.getStops().begin(), result.getStops().end(),
        [at](const ColorGradient::Stop& s) { return s.position == at; });
    QVERIFY(added != result.getStops().end());
    // The new stop takes the colour the ramp had there, so the ramp does not change.
    QVERIFY(near(added->color, threeStops().getRgbAt(at)));
    for (float t : { 0.0f, 0.3f, 0.6f, 1.0f })
        QVERIFY(near(result.getRgbAt(t), threeStops().getRgbAt(t)));
}

void TestGradientControl::doubleClickOnStopRecolours_data()
{
    QTest::addColumn<bool>("accept");
    QTest::newRow("accepted") << true;
    QTest::newRow("cancelled") << false;
}

void TestGradientControl::doubleClickOnStopRecolours()
{
    QFETCH(bool, accept);
    // Transparent white: a value that survives the dialog's 8-bit channels exactly.
    const Rgb chosen { 1.0f, 1.0f, 1.0f, 0.0f };
    DialogSeen seen;
    answerNextDialog(accept ? Optional<Rgb>(chosen) : Optional<Rgb>(), seen);
    QTest::mouseDClick(control, Qt::LeftButton, {}, handleCentre(1));
    QVERIFY(seen.modal);
    QCOMPARE(seen.title, QStringLiteral("Select Color"));
    QVERIFY(near(seen.start, GREEN, 1e-3f));
    QCOMPARE(control->getSelectedStop(), Optional<int>());
    if (accept) {
        QCOMPARE(model->sets, 1);
        QCOMPARE(model->get(), (ColorGradient({ { RED, 0.2f }, { chosen, 0.5f }, { BLUE, 0.8f } })));
    } else {
        QCOMPARE(model->sets, 0);
        QCOMPARE(model->get(), threeStops());
    }
}

void TestGradientControl::followsModel()
{
    model->set(ColorGradient({ { BLUE, 0.0f } }));
    QCOMPARE(control->getStops().size(), std::size_t(1));
    control->grab();
    const QImage ramp = control->getRamp().toImage();
    QCOMPARE(ramp.pixel(0, 0), qRgb(0, 0, 255));
    QCOMPARE(ramp.pixel(ramp.width() - 1, 0), qRgb(0, 0, 255));
    // The last stop may go; the empty gradient is black.
    QTest::mouseClick(control, Qt::RightButton, {}, handleCentre(0));
    QVERIFY(model->get().isEmpty());
    control->grab();
    QCOMPARE(control->getRamp().toImage().pixel(10, 0), qRgb(0, 0, 0));
    // A stop read from a file with colours that are no numbers paints, in a defined colour, ramp and handle alike.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    model->set(ColorGradient({ { Rgb { nan, inf, -inf, nan }, 0.5f } }));
    const QImage shown = control->grab().toImage();
    QCOMPARE(control->getRamp().toImage().pixel(10, 0), qRgb(0, 255, 0));
    QCOMPARE(shown.pixel(handleCentre(0)), qRgb(0, 255, 0));
}

QTEST_MAIN(TestGradientControl)
#include "tst_GradientControl.moc"
