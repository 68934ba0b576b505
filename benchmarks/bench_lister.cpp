#include "RatioReporter.h"

#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/lister/ListerModel.h>
#include <MarlixLibQt/lister/ListerView.h>
#include <MarlixLibQt/widgets/properties/DefaultPropertySheetHost.h>
#include <MarlixTestScene/TestScene.h>

#include <QApplication>
#include <QDoubleSpinBox>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QStyledItemDelegate>
#include <QTreeView>

#include <benchmark/benchmark.h>
#include <cstdio>
#include <memory>
#include <string>

using namespace Marlix;
using namespace Marlix::Widgets;

namespace {

constexpr int ROWS = 10000;
constexpr int COLUMNS = 8;
constexpr QSize WINDOW_SIZE(1280, 800);

// Eight editable properties of a material: its name, five numbers, a flag and an enumeration.
const std::pair<const char*, ListerValuePresentation> LISTER_COLUMNS[COLUMNS] = {
    { "name", ListerValuePresentation::Name },
    { "roughness", ListerValuePresentation::Number },
    { "thickness", ListerValuePresentation::Number },
    { "anisotropyRotation", ListerValuePresentation::Number },
    { "opacity", ListerValuePresentation::Number },
    { "layers", ListerValuePresentation::Number },
    { "doubleSided", ListerValuePresentation::Centered },
    { "shading", ListerValuePresentation::Editor },
};

SharedPtr<IPropertySheetHost> host;
Array<EntityHolder<Entity>> materials;

void makeMaterials()
{
    for (int i = 0; i < ROWS; ++i) {
        auto material = TestScene::materialClass().create();
        material->setPropertyValue("name", String("Material ") + std::to_string(i));
        material->setPropertyValue("roughness", double(i % 100) / 100.0);
        material->setPropertyValue("layers", std::int32_t(i % 7));
        materials.push_back(std::move(material));
    }
}

/// The lister as an application shows it: the model, the view over it, the column flags they share.
struct Lister
{
    std::unique_ptr<ListerModel> model;
    std::unique_ptr<ListerView> view;

    Lister()
    {
        Stack<ListerColumnDefinition> columns;
        for (const auto& [path, presentation] : LISTER_COLUMNS)
            columns.push_back({ path, {}, presentation, path });
        model = std::make_unique<ListerModel>(std::move(columns), Stack<ListerActionMenuItem> {});
        model->setTopLevelEntities(materials);
        view = std::make_unique<ListerView>(
            model.get(), makeSharedPtr<VariableModel<Stack<bool>>>(), host, nullptr, nullptr);
    }
    QTreeView& widget() { return *view; }
};

/// The usual way of showing editors in a table: an editor in every editable cell, opened up front.
class BaselineDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&, const QModelIndex& index) const override
    {
        if (index.column() == 0)
            return new QLineEdit(index.data().toString(), parent);
        auto* field = new QDoubleSpinBox(parent);
        field->setValue(index.data().toDouble());
        return field;
    }
};

struct Baseline
{
    std::unique_ptr<QStandardItemModel> model;
    std::unique_ptr<QTreeView> view;

    Baseline()
    {
        model = std::make_unique<QStandardItemModel>(ROWS, COLUMNS);
        for (int row = 0; row < ROWS; ++row) {
            model->setItem(row, 0, new QStandardItem(QStringLiteral("Material %1").arg(row)));
            for (int column = 1; column < COLUMNS; ++column)
                model->setItem(row, column, new QStandardItem(QString::number(double(row % 100) / 100.0)));
        }
        view = std::make_unique<QTreeView>();
        view->setRootIsDecorated(false);
        view->setUniformRowHeights(true);
        view->setItemDelegate(new BaselineDelegate(view.get()));
        view->setModel(model.get());
        for (int row = 0; row < ROWS; ++row)
            for (int column = 0; column < COLUMNS; ++column)
                view->openPersistentEditor(model->index(row, column));
    }
    QTreeView& widget() { return *view; }
};

