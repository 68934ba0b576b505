#include "MarlixLibQt/widgets/docking/DockFixture.h"

#include <MarlixLibQt/widgets/docking/Dock.h>
#include <MarlixLibQt/widgets/docking/Tabber.h>

#include <QAction>
#include <QWidget>
#include <QDataStream>
#include <QIODevice>
#include <QRegularExpression>
#include <QSplitter>
#include <QTabWidget>
#include <QToolButton>

#include <algorithm>

using Marlix::ArrayView;
using Marlix::Stack;
using Marlix::String;
using Marlix::Widgets::Dock;
using Marlix::Widgets::Testing::at;
using Marlix::Widgets::Testing::DockScene;
using Marlix::Widgets::Testing::dragHeader;

namespace {

/// A: a split beside a tab group in the main window, a hidden dock, a floating tab group and a floating dock:
/// MainWindow/H0/V0/{A,D,F}, MainWindow/H0/T1/{B,C}, Floating#1.MainWindow/T0/{G,K}, E.
struct Layout : DockScene
{
    Layout()
        : DockScene({ "A", "B", "C", "D", "E", "F", "G", "K" })
    {
        Dock::setCentralWidget(window, *docks["A"]);
        QSplitter* row = Dock::split(*docks["A"], Qt::Horizontal);
        Dock::insertToParent(row, 1, docks["B"]);
        Dock::insertToParent(Dock::tabify(*docks["B"]), 1, docks["C"]);
        QSplitter* column = Dock::split(*docks["A"], Qt::Vertical);
        Dock::insertToParent(column, 1, docks["D"]);
        Dock::insertToParent(column, 2, docks["F"]);
        docks["F"]->toggleViewAction()->trigger();
        floating("E", { 520, 60, 220, 160 });
        QTabWidget* group = Dock::tabify(*floating("G", { 520, 300, 240, 200 }));
        Dock::insertToParent(group, 1, docks["K"]);
        settle();
        row->setSizes({ 300, 170 });
        group->setCurrentIndex(0);
    }
};

QList<int> ints(const QByteArray& bytes)
{
    QList<int> values;
    QDataStream stream(bytes);
    while (!stream.atEnd()) {
        qint32 value = 0;
        stream >> value;
        values.append(value);
    }
    return values;
}

/// Equal paths, flags and window geometry; splitter sizes equal within a splitter handle.
void compareWorkspaces(const Stack<Dock::Data>& actual, const Stack<Dock::Data>& expected)
{
    QCOMPARE(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        const QString path = QString::fromStdString(expected[i].path);
        QCOMPARE(QString::fromStdString(actual[i].path), path);
        QCOMPARE(actual[i].hidden, expected[i].hidden);
        const QStringList tokens = path.split('/');
        const QString level = tokens.size() < 3 ? QString() : tokens[tokens.size() - 2];
        if (!level.startsWith('H') && !level.startsWith('V')) {
            QVERIFY2(actual[i].geometry == expected[i].geometry, qPrintable(path));
            continue;
        }
        const QList<int> sizes = ints(actual[i].geometry);
        const QList<int> wanted = ints(expected[i].geometry);
        QCOMPARE(sizes.size(), wanted.size());
        for (qsizetype j = 0; j < sizes.size(); ++j)
            QVERIFY2(qAbs(sizes[j] - wanted[j]) <= 6, qPrintable(path));
    }
}

/// Every dock can be brought up with its action, in the main window, a floating window or alone.
void verifyReachable()
{
    for (Dock* dock : Dock::allDocks()) {
        // Off and on again brings a dock behind another tab to the front.
        if (dock->toggleViewAction()->isChecked())
            dock->toggleViewAction()->trigger();
        dock->toggleViewAction()->trigger();
        QVERIFY2(dock->isVisible(), qPrintable(dock->objectName()));
        // Owned by the main window even when floating, so none outlives it.
        QVERIFY(dock->parentWidget());
        QVERIFY(dock->window() == dock || dock->window()->objectName().endsWith("MainWindow"));
    }
}

} // namespace

class tst_DockWorkspace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void restoreUndoesMoves_data();
    void restoreUndoesMoves();
    void treeStaysSound_data();
    void treeStaysSound();
    void windowFromAnotherScreenWidthKeepsItsPlace();
    void missingDocksAreReturned();
    void malformedRecordsAreRefused_data();
    void malformedRecordsAreRefused();
};

void tst_DockWorkspace::restoreUndoesMoves_data()
{
    QTest::addColumn<QStringList>("moves");
    QTest::newRow("nothing") << QStringList {};
    QTest::newRow("drag onto a floating dock") << QStringList { "drag" };
    QTest::newRow("undock from a tab group") << QStringList { "undock" };
    QTest::newRow("hide and show") << QStringList { "hide" };
    QTest::newRow("resize") << QStringList { "resize" };
    QTest::newRow("all") << QStringList { "drag", "undock", "hide", "resize" };
}

