#include <MarlixLibQt/widgets/editors/Number.h>
#include <MarlixLibQt/widgets/editors/Slider.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>

#include "MarlixLibQt/widgets/RecordingModel.h"
#include "MarlixLibQt/widgets/editors/EditorTesting.h"

#include <QAction>
#include <QHoverEvent>
#include <QProxyStyle>
#include <QScreen>
#include <QTest>
#include <QVBoxLayout>

#include <cmath>
#include <memory>

using namespace Marlix;
using namespace Marlix::Widgets;
using namespace Marlix::Widgets::Testing;

Q_DECLARE_METATYPE(SpinBox::StepType)
Q_DECLARE_METATYPE(SpinBox::ScrollSpeedAdjustmentType)

namespace {

/// Answers the library's dragging-hint style hint, as the application style does.
class HintStyle : public QProxyStyle
{
public:
    using QProxyStyle::QProxyStyle;
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

enum Gesture
{
    WheelWithPhases,
    WheelWithoutPhases,
    HeldUp,
    HeldDown,
};

/// Three steps of a gesture; `whileOpen` checks the model before the gesture ends (focus loss ends a wheel turned
/// without phases).
template <class Check> void runGesture(SpinBox& spinBox, Gesture gesture, Check whileOpen)
{
    QLineEdit* edit = spinBox.getLineEdit();
    const int key = gesture == HeldDown ? Qt::Key_Down : Qt::Key_Up;
    const bool wheel = gesture == WheelWithPhases || gesture == WheelWithoutPhases;
    if (gesture == WheelWithPhases)
        sendWheel(edit, 0, Qt::ScrollBegin);
    else if (!wheel)
        QTest::simulateEvent(&spinBox, true, key, {}, QString(), false);
    for (int i = 0; i < 3; ++i) {
        if (wheel) {
            sendWheel(edit, gesture == WheelWithPhases ? 120 : -120,
                      gesture == WheelWithPhases ? Qt::ScrollUpdate : Qt::NoScrollPhase);
        } else {
            // Auto-repeat arrives as release-press pairs flagged as repeats.
            QTest::simulateEvent(&spinBox, false, key, {}, QString(), true);
            QTest::simulateEvent(&spinBox, true, key, {}, QString(), true);
        }
    }
    whileOpen();
    if (gesture == WheelWithPhases)
        sendWheel(edit, 0, Qt::ScrollEnd);
    else if (wheel)
        spinBox.clearFocus();
    else
        QTest::simulateEvent(&spinBox, false, key, {}, QString(), false);
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

    bool show() { return showActive(*spinBox); }

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
        QTest::newRow("plain") << S::Fixed << A::ShiftFasterCtrlSlower << 0 << 0.0 << 10 << 10 << 1.0;
        QTest::newRow("shift faster") << S::Fixed << A::ShiftFasterCtrlSlower << shift << 0.0 << 10 << 10 << 10.0;
        QTest::newRow("ctrl slower") << S::Fixed << A::ShiftFasterCtrlSlower << ctrl << 0.0 << 10 << 10 << 0.1;
        QTest::newRow("ctrl faster") << S::Fixed << A::CtrlFasterAltSlower << ctrl << 0.0 << 10 << 10 << 10.0;
        QTest::newRow("no adjustment") << S::Fixed << A::NoAdjustment << ctrl << 0.0 << 10 << 10 << 1.0;
        QTest::newRow("adaptive 250") << S::Adaptive << A::ShiftFasterCtrlSlower << 0 << 250.0 << 10 << 10 << 350.0;
        QTest::newRow("adaptive -250 towards zero") << S::Adaptive << A::ShiftFasterCtrlSlower << 0 << -250.0 << 10
                                                    << 10 << -150.0;
        QTest::newRow("adaptive step kept for the drag") << S::Adaptive << A::ShiftFasterCtrlSlower << 0 << 95.0
                                                         << 20 << 20 << 115.0;
        // The proportional step is fixed at the press: ten pixels from 500 add ten steps of 2.
        QTest::newRow("proportional 500") << S::Proportional << A::ShiftFasterCtrlSlower << 0 << 500.0 << 10 << 10
                                          << 520.0;
        QTest::newRow("proportional 0.2") << S::Proportional << A::ShiftFasterCtrlSlower << 0 << 0.2 << 1 << 1
                                          << 0.204;
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

        const QPoint press = arrowCenter(spinBox, up ? QStyle::SC_SpinBoxDown : QStyle::SC_SpinBoxUp);
        const auto mods = Qt::KeyboardModifiers(modifiers);
        QTest::mousePress(&spinBox, Qt::LeftButton, mods, press);
        QCOMPARE(field.model->begins, 1);
        QCOMPARE(spinBox.value(), start);
        for (int i = 1; i <= moves; ++i)
            QTest::mouseEvent(QTest::MouseMove, &spinBox, Qt::NoButton, mods,
                              press - QPoint(0, pixels * i / moves));
        QVERIFY2(std::abs(field.model->get() - expected) < 1e-9,
                 qPrintable(QString::number(field.model->get(), 'g', 12)));
        QCOMPARE(field.model->commits, 0);
        QTest::mouseRelease(&spinBox, Qt::LeftButton, mods, press - QPoint(0, pixels));

        QCOMPARE(field.model->begins, 1);
        QCOMPARE(field.model->commits, 1);
        QCOMPARE(field.model->setsOutsideBracket, 0);
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
        const QPoint press = arrowCenter(spinBox, QStyle::SC_SpinBoxUp);
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

    void gestureIsOneBracket_data()
    {
        QTest::addColumn<int>("gesture");
        QTest::addColumn<SpinBox::StepType>("stepType");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<double>("start");
        QTest::addColumn<double>("step");
        using S = SpinBox::StepType;
        QTest::newRow("wheel with phases") << int(WheelWithPhases) << S::Fixed << QString() << 0.0 << 0.1;
        QTest::newRow("wheel without phases") << int(WheelWithoutPhases) << S::Fixed << QString() << 0.0 << -0.1;
        QTest::newRow("held up key") << int(HeldUp) << S::Fixed << QString() << 0.0 << 0.1;
        QTest::newRow("held down key") << int(HeldDown) << S::Fixed << QString() << 0.0 << -0.1;
        // The proportional step is fixed when the gesture starts, so every step of it has the same size.
        QTest::newRow("proportional wheel") << int(WheelWithPhases) << S::Proportional << QString() << 500.0 << 2.0;
        QTest::newRow("proportional key") << int(HeldUp) << S::Proportional << QString() << 500.0 << 2.0;
        // Typed but not confirmed: stepping starts from the typed value.
        QTest::newRow("typed, then key") << int(HeldUp) << S::Proportional << "1000" << 1000.0 << 4.0;
    }

    void gestureIsOneBracket()
    {
        QFETCH(int, gesture);
        QFETCH(SpinBox::StepType, stepType);
        QFETCH(QString, typed);
        QFETCH(double, start);
        QFETCH(double, step);
        Field field(typed.isEmpty() ? start : 500.0);
        field.spinBox->setRange(-1e6, 1e6, 0.1, 3);
        field.spinBox->setStepType(stepType);
        QVERIFY(field.show());
        field.spinBox->setFocus();
        field.model->resetCounts();
        // Typing is one bracket more, kept when the next gesture starts.
        const int typing = typed.isEmpty() ? 0 : 1;
        field.spinBox->getLineEdit()->selectAll();
        QTest::keyClicks(field.spinBox->getLineEdit(), typed);

        runGesture(*field.spinBox, Gesture(gesture), [&] { QCOMPARE(field.model->commits, typing); });

        // At least one step per event; the base spin box adds its own step when a key's repeat starts.
        const double steps = (field.model->get() - start) / step;
        QVERIFY2(steps >= 3.0 && std::abs(steps - std::round(steps)) < 1e-6, qPrintable(QString::number(steps)));
        QCOMPARE(field.model->begins, 1 + typing);
        QCOMPARE(field.model->commits, 1 + typing);
        QCOMPARE(field.model->setsOutsideBracket, 0);
        QCOMPARE(field.model->nestedBegins, 0);
    }

    void shownText_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<int>("precision");
        QTest::addColumn<QString>("suffix");
        QTest::addColumn<QString>("text");
        // Trimming drops zeros while two of them end the text.
        QTest::newRow("trimmed 2") << 2.0 << 3 << 1 << QString() << "2.0";
        QTest::newRow("trimmed 1.5") << 1.5 << 3 << 1 << QString() << "1.50";
        QTest::newRow("trimmed 1.25") << 1.25 << 3 << 1 << QString() << "1.250";
        QTest::newRow("all decimals") << 2.0 << 3 << 0 << QString() << "2.000";
        QTest::newRow("fewer decimals") << 0.125 << 1 << 0 << QString() << "0.1";
        QTest::newRow("clamped, without decimals") << 50.0 << 0 << 0 << QString() << "10";
        QTest::newRow("suffix") << 2.0 << 2 << 0 << QStringLiteral(" px") << "2.00 px";
    }

