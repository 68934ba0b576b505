#include "MarlixLibQt/widgets/docking/DockFixture.h"

#include <MarlixLibQt/widgets/docking/Dock.h>
#include <MarlixLibQt/widgets/docking/Tabber.h>

#include <QAction>
#include <QLabel>
#include <QSplitter>
#include <QToolButton>

using Marlix::Widgets::Dock;
using Marlix::Widgets::Tabber;
using Marlix::Widgets::Testing::at;
using Marlix::Widgets::Testing::DockScene;
using Marlix::Widgets::Testing::dragHeader;

class tst_Dock : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dragOntoTarget_data();
    void dragOntoTarget();
    void dropBesideSplitDock_data();
    void dropBesideSplitDock();
    void escapeCancelsDrag();
    void undockButtons();
    void titlesFollowDocks();
    void unnamedDocksGetDistinctNumbers();
    void toggleActionHidesAndShows_data();
    void toggleActionHidesAndShows();
    void focusNamesTheDock();
};

void tst_Dock::dragOntoTarget_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<double>("fx");
    QTest::addColumn<double>("fy");
    QTest::addColumn<QString>("dragged");
    QTest::addColumn<QStringList>("paths");

    QTest::newRow("left edge") << "A" << 0.05 << 0.5 << "B" << QStringList { "MainWindow/H0/B", "MainWindow/H0/A" };
    QTest::newRow("right edge") << "A" << 0.95 << 0.5 << "B" << QStringList { "MainWindow/H0/A", "MainWindow/H0/B" };
    QTest::newRow("top edge") << "A" << 0.5 << 0.05 << "B" << QStringList { "MainWindow/V0/B", "MainWindow/V0/A" };
    QTest::newRow("bottom edge") << "A" << 0.5 << 0.95 << "B" << QStringList { "MainWindow/V0/A", "MainWindow/V0/B" };
    QTest::newRow("middle") << "A" << 0.5 << 0.5 << "B" << QStringList { "MainWindow/T0/A", "MainWindow/T0/B" };
    QTest::newRow("empty main window") << "MainWindow" << 0.5 << 0.5 << "B" << QStringList { "MainWindow/B", "A" };
    QTest::newRow("nothing") << "" << 0.0 << 0.0 << "B" << QStringList { "MainWindow/A", "B" };
    // A docked dock released where nothing takes it floats there.
    QTest::newRow("docked onto nothing") << "" << 0.0 << 0.0 << "A" << QStringList { "A", "B" };
}

void tst_Dock::dragOntoTarget()
{
    QFETCH(QString, dragged);
    QFETCH(QString, target);
    QFETCH(double, fx);
    QFETCH(double, fy);
    QFETCH(QStringList, paths);

    DockScene scene({ "A", "B" });
    Dock::setCentralWidget(scene.window, *scene["A"]);
    Dock& b = *scene.floating("B", { 520, 60, 220, 160 });
    QPoint to(790, 590);
    if (target == "MainWindow") {
        QTest::mouseClick(scene["A"]->header()->button(), Qt::LeftButton);
        scene["A"]->move(520, 300);
        DockScene::settle();
        to = at(*scene.window.centralWidget(), fx, fy);
    } else if (!target.isEmpty()) {
        to = at(*scene[target], fx, fy);
    }

    Dock& moving = *scene[dragged];
    dragHeader(moving, to, false);
    QCOMPARE(Dock::overlay()->isVisible(), !target.isEmpty());
    if (!target.isEmpty())
        QVERIFY(Dock::globalGeometry(scene.window).contains(Dock::overlay()->geometry()));
    QTest::mouseRelease(moving.header(), Qt::LeftButton, {}, moving.header()->mapFromGlobal(to));
    QVERIFY(!Dock::overlay()->isVisible());
    QCOMPARE(DockScene::dockPaths(), paths);
    QCOMPARE(moving.isWindow(), target.isEmpty());
    if (moving.isWindow())
        QVERIFY(moving.frameGeometry().contains(to));
    if (auto* tabs = qobject_cast<QTabWidget*>(b.parentWidget()->parentWidget()))
        QCOMPARE(tabs->currentWidget(), &b);
}