/// Until the lister's editors passes are all done (each opens editors for a frame's budget); the baseline has none.
void finishPasses(QTreeView& view)
{
    const auto* lister = qobject_cast<const ListerView*>(&view);
    do
        QCoreApplication::processEvents();
    while (lister && lister->isEditorsPassPending());
}

/// Shown, with every editor of the rows in view open, and painted once.
void showAndPaint(QTreeView& view, QImage& image)
{
    view.resize(WINDOW_SIZE);
    view.show();
    finishPasses(view);
    view.render(&image);
}

template <class Side> void open(benchmark::State& state)
{
    QImage image(WINDOW_SIZE, QImage::Format_ARGB32_Premultiplied);
    double widgets = 0;
    for (auto _ : state) {
        auto side = std::make_unique<Side>();
        showAndPaint(side->widget(), image);
        state.PauseTiming();
        widgets = double(QApplication::allWidgets().size());
        side.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        state.ResumeTiming();
    }
    state.counters["widgets"] = widgets;
}

// One page down per step, and back to the top at the end. `complete`: the step lasts until every editor of the new
// page is open and painted; otherwise it is the frame the user sees first: the scroll, the first editors pass and
// one paint (the remaining editors open in the following frames, each within the pass's budget, and are counted).
template <class Side> void scroll(benchmark::State& state, bool complete)
{
    QImage image(WINDOW_SIZE, QImage::Format_ARGB32_Premultiplied);
    Side side;
    showAndPaint(side.widget(), image);
    QScrollBar* bar = side.widget().verticalScrollBar();
    qint64 slowest = 0;
    qint64 laterFrames = 0;
    QElapsedTimer clock;
    const auto* lister = qobject_cast<const ListerView*>(&side.widget());
    for (auto _ : state) {
        clock.start();
        bar->setValue(bar->value() >= bar->maximum() ? 0 : bar->value() + bar->pageStep());
        if (complete)
            finishPasses(side.widget());
        side.widget().render(&image);
        benchmark::DoNotOptimize(image.constBits());
        slowest = std::max(slowest, clock.nsecsElapsed());
        state.PauseTiming();
        while (lister && lister->isEditorsPassPending()) {
            QCoreApplication::processEvents();
            ++laterFrames;
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        state.ResumeTiming();
    }
    state.counters["slowestMs"] = double(slowest) / 1e6;
    state.counters["laterFrames"] = benchmark::Counter(double(laterFrames), benchmark::Counter::kAvgIterations);
}

void BM_OpenLister(benchmark::State& state)
{
    open<Lister>(state);
}
BENCHMARK(BM_OpenLister)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

// 80 000 editors: one build takes about a minute, which one iteration shows well enough.
void BM_OpenEditorTree(benchmark::State& state)
{
    open<Baseline>(state);
}
BENCHMARK(BM_OpenEditorTree)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

void BM_ScrollLister(benchmark::State& state)
{
    scroll<Lister>(state, false);
}
BENCHMARK(BM_ScrollLister)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(200);

void BM_ScrollListerComplete(benchmark::State& state)
{
    scroll<Lister>(state, true);
}
BENCHMARK(BM_ScrollListerComplete)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(100);

void BM_ScrollEditorTree(benchmark::State& state)
{
    scroll<Baseline>(state, true);
}
BENCHMARK(BM_ScrollEditorTree)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

/// The peak resident size of this process in kB, from the kernel's accounting.
long peakResidentKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').front().toLong();
    return -1;
}