    void shownText()
    {
        QFETCH(double, value);
        QFETCH(int, decimals);
        QFETCH(int, precision);
        QFETCH(QString, suffix);
        QFETCH(QString, text);
        Field field(value);
        field.spinBox->setDisplaySuffix(suffix);
        field.spinBox->setRange(-10.0, 10.0, 1.0, decimals);
        field.spinBox->setPrecisionType(static_cast<SpinBox::PrecisionType>(precision));
        QCOMPARE(field.spinBox->getLineEdit()->text(), text);
        QCOMPARE(field.spinBox->convertValueToText(value) + suffix, text);
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
        QTest::newRow("unbounded int") << 0.0 << 2147483647.0 << 1.0 << 0 << QStringLiteral("Minimum value: 0");
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
        HintStyle hintStyle(QStringLiteral("fusion"));
        Field field(0.0);
        field.spinBox->setRange(0.0, 10.0, 1.0, 0);
        if (styleHint)
            field.spinBox->setStyle(&hintStyle);
        QVERIFY(field.show());

        const QPoint position = overArrow ? arrowCenter(*field.spinBox, QStyle::SC_SpinBoxDown)
                                          : field.spinBox->getLineEdit()->geometry().center();
        QHoverEvent enter(QEvent::HoverEnter, position, position, QPoint(-1, -1));
        QApplication::sendEvent(field.spinBox.get(), &enter);
        QCOMPARE(field.spinBox->isDraggingHintShown(), shown);
        QCOMPARE(field.spinBox->toolTip().contains(QStringLiteral("Hint: Dragging speed")), shown);
        QVERIFY(field.spinBox->toolTip().contains(QStringLiteral("Value range: 0\u202610")));
        field.spinBox->setStyle(nullptr);
    }