void tst_Dock::dropBesideSplitDock_data()
{
    QTest::addColumn<double>("fx");
    QTest::addColumn<double>("fy");
    QTest::addColumn<QStringList>("paths");

    // B already sits right of A in a horizontal splitter: C beside B joins that splitter rather than nesting one.
    QTest::newRow("right of B") << 0.95 << 0.5
                                << QStringList { "MainWindow/H0/A", "MainWindow/H0/B", "MainWindow/H0/C" };
    QTest::newRow("left of B") << 0.05 << 0.5
                               << QStringList { "MainWindow/H0/A", "MainWindow/H0/C", "MainWindow/H0/B" };
    QTest::newRow("below B") << 0.5 << 0.95
                             << QStringList { "MainWindow/H0/A", "MainWindow/H0/V1/B", "MainWindow/H0/V1/C" };
    QTest::newRow("tab with B") << 0.5 << 0.5
                                << QStringList { "MainWindow/H0/A", "MainWindow/H0/T1/B", "MainWindow/H0/T1/C" };
}

void tst_Dock::dropBesideSplitDock()
{
    QFETCH(double, fx);
    QFETCH(double, fy);
    QFETCH(QStringList, paths);

    DockScene scene({ "A", "B", "C" });
    Dock::setCentralWidget(scene.window, *scene["A"]);
    dragHeader(*scene.floating("B", { 520, 60, 220, 160 }), at(*scene["A"], 0.95, 0.5));
    DockScene::settle();
    const int width = scene["B"]->width();
    dragHeader(*scene.floating("C", { 520, 300, 220, 160 }), at(*scene["B"], fx, fy));
    DockScene::settle();

    QCOMPARE(DockScene::dockPaths(), paths);
    auto* splitter = qobject_cast<QSplitter*>(scene["C"]->parentWidget());
    if (splitter && splitter->orientation() == Qt::Horizontal) {
        // The newcomer shares the width B had; A keeps its own.
        QVERIFY(qAbs(scene["B"]->width() + scene["C"]->width() - width) <= splitter->handleWidth() + 1);
        QVERIFY(qAbs(scene["B"]->width() - scene["C"]->width()) <= 2);
    }
}

void tst_Dock::escapeCancelsDrag()
{
    DockScene scene({ "A", "B" });
    Dock::setCentralWidget(scene.window, *scene["A"]);
    Dock& b = *scene.floating("B", { 520, 60, 220, 160 });
    const QPoint start = b.pos();

    dragHeader(b, at(*scene["A"], 0.5, 0.5), false);
    QVERIFY(Dock::overlay()->isVisible());
    QTest::keyClick(b.header(), Qt::Key_Escape);
    QVERIFY(!Dock::overlay()->isVisible());
    QTest::mouseRelease(b.header(), Qt::LeftButton, {}, b.header()->mapFromGlobal(at(*scene["A"], 0.5, 0.5)));

    QCOMPARE(DockScene::dockPaths(), (QStringList { "MainWindow/A", "B" }));
    QCOMPARE(b.pos(), start);
}

void tst_Dock::undockButtons()
{
    DockScene scene({ "A", "B" });
    Dock::setCentralWidget(scene.window, *scene["A"]);
    dragHeader(*scene.floating("B", { 520, 60, 220, 160 }), at(*scene["A"], 0.5, 0.5));
    auto* tabs = qobject_cast<Tabber*>(scene["B"]->parentWidget()->parentWidget());
    QVERIFY(tabs);
    QCOMPARE(tabs->undockButton(1)->text(), Tabber::tr("Undock"));
    const QRect before = Dock::globalGeometry(*scene["B"]);

    // The tab's button floats B where it was; the tab group of one left behind folds away.
    QTest::mouseClick(tabs->undockButton(1), Qt::LeftButton);
    DockScene::settle();
    QCOMPARE(DockScene::dockPaths(), (QStringList { "MainWindow/A", "B" }));
    QCOMPARE(scene["B"]->geometry().topLeft(), before.topLeft());
    QVERIFY(scene["B"]->isVisible());

    // Undocking the central dock leaves an empty central widget, not a hole.
    QTest::mouseClick(scene["A"]->header()->button(), Qt::LeftButton);
    QVERIFY(scene["A"]->isWindow());
    QWidget* central = scene.window.centralWidget();
    QVERIFY(central);
    QVERIFY(central->findChildren<Dock*>().isEmpty());
    QVERIFY(!qobject_cast<Dock*>(central));
}

