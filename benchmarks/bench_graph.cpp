#include "GraphScenes.h"
#include "RatioReporter.h"

#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/LayeredLayout.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QImage>

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <random>
#include <utility>

using namespace Marlix;
using namespace Marlix::Widgets;
using namespace Marlix::Benchmarks;

namespace {

/// A node graph as the editor hands it to the layout: boxes where the user left them and the wires between them.
struct GeneratedGraph
{
    Array<LayoutNode> nodes;
    Array<LayoutEdge> edges;
};

/// A seeded random graph without loops, about 1.5 inputs per node, each read from one of the 100 nodes made before
/// it (a material network reads recent textures rather than any node of the scene), scattered over the canvas.
/// The generator's raw output is used directly, since the standard distributions differ between libraries.
const GeneratedGraph& generatedGraph(std::size_t nodeCount)
{
    static std::map<std::size_t, GeneratedGraph> graphs;
    GeneratedGraph& graph = graphs[nodeCount];
    if (!graph.nodes.empty())
        return graph;
    std::mt19937 random(20261123u);
    const auto below = [&](std::uint32_t bound) { return std::uint32_t(random() % bound); };
    for (std::uint32_t i = 0; i < nodeCount; ++i) {
        graph.nodes.push_back({ 220.0f, 50.0f + float(below(101)), float(below(20000)), float(below(20000)) });
        if (i == 0)
            continue;
        const std::uint32_t inputs = 1 + below(2);
        for (std::uint32_t input = 0; input < inputs; ++input) {
            const std::uint32_t window = std::min<std::uint32_t>(i, 100);
            graph.edges.push_back({ i - 1 - below(window), i, input });
        }
    }
    return graph;
}

void rearrange(benchmark::State& state, bool reduceCrossings)
{
    const GeneratedGraph& graph = generatedGraph(std::size_t(state.range(0)));
    LayeredLayoutOptions options;
    options.reduceCrossings = reduceCrossings;
    LayeredLayoutResult result;
    for (auto _ : state) {
        result = computeLayeredLayout(graph.nodes, graph.edges, options);
        benchmark::DoNotOptimize(result.positions.data());
    }
    Array<std::array<float, 2>> start;
    for (const LayoutNode& node : graph.nodes)
        start.push_back({ node.x, node.y });
    state.counters["crossings"] = double(result.crossings);
    state.counters["startCrossings"] = double(countLayerCrossings(graph.nodes, graph.edges, result.layers, start));
    state.counters["edges"] = double(graph.edges.size());
}

void BM_RearrangeNodes(benchmark::State& state)
{
    rearrange(state, true);
}
BENCHMARK(BM_RearrangeNodes)->Arg(1000)->Arg(5000)->Unit(benchmark::kMillisecond);

// The same layout keeping the order the nodes had in each layer: what the crossing reduction costs and buys.
void BM_RearrangeNodesKeepingOrder(benchmark::State& state)
{
    rearrange(state, false);
}
BENCHMARK(BM_RearrangeNodesKeepingOrder)->Arg(1000)->Arg(5000)->Unit(benchmark::kMillisecond);

// The view snaps 0.12 to 1/8, so both views use that.
constexpr double FAR_ZOOM = 0.125;
// The step of one panning move: what a quick mouse drag gives between two frames; a sweep is as wide as the graph.
constexpr double PAN_STEP = 16.0;
constexpr int PAN_STEPS_PER_SWEEP = 1000;

std::unique_ptr<QGraphicsView> makeGraphView()
{
    auto view = std::make_unique<GraphView>(LargeGraph::get().model, nullptr, nullptr);
    view->resize(VIEW_SIZE);
    return view;
}

/// Puts `view` at `zoom` around the graph's centre, as the graph view's own zoom would.
void frame(QGraphicsView& view, double zoom)
{
    view.show();
    QCoreApplication::processEvents();
    if (auto* graphView = qobject_cast<GraphView*>(&view))
        graphView->zoom(QPointF(view.viewport()->width() * 0.5, view.viewport()->height() * 0.5), zoom, false);
    else
        view.setTransform(QTransform::fromScale(zoom, zoom));
    view.centerOn(LargeGraph::get().centre);
    if (auto* graphView = qobject_cast<GraphView*>(&view))
        graphView->snapContentPosition();
    QCoreApplication::processEvents();
}

/// One full repaint of the viewport into `image`; with MARLIX_BENCH_IMAGES set, the first one is saved there to look
/// at.
void repaint(QGraphicsView& view, QImage& image, const char* name)
{
    view.viewport()->render(&image);
    static std::map<std::string, bool> saved;
    const QString folder = qEnvironmentVariable("MARLIX_BENCH_IMAGES");
    if (!folder.isEmpty() && !saved[name]) {
        saved[name] = true;
        image.save(QDir(folder).filePath(QString::fromUtf8(name) + QStringLiteral(".png")));
    }
}

enum class Kind
{
    GraphView,
    PlainItems,
};

std::unique_ptr<QGraphicsView> makeView(Kind kind)
{
    return kind == Kind::GraphView ? makeGraphView() : makePlainView(PlainGraph::get());
}

// Figures of another graph would not compare with the goals: a network that cannot make the wires is an error.
bool checkGraph(benchmark::State& state)
{
    const std::size_t wires = PlainGraph::get().wires.size();
    if (PlainGraph::get().boxes.size() == GRAPH_NODES && wires == GRAPH_WIRES)
        return true;
    const std::string error
        = "the sample network gave " + std::to_string(wires) + " wires, not " + std::to_string(GRAPH_WIRES);
    state.SkipWithError(error.c_str());
    return false;
}

void setGraphCounters(benchmark::State& state, QGraphicsView& view)
{
    state.counters["items"] = double(view.scene()->items().size());
    state.counters["wires"] = double(PlainGraph::get().wires.size());
}

// `uncached`: every frame draws the wires again, as the first frame after a zoom or an edit of the graph does.
void paintFar(benchmark::State& state, Kind kind, const char* name, bool uncached = false)
{
    if (!checkGraph(state))
        return;
    const std::unique_ptr<QGraphicsView> view = makeView(kind);
    frame(*view, FAR_ZOOM);
    auto* graphView = qobject_cast<GraphView*>(view.get());
    QImage image(view->viewport()->size(), QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        if (uncached && graphView)
            graphView->invalidateWireLayer();
        repaint(*view, image, name);
        benchmark::DoNotOptimize(image.constBits());
    }
    setGraphCounters(state, *view);
}

void BM_PaintGraphView(benchmark::State& state)
{
    paintFar(state, Kind::GraphView, "paint_graph_view");
}
BENCHMARK(BM_PaintGraphView)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_PaintGraphViewFirstFrame(benchmark::State& state)
{
    paintFar(state, Kind::GraphView, "paint_graph_view_first", true);
}
BENCHMARK(BM_PaintGraphViewFirstFrame)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_PaintPlainItems(benchmark::State& state)
{
    paintFar(state, Kind::PlainItems, "paint_plain_items");
}
BENCHMARK(BM_PaintPlainItems)->Unit(benchmark::kMillisecond)->UseRealTime();

// One step of a pan at zoom 1: the view moves and the whole viewport is painted again, as it is in the graph view
// (full viewport updates). The pan goes one way across the graph and jumps back now and then, so the steps that
// draw the wires past the screen again are in the mean as often as a long pan meets them; the slowest step is kept.
void pan(benchmark::State& state, Kind kind, const char* name)
{
    if (!checkGraph(state))
        return;
    const std::unique_ptr<QGraphicsView> view = makeView(kind);
    frame(*view, 1.0);
    auto* graphView = qobject_cast<GraphView*>(view.get());
    QImage image(view->viewport()->size(), QImage::Format_ARGB32_Premultiplied);
    qint64 slowest = 0;
    int steps = 0;
    QElapsedTimer clock;
    for (auto _ : state) {
        clock.start();
        const double step = ++steps % PAN_STEPS_PER_SWEEP == 0 ? -PAN_STEP * (PAN_STEPS_PER_SWEEP - 1) : PAN_STEP;
        if (graphView)
            graphView->updateViewportScrolling(QPointF(-step, 0.0), true);
        else
            view->translate(-step, 0.0);
        repaint(*view, image, name);
        benchmark::DoNotOptimize(image.constBits());
        slowest = std::max(slowest, clock.nsecsElapsed());
    }
    setGraphCounters(state, *view);
    state.counters["slowestMs"] = double(slowest) / 1e6;
}

void BM_PanGraphView(benchmark::State& state)
{
    pan(state, Kind::GraphView, "pan_graph_view");
}
BENCHMARK(BM_PanGraphView)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3.0);

