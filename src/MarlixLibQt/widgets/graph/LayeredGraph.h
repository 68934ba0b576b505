#pragma once

#include <MarlixLib/base/Aliases.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

// The layered graph behind computeLayeredLayout, shared by its ordering and its crossing count; not exported.
namespace Marlix::Widgets::Detail {

using Index = std::uint32_t;

/// A wire oriented along the layers: `upper` sits in the earlier layer, `port` is the input row on `lower`.
struct Wire
{
    Index upper = 0;
    Index lower = 0;
    Index port = 0;
};

/// One end of a segment between adjacent layers.
struct Link
{
    Index vertex = 0;
    Index port = 0;
};

/// The nodes and the wires' pass-through points (dummies, numbered after the nodes) ordered in their layers.
struct LayeredGraph
{
    Index nodeCount = 0;
    Array<Index> layerOf;
    Array<Array<Index>> order;
    Array<Index> position;
    // Per vertex, in CSR form: the segments to the next layer (port on the far end) and from the previous one (port
    // on this end).
    Array<Index> downStart, upStart;
    Array<Link> down, up;
    Array<Index> portCount;
    // Per dummy (numbered from nodeCount): the nodes at the ends of its wire.
    Array<std::pair<Index, Index>> dummyEnds;
};

/// Builds the layered graph with every vertex placed by `keys` (the nodes' tops; a dummy's key is interpolated
/// between its wire's ends), ties broken nodes first, then by number. Every wire must run from an earlier layer to a
/// later one. Throws Exception when the wires pass so many layers that the graph would not fit in memory.
LayeredGraph buildGraph(ArrayView<const Index> layers, ArrayView<const float> keys, ArrayView<const Wire> wires);

/// Crossings between the segments of adjacent layers in the graph's current order.
std::size_t countCrossings(const LayeredGraph& graph);

/// Runs barycentre sweeps down and up with transpositions and leaves the order with the lowest `score` seen, the
/// starting order included.
void reduceCrossings(LayeredGraph& graph, const std::function<std::size_t(const LayeredGraph&)>& score);

} // namespace Marlix::Widgets::Detail
