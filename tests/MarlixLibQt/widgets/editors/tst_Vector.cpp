#include <MarlixLibQt/widgets/editors/Number.h>
#include <MarlixLibQt/widgets/editors/PosRotScale.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>
#include <MarlixLibQt/widgets/editors/Vector.h>

#include <MarlixLib/base/Exception.h>

#include "MarlixLibQt/widgets/RecordingModel.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QStyleOptionSpinBox>
#include <QTest>

#include <cmath>
#include <numbers>

using namespace Marlix;
using namespace Marlix::Widgets;
using Marlix::Widgets::Testing::RecordingModel;

namespace {

QPoint upArrow(const SpinBox& spinBox)
{
    QStyleOptionSpinBox option;
    option.initFrom(&spinBox);
    option.frame = true;
    option.buttonSymbols = QAbstractSpinBox::UpDownArrows;
    option.subControls = QStyle::SC_SpinBoxFrame | QStyle::SC_SpinBoxEditField | QStyle::SC_SpinBoxUp
        | QStyle::SC_SpinBoxDown;
    option.stepEnabled = QAbstractSpinBox::StepUpEnabled | QAbstractSpinBox::StepDownEnabled;
    return spinBox.style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxUp, &spinBox).center();
}

void typeInto(SpinBox* spinBox, const QString& text)
{
    spinBox->setFocus();
    spinBox->getLineEdit()->selectAll();
    QTest::keyClicks(spinBox->getLineEdit(), text);
    QTest::keyClick(spinBox->getLineEdit(), Qt::Key_Return);
}

bool showActive(QWidget& widget)
{
    widget.move(200, 200);
    widget.show();
    widget.activateWindow();
    return QTest::qWaitForWindowActive(&widget);
}

void dragUp(SpinBox* spinBox, int pixels)
{
    const QPoint press = upArrow(*spinBox);
    QTest::mousePress(spinBox, Qt::LeftButton, {}, press);
    for (int i = 1; i <= pixels; ++i)
        QTest::mouseMove(spinBox, press - QPoint(0, i));
    QTest::mouseRelease(spinBox, Qt::LeftButton, {}, press - QPoint(0, pixels));
}

const DisplayUnits CENTIMETRES_DEGREES { LengthUnit::Centimeter, AngleUnit::Degree, RadianceUnit::Nit,
    TimeUnit::Second };
const DisplayUnits MILLIMETRES_RADIANS { LengthUnit::Millimeter, AngleUnit::Radian, RadianceUnit::Nit,
    TimeUnit::Second };

} // namespace