void tst_DockWorkspace::restoreUndoesMoves()
{
    QFETCH(QStringList, moves);

    Layout layout;
    const QStringList paths = DockScene::dockPaths();
    QCOMPARE(paths,
        (QStringList { "MainWindow/H0/V0/A", "MainWindow/H0/V0/D", "MainWindow/H0/V0/F", "MainWindow/H0/T1/B",
            "MainWindow/H0/T1/C", "Floating#1.MainWindow/T0/G", "Floating#1.MainWindow/T0/K", "E" }));
    const Stack<Dock::Data> saved = Dock::saveWorkspace();
    const QRect floatingGeometry = layout["E"]->geometry();

    if (moves.contains("drag"))
        dragHeader(*layout["D"], at(*layout["E"], 0.5, 0.5));
    if (moves.contains("undock"))
        QTest::mouseClick(layout["B"]->header()->button(), Qt::LeftButton);
    if (moves.contains("hide")) {
        layout["C"]->toggleViewAction()->trigger();
        layout["F"]->toggleViewAction()->trigger();
    }
    if (moves.contains("resize")) {
        qobject_cast<QSplitter*>(layout.window.centralWidget())->setSizes({ 120, 350 });
        layout["E"]->setGeometry(300, 100, 260, 180);
    }
    DockScene::settle();
    if (!moves.isEmpty())
        QVERIFY(DockScene::dockPaths() != paths || Dock::saveWorkspace() != saved);

    Stack<String> problems;
    QVERIFY(Dock::restoreWorkspace(saved, &problems).empty());
    QVERIFY(problems.empty());
    DockScene::settle();
    compareWorkspaces(Dock::saveWorkspace(), saved);
    QCOMPARE(layout["E"]->geometry(), floatingGeometry);
    QVERIFY(!layout["F"]->isVisible());
    QVERIFY(!layout["F"]->toggleViewAction()->isChecked());
    QVERIFY(layout["C"]->toggleViewAction()->isChecked());
    // Tabs made during the restore get their undock buttons when it ends.
    for (QWidget* window : QApplication::topLevelWidgets())
        for (const Marlix::Widgets::Tabber* tabs : window->findChildren<Marlix::Widgets::Tabber*>())
            for (int index = 0; index < tabs->count(); ++index)
                QVERIFY(tabs->undockButton(index));
}

void tst_DockWorkspace::treeStaysSound_data()
{
    QTest::addColumn<QStringList>("records");
    QTest::addColumn<QString>("action");
    QTest::addColumn<QStringList>("paths");

    // Records as a hand-written or damaged workspace may give them, a user's move after, and the tree that must come
    // out: no container right inside one of its own kind, every dock reachable.
    QTest::newRow("any index of a window's root") << QStringList { "W.MainWindow/F", "W.MainWindow/B",
        "W.MainWindow/H2/C" } << "" << QStringList { "W.MainWindow/H0/F", "W.MainWindow/H0/B", "W.MainWindow/H0/C" };
    QTest::newRow("new root around a tab group") << QStringList { "W.MainWindow/T0/E", "W.MainWindow/H1/T2/C" } << ""
                                                 << QStringList { "W.MainWindow/H0/T0/E", "W.MainWindow/H0/T1/C" };
    QTest::newRow("tab group folded into a tab group") << QStringList { "MainWindow/T0/A", "MainWindow/T0/H1/T0/B",
        "MainWindow/T0/H1/T1/C" } << "undock B" << QStringList { "MainWindow/T0/A", "MainWindow/T0/C", "B" };
    QTest::newRow("split in a background tab")
        << QStringList { "MainWindow/T0/A", "MainWindow/T0/V1/B", "MainWindow/T0/V1/C" } << "show A"
        << QStringList { "MainWindow/T0/A", "MainWindow/T0/V1/B", "MainWindow/T0/V1/C" };
}

void tst_DockWorkspace::treeStaysSound()
{
    QFETCH(QStringList, records);
    QFETCH(QString, action);
    QFETCH(QStringList, paths);

    QStringList names;
    Stack<Dock::Data> workspace;
    for (const QString& path : records) {
        names.append(path.section('/', -1));
        workspace.push_back({ path.toStdString(), false, {} });
    }
    DockScene scene(names);
    Stack<String> problems;
    QVERIFY(Dock::restoreWorkspace(workspace, &problems).empty());
    if (action == "undock B")
        QTest::mouseClick(scene["B"]->header()->button(), Qt::LeftButton);
    // Off and on again: A's tab comes to the front, the split with B and C goes to the background.
    for (int i = 0; action == "show A" && i < 2; ++i)
        scene["A"]->toggleViewAction()->trigger();
    DockScene::settle();
    QVERIFY2(problems.empty(), problems.empty() ? "" : problems.front().c_str());
    QCOMPARE(DockScene::dockPaths(), paths);
    for (const QString& path : paths)
        QVERIFY2(!QRegularExpression("([HVT])\\d+/\\1\\d+/").match(path).hasMatch(), qPrintable(path));
    verifyReachable();
}

