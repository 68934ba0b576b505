#include "RatioReporter.h"

#include <MarlixLibQt/widgets/graph/LayeredLayout.h>

#include <QApplication>

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdio>
#include <map>
#include <random>
#include <utility>

using namespace Marlix;
using namespace Marlix::Widgets;

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

} // namespace

int main(int argc, char** argv)
{
    // The graph view's benchmarks need widgets; the layout alone would not.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    // CPU time: the layout does not wait on anything, and the machine may be shared.
    Benchmarks::RatioReporter reporter(Benchmarks::Clock::Cpu,
        {
            { "BM_RearrangeNodes/1000", "BM_RearrangeNodesKeepingOrder/1000", "rearrange 1000 nodes / keeping order",
                "the cost of the crossing reduction" },
            { "BM_RearrangeNodes/1000", "BM_RearrangeNodesKeepingOrder/1000",
                "crossings of 1000 nodes rearranged / keeping order", {}, "crossings" },
            { "BM_RearrangeNodes/5000", "BM_RearrangeNodesKeepingOrder/5000", "rearrange 5000 nodes / keeping order" },
        },
        [](const Benchmarks::RatioReporter& figures) {
            const std::pair<const char*, const char*> goals[]
                = { { "BM_RearrangeNodes/1000", "under 200 ms" }, { "BM_RearrangeNodes/5000", "well under a second" } };
            for (const auto& [name, goal] : goals)
                if (const auto* run = figures.find(name))
                    std::printf("%s: %.1f ms (goal %s), %.0f crossings, %.0f in the order the nodes had\n", name,
                        run->nanoseconds / 1e6, goal, run->counter("crossings"), run->counter("startCrossings"));
        });
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
