#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <MarlixLib/base/Aliases.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace Marlix::Widgets {

/// One box of the layout: its size in scene units.
struct LayoutNode
{
    float width = 0; ///< Width, in scene units.
    float height = 0; ///< Height, in scene units.
    /// Left edge now, in scene units; with `y` the current top-left corner.
    float x = 0;
    /// Top edge now: the vertical order of the nodes is where the crossing reduction starts.
    float y = 0;
};

/// A wire: from the output of node `from` to input row `input` of node `to` (the node whose entity references
/// `from`'s).
struct LayoutEdge
{
    std::uint32_t from = 0; ///< Index of the source node.
    std::uint32_t to = 0; ///< Index of the node the wire enters.
    std::uint32_t input = 0; ///< Input row on `to`, counted from the top.
};

/// Where computeLayeredLayout puts the nodes.
struct LayeredLayoutResult
{
    Array<std::array<float, 2>> positions; ///< New top-left per node, in the order of the input nodes.
    Array<std::uint32_t> layers; ///< Layer per node; every edge laid out forwards has layers[from] < layers[to].
    std::size_t crossings = 0; ///< Crossings of the result, as countLayerCrossings() counts them.
};

/// The spacings of computeLayeredLayout and whether it reduces crossings.
struct LayeredLayoutOptions
{
    float spacingX = 150.0f; ///< Space between layers, in scene units.
    float spacingY = 50.0f; ///< Space between nodes of a layer, in scene units.
    /// Off, every layer keeps the nodes' current vertical order: the baseline that shows what the reduction buys.
    bool reduceCrossings = true;
};

/// Lays the nodes out in layers along the edges, `spacingX` between layers and `spacingY` between nodes of a layer.
///
/// Layers grow along the edges; an edge that would close a loop is laid out reversed (its target left of its
/// source), self edges and repeated edges are ignored. Connected components are stacked top to bottom in the order of
/// their topmost node, and the bounding box of the result starts at (0, 0). When no order found has fewer crossings
/// than the nodes' current vertical order, their current heights are kept, spread apart just enough not to overlap,
/// so the crossings stay those of that order (unless nodes of one layer start level with each other or nearly so).
/// Throws Exception, before doing anything, for an edge that names a node out of range, for sizes, positions or
/// spacings that are negative or not finite, and for a graph whose long wires pass tens of millions of layers.
MARLIXLIBQT_EXPORT LayeredLayoutResult computeLayeredLayout(ArrayView<const LayoutNode> nodes,
    ArrayView<const LayoutEdge> edges, float spacingX = 150.0f, float spacingY = 50.0f);
/// \overload
MARLIXLIBQT_EXPORT LayeredLayoutResult computeLayeredLayout(
    ArrayView<const LayoutNode> nodes, ArrayView<const LayoutEdge> edges, const LayeredLayoutOptions& options);

/// Crossings between wires when the nodes sit in `layers` in the vertical order of `positions` (ties by index):
/// long wires are routed through the layers they pass, so the count is the one a user sees.
///
/// A wire passes an intermediate layer at the height interpolated between the tops of its two nodes. Wires from one
/// output never cross each other, nor do wires into one input row; wires into one node cross when their sources are
/// ordered against their rows. Edges within one layer and self edges are not counted. Throws Exception for edges or
/// layers out of range (a layer must be below the node count) and for sizes that do not match `nodes`.
MARLIXLIBQT_EXPORT std::size_t countLayerCrossings(ArrayView<const LayoutNode> nodes, ArrayView<const LayoutEdge> edges,
    ArrayView<const std::uint32_t> layers, ArrayView<const std::array<float, 2>> positions);

} // namespace Marlix::Widgets
