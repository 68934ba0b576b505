#include <MarlixLibQt/widgets/frame/Collapsible.h>

#include "MarlixLibQt/widgets/RecordingModel.h"

#include <QLabel>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

using Marlix::makeSharedPtr;
using Marlix::SharedPtr;
using Marlix::Widgets::Collapsible;
using Marlix::Widgets::VariableModel;
using Marlix::Widgets::Testing::RecordingModel;

namespace {

/// A titled collapsible with one label in its layout, shown so that clicks reach it.
struct Section
{
    explicit Section(const QString& title, bool collapsed = false)
        : model(makeSharedPtr<RecordingModel<bool>>(collapsed))
        , box(model, title)
    {
        auto* layout = new QVBoxLayout(&box);
        content = new QLabel(QStringLiteral("contents"));
        layout->addWidget(content);
        box.resize(240, 120);
        box.show();
        QVERIFY(QTest::qWaitForWindowExposed(&box));
        QCoreApplication::processEvents();
    }

    SharedPtr<RecordingModel<bool>> model;
    Collapsible box;
    QLabel* content = nullptr;
};

void click(QWidget& widget, QPoint position)
{
    QTest::mousePress(&widget, Qt::LeftButton, {}, position);
    QTest::mouseRelease(&widget, Qt::LeftButton, {}, position);
}

} // namespace

class tst_Collapsible : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void untitledNeverCollapses();
    void collapsedMinimumSizeIsSizeHint();
    void titleRowClicksToggle_data();
    void titleRowClicksToggle();
    void clickOutsideTitleRowDoesNothing();
    void checkBoxClickWritesItsModel();
    void modelAndStateDriveEachOther();
    void cornerWidgetSitsInTitleRow();
};

void tst_Collapsible::untitledNeverCollapses()
{
    auto model = makeSharedPtr<RecordingModel<bool>>(true);
    Collapsible box(model);
    new QVBoxLayout(&box);
    QVERIFY(!box.isCollapsed());
    model->resetCounts();

    box.collapse();
    box.setProperty("collapsed", true);
    QVERIFY(model->sets >= 1); // the refusal is written back, so linked views show it
    QCOMPARE(model->get(), false);
    QVERIFY(!box.isCollapsed());
}

void tst_Collapsible::collapsedMinimumSizeIsSizeHint()
{
    Section section(QStringLiteral("Material"));
    const QSize expandedHint = section.box.sizeHint();
    section.box.collapse();
    QCOMPARE(section.box.minimumSizeHint(), section.box.sizeHint());
    QVERIFY(section.box.sizeHint().height() < expandedHint.height());
    // The collapsed box still has room for its title row.
    QVERIFY(section.box.sizeHint().height() >= section.box.titleRowRectangle().bottom());

    section.box.setLabelFixedWidth(300);
    QVERIFY(section.box.sizeHint().width() >= 300);
}

void tst_Collapsible::titleRowClicksToggle_data()
{
    QTest::addColumn<int>("where");
    QTest::newRow("arrow") << 0;
    QTest::newRow("title text") << 1;
    QTest::newRow("empty end of the row") << 2;
}

void tst_Collapsible::titleRowClicksToggle()
{
    QFETCH(int, where);
    Section section(QStringLiteral("Material"));
    const QRect row = section.box.titleRowRectangle();
    QVERIFY(!row.isEmpty());
    const QPoint position = where == 0 ? section.box.arrowRectangle().center()
        : where == 1                   ? section.box.labelRectangle().topLeft() + QPoint(5, row.height() / 2)
                                       : QPoint(row.right() - 2, row.center().y());

    click(section.box, position);
    QVERIFY(section.box.isCollapsed());
    QCOMPARE(section.model->get(), true);
    QVERIFY(section.content->isHidden());
    click(section.box, position);
    QVERIFY(!section.box.isCollapsed());
    QVERIFY(section.content->isVisible());
}

void tst_Collapsible::clickOutsideTitleRowDoesNothing()
{
    Section section(QStringLiteral("Material"));
    section.model->resetCounts();
    click(section.box, QPoint(5, section.box.height() - 5));
    QCOMPARE(section.model->sets, 0);

    // A drag that leaves the title row before release is no click.
    const QPoint start = section.box.arrowRectangle().center();
    QTest::mousePress(&section.box, Qt::LeftButton, {}, start);
    QTest::mouseMove(&section.box, QPoint(5, section.box.height() - 5));
    QTest::mouseRelease(&section.box, Qt::LeftButton, {}, QPoint(5, section.box.height() - 5));
    QCOMPARE(section.model->sets, 0);

    section.box.setCollapsible(false);
    click(section.box, section.box.labelRectangle().center());
    QCOMPARE(section.model->sets, 0);
}

void tst_Collapsible::checkBoxClickWritesItsModel()
{
    Section section(QStringLiteral("Material"));
    auto checked = makeSharedPtr<VariableModel<bool>>(false);
    section.box.setCheckBoxModel(checked);
    section.box.setCheckBoxPosition(Collapsible::Position::Right);
    const QRect box = section.box.checkBoxRectangle();
    QVERIFY(!box.isEmpty());
    QVERIFY(box.left() > section.box.labelRectangle().left());

    section.model->resetCounts();
    click(section.box, box.center());
    QCOMPARE(checked->get(), true);
    QCOMPARE(section.model->sets, 0);
    QVERIFY(section.content->isEnabled());
    click(section.box, box.center());
    QCOMPARE(checked->get(), false);
    QVERIFY(section.content->isEnabled());
}

void tst_Collapsible::modelAndStateDriveEachOther()
{
    Section section(QStringLiteral("Material"));
    QSignalSpy spy(&section.box, &Collapsible::collapsibleStateChanged);
    section.model->set(true);
    QVERIFY(section.box.isCollapsed());
    QCOMPARE(section.box.property("collapsed").toBool(), true);
    QVERIFY(section.content->isHidden());
    QCOMPARE(spy.count(), 1);

    section.box.setProperty("collapsed", false);
    QCOMPARE(section.model->get(), false);
    QVERIFY(section.content->isVisible());

    // A widget added while collapsed is hidden too.
    section.model->set(true);
    auto* later = new QLabel(QStringLiteral("later"));
    section.box.layout()->addWidget(later);
    QTRY_VERIFY(later->isHidden());
}

void tst_Collapsible::cornerWidgetSitsInTitleRow()
{
    Section section(QStringLiteral("Material"));
    auto* corner = new QLabel(QStringLiteral("99"));
    section.box.setCornerWidget(corner);
    section.box.setCornerWidgetMargin(3);
    section.box.setCornerWidgetFixedWidth(30);
    QCOMPARE(corner->geometry().right(), section.box.width() - 3 - 1);
    QCOMPARE(corner->width(), 30);
    QVERIFY(section.box.labelRectangle().right() < corner->geometry().left());
    section.box.collapse();
    QVERIFY(corner->isVisible());
    QCOMPARE(section.box.takeCornerWidget(), corner);
    QVERIFY(!section.box.cornerWidget());
    delete corner;
}

QTEST_MAIN(tst_Collapsible)
#include "tst_Collapsible.moc"
