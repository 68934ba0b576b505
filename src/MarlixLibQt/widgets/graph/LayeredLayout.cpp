#include <MarlixLibQt/widgets/graph/LayeredLayout.h>

#include <MarlixLibQt/widgets/graph/LayeredGraph.h>

#include <MarlixLib/base/Exception.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <string>
#include <tuple>

namespace Marlix::Widgets {
namespace {

using namespace Detail;

// Rounds of alignment down and up the layers; each costs about as much as building the graph, and each later one
// moves the nodes less.
constexpr int ALIGN_ROUNDS = 3;

void checkSize(float value, const char* what, std::size_t index)
{
    if (!std::isfinite(value) || value < 0.0f)
        throw Exception("The " + String(what) + " of layout node " + std::to_string(index)
            + " must be a finite number of at least 0.");
}

void checkEdges(std::size_t nodeCount, ArrayView<const LayoutEdge> edges)
{
    for (std::size_t i = 0; i < edges.size(); ++i) {
        if (edges[i].from >= nodeCount || edges[i].to >= nodeCount)
            throw Exception("Layout edge " + std::to_string(i) + " joins nodes " + std::to_string(edges[i].from)
                + " and " + std::to_string(edges[i].to) + ", but there are only " + std::to_string(nodeCount)
                + " nodes.");
    }
}

/// Isotonic regression (pool adjacent violators): the non-decreasing sequence nearest to `target`, in place.
void poolAdjacentViolators(Array<double>& target)
{
    struct Block
    {
        double sum;
        std::size_t count;
    };
    Array<Block> blocks;
    for (double t : target) {
        blocks.push_back({ t, 1 });
        while (blocks.size() > 1) {
            const Block& last = blocks.back();
            Block& before = blocks[blocks.size() - 2];
            if (before.sum / double(before.count) < last.sum / double(last.count))
                break;
            before.sum += last.sum;
            before.count += last.count;
            blocks.pop_back();
        }
    }
    std::size_t i = 0;
    for (const Block& block : blocks) {
        for (std::size_t k = 0; k < block.count; ++k)
            target[i++] = block.sum / double(block.count);
    }
}

/// Tops of the nodes of one component in the order of `graph`: stacked with `spacing`, then each layer in turn moved
/// as near to its neighbours as the order and the spacing allow. A node aims at the tops of the vertices it is wired
/// to, so that wires between ports near the tops run level; a wire's pass-through point aims at the straight line
/// between the wire's ends, which is where the crossing count sees it, and takes no room of its own: it sits in the
/// middle of the gap between two nodes. The topmost node is at 0.
Array<float> assignHeights(const LayeredGraph& graph, ArrayView<const LayoutNode> nodes, float spacing)
{
    const Index nodeCount = graph.nodeCount;
    const auto gap = [&](Index above, Index below) {
        if (above < nodeCount)
            return double(nodes[above].height) + (below < nodeCount ? spacing : spacing * 0.5);
        return below < nodeCount ? spacing * 0.5 : 0.0;
    };
    Array<double> top(graph.layerOf.size(), 0.0);
    for (const Array<Index>& layer : graph.order) {
        for (std::size_t i = 1; i < layer.size(); ++i)
            top[layer[i]] = top[layer[i - 1]] + gap(layer[i - 1], layer[i]);
    }
    Array<double> target, offset;
    for (int round = 0; round < 2 * ALIGN_ROUNDS; ++round) {
        const bool downwards = round % 2 == 0;
        for (std::size_t step = 0; step < graph.order.size(); ++step) {
            const Array<Index>& layer = graph.order[downwards ? step : graph.order.size() - 1 - step];
            target.clear();
            offset.clear();
            double stacked = 0.0;
            for (std::size_t i = 0; i < layer.size(); ++i) {
                const Index v = layer[i];
                double wanted = top[v];
                if (v >= nodeCount) {
                    const auto [upper, lower] = graph.dummyEnds[v - nodeCount];
                    const double t = double(graph.layerOf[v] - graph.layerOf[upper])
                        / double(graph.layerOf[lower] - graph.layerOf[upper]);
                    wanted = top[upper] + (top[lower] - top[upper]) * t;
                } else if (const Index links
                    = graph.upStart[v + 1] - graph.upStart[v] + graph.downStart[v + 1] - graph.downStart[v]) {
                    double sum = 0.0;
                    for (Index k = graph.upStart[v]; k < graph.upStart[v + 1]; ++k)
                        sum += top[graph.up[k].vertex];
                    for (Index k = graph.downStart[v]; k < graph.downStart[v + 1]; ++k)
                        sum += top[graph.down[k].vertex];
                    wanted = sum / links;
                }
                if (i > 0)
                    stacked += gap(layer[i - 1], v);
                // Relative to its place in a tight stack the order of the wanted tops must not fall.
                offset.push_back(stacked);
                target.push_back(wanted - stacked);
            }
            poolAdjacentViolators(target);
            for (std::size_t i = 0; i < layer.size(); ++i)
                top[layer[i]] = target[i] + offset[i];
        }
    }
    const double highest = nodeCount ? *std::min_element(top.begin(), top.begin() + nodeCount) : 0.0;
    Array<float> result(nodeCount);
    for (Index i = 0; i < nodeCount; ++i)
        result[i] = float(top[i] - highest);
    return result;
}

void sortUnique(Array<Wire>& wires)
{
    const auto key = [](const Wire& w) { return std::make_tuple(w.upper, w.lower, w.port); };
    std::sort(wires.begin(), wires.end(), [&](const Wire& a, const Wire& b) { return key(a) < key(b); });
    wires.erase(std::unique(wires.begin(), wires.end(), [&](const Wire& a, const Wire& b) { return key(a) == key(b); }),
        wires.end());
}

/// The edges without self edges and repeats, oriented along a depth-first search so that an edge closing a loop is
/// reversed (its port then dropped: the wire's input is on the left end).
Array<Wire> orientWires(std::size_t nodeCount, ArrayView<const LayoutEdge> edges)
{
    Array<LayoutEdge> kept;
    for (const LayoutEdge& edge : edges) {
        if (edge.from != edge.to)
            kept.push_back(edge);
    }
    const auto key = [](const LayoutEdge& e) { return std::make_tuple(e.from, e.to, e.input); };
    std::sort(kept.begin(), kept.end(), [&](const LayoutEdge& a, const LayoutEdge& b) { return key(a) < key(b); });
    kept.erase(std::unique(kept.begin(), kept.end(), [&](const auto& a, const auto& b) { return key(a) == key(b); }),
        kept.end());

    Array<Index> start(nodeCount + 1, 0);
    for (const LayoutEdge& edge : kept)
        ++start[edge.from + 1];
    std::partial_sum(start.begin(), start.end(), start.begin());
    enum : unsigned char
    {
        Unseen,
        Open,
        Done
    };
    Array<unsigned char> state(nodeCount, Unseen);
    Array<Wire> wires(kept.size());
    Array<std::pair<Index, Index>> stack;
    for (Index root = 0; root < nodeCount; ++root) {
        if (state[root] != Unseen)
            continue;
        state[root] = Open;
        stack.push_back({ root, start[root] });
        while (!stack.empty()) {
            auto& [node, next] = stack.back();
            if (next == start[node + 1]) {
                state[node] = Done;
                stack.pop_back();
                continue;
            }
            const Index e = next++;
            const LayoutEdge& edge = kept[e];
            if (state[edge.to] == Open) {
                wires[e] = { edge.to, edge.from, 0 };
                continue;
            }
            wires[e] = { edge.from, edge.to, edge.input };
            if (state[edge.to] == Unseen) {
                state[edge.to] = Open;
                stack.push_back({ edge.to, start[edge.to] });
            }
        }
    }
    sortUnique(wires);
    return wires;
}

/// Longest path from the sources, then every node with more wires out than in moved right up to its first consumer:
/// that shortens more wires than it stretches, and pulls sources next to what reads them.
Array<Index> assignLayers(std::size_t nodeCount, ArrayView<const Wire> wires)
{
    Array<Index> outStart(nodeCount + 1, 0), inDegree(nodeCount, 0);
    for (const Wire& wire : wires) {
        ++outStart[wire.upper + 1];
        ++inDegree[wire.lower];
    }
    std::partial_sum(outStart.begin(), outStart.end(), outStart.begin());
    Array<Index> targets(wires.size());
    Array<Index> fill(outStart.begin(), outStart.end() - 1);
    for (const Wire& wire : wires)
        targets[fill[wire.upper]++] = wire.lower;

    Array<Index> layer(nodeCount, 0), remaining(inDegree), topological;
    topological.reserve(nodeCount);
    for (Index v = 0; v < nodeCount; ++v) {
        if (remaining[v] == 0)
            topological.push_back(v);
    }
    for (std::size_t i = 0; i < topological.size(); ++i) {
        const Index v = topological[i];
        for (Index e = outStart[v]; e < outStart[v + 1]; ++e) {
            layer[targets[e]] = std::max(layer[targets[e]], layer[v] + 1);
            if (--remaining[targets[e]] == 0)
                topological.push_back(targets[e]);
        }
    }
    for (auto it = topological.rbegin(); it != topological.rend(); ++it) {
        const Index v = *it;
        const Index outDegree = outStart[v + 1] - outStart[v];
        if (outDegree == 0 || outDegree <= inDegree[v])
            continue;
        Index first = std::numeric_limits<Index>::max();
        for (Index e = outStart[v]; e < outStart[v + 1]; ++e)
            first = std::min(first, layer[targets[e]]);
        layer[v] = first - 1;
    }
    return layer;
}

Index findRoot(Array<Index>& parent, Index v)
{
    while (parent[v] != v)
        v = parent[v] = parent[parent[v]];
    return v;
}

/// One connected component laid out on its own, its box starting at (0, 0).
struct ComponentLayout
{
    Array<std::array<float, 2>> positions;
    float height = 0.0f;
};

/// The user's own heights scaled just enough that no two nodes of a layer overlap: scaling keeps every wire on the
/// same side of every node, so the crossings stay those of the starting order. Empty when nodes of a layer are level
/// or so close that the result would be many times the user's size.
Optional<Array<float>> scaleStartHeights(
    const Array<Array<Index>>& startOrder, ArrayView<const LayoutNode> nodes, float spacing)
{
    constexpr double MAX_SCALE = 16.0;
    double scale = 0.0;
    double highest = std::numeric_limits<double>::max();
    for (const Array<Index>& layer : startOrder) {
        Index above = std::numeric_limits<Index>::max();
        for (Index v : layer) {
            if (v >= nodes.size())
                continue;
            highest = std::min(highest, double(nodes[v].y));
            if (above != std::numeric_limits<Index>::max()) {
                const double room = double(nodes[v].y) - nodes[above].y;
                const double needed = double(nodes[above].height) + spacing;
                if (room <= 0.0 || needed > room * MAX_SCALE)
                    return {};
                scale = std::max(scale, needed / room);
            }
            above = v;
        }
    }
    scale = scale > 0.0 ? scale : 1.0;
    Array<float> tops(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i)
        tops[i] = float((nodes[i].y - highest) * scale);
    return tops;
}

ComponentLayout layoutComponent(ArrayView<const LayoutNode> nodes, ArrayView<const Index> layers,
    ArrayView<const Wire> wires, const LayeredLayoutOptions& options)
{
    Array<float> tops(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i)
        tops[i] = nodes[i].y;
    LayeredGraph graph = buildGraph(layers, tops, wires);
    if (!options.reduceCrossings) {
        tops = assignHeights(graph, nodes, options.spacingY);
    } else {
        const std::size_t startCount = countCrossings(graph);
        const Array<Array<Index>> startOrder = graph.order;
        // The wires pass the layers between their ends where the heights put them, not where the order had them, so
        // orders are compared on the crossings of the heights they get.
        std::size_t bestCount = std::numeric_limits<std::size_t>::max();
        reduceCrossings(graph, [&](const LayeredGraph& ordered) {
            Array<float> heights = assignHeights(ordered, nodes, options.spacingY);
            const std::size_t count = countCrossings(buildGraph(layers, heights, wires));
            if (count < bestCount) {
                bestCount = count;
                tops = std::move(heights);
            }
            return count;
        });
        if (bestCount > startCount) {
            Optional<Array<float>> scaled = scaleStartHeights(startOrder, nodes, options.spacingY);
            if (scaled && countCrossings(buildGraph(layers, *scaled, wires)) <= startCount)
                tops = std::move(*scaled);
        }
    }

    Array<float> layerX(graph.order.size(), 0.0f);
    Array<float> layerWidth(graph.order.size(), 0.0f);
    for (std::size_t i = 0; i < nodes.size(); ++i)
        layerWidth[layers[i]] = std::max(layerWidth[layers[i]], nodes[i].width);
    for (std::size_t l = 1; l < layerX.size(); ++l)
        layerX[l] = layerX[l - 1] + layerWidth[l - 1] + options.spacingX;

    ComponentLayout layout;
    layout.positions.resize(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        layout.positions[i] = { layerX[layers[i]], tops[i] };
        layout.height = std::max(layout.height, tops[i] + nodes[i].height);
    }
    return layout;
}

} // namespace

LayeredLayoutResult computeLayeredLayout(
    ArrayView<const LayoutNode> nodes, ArrayView<const LayoutEdge> edges, float spacingX, float spacingY)
{
    return computeLayeredLayout(nodes, edges, LayeredLayoutOptions { spacingX, spacingY, true });
}

LayeredLayoutResult computeLayeredLayout(
    ArrayView<const LayoutNode> nodes, ArrayView<const LayoutEdge> edges, const LayeredLayoutOptions& options)
{
    if (!std::isfinite(options.spacingX) || !std::isfinite(options.spacingY) || options.spacingX < 0.0f
        || options.spacingY < 0.0f)
        throw Exception("The spacings of a layered layout must be finite numbers of at least 0.");
    if (nodes.size() >= std::numeric_limits<Index>::max())
        throw Exception("A layered layout takes fewer than 4294967295 nodes.");
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        checkSize(nodes[i].width, "width", i);
        checkSize(nodes[i].height, "height", i);
        if (!std::isfinite(nodes[i].x) || !std::isfinite(nodes[i].y))
            throw Exception("The position of layout node " + std::to_string(i) + " must be finite.");
    }
    checkEdges(nodes.size(), edges);

