#include <MarlixLibQt/widgets/editors/Number.h>
#include <MarlixLibQt/widgets/editors/PosRotScale.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>
#include <MarlixLibQt/widgets/editors/Vector.h>

#include <MarlixLib/base/Exception.h>

#include "MarlixLibQt/widgets/RecordingModel.h"
#include "MarlixLibQt/widgets/editors/EditorTesting.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QTest>

#include <cmath>
#include <numbers>

using namespace Marlix;
using namespace Marlix::Widgets;
using namespace Marlix::Widgets::Testing;

namespace {

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
        // A second vector on the same model follows.
        Vector other(model, { 0, 0, 0 });
        QVERIFY(showActive(vector));
        model->resetCounts();

        typeInto(vector.getComponent(component)->getSpinBox(), typed);
        QCOMPARE(model->get(), expected);
        QCOMPARE(model->begins, 1);
        QCOMPARE(model->commits, 1);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(other.getComponent(i)->getSpinBox()->value(), expected[static_cast<std::size_t>(i)]);
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
        QCOMPARE(vector.getComponent(1)->getSpinBox()->minimum(), -1.0);
        QCOMPARE(vector.getComponent(1)->getSpinBox()->singleStep(), 0.25);
        QCOMPARE(vector.getComponent(0)->getSpinBox()->text(), QStringLiteral("0.50 px"));
        QCOMPARE(vector.getComponent(1)->getSpinBox()->text(), QStringLiteral("1.50 %"));

        vector.resize(300, 30);
        vector.show();
        QVERIFY(QTest::qWaitForWindowExposed(&vector));
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
        QMenu* menu = rightClick(*field);
        QVERIFY(menu);
        QCOMPARE(menu->parentWidget(), &vector);
        menu->close();
    }

    void posRotScaleInDisplayUnits()
    {
        PosRotScaleTm tm;
        tm.position = { 1.5, 0.0, -2.0 };
        tm.rotation = { std::numbers::pi / 2.0, 0.0, 0.0 };
        tm.scale = { 2.0, 1.0, 1.0 };
        auto model = makeSharedPtr<RecordingModel<PosRotScaleTm>>(tm);
        auto units = makeSharedPtr<VariableModel<DisplayUnits>>(CENTIMETRES_DEGREES);
        PosRotScale editor(model, units);
        editor.setLocale(QLocale::c());
        using Row = PosRotScale::Row;
        QCOMPARE(editor.getField(Row::Position, 0)->text(), QStringLiteral("150.0 cm"));
        QCOMPARE(editor.getField(Row::Rotation, 0)->text(), QStringLiteral("90.0\u00b0"));
        QCOMPARE(editor.getField(Row::Scale, 0)->text(), QStringLiteral("2.0"));
        QVERIFY(!editor.isShearShown());

        // Typing is in display units; the model keeps metres and radians.
        QVERIFY(showActive(editor));
        typeInto(editor.getField(Row::Rotation, 1), QStringLiteral("45"));
        typeInto(editor.getField(Row::Position, 0), QStringLiteral("25"));
        QVERIFY(std::abs(model->get().rotation.y - std::numbers::pi / 4.0) < 1e-12);
        QVERIFY(std::abs(model->get().position.x - 0.25) < 1e-12);
        QCOMPARE(model->commits, 2);

        model->resetCounts();
        units->set(MILLIMETRES_RADIANS);
        QCOMPARE(editor.getField(Row::Position, 0)->text(), QStringLiteral("250.0 mm"));
        QCOMPARE(editor.getField(Row::Rotation, 0)->text(), QStringLiteral("1.57 rad"));
        QCOMPARE(editor.getField(Row::Rotation, 0)->singleStep(), 0.01);
        QCOMPARE(model->sets, 0); // showing in other units writes nothing

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