    void sizeHintsStopAtFiveDigits_data()
    {
        QTest::addColumn<double>("minimum");
        QTest::addColumn<double>("maximum");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("suffix");
        const double unbounded = SpinBox::UNBOUNDED;
        QTest::newRow("small range") << 0.0 << 10.0 << 3 << QString();
        QTest::newRow("unbounded") << -unbounded << unbounded << 3 << QString();
        QTest::newRow("unbounded maximum with a unit") << 0.0 << unbounded << 1 << QStringLiteral(" cm");
    }

    // Wide bounds ask for no more room than five whole digits: three unbounded fields in a row still fit a sheet.
    void sizeHintsStopAtFiveDigits()
    {
        QFETCH(double, minimum);
        QFETCH(double, maximum);
        QFETCH(int, decimals);
        QFETCH(QString, suffix);
        Field field(0.0);
        field.spinBox->setRange(minimum, maximum, 0.1, decimals);
        field.spinBox->setDisplaySuffix(suffix);
        // Sized as a plain spin box whose bounds stop at five digits.
        QDoubleSpinBox fiveDigits;
        fiveDigits.setLocale(QLocale::c());
        fiveDigits.setDecimals(decimals);
        fiveDigits.setRange(std::max(minimum, -99999.0), std::min(maximum, 99999.0));
        fiveDigits.setSuffix(suffix);
        QCOMPARE(field.spinBox->sizeHint(), fiveDigits.sizeHint());
        QCOMPARE(field.spinBox->minimumSizeHint(), fiveDigits.minimumSizeHint());
    }

    void validate_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("state");
        const QLocale c = QLocale::c();
        const QLocale german(QLocale::German, QLocale::Germany);
        QTest::newRow("comma in German") << german << "1,5" << int(QValidator::Acceptable);
        QTest::newRow("point in German") << german << "1.5" << int(QValidator::Intermediate);
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