    LayeredLayoutResult result;
    const Array<Wire> wires = orientWires(nodes.size(), edges);
    result.layers = assignLayers(nodes.size(), wires);
    result.positions.resize(nodes.size());

    Array<Index> parent(nodes.size());
    std::iota(parent.begin(), parent.end(), Index(0));
    for (const Wire& wire : wires)
        parent[findRoot(parent, wire.upper)] = findRoot(parent, wire.lower);
    // Components keep the vertical order the user gave them: by their topmost node, then by their first node.
    Array<Index> byComponent(nodes.size());
    std::iota(byComponent.begin(), byComponent.end(), Index(0));
    Array<Index> root(nodes.size());
    Array<std::pair<float, Index>> componentKey(nodes.size(), { std::numeric_limits<float>::infinity(), 0 });
    for (Index v = 0; v < nodes.size(); ++v) {
        root[v] = findRoot(parent, v);
        componentKey[root[v]] = std::min(componentKey[root[v]], std::make_pair(nodes[v].y, v));
    }
    std::sort(byComponent.begin(), byComponent.end(), [&](Index a, Index b) {
        return std::make_pair(componentKey[root[a]], a) < std::make_pair(componentKey[root[b]], b);
    });
    Array<Index> local(nodes.size());
    Array<Array<Wire>> componentWires(nodes.size());
    for (const Wire& wire : wires)
        componentWires[root[wire.upper]].push_back(wire);