void tst_DockWorkspace::windowFromAnotherScreenWidthKeepsItsPlace()
{
    Layout layout;
    Stack<Dock::Data> saved = Dock::saveWorkspace();
    const QRect floatingGeometry = layout["E"]->geometry();
    auto floating = std::find_if(saved.begin(), saved.end(), [](const Dock::Data& r) { return r.path == "E"; });
    QVERIFY(floating != saved.end());
    // The screen width Qt writes after the frame and normal rectangles, the screen and the two state flags.
    QByteArray& bytes = floating->geometry;
    QVERIFY(bytes.size() >= 50);
    for (int i = 0; i < 4; ++i)
        bytes[46 + i] = char((1920 >> (8 * (3 - i))) & 0xff);
    QVERIFY(!QWidget().restoreGeometry(bytes)); // else this test proves nothing

    layout["E"]->setGeometry(floatingGeometry.translated(40, 30));
    Stack<String> problems;
    QVERIFY(Dock::restoreWorkspace(saved, &problems).empty());
    QVERIFY2(problems.empty(), problems.empty() ? "" : problems.front().c_str());
    QCOMPARE(layout["E"]->geometry(), floatingGeometry);
}

void tst_DockWorkspace::missingDocksAreReturned()
{
    Layout layout;
    const Stack<Dock::Data> saved = Dock::saveWorkspace();
    Stack<Dock::Data> records = saved;
    // The host removed "Ghost" and "Phantom" since it saved; their records sit among the others.
    records.insert(records.begin() + 1, { "MainWindow/H0/V0/Ghost", false, {} });
    records.insert(records.begin() + 4, { "MainWindow/H0/T1/Phantom", true, {} });
    records.insert(records.begin() + 7, { "Floating#3.MainWindow/V0/Spectre", false, {} });

    Stack<String> problems;
    const auto missing = Dock::restoreWorkspace(records, &problems);
    QCOMPARE(missing.values(),
        (Stack<String> { "Floating#3.MainWindow/V0/Spectre", "MainWindow/H0/T1/Phantom", "MainWindow/H0/V0/Ghost" }));
    QVERIFY(problems.empty());
    DockScene::settle();
    compareWorkspaces(Dock::saveWorkspace(), saved);
}

void tst_DockWorkspace::malformedRecordsAreRefused_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("geometry");

    QByteArray sizes;
    QDataStream stream(&sizes, QIODevice::WriteOnly);
    stream << qint32(200) << qint32(-5);
    QTest::newRow("unknown token") << "MainWindow/X0/A" << QByteArray();
    QTest::newRow("level without index") << "MainWindow/T/A" << QByteArray();
    QTest::newRow("index out of range") << "MainWindow/H99999/A" << QByteArray();
    QTest::newRow("same kind nested") << "MainWindow/H0/H0/A" << QByteArray();
    QTest::newRow("empty path") << "" << QByteArray();
    QTest::newRow("ends with a level") << "MainWindow/H0" << QByteArray();
    QTest::newRow("descends into a dock") << "E/H0/A" << QByteArray();
    QTest::newRow("unknown top-level") << "Nowhere/H0/A" << QByteArray();
    QTest::newRow("dock named twice") << "MainWindow/H0/T1/D" << QByteArray();
    QTest::newRow("duplicate") << "MainWindow/H0/V0/A" << QByteArray();
    QTest::newRow("garbage window geometry") << "E" << QByteArray("garbage");
    QTest::newRow("truncated sizes") << "MainWindow/H0/MainWindow" << sizes.left(5);
    QTest::newRow("negative size") << "MainWindow/H0/MainWindow" << sizes;
    QTest::newRow("too many sizes") << "MainWindow/H0/MainWindow" << sizes.left(4) + sizes.left(4) + sizes.left(4);
    QTest::newRow("tab out of range") << "MainWindow/H0/T1/MainWindow" << sizes.left(4);
}

void tst_DockWorkspace::malformedRecordsAreRefused()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, geometry);

    Layout layout;
    Stack<Dock::Data> records = Dock::saveWorkspace();
    // The damaged record takes the place of the record of its path or of its dock; repeats come after all.
    const Dock::Data bad { path.toStdString(), false, geometry };
    const QString name = path.section('/', -1);
    auto same = std::find_if(records.begin(), records.end(), [&](const Dock::Data& r) { return r.path == bad.path; });
    if (same == records.end()) {
        same = std::find_if(records.begin(), records.end(),
            [&](const Dock::Data& r) { return QString::fromStdString(r.path).endsWith('/' + name); });
    }
    if (same != records.end() && !QByteArray(QTest::currentDataTag()).contains("twice")
        && QTest::currentDataTag() != QByteArray("duplicate"))
        *same = bad;
    else
        records.push_back(bad);

    Stack<String> problems;
    QVERIFY(Dock::restoreWorkspace(records, &problems).empty());
    QVERIFY(!problems.empty());
    QVERIFY2(QString::fromStdString(problems.front()).contains(path), problems.front().c_str());
    verifyReachable();
}

QTEST_MAIN(tst_DockWorkspace)
#include "tst_DockWorkspace.moc"