    void typingFollowsAsOneBracket_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<double>("whileTyping");
        QTest::addColumn<double>("expected");
        QTest::newRow("valid") << "2.5" << 2.5 << 2.5;
        // Values that pass through ("2", "1") are shown; a text that ends bad takes them back.
        QTest::newRow("wrong separator") << "2,5" << 2.0 << 3.14159;
        QTest::newRow("out of range") << "12" << 1.0 << 3.14159;
        // The field shows the value rounded: Enter on it must not write the rounded value back.
        QTest::newRow("nothing typed") << "" << 3.142 << 3.14159;
    }

    // A linked view follows each keystroke, and the burst is one change that Enter closes.
    void typingFollowsAsOneBracket()
    {
        QFETCH(QString, typed);
        QFETCH(double, whileTyping);
        QFETCH(double, expected);
        Field field(3.14159);
        field.spinBox->setRange(0.0, 10.0, 0.1, 2);
        SpinBox linked(field.model, 0.0);
        QVERIFY(field.show());
        field.spinBox->setFocus();
        field.model->resetCounts();
        field.spinBox->getLineEdit()->selectAll();
        QTest::keyClicks(field.spinBox->getLineEdit(), typed);
        QCOMPARE(linked.value(), whileTyping);
        QCOMPARE(field.model->commits + field.model->reverts, 0);
        QTest::keyClick(field.spinBox->getLineEdit(), Qt::Key_Return);
        field.spinBox->clearFocus();
        QCOMPARE(field.model->get(), expected);
        const int brackets = typed.isEmpty() ? 0 : 1;
        QCOMPARE(field.model->begins, brackets);
        QCOMPARE(field.model->commits + field.model->reverts, brackets);
        QCOMPARE(field.model->setsOutsideBracket, 0);
        QCOMPARE(field.spinBox->text(), field.spinBox->convertValueToText(expected));
    }

