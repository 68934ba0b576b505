#include <MarlixLibQt/widgets/graph/LayeredGraph.h>

#include <MarlixLib/base/Exception.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <string>
#include <tuple>

namespace Marlix::Widgets::Detail {
namespace {

// Barycentre rounds stop after this many, or after two rounds that found nothing better. A graph whose long wires
// pass through millions of layers gets fewer rounds, so that rearranging it stays a matter of a second.
constexpr int MAX_SWEEP_ROUNDS = 8;
constexpr std::size_t SWEEP_BUDGET = 2'000'000;
constexpr int MAX_TRANSPOSE_PASSES = 4;
// Each pass-through point costs about 60 bytes in the graph and the heights: this keeps one layout near a gigabyte.
constexpr std::size_t MAX_PASS_THROUGHS = 20'000'000;

std::uint64_t linkKey(Index position, Index port)
{
    return (std::uint64_t(position) << 32) | port;
}

} // namespace

LayeredGraph buildGraph(ArrayView<const Index> layers, ArrayView<const float> keys, ArrayView<const Wire> wires)
{
    LayeredGraph graph;
    graph.nodeCount = Index(layers.size());
    graph.layerOf.assign(layers.begin(), layers.end());
    std::size_t passThroughs = 0;
    for (const Wire& wire : wires)
        passThroughs += layers[wire.lower] - layers[wire.upper] - 1;
    if (passThroughs > MAX_PASS_THROUGHS)
        throw Exception("The wires of this graph pass " + std::to_string(passThroughs)
            + " layers between their ends, more than the " + std::to_string(MAX_PASS_THROUGHS)
            + " that can be laid out.");
    graph.layerOf.reserve(layers.size() + passThroughs);
    graph.dummyEnds.reserve(passThroughs);
    Array<float> vertexKey(keys.begin(), keys.end());
    vertexKey.reserve(layers.size() + passThroughs);
    struct Segment
    {
        Index upper, lower, port;
    };
    Array<Segment> segments;
    segments.reserve(wires.size() + passThroughs);
    for (const Wire& wire : wires) {
        const Index first = layers[wire.upper];
        const Index last = layers[wire.lower];
        Index previous = wire.upper;
        for (Index layer = first + 1; layer < last; ++layer) {
            const Index dummy = Index(graph.layerOf.size());
            const float t = float(layer - first) / float(last - first);
            graph.layerOf.push_back(layer);
            graph.dummyEnds.push_back({ wire.upper, wire.lower });
            vertexKey.push_back(keys[wire.upper] + (keys[wire.lower] - keys[wire.upper]) * t);
            segments.push_back({ previous, dummy, 0 });
            previous = dummy;
        }
        segments.push_back({ previous, wire.lower, wire.port });
    }
    const std::size_t vertexCount = graph.layerOf.size();
    const Index layerCount = vertexCount ? *std::max_element(graph.layerOf.begin(), graph.layerOf.end()) + 1 : 0;

    graph.order.resize(layerCount);
    for (Index v = 0; v < vertexCount; ++v)
        graph.order[graph.layerOf[v]].push_back(v);
    graph.position.resize(vertexCount);
    for (Array<Index>& layer : graph.order) {
        std::sort(layer.begin(), layer.end(), [&](Index a, Index b) {
            return std::make_tuple(vertexKey[a], a >= graph.nodeCount, a)
                < std::make_tuple(vertexKey[b], b >= graph.nodeCount, b);
        });
        for (Index i = 0; i < layer.size(); ++i)
            graph.position[layer[i]] = i;
    }

    graph.downStart.assign(vertexCount + 1, 0);
    graph.upStart.assign(vertexCount + 1, 0);
    graph.portCount.assign(vertexCount, 1);
    for (const Segment& s : segments) {
        ++graph.downStart[s.upper + 1];
        ++graph.upStart[s.lower + 1];
        graph.portCount[s.lower] = std::max(graph.portCount[s.lower], s.port + 1);
    }
    std::partial_sum(graph.downStart.begin(), graph.downStart.end(), graph.downStart.begin());
    std::partial_sum(graph.upStart.begin(), graph.upStart.end(), graph.upStart.begin());
    graph.down.resize(segments.size());
    graph.up.resize(segments.size());
    Array<Index> downFill(graph.downStart.begin(), graph.downStart.end() - 1);
    Array<Index> upFill(graph.upStart.begin(), graph.upStart.end() - 1);
    for (const Segment& s : segments) {
        graph.down[downFill[s.upper]++] = { s.lower, s.port };
        graph.up[upFill[s.lower]++] = { s.upper, s.port };
    }
    return graph;
}

namespace {

/// Counts the pairs i < j with keys[i] > keys[j] by merge sort; `keys` ends up sorted.
std::size_t countInversions(Array<std::uint64_t>& keys, Array<std::uint64_t>& scratch)
{
    std::size_t inversions = 0;
    scratch.resize(keys.size());
    for (std::size_t width = 1; width < keys.size(); width *= 2) {
        for (std::size_t begin = 0; begin < keys.size(); begin += 2 * width) {
            const std::size_t middle = std::min(begin + width, keys.size());
            const std::size_t end = std::min(begin + 2 * width, keys.size());
            std::size_t left = begin, right = middle, out = begin;
            while (left < middle && right < end) {
                if (keys[right] < keys[left]) {
                    inversions += middle - left;
                    scratch[out++] = keys[right++];
                } else {
                    scratch[out++] = keys[left++];
                }
            }
            std::copy(keys.begin() + std::ptrdiff_t(left), keys.begin() + std::ptrdiff_t(middle),
                scratch.begin() + std::ptrdiff_t(out));
            out += middle - left;
            std::copy(keys.begin() + std::ptrdiff_t(right), keys.begin() + std::ptrdiff_t(end),
                scratch.begin() + std::ptrdiff_t(out));
        }
        keys.swap(scratch);
    }
    return inversions;
}

} // namespace

std::size_t countCrossings(const LayeredGraph& graph)
{
    std::size_t crossings = 0;
    Array<std::uint64_t> keys, scratch;
    for (std::size_t layer = 0; layer + 1 < graph.order.size(); ++layer) {
        keys.clear();
        for (Index v : graph.order[layer]) {
            // Segments leaving one vertex share its output, so they are put in order before counting.
            const std::size_t first = keys.size();
            for (Index i = graph.downStart[v]; i < graph.downStart[v + 1]; ++i)
                keys.push_back(linkKey(graph.position[graph.down[i].vertex], graph.down[i].port));
            std::sort(keys.begin() + std::ptrdiff_t(first), keys.end());
        }
        crossings += countInversions(keys, scratch);
    }
    return crossings;
}

namespace {

void sortLayerByKey(LayeredGraph& graph, Array<Index>& layer, const Array<double>& key)
{
    std::stable_sort(layer.begin(), layer.end(), [&](Index a, Index b) { return key[a] < key[b]; });
    for (Index i = 0; i < layer.size(); ++i)
        graph.position[layer[i]] = i;
}

/// Orders each layer by the barycentre of its neighbours in the layer before it (downwards) or after it; a vertex
/// without such neighbours keeps its place. On the far side of a downward segment the input row shifts the end
/// within its node, so the wires into one node come in the order of its rows.
void sweep(LayeredGraph& graph, bool downwards, Array<double>& key)
{
    const std::size_t count = graph.order.size();
    for (std::size_t step = 1; step < count; ++step) {
        const std::size_t layer = downwards ? step : count - 1 - step;
        for (Index v : graph.order[layer]) {
            double sum = 0.0;
            Index n = 0;
            if (downwards) {
                for (Index i = graph.upStart[v]; i < graph.upStart[v + 1]; ++i, ++n)
                    sum += graph.position[graph.up[i].vertex];
            } else {
                for (Index i = graph.downStart[v]; i < graph.downStart[v + 1]; ++i, ++n) {
                    const Link& link = graph.down[i];
                    sum += graph.position[link.vertex] + (link.port + 1.0) / (graph.portCount[link.vertex] + 1.0);
                }
            }
            key[v] = n ? sum / n : double(graph.position[v]);
        }
        sortLayerByKey(graph, graph.order[layer], key);
    }
}

/// Pairs (a, b) with a from `left`, b from `right` and a > b; both sorted.
std::size_t countGreater(const Array<std::uint64_t>& left, const Array<std::uint64_t>& right)
{
    std::size_t pairs = 0, below = 0;
    for (std::uint64_t a : left) {
        while (below < right.size() && right[below] < a)
            ++below;
        pairs += below;
    }
    return pairs;
}

void collectEnds(const LayeredGraph& graph, Index v, Array<std::uint64_t>& up, Array<std::uint64_t>& down)
{
    up.clear();
    down.clear();
    for (Index i = graph.upStart[v]; i < graph.upStart[v + 1]; ++i)
        up.push_back(graph.position[graph.up[i].vertex]);
    for (Index i = graph.downStart[v]; i < graph.downStart[v + 1]; ++i)
        down.push_back(linkKey(graph.position[graph.down[i].vertex], graph.down[i].port));
    std::sort(up.begin(), up.end());
    std::sort(down.begin(), down.end());
}

/// Swaps neighbours of a layer while that removes crossings with both adjacent layers.
void transpose(LayeredGraph& graph)
{
    Array<std::uint64_t> upA, downA, upB, downB;
    for (Array<Index>& layer : graph.order) {
        for (int pass = 0; pass < MAX_TRANSPOSE_PASSES; ++pass) {
            bool swapped = false;
            for (std::size_t i = 0; i + 1 < layer.size(); ++i) {
                collectEnds(graph, layer[i], upA, downA);
                collectEnds(graph, layer[i + 1], upB, downB);
                const std::size_t kept = countGreater(upA, upB) + countGreater(downA, downB);
                const std::size_t swappedCount = countGreater(upB, upA) + countGreater(downB, downA);
                if (swappedCount < kept) {
                    std::swap(layer[i], layer[i + 1]);
                    graph.position[layer[i]] = Index(i);
                    graph.position[layer[i + 1]] = Index(i + 1);
                    swapped = true;
                }
            }
            if (!swapped)
                break;
        }
    }
}

} // namespace

void reduceCrossings(LayeredGraph& graph, const std::function<std::size_t(const LayeredGraph&)>& score)
{
    Array<Array<Index>> best = graph.order;
    std::size_t bestCount = score(graph);
    Array<double> key(graph.layerOf.size(), 0.0);
    int stale = 0;
    const int rounds = int(std::clamp<std::size_t>(SWEEP_BUDGET / (graph.layerOf.size() + 1), 1, MAX_SWEEP_ROUNDS));
    for (int round = 0; round < rounds && bestCount > 0 && stale < 2; ++round) {
        ++stale;
        for (bool downwards : { true, false }) {
            sweep(graph, downwards, key);
            transpose(graph);
            const std::size_t count = score(graph);
            if (count < bestCount) {
                bestCount = count;
                best = graph.order;
                stale = 0;
            }
        }
    }
    graph.order = std::move(best);
    for (const Array<Index>& layer : graph.order) {
        for (Index i = 0; i < layer.size(); ++i)
            graph.position[layer[i]] = i;
    }
}

} // namespace Marlix::Widgets::Detail
