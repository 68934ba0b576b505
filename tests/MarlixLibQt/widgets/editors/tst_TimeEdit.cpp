#include <MarlixLibQt/widgets/editors/Number.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>
#include <MarlixLibQt/widgets/editors/TimeEdit.h>

#include <MarlixLib/base/Exception.h>

#include "MarlixLibQt/widgets/RecordingModel.h"
#include "MarlixLibQt/widgets/editors/EditorTesting.h"

#include <QLineEdit>
#include <QTest>

using namespace Marlix;
using namespace Marlix::Widgets;
using namespace Marlix::Widgets::Testing;

class TestTimeEdit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void conversions_data()
    {
        QTest::addColumn<double>("milliseconds");
        QTest::addColumn<Array<double>>("hms");
        QTest::addColumn<double>("back");
        QTest::newRow("1 h 2 min 3 s, milliseconds dropped") << 3723500.0 << Array<double> { 1, 2, 3 } << 3723000.0;
        QTest::newRow("just below a minute") << 59999.0 << Array<double> { 0, 0, 59 } << 59000.0;
        QTest::newRow("negative truncates towards zero") << -3723900.0 << Array<double> { -1, -2, -3 } << -3723000.0;
        QTest::newRow("beyond 32 bits is clamped") << 1e13 << Array<double> { 596523, 14, 7 } << 2147483647000.0;
    }

    void conversions()
    {
        QFETCH(double, milliseconds);
        QFETCH(Array<double>, hms);
        QFETCH(double, back);
        QCOMPARE(TimeEdit::toTimeArray(milliseconds), hms);
        QCOMPARE(TimeEdit::toTime(hms), back);
        // Minutes above 59 given to toTime still count.
        QCOMPARE(TimeEdit::toTime({ 0, 90, 0 }), 5400000.0);
        QVERIFY_THROWS_EXCEPTION(StopException, TimeEdit::toTime({ 1, 2 }));
    }

    void showsHoursMinutesSeconds()
    {
        auto model = makeSharedPtr<VariableModel<double>>(3723500.0);
        TimeEdit edit(model, 0.0, 86400000.0);
        edit.setLocale(QLocale::c());
        QCOMPARE(edit.getComponent(0)->getSpinBox()->text(), QStringLiteral("1 h"));
        QCOMPARE(edit.getComponent(1)->getSpinBox()->text(), QStringLiteral("2 min"));
        QCOMPARE(edit.getComponent(2)->getSpinBox()->text(), QStringLiteral("3 s"));
        QCOMPARE(edit.getComponent(1)->getSpinBox()->maximum(), 59.0);
        QCOMPARE(edit.getComponent(2)->getSpinBox()->maximum(), 59.0);
    }

    void editingAFieldWritesMilliseconds()
    {
        auto model = makeSharedPtr<RecordingModel<double>>(3723000.0);
        TimeEdit edit(model, 0.0, 86400000.0);
        edit.setLocale(QLocale::c());
        QVERIFY(showActive(edit));
        model->resetCounts();

        typeInto(edit.getComponent(1)->getSpinBox(), QStringLiteral("30"));
        QCOMPARE(model->get(), 3600000.0 + 30 * 60000.0 + 3000.0);
        QCOMPARE(model->commits, 1);
        model->resetCounts();

        // A held arrow key on the seconds is one bracket of the millisecond model.
        SpinBox* seconds = edit.getComponent(2)->getSpinBox();
        seconds->setFocus();
        QTest::keyPress(seconds, Qt::Key_Down);
        QTest::keyRelease(seconds, Qt::Key_Down);
        QCOMPARE(model->get(), 3600000.0 + 30 * 60000.0 + 2000.0);
        QCOMPARE(model->begins, 1);
        QCOMPARE(model->commits, 1);
    }

    void totalIsHeldWithinBounds()
    {
        auto model = makeSharedPtr<VariableModel<double>>(60000.0);
        TimeEdit edit(model, 30000.0, 5400000.0);
        QCOMPARE(edit.getComponent(0)->getSpinBox()->maximum(), 1.0);

        edit.getComponent(0)->getSpinBox()->stepBy(1); // 1 h 1 min
        QCOMPARE(model->get(), 3660000.0);
        edit.getComponent(1)->getSpinBox()->stepBy(40); // 1 h 41 min is beyond the 90 minutes
        QCOMPARE(model->get(), 5400000.0);
        QCOMPARE(edit.getComponent(1)->getSpinBox()->value(), 30.0);

        edit.setRange(0.0, 1800000.0);
        QCOMPARE(edit.getComponent(0)->getSpinBox()->maximum(), 0.0);
        // Narrower bounds do not write by themselves; the next edit is held within them.
        QCOMPARE(model->get(), 5400000.0);
        edit.getComponent(1)->getSpinBox()->stepBy(-1);
        QCOMPARE(model->get(), 1800000.0);
        QVERIFY_THROWS_EXCEPTION(StopException, edit.setRange(10.0, 5.0));
        QCOMPARE(edit.getMaximum(), 1800000.0);
    }

};

QTEST_MAIN(TestTimeEdit)
#include "tst_TimeEdit.moc"
