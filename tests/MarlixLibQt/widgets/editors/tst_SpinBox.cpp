#include <MarlixLibQt/widgets/editors/Number.h>
#include <MarlixLibQt/widgets/editors/Slider.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>

#include "MarlixLibQt/widgets/RecordingModel.h"

#include <QApplication>
#include <QHoverEvent>
#include <QLineEdit>
#include <QProxyStyle>
#include <QScreen>
#include <QStyleOptionSpinBox>
#include <QTest>
#include <QtTest/qtestspontaneevent.h>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <cmath>
#include <memory>

using namespace Marlix;
using namespace Marlix::Widgets;
using Marlix::Widgets::Testing::RecordingModel;

Q_DECLARE_METATYPE(SpinBox::StepType)
Q_DECLARE_METATYPE(SpinBox::ScrollSpeedAdjustmentType)

namespace {

/// Answers the library's dragging-hint style hint, as the application style does.
class HintStyle : public QProxyStyle
{
public:
    HintStyle()
        : QProxyStyle(QStringLiteral("fusion"))
    {
    }
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returnData) const override
    {
        if (hint == SpinBox::SH_DRAGGING_HINT)
            return 1;
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
};

/// Counts the wheel events that reach it.
class WheelCounter : public QWidget
{
public:
    int wheels = 0;

protected:
    void wheelEvent(QWheelEvent* event) override
    {
        ++wheels;
        event->accept();
    }
};

QRect arrowRect(const SpinBox& spinBox, QStyle::SubControl arrow)
{
    QStyleOptionSpinBox option;
    option.initFrom(&spinBox);
    option.frame = true;
    option.buttonSymbols = QAbstractSpinBox::UpDownArrows;
    option.subControls = QStyle::SC_SpinBoxFrame | QStyle::SC_SpinBoxEditField | QStyle::SC_SpinBoxUp
        | QStyle::SC_SpinBoxDown;
    option.stepEnabled = QAbstractSpinBox::StepUpEnabled | QAbstractSpinBox::StepDownEnabled;
    return spinBox.style()->subControlRect(QStyle::CC_SpinBox, &option, arrow, &spinBox);
}

void sendWheel(QWidget* target, int angle, Qt::ScrollPhase phase)
{
    const QPointF position = target->rect().center();
    QWheelEvent event(position, target->mapToGlobal(position), QPoint(), QPoint(0, angle), Qt::NoButton,
                      Qt::NoModifier, phase, false);
    // Marked as coming from the window system, so that the application propagates it as it does a real wheel.
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(target, &event);
}

struct Field
{
    explicit Field(double value)
        : model(makeSharedPtr<RecordingModel<double>>(value))
        , spinBox(std::make_unique<SpinBox>(model, 0.0))
    {
        spinBox->setLocale(QLocale::c());
        spinBox->resize(160, spinBox->sizeHint().height());
    }

    bool show()
    {
        // Away from the screen's edges, so that a drag does not wrap the cursor by accident.
        spinBox->move(200, 200);
        spinBox->show();
        spinBox->activateWindow();
        return QTest::qWaitForWindowActive(spinBox.get());
    }

    SharedPtr<RecordingModel<double>> model;
    std::unique_ptr<SpinBox> spinBox;
};

} // namespace