    void ambiguousGrouping_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("baseText");
        QTest::addColumn<QString>("text");
        QTest::newRow("grouping dropped with the point") << 1234.5 << "1234500" << "1234.500";
        QTest::newRow("grouping shown") << 1234.5 << "1.234.500" << "1234.500";
        QTest::newRow("negative") << -1234567.25 << "-1234567250" << "-1234567.250";
        QTest::newRow("below a thousand") << 234.5 << "234.500" << "234.500";
    }

    // No locale has a group separator equal to its decimal point, so the rewriting is checked on the base texts that
    // such a locale would give, and read back.
    void ambiguousGrouping()
    {
        QFETCH(double, value);
        QFETCH(QString, baseText);
        QFETCH(QString, text);
        const QString point = QStringLiteral(".");
        QCOMPARE(SpinBox::disambiguateGrouping(baseText, value, 3, point, point), text);
        QCOMPARE(SpinBox::parseAmbiguousGrouping(text, point), std::optional<double>(value));
        QCOMPARE(SpinBox::parseAmbiguousGrouping(QStringLiteral(".5"), point), std::optional<double>(0.5));
    }

    void undoKeysAfterAGesture_data()
    {
        QTest::addColumn<bool>("type");
        QTest::addColumn<bool>("confirm");
        QTest::addColumn<bool>("applicationUndoes");
        QTest::newRow("after a drag") << false << false << true;
        QTest::newRow("while typing") << true << false << false;
        QTest::newRow("after typing and Enter") << true << true << true;
    }

    // The field's own text undo is only the user's while they type; otherwise the keys undo the application's steps.
    void undoKeysAfterAGesture()
    {
        QFETCH(bool, type);
        QFETCH(bool, confirm);
        QFETCH(bool, applicationUndoes);
        QWidget window;
        auto* spinBox = new SpinBox(&window);
        spinBox->setGeometry(10, 10, 160, spinBox->sizeHint().height());
        int triggered = 0;
        for (const auto keys : { QKeySequence::Undo, QKeySequence::Redo }) {
            auto* action = new QAction(&window);
            action->setShortcut(keys);
            connect(action, &QAction::triggered, [&triggered] { ++triggered; });
            window.addAction(action);
        }
        QVERIFY(showActive(window));

        dragUp(spinBox, 5);
        if (type) {
            spinBox->getLineEdit()->selectAll();
            QTest::keyClicks(spinBox->getLineEdit(), QStringLiteral("4"));
        }
        if (confirm)
            QTest::keyClick(spinBox->getLineEdit(), Qt::Key_Return);
        QWidget* focus = QApplication::focusWidget();
        QVERIFY(focus == spinBox || focus == spinBox->getLineEdit());
        QTest::keySequence(focus, QKeySequence::Undo);
        QTest::keySequence(focus, QKeySequence::Redo);
        QCOMPARE(triggered, applicationUndoes ? 2 : 0);
    }

    void mixedValues_data()
    {
        QTest::addColumn<int>("end"); // 0: the host, 1: typing, 2: a drag, 3: typing a bad value
        QTest::addColumn<double>("expected");
        QTest::newRow("host clears the mark") << 0 << 0.7;
        QTest::newRow("typing the shown value") << 1 << 0.7;
        // A press on the arrow steps once, ten pixels add ten steps: from the model's value.
        QTest::newRow("drag") << 2 << 1.8;
        QTest::newRow("a bad value keeps them") << 3 << 0.7;
    }

    // A number over several values that disagree shows none until the user gives one.
    void mixedValues()
    {
        QFETCH(int, end);
        QFETCH(double, expected);
        auto model = makeSharedPtr<RecordingModel<double>>(0.7);
        Number number(model, 0.0, true);
        number.setLocale(QLocale::c());
        number.setRange(0.0, 10.0, 0.1, 3);
        number.setSuffix(QStringLiteral(" m"));
        number.resize(300, number.sizeHint().height());
        QVERIFY(showActive(number));
        SpinBox* spinBox = number.getSpinBox();
        QLineEdit* edit = spinBox->getLineEdit();
        const double sliderPosition = number.getSlider()->getPosition();

        number.setProperty(SpinBox::MIXED_VALUES_PROPERTY, true);
        QCOMPARE(edit->text(), QString());
        QCOMPARE(edit->placeholderText(), QStringLiteral("<different values>"));
        model->notifyCallbacks();
        QCOMPARE(edit->text(), QString());
        QCOMPARE(number.getSlider()->getPosition(), sliderPosition);
        model->resetCounts();

        if (end == 0) {
            number.setProperty(SpinBox::MIXED_VALUES_PROPERTY, false);
        } else if (end == 1 || end == 3) {
            typeInto(spinBox, end == 1 ? QStringLiteral("0.7") : QStringLiteral("12"));
        } else {
            dragUp(spinBox, 10);
        }
        const bool stillMixed = end == 3;
        QCOMPARE(spinBox->isShowingMixedValues(), stillMixed);
        QVERIFY(std::abs(model->get() - expected) < 1e-9);
        // A value the user gives is written to all objects, even when it equals the first one's.
        QCOMPARE(model->sets > 0, end != 0);
        QCOMPARE(edit->text(), stillMixed ? QString() : QString::number(expected, 'f', 3) + QStringLiteral(" m"));
    }

    void resetAndPaste()
    {
        auto model = makeSharedPtr<RecordingModel<double>>(4.0);
        SpinBox spinBox(model, 1.5);
        spinBox.setLocale(QLocale::c());
        spinBox.setRange(0.0, 10.0, 0.1, 2);
        QVERIFY(spinBox.resetToDefault());
        QCOMPARE(model->get(), 1.5);
        QVERIFY(spinBox.pasteText(QStringLiteral(" 7.25 ")));
        // Text that the field would not accept changes nothing.
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
        QCOMPARE(number.getSlider()->getPosition(), 0.25);
        number.getSpinBox()->stepBy(2);
        QCOMPARE(model->get(), 3.0);
        QCOMPARE(number.getSlider()->getPosition(), 0.375);

        // The slider options of the property win over the spin box's range.
        UserData userData;
        const auto scale = static_cast<std::uint32_t>(SliderScale::Logarithmic);
        userData.set(SLIDER_OPTIONS_KEY, UiSliderOptions { 0.0, 1.0, scale });
        model->set(0.5);
        Number withOptions(model, 0.0, true, userData);
        withOptions.setRange(0.0, 100.0, 1.0, 2);
        QVERIFY(std::abs(withOptions.getSlider()->getPosition() - std::log10(5.5)) < 1e-6);
    }
};

QTEST_MAIN(TestSpinBox)
#include "tst_SpinBox.moc"