/// In a child process of its own, so that neither side's peak hides the other's: builds one side, shows and
/// paints it, and prints the growth of the peak resident size and the number of widgets.
int measureMemory(const std::string& side)
{
    const long before = peakResidentKb();
    QImage image(WINDOW_SIZE, QImage::Format_ARGB32_Premultiplied);
    const auto report = [&](QTreeView& view) {
        showAndPaint(view, image);
        std::printf("%ld %lld\n", peakResidentKb() - before, static_cast<long long>(QApplication::allWidgets().size()));
    };
    if (side == "lister") {
        Lister lister;
        report(lister.widget());
    } else {
        Baseline baseline;
        report(baseline.widget());
    }
    return 0;
}

void printMemory(const char* executable)
{
    for (const char* side : { "lister", "baseline" }) {
        const std::string command = std::string("'") + executable + "' --memory-child=" + side;
        FILE* child = popen(command.c_str(), "r");
        long kb = -1;
        long long widgets = -1;
        if (child) {
            if (std::fscanf(child, "%ld %lld", &kb, &widgets) != 2)
                kb = -1;
            pclose(child);
        }
        std::printf("memory of the open %s: peak RSS +%.1f MB, %lld widgets\n",
            std::string(side) == "lister" ? "lister" : "QTreeView with 80 000 persistent editors", double(kb) / 1024.0,
            widgets);
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    std::string memoryChild;
    for (int i = 1; i < argc; ++i)
        if (std::string(argv[i]).rfind("--memory-child=", 0) == 0)
            memoryChild = std::string(argv[i]).substr(15);
    if (memoryChild.empty())
        benchmark::Initialize(&argc, argv);
    LibQt::startup("bench_lister");
    int result = 0;
    {
        host = makeSharedPtr<DefaultPropertySheetHost>(nullptr, nullptr, makeSharedPtr<UndoManager>());
        makeMaterials();
        if (!memoryChild.empty()) {
            result = measureMemory(memoryChild);
        } else {
            // Wall-clock time: what the user waits for is building, laying out and painting, not CPU alone.
            Benchmarks::RatioReporter reporter(Benchmarks::Clock::Real,
                {
                    { "BM_OpenLister/iterations:5/real_time", "BM_OpenEditorTree/iterations:1/real_time",
                        "open and first paint of 10 000 rows x 8 editable columns, lister / QTreeView with persistent "
                        "editors",
                        "at most 0.05" },
                    { "BM_ScrollLister/iterations:200/real_time", "BM_ScrollEditorTree/iterations:5/real_time",
                        "one page scroll step, first frame, lister / QTreeView with persistent editors" },
                    { "BM_ScrollListerComplete/iterations:100/real_time", "BM_ScrollEditorTree/iterations:5/real_time",
                        "one page scroll step until every editor is open, lister / QTreeView with persistent editors" },
                },
                [argv](const Benchmarks::RatioReporter& figures) {
                    if (const auto* run = figures.find("BM_ScrollLister/iterations:200/real_time"))
                        std::printf("lister scroll step, first frame: %.2f ms mean (CPU %.2f ms), %.2f ms slowest "
                                    "(goal under 16.7 ms); the page's editors complete %.1f frames later\n",
                            run->nanoseconds / 1e6, run->cpuNanoseconds / 1e6, run->counter("slowestMs"),
                            run->counter("laterFrames"));
                    if (const auto* run = figures.find("BM_ScrollListerComplete/iterations:100/real_time"))
                        std::printf("lister scroll step until every editor is open: %.2f ms mean (CPU %.2f ms)\n",
                            run->nanoseconds / 1e6, run->cpuNanoseconds / 1e6);
                    // The memory of both sides only with the whole set: the baseline's child takes minutes.
                    if (const auto* run = figures.find("BM_OpenEditorTree/iterations:1/real_time")) {
                        std::printf("baseline open: %.1f s for one iteration\n", run->nanoseconds / 1e9);
                        printMemory(argv[0]);
                    }
                });
            benchmark::RunSpecifiedBenchmarks(&reporter);
        }
        materials.clear();
        host.reset();
    }
    if (memoryChild.empty())
        benchmark::Shutdown();
    LibQt::shutdown();
    return result;
}