class TestSpinBox : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void drag_data()
    {
        QTest::addColumn<SpinBox::StepType>("stepType");
        QTest::addColumn<SpinBox::ScrollSpeedAdjustmentType>("speedType");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<double>("start");
        QTest::addColumn<int>("pixels");
        QTest::addColumn<int>("moves");
        QTest::addColumn<double>("expected");

        using S = SpinBox::StepType;
        using A = SpinBox::ScrollSpeedAdjustmentType;
        const int shift = Qt::ShiftModifier;
        const int ctrl = Qt::ControlModifier;
        const int alt = Qt::AltModifier;
        QTest::newRow("plain") << S::Fixed << A::ShiftFasterCtrlSlower << 0 << 0.0 << 10 << 10 << 1.0;
        QTest::newRow("plain down") << S::Fixed << A::ShiftFasterCtrlSlower << 0 << 0.0 << -10 << 10 << -1.0;
        QTest::newRow("shift faster") << S::Fixed << A::ShiftFasterCtrlSlower << shift << 0.0 << 10 << 10 << 10.0;
        QTest::newRow("ctrl slower") << S::Fixed << A::ShiftFasterCtrlSlower << ctrl << 0.0 << 10 << 10 << 0.1;
        QTest::newRow("shift wins over ctrl") << S::Fixed << A::ShiftFasterCtrlSlower << (shift | ctrl) << 0.0 << 10
                                              << 10 << 10.0;
        QTest::newRow("ctrl faster") << S::Fixed << A::CtrlFasterAltSlower << ctrl << 0.0 << 10 << 10 << 10.0;
        QTest::newRow("alt slower") << S::Fixed << A::CtrlFasterAltSlower << alt << 0.0 << 10 << 10 << 0.1;
        QTest::newRow("shift ignored by ctrl scheme") << S::Fixed << A::CtrlFasterAltSlower << shift << 0.0 << 10
                                                      << 10 << 1.0;
        QTest::newRow("no adjustment") << S::Fixed << A::NoAdjustment << ctrl << 0.0 << 10 << 10 << 1.0;
        QTest::newRow("one jump of ten pixels") << S::Fixed << A::ShiftFasterCtrlSlower << 0 << 0.0 << 10 << 1 << 1.0;
        QTest::newRow("adaptive 250") << S::Adaptive << A::ShiftFasterCtrlSlower << 0 << 250.0 << 10 << 10 << 350.0;
        QTest::newRow("adaptive 250 towards zero") << S::Adaptive << A::ShiftFasterCtrlSlower << 0 << 250.0 << -10
                                                   << 10 << 150.0;
        QTest::newRow("adaptive -250 towards zero") << S::Adaptive << A::ShiftFasterCtrlSlower << 0 << -250.0 << 10
                                                    << 10 << -150.0;
        QTest::newRow("adaptive 0.0005") << S::Adaptive << A::ShiftFasterCtrlSlower << 0 << 0.0005 << 10 << 10
                                         << 0.0105;
        QTest::newRow("adaptive 99.6 rounds to 100") << S::Adaptive << A::ShiftFasterCtrlSlower << 0 << 99.6 << 10
                                                     << 10 << 199.6;
        QTest::newRow("adaptive 94 keeps its decade") << S::Adaptive << A::ShiftFasterCtrlSlower << 0 << 94.0 << 10
                                                      << 10 << 104.0;
        QTest::newRow("adaptive step kept for the drag") << S::Adaptive << A::ShiftFasterCtrlSlower << 0 << 95.0
                                                         << 20 << 20 << 115.0;
        QTest::newRow("adaptive step kept past the decade") << S::Adaptive << A::ShiftFasterCtrlSlower << 0 << 8.0
                                                            << 30 << 30 << 11.0;
        QTest::newRow("adaptive with shift") << S::Adaptive << A::ShiftFasterCtrlSlower << shift << 250.0 << 1 << 1
                                             << 350.0;
        QTest::newRow("proportional 500") << S::Proportional << A::ShiftFasterCtrlSlower << 0 << 500.0 << 1 << 1
                                          << 502.0;
        QTest::newRow("proportional 0.2") << S::Proportional << A::ShiftFasterCtrlSlower << 0 << 0.2 << 1 << 1
                                          << 0.204;
        QTest::newRow("proportional -500 down") << S::Proportional << A::ShiftFasterCtrlSlower << 0 << -500.0 << -1
                                                << 1 << -502.0;
    }

    // The press goes to the arrow that points at the range's bound, which is disabled there, so only the drag steps.
    void drag()
    {
        QFETCH(SpinBox::StepType, stepType);
        QFETCH(SpinBox::ScrollSpeedAdjustmentType, speedType);
        QFETCH(int, modifiers);
        QFETCH(double, start);
        QFETCH(int, pixels);
        QFETCH(int, moves);
        QFETCH(double, expected);

        Field field(start);
        SpinBox& spinBox = *field.spinBox;
        const bool up = pixels > 0;
        spinBox.setRange(up ? start : -1e6, up ? 1e6 : start, 0.1, 4);
        spinBox.setStepType(stepType);
        spinBox.setScrollSpeedAdjustmentType(speedType);
        QVERIFY(field.show());
        field.model->resetCounts();

        const QPoint press = arrowRect(spinBox, up ? QStyle::SC_SpinBoxDown : QStyle::SC_SpinBoxUp).center();
        const auto mods = Qt::KeyboardModifiers(modifiers);
        QTest::mousePress(&spinBox, Qt::LeftButton, mods, press);
        QCOMPARE(field.model->begins, 1);
        QCOMPARE(spinBox.value(), start);
        for (int i = 1; i <= moves; ++i)
            QTest::mouseEvent(QTest::MouseMove, &spinBox, Qt::NoButton, mods,
                              press - QPoint(0, pixels * i / moves));
        QVERIFY2(std::abs(field.model->get() - expected) < 1e-9, qPrintable(QString::number(field.model->get(), 'g', 12)));
        QCOMPARE(field.model->commits, 0);
        QTest::mouseRelease(&spinBox, Qt::LeftButton, mods, press - QPoint(0, pixels));

        QCOMPARE(field.model->begins, 1);
        QCOMPARE(field.model->commits, 1);
        QCOMPARE(field.model->setsOutsideBracket, 0);
        QCOMPARE(spinBox.getInputAction(), SpinBox::InputAction::None);
    }

    void pressOnArrowStepsOnce()
    {
        Field field(1.0);
        QVERIFY(field.show());
        field.model->resetCounts();
        const QPoint press = arrowRect(*field.spinBox, QStyle::SC_SpinBoxUp).center();
        QTest::mouseClick(field.spinBox.get(), Qt::LeftButton, {}, press);
        QCOMPARE(field.model->get(), 1.1);
        QCOMPARE(field.model->begins, 1);
        QCOMPARE(field.model->commits, 1);
    }

    void wrapDecision_data()
    {
        QTest::addColumn<QRect>("screen");
        QTest::addColumn<int>("y");
        QTest::addColumn<int>("lastY");
        QTest::addColumn<int>("expected"); // -1: no wrap

        const QRect screen(0, 0, 800, 600);
        const QRect above(100, -1080, 1920, 1080);
        QTest::newRow("bottom moving down") << screen << 599 << 590 << 0;
        QTest::newRow("top moving up") << screen << 0 << 12 << 599;
        QTest::newRow("bottom moving up") << screen << 599 << 600 << -1;
        QTest::newRow("bottom without moving") << screen << 599 << 599 << -1;
        QTest::newRow("top moving down") << screen << 0 << -3 << -1;
        QTest::newRow("middle") << screen << 300 << 290 << -1;
        QTest::newRow("screen above bottom") << above << -1 << -20 << -1080;
        QTest::newRow("screen above top") << above << -1080 << -1000 << -1;
    }

    void wrapDecision()
    {
        QFETCH(QRect, screen);
        QFETCH(int, y);
        QFETCH(int, lastY);
        QFETCH(int, expected);
        const std::optional<int> wrapped = SpinBox::getWrappedCursorY(y, lastY, screen);
        QCOMPARE(wrapped.value_or(-1), expected);
    }

    void dragWrapsAtScreenEdge_data()
    {
        QTest::addColumn<bool>("down");
        QTest::newRow("bottom edge") << true;
        QTest::newRow("top edge") << false;
    }

    // After the wrap the next pixel counts from the opposite edge, so the value keeps moving the same way.
    void dragWrapsAtScreenEdge()
    {
        QFETCH(bool, down);
        Field field(0.0);
        SpinBox& spinBox = *field.spinBox;
        spinBox.setRange(-1e9, 1e9, 1.0, 0);
        QVERIFY(field.show());
        const QRect screen = spinBox.screen()->geometry();
        const QPoint press = arrowRect(spinBox, QStyle::SC_SpinBoxUp).center();
        QTest::mousePress(&spinBox, Qt::LeftButton, {}, press);
        const double afterPress = spinBox.value();
        const QPoint globalPress = spinBox.mapToGlobal(press);

        const int edge = down ? screen.bottom() : screen.top();
        QTest::mouseEvent(QTest::MouseMove, &spinBox, Qt::NoButton, {},
                          spinBox.mapFromGlobal(QPoint(globalPress.x(), edge)));
        const double atEdge = spinBox.value();
        QCOMPARE(atEdge, afterPress + (globalPress.y() - edge));

        const int beyond = down ? screen.top() + 5 : screen.bottom() - 5;
        QTest::mouseEvent(QTest::MouseMove, &spinBox, Qt::NoButton, {},
                          spinBox.mapFromGlobal(QPoint(globalPress.x(), beyond)));
        QCOMPARE(spinBox.value(), atEdge + (down ? -5.0 : 5.0));
        QTest::mouseRelease(&spinBox, Qt::LeftButton, {}, spinBox.mapFromGlobal(QPoint(globalPress.x(), beyond)));
        QCOMPARE(field.model->begins - field.model->commits, 0);
    }

    void wheelWithoutFocusReachesParent()
    {
        WheelCounter parent;
        auto model = makeSharedPtr<RecordingModel<double>>(4.0);
        auto* spinBox = new SpinBox(model, 0.0, &parent);
        auto* other = new QLineEdit(&parent);
        auto* layout = new QVBoxLayout(&parent);
        layout->addWidget(spinBox);
        layout->addWidget(other);
        parent.show();
        parent.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&parent));
        other->setFocus();
        model->resetCounts();

        sendWheel(spinBox->getLineEdit(), 120, Qt::NoScrollPhase);
        sendWheel(spinBox, 120, Qt::NoScrollPhase);

        QCOMPARE(model->get(), 4.0);
        QCOMPARE(model->sets + model->begins, 0);
        QCOMPARE(parent.wheels, 2);
        QVERIFY(!spinBox->hasFocus());
    }

    void wheelPhasesAreOneBracket()
    {
        Field field(0.0);
        QVERIFY(field.show());
        field.spinBox->setFocus();
        QVERIFY(field.spinBox->getLineEdit()->hasFocus());
        field.model->resetCounts();
        QLineEdit* edit = field.spinBox->getLineEdit();

        sendWheel(edit, 0, Qt::ScrollBegin);
        for (int i = 0; i < 3; ++i)
            sendWheel(edit, 120, Qt::ScrollUpdate);
        sendWheel(edit, 120, Qt::ScrollMomentum);
        QCOMPARE(field.model->begins, 1);
        QCOMPARE(field.model->commits, 0);
        sendWheel(edit, 0, Qt::ScrollEnd);

        QVERIFY(std::abs(field.model->get() - 0.4) < 1e-9);
        QCOMPARE(field.model->begins, 1);
        QCOMPARE(field.model->commits, 1);
        QCOMPARE(field.model->setsOutsideBracket, 0);

        // A second gesture is a second bracket.
        sendWheel(edit, 0, Qt::ScrollBegin);
        sendWheel(edit, -120, Qt::ScrollUpdate);
        sendWheel(edit, 0, Qt::ScrollEnd);
        QCOMPARE(field.model->begins, 2);
        QCOMPARE(field.model->commits, 2);
    }

    void wheelWithoutPhasesClosesOnFocusLoss()
    {
        Field field(0.0);
        QVERIFY(field.show());
        field.spinBox->setFocus();
        field.model->resetCounts();
        for (int i = 0; i < 4; ++i)
            sendWheel(field.spinBox->getLineEdit(), -120, Qt::NoScrollPhase);
        QCOMPARE(field.model->begins, 1);
        QCOMPARE(field.model->commits, 0);
        QVERIFY(std::abs(field.model->get() + 0.4) < 1e-9);

        field.spinBox->clearFocus();
        QCOMPARE(field.model->commits, 1);
        QCOMPARE(field.model->nestedBegins, 0);
    }

    void heldArrowKeyIsOneBracket_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<double>("expected");
        QTest::newRow("up") << int(Qt::Key_Up) << 0.6;
        QTest::newRow("down") << int(Qt::Key_Down) << -0.6;
    }

    void heldArrowKeyIsOneBracket()
    {
        QFETCH(int, key);
        QFETCH(double, expected);
        Field field(0.0);
        QVERIFY(field.show());
        field.spinBox->setFocus();
        field.model->resetCounts();
        QWidget* target = field.spinBox.get();

        QTest::simulateEvent(target, true, key, {}, QString(), false);
        for (int i = 0; i < 5; ++i) {
            // Auto-repeat arrives as release-press pairs flagged as repeats.
            QTest::simulateEvent(target, false, key, {}, QString(), true);
            QTest::simulateEvent(target, true, key, {}, QString(), true);
        }
        QCOMPARE(field.model->commits, 0);
        QTest::simulateEvent(target, false, key, {}, QString(), false);

        // At least one step per press; the base spin box adds its own step when the repeat starts.
        QVERIFY2(field.model->get() * expected >= expected * expected - 1e-9,
                 qPrintable(QString::number(field.model->get())));
        QCOMPARE(field.model->begins, 1);
        QCOMPARE(field.model->commits, 1);
        QVERIFY(field.model->sets >= 6);
        QCOMPARE(field.model->setsOutsideBracket, 0);
    }

    void gestureCommitsOpenOne()
    {
        Field field(0.0);
        QVERIFY(field.show());
        field.spinBox->setFocus();
        field.model->resetCounts();
        sendWheel(field.spinBox->getLineEdit(), 120, Qt::NoScrollPhase);
        QTest::keyPress(field.spinBox.get(), Qt::Key_Up);
        QCOMPARE(field.model->begins, 2);
        QCOMPARE(field.model->commits, 1);
        QCOMPARE(field.model->nestedBegins, 0);
        QTest::keyRelease(field.spinBox.get(), Qt::Key_Up);
        QCOMPARE(field.model->commits, 2);
    }

    void trimmedText_data()
    {
        QTest::addColumn<int>("precision");
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("2") << 1 << 2.0 << "2.0";
        QTest::newRow("1.5") << 1 << 1.5 << "1.50";
        QTest::newRow("1.25") << 1 << 1.25 << "1.250";
        QTest::newRow("10") << 1 << 10.0 << "10.0";
        QTest::newRow("-3") << 1 << -3.0 << "-3.0";
        QTest::newRow("all decimals") << 0 << 2.0 << "2.000";
    }

    void trimmedText()
    {
        QFETCH(int, precision);
        QFETCH(double, value);
        QFETCH(QString, text);
        Field field(value);
        field.spinBox->setRange(-100.0, 100.0, 0.1, 3);
        field.spinBox->setPrecisionType(static_cast<SpinBox::PrecisionType>(precision));
        QCOMPARE(field.spinBox->getLineEdit()->text(), text);
        QCOMPARE(field.spinBox->convertValueToText(value), text);
    }

    void textAfterRangeChange_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("suffix");
        QTest::addColumn<double>("minimum");
        QTest::addColumn<double>("maximum");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("text");
        QTest::newRow("fewer decimals") << 0.125 << QString() << -10.0 << 10.0 << 1 << "0.1";
        QTest::newRow("more decimals") << 2.5 << QString() << -10.0 << 10.0 << 4 << "2.5000";
        QTest::newRow("same decimals, clamped") << 7.0 << QString() << 0.0 << 5.0 << 3 << "5.000";
        QTest::newRow("whole, clamped") << 50.0 << QString() << 0.0 << 10.0 << 0 << "10";
        QTest::newRow("suffix kept") << 2.0 << QStringLiteral(" px") << 0.0 << 10.0 << 2 << "2.00 px";
        QTest::newRow("unchanged text") << 0.0 << QStringLiteral(" px") << -1.0 << 1.0 << 3 << "0.000 px";
    }

    void textAfterRangeChange()
    {
        QFETCH(double, value);
        QFETCH(QString, suffix);
        QFETCH(double, minimum);
        QFETCH(double, maximum);
        QFETCH(int, decimals);
        QFETCH(QString, text);
        Field field(value);
        QCOMPARE(field.spinBox->getLineEdit()->text(), QString::number(value, 'f', 3));
        field.spinBox->setDisplaySuffix(suffix);
        field.spinBox->setRange(minimum, maximum, 1.0, decimals);
        QLineEdit* edit = field.spinBox->getLineEdit();
        QCOMPARE(edit->text(), text);
        QVERIFY(edit->hasAcceptableInput());
        QCOMPARE(field.spinBox->findChildren<QLineEdit*>(), QList<QLineEdit*> { edit });
        // Showing the model's value never writes it, not even clamped.
        QCOMPARE(field.model->sets, 0);
    }

    void rangeToolTip_data()
    {
        QTest::addColumn<double>("minimum");
        QTest::addColumn<double>("maximum");
        QTest::addColumn<double>("step");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("expected");
        QTest::newRow("whole") << 0.0 << 10.0 << 1.0 << 2 << QStringLiteral("Value range: 0\u202610");
        QTest::newRow("fractional step") << 0.0 << 10.0 << 0.5 << 2 << QStringLiteral("Value range: 0.00\u202610.00");
        QTest::newRow("fractional bound") << -0.5 << 2.5 << 1.0 << 3 << QStringLiteral("Value range: -0.500\u20262.500");
        QTest::newRow("unbounded int") << 0.0 << 2147483647.0 << 1.0 << 0 << QStringLiteral("Minimum value: 0");
        QTest::newRow("unbounded double") << 1.0 << 1e300 << 0.1 << 1 << QStringLiteral("Minimum value: 1.0");
    }

    void rangeToolTip()
    {
        QFETCH(double, minimum);
        QFETCH(double, maximum);
        QFETCH(double, step);
        QFETCH(int, decimals);
        QFETCH(QString, expected);
        Field field(0.0);
        field.spinBox->setRange(minimum, maximum, step, decimals);
        QVERIFY2(field.spinBox->toolTip().contains(expected), qPrintable(field.spinBox->toolTip()));
    }

    void rangeToolTipInDisplayUnits()
    {
        Field field(0.25);
        field.spinBox->setRange(0.0, 2.0, 1.0, 1);
        field.spinBox->setConversion(ModelValueConverter<double>::fromQuantity(
            Quantity::Length, { LengthUnit::Centimeter, AngleUnit::Degree, RadianceUnit::Nit, TimeUnit::Second }));
        QVERIFY2(field.spinBox->toolTip().contains(QStringLiteral("Value range: 0 cm\u2026200 cm")),
                 qPrintable(field.spinBox->toolTip()));
        QCOMPARE(field.spinBox->getLineEdit()->text(), QStringLiteral("25.0 cm"));

        // Typing is in display units; the model keeps metres.
        QVERIFY(field.show());
        field.spinBox->setFocus();
        field.spinBox->getLineEdit()->selectAll();
        QTest::keyClicks(field.spinBox->getLineEdit(), QStringLiteral("50"));
        QTest::keyClick(field.spinBox->getLineEdit(), Qt::Key_Return);
        QCOMPARE(field.model->get(), 0.5);
    }

    void draggingHint_data()
    {
        QTest::addColumn<bool>("styleHint");
        QTest::addColumn<bool>("overArrow");
        QTest::addColumn<bool>("shown");
        QTest::newRow("over the arrow") << true << true << true;
        QTest::newRow("over the text") << true << false << false;
        QTest::newRow("style without the hint") << false << true << false;
    }

    void draggingHint()
    {
        QFETCH(bool, styleHint);
        QFETCH(bool, overArrow);
        QFETCH(bool, shown);
        HintStyle hintStyle;
        Field field(0.0);
        field.spinBox->setRange(0.0, 10.0, 1.0, 0);
        if (styleHint)
            field.spinBox->setStyle(&hintStyle);
        QVERIFY(field.show());

        const QPoint position = overArrow ? arrowRect(*field.spinBox, QStyle::SC_SpinBoxDown).center()
                                          : field.spinBox->getLineEdit()->geometry().center();
        QHoverEvent enter(QEvent::HoverEnter, position, position, QPoint(-1, -1));
        QApplication::sendEvent(field.spinBox.get(), &enter);
        QCOMPARE(field.spinBox->isDraggingHintShown(), shown);
        QCOMPARE(field.spinBox->toolTip().contains(QStringLiteral("Hint: Dragging speed")), shown);
        QVERIFY(field.spinBox->toolTip().contains(QStringLiteral("Value range: 0\u202610")));

        QHoverEvent leave(QEvent::HoverLeave, QPoint(-1, -1), QPoint(-1, -1), position);
        QApplication::sendEvent(field.spinBox.get(), &leave);
        QVERIFY(!field.spinBox->toolTip().contains(QStringLiteral("Hint")));
        field.spinBox->setStyle(nullptr);
    }

    void sizeHintsStopAtFiveDigits_data()
    {
        QTest::addColumn<double>("minimum");
        QTest::addColumn<double>("maximum");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("suffix");
        QTest::addColumn<bool>("limited");
        const double unbounded = SpinBox::UNBOUNDED;
        QTest::newRow("small range") << 0.0 << 10.0 << 3 << QString() << false;
        QTest::newRow("five digits") << -99999.0 << 99999.0 << 3 << QString() << false;
        QTest::newRow("unbounded") << -unbounded << unbounded << 3 << QString() << true;
        QTest::newRow("unbounded maximum with a unit") << 0.0 << unbounded << 1 << QStringLiteral(" cm") << true;
        QTest::newRow("a million") << -1e6 << 1e6 << 2 << QString() << true;
    }

    // Wide bounds ask for no more room than five whole digits: three unbounded fields in a row still fit a sheet.
    void sizeHintsStopAtFiveDigits()
    {
        QFETCH(double, minimum);
        QFETCH(double, maximum);
        QFETCH(int, decimals);
        QFETCH(QString, suffix);
        QFETCH(bool, limited);
        const auto configure = [&](QDoubleSpinBox& box, double low, double high) {
            box.setLocale(QLocale::c());
            box.setDecimals(decimals);
            box.setRange(low, high);
            box.setSuffix(suffix);
        };
        Field field(0.0);
        field.spinBox->setRange(minimum, maximum, 0.1, decimals);
        field.spinBox->setDisplaySuffix(suffix);
        QDoubleSpinBox plain;
        configure(plain, minimum, maximum);
        QDoubleSpinBox fiveDigits;
        configure(fiveDigits, std::max(minimum, -99999.0), std::min(maximum, 99999.0));

        const SpinBox& spinBox = *field.spinBox;
        QCOMPARE(spinBox.sizeHint(), fiveDigits.sizeHint());
        QCOMPARE(spinBox.minimumSizeHint(), fiveDigits.minimumSizeHint());
        if (limited)
            QVERIFY(spinBox.sizeHint().width() < plain.sizeHint().width());
        else
            QCOMPARE(spinBox.sizeHint(), plain.sizeHint());
    }

    void validate_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("state");
        const QLocale c = QLocale::c();
        const QLocale german(QLocale::German, QLocale::Germany);
        QTest::newRow("point") << c << "1.5" << int(QValidator::Acceptable);
        QTest::newRow("comma in C") << c << "1,5" << int(QValidator::Intermediate);
        QTest::newRow("comma in German") << german << "1,5" << int(QValidator::Acceptable);
        QTest::newRow("point in German") << german << "1.5" << int(QValidator::Intermediate);
        QTest::newRow("above maximum") << c << "11" << int(QValidator::Intermediate);
        QTest::newRow("below minimum") << c << "-0.5" << int(QValidator::Intermediate);
        QTest::newRow("maximum") << c << "10" << int(QValidator::Acceptable);
        QTest::newRow("letters") << c << "x" << int(QValidator::Invalid);
    }

    void validate()
    {
        QFETCH(QLocale, locale);
        QFETCH(QString, text);
        QFETCH(int, state);
        Field field(3.0);
        field.spinBox->setLocale(locale);
        field.spinBox->setRange(0.0, 10.0, 0.1, 2);
        int position = text.size();
        QString copy = text;
        QCOMPARE(int(field.spinBox->validate(copy, position)), state);
    }

    void typedTextReachesModelOnlyWhenValid_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<double>("expected");
        QTest::addColumn<int>("sets");
        QTest::newRow("valid") << "2.5" << 2.5 << 1;
        QTest::newRow("wrong separator") << "2,5" << 3.0 << 0;
        QTest::newRow("out of range") << "12" << 3.0 << 0;
    }

    void typedTextReachesModelOnlyWhenValid()
    {
        QFETCH(QString, typed);
        QFETCH(double, expected);
        QFETCH(int, sets);
        Field field(3.0);
        field.spinBox->setRange(0.0, 10.0, 0.1, 2);
        QVERIFY(field.show());
        field.spinBox->setFocus();
        field.model->resetCounts();
        field.spinBox->getLineEdit()->selectAll();
        QTest::keyClicks(field.spinBox->getLineEdit(), typed);
        QTest::keyClick(field.spinBox->getLineEdit(), Qt::Key_Return);
        QCOMPARE(field.model->get(), expected);
        QCOMPARE(field.model->sets, sets);
    }

    void enterOnUntouchedFieldKeepsPrecision()
    {
        Field field(1.23456);
        field.spinBox->setRange(0.0, 10.0, 0.1, 3);
        QVERIFY(field.show());
        field.spinBox->setFocus();
        field.model->resetCounts();
        QTest::keyClick(field.spinBox->getLineEdit(), Qt::Key_Return);
        field.spinBox->clearFocus();
        QCOMPARE(field.model->get(), 1.23456);
        QCOMPARE(field.model->sets, 0);
    }

    void twoFieldsOnOneModel()
    {
        auto model = makeSharedPtr<RecordingModel<double>>(1.0);
        SpinBox first(model, 0.0);
        SpinBox second(model, 0.0);
        first.setLocale(QLocale::c());
        second.setLocale(QLocale::c());
        first.stepBy(3);
        QCOMPARE(model->get(), 1.3);
        QCOMPARE(second.value(), 1.3);
        QCOMPARE(model->sets, 1);
    }

    void resetAndPaste()
    {
        auto model = makeSharedPtr<RecordingModel<double>>(4.0);
        SpinBox spinBox(model, 1.5);
        spinBox.setLocale(QLocale::c());
        spinBox.setRange(0.0, 10.0, 0.1, 2);
        QVERIFY(spinBox.canReset());
        QVERIFY(spinBox.resetToDefault());
        QCOMPARE(model->get(), 1.5);
        QCOMPARE(model->sets, 1);
        QVERIFY(!spinBox.canReset());

        QVERIFY(spinBox.pasteText(QStringLiteral(" 7.25 ")));
        QCOMPARE(model->get(), 7.25);
        QVERIFY(!spinBox.pasteText(QStringLiteral("seven")));
        QVERIFY(!spinBox.pasteText(QStringLiteral("70")));
        QCOMPARE(model->get(), 7.25);
        QCOMPARE(model->sets, 2);
    }

    void numberWithSlider()
    {
        auto model = makeSharedPtr<RecordingModel<double>>(2.0);
        Number number(model, 0.0, true);
        number.setRange(0.0, 8.0, 0.5, 1);
        QVERIFY(number.getSlider());
        QCOMPARE(number.getSlider()->getPosition(), 0.25);
        QCOMPARE(number.getSpinBox()->value(), 2.0);

        number.getSpinBox()->stepBy(2);
        QCOMPARE(model->get(), 3.0);
        QCOMPARE(number.getSlider()->getPosition(), 0.375);

        model->set(0.0);
        QVERIFY(number.resetToDefault() || model->get() == 0.0);
        QCOMPARE(number.getSpinBox()->value(), 0.0);
        QCOMPARE(number.getSlider()->getPosition(), 0.0);
    }

    void numberSliderFromOptions()
    {
        UserData userData;
        userData.set(SLIDER_OPTIONS_KEY, UiSliderOptions { 0.0, 1.0, static_cast<std::uint32_t>(SliderScale::Logarithmic) });
        auto model = makeSharedPtr<VariableModel<double>>(0.5);
        Number number(model, 0.0, true, userData);
        number.setRange(0.0, 100.0, 1.0, 2);
        QVERIFY(std::abs(number.getSlider()->getPosition() - std::log10(5.5)) < 1e-6);
        QVERIFY(!Number(model, 0.0, false).getSlider());
    }
};

QTEST_MAIN(TestSpinBox)
#include "tst_SpinBox.moc"