void tst_Dock::titlesFollowDocks()
{
    DockScene scene({ "A", "B", "C" });
    Dock::setCentralWidget(scene.window, *scene["A"]);
    dragHeader(*scene.floating("B", { 520, 60, 220, 160 }), at(*scene["A"], 0.5, 0.5));
    DockScene::settle();
    // C beside B inside the tab: the tab now holds a splitter, titled after both of its docks.
    dragHeader(*scene.floating("C", { 520, 300, 220, 160 }), at(*scene["B"], 0.95, 0.5));
    DockScene::settle();
    QCOMPARE(DockScene::dockPaths(), (QStringList { "MainWindow/T0/A", "MainWindow/T0/H1/B", "MainWindow/T0/H1/C" }));
    auto* tabs = qobject_cast<QTabWidget*>(scene.window.centralWidget());
    QCOMPARE(tabs->tabText(1), QStringLiteral("B, C"));

    scene["C"]->setWindowTitle("Scene");
    QCOMPARE(tabs->tabText(1), QStringLiteral("B, Scene"));
    QCOMPARE(scene["C"]->header()->label()->text(), QStringLiteral("Scene"));
    QCOMPARE(scene["C"]->accessibleName(), QStringLiteral("Scene"));
}

void tst_Dock::unnamedDocksGetDistinctNumbers()
{
    DockScene scene({ "Dock#7" });
    Dock first;
    Dock second;
    QVERIFY(first.objectName().startsWith("Dock#"));
    QVERIFY(second.objectName().startsWith("Dock#"));
    QVERIFY(first.objectName() != second.objectName());
    QVERIFY(first.objectName() != "Dock#7" && second.objectName() != "Dock#7");
    QCOMPARE(Dock::findDock(second.objectName()), &second);
}

void tst_Dock::toggleActionHidesAndShows_data()
{
    QTest::addColumn<double>("fx");
    QTest::addColumn<QString>("place");

    QTest::newRow("split") << 0.95 << "MainWindow/H0/B";
    QTest::newRow("tab") << 0.5 << "MainWindow/T0/B";
    QTest::newRow("floating") << -1.0 << "B";
}

void tst_Dock::toggleActionHidesAndShows()
{
    QFETCH(double, fx);
    QFETCH(QString, place);

    DockScene scene({ "A", "B" });
    Dock::setCentralWidget(scene.window, *scene["A"]);
    Dock& b = *scene.floating("B", { 520, 60, 220, 160 });
    if (fx > 0)
        dragHeader(b, at(*scene["A"], fx, 0.5));
    QAction* action = b.toggleViewAction();
    QCOMPARE(action->text(), QStringLiteral("B"));

    action->trigger();
    QVERIFY(!action->isChecked());
    QVERIFY(!b.isVisible());
    // A hidden dock keeps its place, so showing it again puts it back there.
    QCOMPARE(DockScene::dockPaths().last(), place);
    QVERIFY(Dock::saveWorkspace()[DockScene::dockPaths().indexOf(place)].hidden);
    QVERIFY(scene["A"]->isVisible());

    action->trigger();
    QVERIFY(action->isChecked());
    QVERIFY(b.isVisible());
    QCOMPARE(DockScene::dockPaths().last(), place);

    b.setWindowTitle("Scene");
    QCOMPARE(action->text(), QStringLiteral("Scene"));
}

void tst_Dock::focusNamesTheDock()
{
    Dock::connectOnFocusChangedSignal();
    DockScene scene({ "A", "B" });
    Dock::setCentralWidget(scene.window, *scene["A"]);
    dragHeader(*scene.floating("B", { 520, 60, 220, 160 }), at(*scene["A"], 0.95, 0.5));
    scene.window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&scene.window));

    for (const char* name : { "B", "A" }) {
        scene[name]->widget()->setFocus();
        QCOMPARE(Dock::getDockWithFocus(), scene[name]);
    }
}

QTEST_MAIN(tst_Dock)
#include "tst_Dock.moc"