class TestVector : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void componentEditWritesWholeArray_data()
    {
        QTest::addColumn<int>("component");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<Array<double>>("expected");
        QTest::newRow("second") << 1 << "5" << Array<double> { 1, 5, 3 };
        QTest::newRow("first") << 0 << "-2.5" << Array<double> { -2.5, 2, 3 };
        QTest::newRow("last") << 2 << "0" << Array<double> { 1, 2, 0 };
    }

    void componentEditWritesWholeArray()
    {
        QFETCH(int, component);
        QFETCH(QString, typed);
        QFETCH(Array<double>, expected);
        auto model = makeSharedPtr<RecordingModel<Array<double>>>(Array<double> { 1, 2, 3 });
        Vector vector(model, { 0, 0, 0 });
        vector.setLocale(QLocale::c());
        QVERIFY(showActive(vector));
        model->resetCounts();

        typeInto(vector.getComponent(component)->getSpinBox(), typed);
        QCOMPARE(model->get(), expected);
        QCOMPARE(model->begins, 1);
        QCOMPARE(model->commits, 1);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(vector.getComponent(i)->getSpinBox()->value(), expected[static_cast<std::size_t>(i)]);
    }

    void twoVectorsOnOneModel()
    {
        auto model = makeSharedPtr<VariableModel<Array<double>>>(Array<double> { 1, 2, 3 });
        QWidget window;
        auto* first = new Vector(model, { 0, 0, 0 }, false, {}, {}, LabelPosition::Left, &window);
        auto* second = new Vector(model, { 0, 0, 0 }, false, {}, {}, LabelPosition::Left, &window);
        first->move(0, 0);
        second->move(0, 60);
        window.resize(400, 120);
        window.setLocale(QLocale::c());
        QVERIFY(showActive(window));

        typeInto(first->getComponent(2)->getSpinBox(), QStringLiteral("7"));
        QCOMPARE(second->getComponent(2)->getSpinBox()->value(), 7.0);
        first->getComponent(0)->getSpinBox()->stepBy(1);
        QCOMPARE(second->getComponent(0)->getSpinBox()->value(), 1.1);
        QCOMPARE(model->get(), (Array<double> { 1.1, 2, 7 }));

        model->set({ 4, 5, 6 });
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(first->getComponent(i)->getSpinBox()->value(), 4.0 + i);
            QCOMPARE(second->getComponent(i)->getSpinBox()->value(), 4.0 + i);
        }
    }

    void componentDragIsOneBracketOfTheArray()
    {
        auto model = makeSharedPtr<RecordingModel<Array<double>>>(Array<double> { 1, 2, 3 });
        Vector vector(model, { 0, 0, 0 });
        vector.resize(360, 30);
        QVERIFY(showActive(vector));
        model->resetCounts();

        dragUp(vector.getComponent(1)->getSpinBox(), 10);

        QCOMPARE(model->begins, 1);
        QCOMPARE(model->commits, 1);
        QCOMPARE(model->setsOutsideBracket, 0);
        const Array<double> value = model->get();
        QCOMPARE(value[0], 1.0);
        QVERIFY(std::abs(value[1] - 3.1) < 1e-9); // one step for the press, ten for the pixels
        QCOMPARE(value[2], 3.0);
    }

    // Each field follows the model through its own adapter: an outside change reads the model once per field (and
    // once for the grid's own rows and actions), not a second time for a refresh of the whole editor.
    void outsideChangeRefreshesEachFieldOnce()
    {
        auto array = makeSharedPtr<RecordingModel<Array<double>>>(Array<double> { 1, 2, 3 });
        Vector vector(array, { 0, 0, 0 });
        array->resetCounts();
        array->set({ 4, 5, 6 });
        QCOMPARE(vector.getComponent(2)->getSpinBox()->value(), 6.0);
        QCOMPARE(array->gets, 1 + 3);

        auto tm = makeSharedPtr<RecordingModel<PosRotScaleTm>>(PosRotScaleTm {});
        PosRotScale editor(tm, makeSharedPtr<VariableModel<DisplayUnits>>(DEFAULT_DISPLAY_UNITS));
        tm->resetCounts();
        PosRotScaleTm moved;
        moved.position = { 1, 2, 3 };
        tm->set(moved);
        QCOMPARE(editor.getField(PosRotScale::Row::Position, 2)->value(), 3.0);
        QCOMPARE(tm->gets, 1 + 12);
    }

    void configurationReachesEveryComponent()
    {
        auto model = makeSharedPtr<VariableModel<Array<double>>>(Array<double> { 0.5, 1.5 });
        Vector vector(model, { 0, 0 }, false, {}, { QStringLiteral("U"), QStringLiteral("V") },
                      LabelPosition::Right);
        vector.setLocale(QLocale::c());
        vector.setRange({ 0, -1 }, { 1, 2 }, 0.25f, 2);
        vector.setSuffix({ QStringLiteral(" px"), QStringLiteral(" %") });
        QCOMPARE(vector.getComponent(0)->getSpinBox()->maximum(), 1.0);
        QCOMPARE(vector.getComponent(1)->getSpinBox()->minimum(), -1.0);
        QCOMPARE(vector.getComponent(1)->getSpinBox()->singleStep(), 0.25);
        QCOMPARE(vector.getComponent(0)->getSpinBox()->text(), QStringLiteral("0.50 px"));
        QCOMPARE(vector.getComponent(1)->getSpinBox()->text(), QStringLiteral("1.50 %"));

        vector.resize(300, 30);
        vector.show();
        QVERIFY(QTest::qWaitForWindowExposed(&vector));
        QCOMPARE(vector.getLabel(0)->text(), QStringLiteral("U"));
        QVERIFY(vector.getLabel(0)->geometry().left() > vector.getComponent(0)->geometry().right());
    }

    void wrongCountsStop()
    {
        auto model = makeSharedPtr<VariableModel<Array<double>>>(Array<double> { 1, 2, 3 });
        Vector vector(model, { 0, 0, 0 });
        QVERIFY_THROWS_EXCEPTION(StopException, vector.setSuffix({ QStringLiteral("a"), QStringLiteral("b") }));
        QVERIFY_THROWS_EXCEPTION(StopException, vector.setRange({ 0 }, { 1 }, 1.0f, 1));
        QVERIFY_THROWS_EXCEPTION(StopException, Vector(model, {}));
    }

    void resetCopyPaste()
    {
        auto model = makeSharedPtr<RecordingModel<Array<double>>>(Array<double> { 1, 2, 3 });
        Vector vector(model, { 0, 0, 1 });
        vector.setLocale(QLocale::c());
        vector.setRange({ -10, -10, -10 }, { 10, 10, 10 }, 0.5f, 1);
        QCOMPARE(vector.toText(), QStringLiteral("1.0; 2.0; 3.0"));

        QVERIFY(vector.pasteText(QStringLiteral("4; 5.5; -6")));
        QCOMPARE(model->get(), (Array<double> { 4, 5.5, -6 }));
        QCOMPARE(model->sets, 1);
        QVERIFY(!vector.pasteText(QStringLiteral("4; 5")));
        QVERIFY(!vector.pasteText(QStringLiteral("4; 5; 60")));
        QVERIFY(!vector.pasteText(QStringLiteral("4; x; 6")));
        QCOMPARE(model->get(), (Array<double> { 4, 5.5, -6 }));

        QVERIFY(vector.resetToDefault());
        QCOMPARE(model->get(), (Array<double> { 0, 0, 1 }));
        QCOMPARE(model->sets, 2);
        QVERIFY(!vector.canReset());
    }

    void componentContextMenuIsTheVectors()
    {
        auto model = makeSharedPtr<VariableModel<Array<double>>>(Array<double> { 1, 2, 3 });
        Vector vector(model, { 0, 0, 0 });
        QVERIFY(showActive(vector));
        SpinBox* field = vector.getComponent(1)->getSpinBox();
        const QPoint position = field->rect().center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, position, field->mapToGlobal(position));
        QApplication::sendEvent(field, &event);
        const auto menus = vector.findChildren<QMenu*>(QLatin1String(CommonContextMenuOwner::MENU_OBJECT_NAME));
        QCOMPARE(menus.size(), 1);
        QCOMPARE(menus.front()->parentWidget(), &vector);
        QVERIFY(field->findChildren<QMenu*>().isEmpty());
        menus.front()->close();
    }

    void posRotScaleShowsDisplayUnits()
    {
        PosRotScaleTm tm;
        tm.position = { 1.5, 0.0, -2.0 };
        tm.rotation = { std::numbers::pi / 2.0, 0.0, 0.0 };
        tm.scale = { 2.0, 1.0, 1.0 };
        auto model = makeSharedPtr<VariableModel<PosRotScaleTm>>(tm);
        auto units = makeSharedPtr<VariableModel<DisplayUnits>>(CENTIMETRES_DEGREES);
        PosRotScale editor(model, units);
        editor.setLocale(QLocale::c());
        using Row = PosRotScale::Row;

        QCOMPARE(editor.getField(Row::Position, 0)->text(), QStringLiteral("150.0 cm"));
        QCOMPARE(editor.getField(Row::Position, 2)->text(), QStringLiteral("-200.0 cm"));
        QCOMPARE(editor.getField(Row::Rotation, 0)->text(), QStringLiteral("90.0\u00b0"));
        QCOMPARE(editor.getField(Row::Scale, 0)->text(), QStringLiteral("2.0"));
        QCOMPARE(editor.getRowLabel(Row::Position)->text(), QStringLiteral("Position"));
        QVERIFY(!editor.isShearShown());

        units->set(MILLIMETRES_RADIANS);
        QCOMPARE(editor.getField(Row::Position, 0)->text(), QStringLiteral("1500.0 mm"));
        QCOMPARE(editor.getField(Row::Rotation, 0)->text(), QStringLiteral("1.57 rad"));
        QCOMPARE(editor.getField(Row::Rotation, 0)->singleStep(), 0.01);
        QCOMPARE(model->get(), tm); // showing in other units writes nothing
    }

    void posRotScaleEditsInDisplayUnits()
    {
        auto model = makeSharedPtr<RecordingModel<PosRotScaleTm>>(PosRotScaleTm {});
        auto units = makeSharedPtr<VariableModel<DisplayUnits>>(CENTIMETRES_DEGREES);
        PosRotScale editor(model, units);
        editor.setLocale(QLocale::c());
        editor.resize(400, 100);
        QVERIFY(showActive(editor));
        using Row = PosRotScale::Row;
        model->resetCounts();

        typeInto(editor.getField(Row::Rotation, 1), QStringLiteral("45"));
        typeInto(editor.getField(Row::Position, 0), QStringLiteral("25"));
        const PosRotScaleTm value = model->get();
        QVERIFY(std::abs(value.rotation.y - std::numbers::pi / 4.0) < 1e-12);
        QVERIFY(std::abs(value.position.x - 0.25) < 1e-12);
        QCOMPARE(value.scale, Vector3(1.0, 1.0, 1.0));
        QCOMPARE(model->commits, 2);
        model->resetCounts();

        dragUp(editor.getField(Row::Scale, 2), 5);
        QCOMPARE(model->begins, 1);
        QCOMPARE(model->commits, 1);
        QVERIFY(std::abs(model->get().scale.z - 1.06) < 1e-9);
    }

    void posRotScaleResets_data()
    {
        QTest::addColumn<int>("action");
        QTest::addColumn<bool>("keepsPosition");
        QTest::addColumn<bool>("keepsRotationAndScale");
        QTest::newRow(PosRotScale::RESET_ALL_TEXT) << 0 << false << false;
        QTest::newRow(PosRotScale::RESET_KEEP_POSITION_TEXT) << 1 << true << false;
        QTest::newRow(PosRotScale::RESET_SHEAR_TEXT) << 2 << true << true;
    }

    void posRotScaleResets()
    {
        QFETCH(int, action);
        QFETCH(bool, keepsPosition);
        QFETCH(bool, keepsRotationAndScale);
        PosRotScaleTm tm;
        tm.position = { 1, 2, 3 };
        tm.rotation = { 0.1, 0.2, 0.3 };
        tm.scale = { 2, 3, 4 };
        tm.shear = { 0.5, 0, 0.25 };
        auto model = makeSharedPtr<RecordingModel<PosRotScaleTm>>(tm);
        PosRotScale editor(model, makeSharedPtr<VariableModel<DisplayUnits>>(DEFAULT_DISPLAY_UNITS));
        QVERIFY(editor.isShearShown());
        QCOMPARE(editor.actions().size(), 3);
        QCOMPARE(editor.contextMenuPolicy(), Qt::ActionsContextMenu);
        model->resetCounts();

        QAction* trigger = editor.actions().at(action);
        QCOMPARE(trigger->text(), QString::fromLatin1(QTest::currentDataTag()));
        QVERIFY(trigger->isEnabled());
        trigger->trigger();

        const PosRotScaleTm value = model->get();
        QCOMPARE(model->sets, 1);
        QCOMPARE(value.shear, Vector3());
        QCOMPARE(value.position, keepsPosition ? tm.position : Pos());
        QCOMPARE(value.rotation, keepsRotationAndScale ? tm.rotation : Vector3());
        QCOMPARE(value.scale, keepsRotationAndScale ? tm.scale : Vector3(1, 1, 1));
        QVERIFY(!editor.isShearShown());
        QVERIFY(!editor.getResetShearAction()->isEnabled());
    }
};

QTEST_MAIN(TestVector)
#include "tst_Vector.moc"
