#include "RatioReporter.h"

#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/widgets/docking/Dock.h>
#include <MarlixLibQt/widgets/docking/DockWorkspaceFile.h>

#include <QApplication>
#include <QDockWidget>
#include <QLabel>
#include <QMainWindow>

#include <benchmark/benchmark.h>
#include <cstdio>
#include <memory>

// Restoring and saving a workspace of 100 docks against QMainWindow's own state of 100 QDockWidgets in the same
// arrangement: five columns side by side, each split into four tab groups of five. Each restore starts from the
// docks all stacked in one tab group, the arrangement a program shows before its saved workspace is read, and ends
// when the window has laid itself out.

using namespace Marlix;
using Marlix::Widgets::Dock;

namespace {

constexpr int COLUMNS = 5;
constexpr int GROUPS_PER_COLUMN = 4;
constexpr int TABS_PER_GROUP = 5;
constexpr int DOCK_COUNT = COLUMNS * GROUPS_PER_COLUMN * TABS_PER_GROUP;

QString dockName(int index)
{
    return QStringLiteral("Panel%1").arg(index);
}

QWidget* content(int index)
{
    return new QLabel(QStringLiteral("The contents of panel %1").arg(index));
}

void settle()
{
    QCoreApplication::processEvents();
}

/// A main window of docks, with the records of the arrangement measured and of the one each restore starts from.
struct DockWindow
{
    DockWindow()
    {
        window.setObjectName(QStringLiteral("MainWindow"));
        window.resize(1600, 1000);
        window.show();
        Stack<Dock::Data> nested;
        Stack<Dock::Data> stacked;
        for (int i = 0; i < DOCK_COUNT; ++i) {
            auto* dock = new Dock(dockName(i));
            dock->setWidget(content(i));
            docks.emplace_back(dock);
            const int column = i / (GROUPS_PER_COLUMN * TABS_PER_GROUP);
            const int group = i / TABS_PER_GROUP % GROUPS_PER_COLUMN;
            nested.push_back(
                { QStringLiteral("MainWindow/H0/V%1/T%2/%3").arg(column).arg(group).arg(dockName(i)).toStdString(),
                    false, {} });
            stacked.push_back({ QStringLiteral("MainWindow/T0/%1").arg(dockName(i)).toStdString(), false, {} });
        }
        // The records a session would have saved: the sizes and geometry the window has in that arrangement.
        Dock::restoreWorkspace(nested);
        settle();
        target = Dock::saveWorkspace();
        Dock::restoreWorkspace(stacked);
        settle();
        start = Dock::saveWorkspace();
    }

    QMainWindow window;
    Stack<std::unique_ptr<Dock>> docks;
    Stack<Dock::Data> target;
    Stack<Dock::Data> start;
};

/// The same arrangement with Qt's dock widgets and QMainWindow's state.
struct QtDockWindow
{
    QtDockWindow()
    {
        window.setCentralWidget(new QWidget);
        window.resize(1600, 1000);
        window.show();
        for (int i = 0; i < DOCK_COUNT; ++i) {
            auto* dock = new QDockWidget(dockName(i), &window);
            dock->setObjectName(dockName(i));
            dock->setWidget(content(i));
            docks.push_back(dock);
        }
        // Columns side by side, each column's groups one under the other, each group's docks as tabs.
        const int perColumn = GROUPS_PER_COLUMN * TABS_PER_GROUP;
        window.addDockWidget(Qt::LeftDockWidgetArea, docks[0]);
        for (int column = 1; column < COLUMNS; ++column)
            window.splitDockWidget(docks[(column - 1) * perColumn], docks[column * perColumn], Qt::Horizontal);
        for (int column = 0; column < COLUMNS; ++column)
            for (int group = 1; group < GROUPS_PER_COLUMN; ++group)
                window.splitDockWidget(docks[column * perColumn + (group - 1) * TABS_PER_GROUP],
                    docks[column * perColumn + group * TABS_PER_GROUP], Qt::Vertical);
        for (int i = 0; i < DOCK_COUNT; ++i)
            if (i % TABS_PER_GROUP != 0)
                window.tabifyDockWidget(docks[i - i % TABS_PER_GROUP], docks[i]);
        settle();
        target = window.saveState();
        for (int i = 1; i < DOCK_COUNT; ++i)
            window.tabifyDockWidget(docks[0], docks[i]);
        settle();
        start = window.saveState();
    }

    QMainWindow window;
    Stack<QDockWidget*> docks;
    QByteArray target;
    QByteArray start;
};

void BM_RestoreWorkspace(benchmark::State& state)
{
    DockWindow fixture;
    for (auto _ : state) {
        state.PauseTiming();
        Dock::restoreWorkspace(fixture.start);
        settle();
        state.ResumeTiming();
        benchmark::DoNotOptimize(Dock::restoreWorkspace(fixture.target));
        settle();
    }
    state.counters["docks"] = DOCK_COUNT;
}
BENCHMARK(BM_RestoreWorkspace)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_RestoreQtState(benchmark::State& state)
{
    QtDockWindow fixture;
    for (auto _ : state) {
        state.PauseTiming();
        fixture.window.restoreState(fixture.start);
        settle();
        state.ResumeTiming();
        benchmark::DoNotOptimize(fixture.window.restoreState(fixture.target));
        settle();
    }
    state.counters["docks"] = DOCK_COUNT;
}
BENCHMARK(BM_RestoreQtState)->Unit(benchmark::kMillisecond)->UseRealTime();

// The records and the bytes of the file, against the bytes of QMainWindow's state.
void BM_SaveWorkspace(benchmark::State& state)
{
    DockWindow fixture;
    Dock::restoreWorkspace(fixture.target);
    settle();
    for (auto _ : state)
        benchmark::DoNotOptimize(Widgets::writeWorkspace(Dock::saveWorkspace()));
}
BENCHMARK(BM_SaveWorkspace)->Unit(benchmark::kMicrosecond)->UseRealTime();

void BM_SaveQtState(benchmark::State& state)
{
    QtDockWindow fixture;
    fixture.window.restoreState(fixture.target);
    settle();
    for (auto _ : state)
        benchmark::DoNotOptimize(fixture.window.saveState());
}
BENCHMARK(BM_SaveQtState)->Unit(benchmark::kMicrosecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    LibQt::startup("bench_docking");
    benchmark::Initialize(&argc, argv);
    // Wall-clock time: a restore ends when the window has laid itself out, which is event processing.
    Benchmarks::RatioReporter reporter(Benchmarks::Clock::Real,
        {
            { "BM_RestoreWorkspace/real_time", "BM_RestoreQtState/real_time",
                "restore 100 docks, workspace / QMainWindow::restoreState", "at most 1" },
            { "BM_SaveWorkspace/real_time", "BM_SaveQtState/real_time",
                "save 100 docks to bytes, workspace / QMainWindow::saveState", "at most 1" },
        },
        [](const Benchmarks::RatioReporter& figures) {
            if (const auto* run = figures.find("BM_RestoreWorkspace/real_time"))
                std::printf("restore of 100 docks: %.1f ms wall-clock, %.1f ms CPU (goal under 120 ms)\n",
                    run->realNanoseconds / 1e6, run->cpuNanoseconds / 1e6);
        });
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    LibQt::shutdown();
    return 0;
}