    float top = 0.0f;
    Array<LayoutNode> members;
    Array<Index> memberLayers, memberIndex;
    for (std::size_t begin = 0; begin < byComponent.size();) {
        const Index component = root[byComponent[begin]];
        std::size_t end = begin;
        members.clear();
        memberLayers.clear();
        memberIndex.clear();
        for (; end < byComponent.size() && root[byComponent[end]] == component; ++end) {
            const Index v = byComponent[end];
            local[v] = Index(members.size());
            members.push_back(nodes[v]);
            memberLayers.push_back(result.layers[v]);
            memberIndex.push_back(v);
        }
        Array<Wire>& localWires = componentWires[component];
        for (Wire& wire : localWires)
            wire = { local[wire.upper], local[wire.lower], wire.port };
        const ComponentLayout layout = layoutComponent(members, memberLayers, localWires, options);
        for (std::size_t i = 0; i < memberIndex.size(); ++i)
            result.positions[memberIndex[i]] = { layout.positions[i][0], layout.positions[i][1] + top };
        top += layout.height + options.spacingY;
        begin = end;
    }
    result.crossings = countLayerCrossings(nodes, edges, result.layers, result.positions);
    return result;
}

std::size_t countLayerCrossings(ArrayView<const LayoutNode> nodes, ArrayView<const LayoutEdge> edges,
    ArrayView<const std::uint32_t> layers, ArrayView<const std::array<float, 2>> positions)
{
    if (layers.size() != nodes.size() || positions.size() != nodes.size())
        throw Exception("Counting crossings needs one layer and one position per node: " + std::to_string(nodes.size())
            + " nodes, " + std::to_string(layers.size()) + " layers, " + std::to_string(positions.size())
            + " positions.");
    checkEdges(nodes.size(), edges);
    Array<float> tops(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        // More layers than nodes cannot come from a layering, and would only make the count slow to no end.
        if (layers[i] >= nodes.size())
            throw Exception("Layer " + std::to_string(layers[i]) + " of node " + std::to_string(i) + " is beyond the "
                + std::to_string(nodes.size()) + " layers that the nodes can fill.");
        if (!std::isfinite(positions[i][1]))
            throw Exception("The position of node " + std::to_string(i) + " must be finite.");
        tops[i] = positions[i][1];
    }
    Array<Wire> wires;
    for (const LayoutEdge& edge : edges) {
        if (layers[edge.from] < layers[edge.to])
            wires.push_back({ edge.from, edge.to, edge.input });
        else if (layers[edge.from] > layers[edge.to])
            wires.push_back({ edge.to, edge.from, 0 });
    }
    sortUnique(wires);
    return countCrossings(buildGraph(layers, tops, wires));
}

} // namespace Marlix::Widgets