void BM_PanPlainItems(benchmark::State& state)
{
    pan(state, Kind::PlainItems, "pan_plain_items");
}
BENCHMARK(BM_PanPlainItems)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3.0);

// From nothing to a view ready to paint: every item made and placed, and what the view posted for later done.
// Tearing down is not part of it.
void build(benchmark::State& state, Kind kind)
{
    if (!checkGraph(state))
        return;
    std::size_t items = 0;
    for (auto _ : state) {
        std::unique_ptr<QGraphicsView> view = makeView(kind);
        QCoreApplication::sendPostedEvents();
        state.PauseTiming();
        items = std::size_t(view->scene()->items().size());
        view.reset();
        QCoreApplication::sendPostedEvents();
        state.ResumeTiming();
    }
    state.counters["items"] = double(items);
}

void BM_BuildGraphView(benchmark::State& state)
{
    build(state, Kind::GraphView);
}
BENCHMARK(BM_BuildGraphView)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_BuildPlainItems(benchmark::State& state)
{
    build(state, Kind::PlainItems);
}
BENCHMARK(BM_BuildPlainItems)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    // The graph view's benchmarks need widgets; the layout alone would not.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    // CPU time for the layout, which waits on nothing while the machine may be shared; wall-clock time for what
    // the screen would wait for: painting, panning, building.
    const auto real = Benchmarks::Clock::Real;
    Benchmarks::RatioReporter reporter(Benchmarks::Clock::Cpu,
        {
            { "BM_RearrangeNodes/1000", "BM_RearrangeNodesKeepingOrder/1000", "rearrange 1000 nodes / keeping order",
                "the cost of the crossing reduction" },
            { "BM_RearrangeNodes/1000", "BM_RearrangeNodesKeepingOrder/1000",
                "crossings of 1000 nodes rearranged / keeping order", {}, "crossings" },
            { "BM_RearrangeNodes/5000", "BM_RearrangeNodesKeepingOrder/5000", "rearrange 5000 nodes / keeping order" },
            { "BM_PaintGraphView/real_time", "BM_PaintPlainItems/real_time",
                "paint 5000 nodes at zoom 1/8, graph view / plain items", "at most 0.33", {}, real },
            { "BM_PaintGraphViewFirstFrame/real_time", "BM_PaintPlainItems/real_time",
                "paint 5000 nodes at zoom 1/8 with the wires drawn anew, graph view / plain items", {}, {}, real },
            { "BM_PanGraphView/min_time:3.000/real_time", "BM_PanPlainItems/min_time:3.000/real_time",
                "pan one step at zoom 1, graph view / plain items", {}, {}, real },
            { "BM_BuildGraphView/real_time", "BM_BuildPlainItems/real_time",
                "build 5000 nodes, graph view / plain items", "at most 1", {}, real },
        },
        [](const Benchmarks::RatioReporter& figures) {
            const std::pair<const char*, const char*> goals[]
                = { { "BM_RearrangeNodes/1000", "under 200 ms" }, { "BM_RearrangeNodes/5000", "well under a second" } };
            for (const auto& [name, goal] : goals)
                if (const auto* run = figures.find(name))
                    std::printf("%s: %.1f ms (goal %s), %.0f crossings, %.0f in the order the nodes had\n", name,
                        run->nanoseconds / 1e6, goal, run->counter("crossings"), run->counter("startCrossings"));
            const std::pair<const char*, const char*> frames[] = {
                { "BM_PaintGraphView/real_time", "a frame of the whole graph: under 16.7 ms" },
                { "BM_PaintGraphViewFirstFrame/real_time", "the same with the wires drawn anew" },
                { "BM_PaintPlainItems/real_time", "the same with plain items" },
                { "BM_PanGraphView/min_time:3.000/real_time", "a panning step at zoom 1: under 16.7 ms" },
                { "BM_PanPlainItems/min_time:3.000/real_time", "the same with plain items" },
                { "BM_BuildGraphView/real_time", "building the graph view" },
                { "BM_BuildPlainItems/real_time", "building the plain items" },
            };
            for (const auto& [name, what] : frames)
                if (const auto* run = figures.find(name))
                    std::printf("%s: %.2f ms wall-clock (%s), %.0f items, %.0f wires%s\n", name,
                        run->realNanoseconds / 1e6, what, run->counter("items"), run->counter("wires"),
                        run->counter("slowestMs") > 0.0
                            ? (", slowest step " + std::to_string(run->counter("slowestMs")) + " ms").c_str()
                            : "");
        });
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
