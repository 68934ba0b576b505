#include <MarlixLibQt/widgets/editors/Slider.h>

#include <MarlixLib/base/Exception.h>

#include "MarlixLibQt/widgets/RecordingModel.h"

#include <QTest>

#include <cmath>

using namespace Marlix;
using namespace Marlix::Widgets;
using Marlix::Widgets::Testing::RecordingModel;

class TestSlider : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mapping_data()
    {
        QTest::addColumn<double>("minimum");
        QTest::addColumn<double>("maximum");
        QTest::addColumn<int>("scale");
        QTest::addColumn<double>("value");
        QTest::addColumn<double>("fraction");

        QTest::newRow("linear offset range") << -4.0 << 4.0 << 0 << 2.0 << 0.75;
        QTest::newRow("logarithmic middle value") << 0.0 << 1.0 << 2 << 0.5 << std::log10(5.5);
        QTest::newRow("logarithmic middle track") << 0.0 << 1.0 << 2 << (std::sqrt(10.0) - 1.0) / 9.0 << 0.5;
        QTest::newRow("logarithmic scaled range") << 10.0 << 110.0 << 2 << 60.0 << std::log10(5.5);
        for (int scale = 0; scale < 3; ++scale) {
            QTest::addRow("scale %d left end", scale) << 2.0 << 7.0 << scale << 2.0 << 0.0;
            QTest::addRow("scale %d right end", scale) << 2.0 << 7.0 << scale << 7.0 << 1.0;
        }
    }

    void mapping()
    {
        QFETCH(double, minimum);
        QFETCH(double, maximum);
        QFETCH(int, scale);
        QFETCH(double, value);
        QFETCH(double, fraction);

        const SliderConverter converter(minimum, maximum, static_cast<std::uint32_t>(scale));
        // Single-precision evaluation: six significant digits are what the mapping promises.
        const double tolerance = 1e-6 * std::max(1.0, std::abs(maximum - minimum));
        QVERIFY2(std::abs(converter.toSlider(value) - fraction) < 1e-6,
                 qPrintable(QString::number(converter.toSlider(value), 'g', 12)));
        QVERIFY2(std::abs(converter.fromSlider(fraction) - value) < tolerance,
                 qPrintable(QString::number(converter.fromSlider(fraction), 'g', 12)));
        // Both directions are inverse of each other.
        QVERIFY(std::abs(converter.fromSlider(converter.toSlider(value)) - value) < tolerance);
    }

    // The stop names the unit, so a crash report points here.
    void unknownScaleStops()
    {
        const SliderConverter converter(0.0, 1.0, 3u);
        for (const bool toSlider : { true, false }) {
            try {
                (void)(toSlider ? converter.toSlider(0.5) : converter.fromSlider(0.5));
                QFAIL("an unknown scale must stop");
            } catch (const StopException& e) {
                QCOMPARE(e.getUnit(), String("widgets/Slider"));
            }
        }
    }

    void clicks_data()
    {
        QTest::addColumn<int>("scale");
        QTest::addColumn<double>("trackFraction");
        QTest::addColumn<int>("offset");
        QTest::addColumn<double>("expected");

        QTest::newRow("linear middle") << 0 << 0.5 << 0 << 5.0;
        QTest::newRow("linear left of the handle's half width") << 0 << 0.0 << -3 << 0.0;
        QTest::newRow("linear right end and beyond") << 0 << 1.0 << 5 << 10.0;
        QTest::newRow("logarithmic middle") << 2 << 0.5 << 0 << 10.0 * (std::sqrt(10.0) - 1.0) / 9.0;
        QTest::newRow("exponential middle") << 1 << 0.5 << 0 << 10.0 * std::log10(5.5);
        QTest::newRow("right button does nothing") << 0 << 0.8 << 0 << 3.0;
    }

    void clicks()
    {
        QFETCH(int, scale);
        QFETCH(double, trackFraction);
        QFETCH(int, offset);
        QFETCH(double, expected);

        auto model = makeSharedPtr<RecordingModel<double>>(3.0);
        Slider slider(model);
        slider.setConversion(SliderConverter(0.0, 10.0, static_cast<std::uint32_t>(scale)));
        slider.resize(200 + 2 * slider.getTrackLeft(), slider.sizeHint().height());
        slider.show();
        QVERIFY(QTest::qWaitForWindowExposed(&slider));
        model->resetCounts();

        const int span = slider.getTrackRight() - slider.getTrackLeft();
        const QPoint point(slider.getTrackLeft() + qRound(span * trackFraction) + offset, slider.height() / 2);
        const bool right = QByteArray(QTest::currentDataTag()).startsWith("right");
        QTest::mouseClick(&slider, right ? Qt::RightButton : Qt::LeftButton, {}, point);
        if (right) {
            QCOMPARE(model->get(), 3.0);
            QCOMPARE(model->sets + model->begins, 0);
            return;
        }

        QVERIFY2(std::abs(model->get() - expected) < 1e-4, qPrintable(QString::number(model->get())));
        QCOMPARE(model->begins, 1);
        QCOMPARE(model->commits, 1);
        QCOMPARE(model->setsOutsideBracket, 0);
        QVERIFY(std::abs(slider.getPosition() - std::clamp(trackFraction, 0.0, 1.0)) < 1e-4);
    }

    void dragIsOneBracket()
    {
        auto model = makeSharedPtr<RecordingModel<double>>(0.0);
        Slider slider(model);
        slider.setConversion(SliderConverter(0.0, 100.0, SliderScale::Linear));
        slider.resize(220, slider.sizeHint().height());
        slider.show();
        QVERIFY(QTest::qWaitForWindowExposed(&slider));
        model->resetCounts();

        const int y = slider.height() / 2;
        QTest::mousePress(&slider, Qt::LeftButton, {}, QPoint(slider.getTrackLeft(), y));
        for (int x = slider.getTrackLeft(); x <= slider.getTrackRight(); x += 10)
            QTest::mouseMove(&slider, QPoint(x, y));
        QTest::mouseRelease(&slider, Qt::LeftButton, {}, QPoint(slider.getTrackRight(), y));

        QCOMPARE(model->get(), 100.0);
        QCOMPARE(model->begins, 1);
        QCOMPARE(model->commits, 1);
        QCOMPARE(model->nestedBegins, 0);
        QCOMPARE(model->setsOutsideBracket, 0);
        QVERIFY(model->sets > 10);
    }

    void followsModelAndConversion()
    {
        auto model = makeSharedPtr<VariableModel<double>>(0.5);
        Slider slider(model);
        model->set(0.25);
        QCOMPARE(slider.getPosition(), 0.25);

        // The handle moves at once to the value under the new scale.
        slider.setConversion(SliderConverter(0.0, 1.0, SliderScale::Logarithmic));
        QVERIFY(std::abs(slider.getPosition() - std::log10(9.0 * 0.25 + 1.0)) < 1e-6);
        slider.setConversion(SliderConverter(0.0, 0.5, SliderScale::Linear));
        QCOMPARE(slider.getPosition(), 0.5);
    }

};

QTEST_MAIN(TestSlider)
#include "tst_Slider.moc"
