// Rearranging: the nodes laid out in layers along their wires.
#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/LayeredLayout.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_map>

namespace Marlix::Widgets {

void GraphView::arrangeNodes(ArrayView<NodeItem* const> items, QPointF centre)
{
    if (items.empty())
        return;
    std::unordered_map<const NodeItem*, std::uint32_t> indices;
    Array<LayoutNode> nodes;
    nodes.reserve(items.size());
    for (NodeItem* item : items) {
        indices.emplace(item, static_cast<std::uint32_t>(nodes.size()));
        const QRectF rect = item->geometryBoundingRect();
        nodes.push_back({ static_cast<float>(rect.width()), static_cast<float>(rect.height()),
            static_cast<float>(item->x()), static_cast<float>(item->y()) });
    }
    // One edge per wire between arranged nodes, at the row of the input it ends in.
    Array<LayoutEdge> edges;
    for (NodeItem* item : items) {
        const Array<NodeItem::InputSlot>& slots = item->getInputSlots();
        for (const ConnectionItem* wire : item->getConnections()) {
            if (wire->getTo().second != item)
                continue;
            const auto from = indices.find(wire->getFrom().data());
            const auto row = std::find_if(slots.begin(), slots.end(),
                [&](const NodeItem::InputSlot& slot) { return slot.getProperty() == wire->getInputName(); });
            if (from != indices.end() && row != slots.end())
                edges.push_back({ from->second, indices.at(item), static_cast<std::uint32_t>(row - slots.begin()) });
        }
    }
    runAction(fromQt(tr("Rearrange Nodes")), [&] {
        const LayeredLayoutResult layout = computeLayeredLayout(
            nodes, edges, static_cast<float>(LAYOUT_SPACING_X), static_cast<float>(LAYOUT_SPACING_Y));
        if (layout.positions.size() != nodes.size())
            throw Exception("the layout placed " + std::to_string(layout.positions.size()) + " of "
                + std::to_string(nodes.size()) + " nodes");
        double left = std::numeric_limits<double>::max();
        double top = left;
        double right = std::numeric_limits<double>::lowest();
        double bottom = right;
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            left = std::min(left, static_cast<double>(layout.positions[i][0]));
            top = std::min(top, static_cast<double>(layout.positions[i][1]));
            right = std::max(right, static_cast<double>(layout.positions[i][0] + nodes[i].width));
            bottom = std::max(bottom, static_cast<double>(layout.positions[i][1] + nodes[i].height));
        }
        const QPointF offset = centre - QPointF((left + right) * 0.5, (top + bottom) * 0.5);
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            const QPointF position = QPointF(layout.positions[i][0], layout.positions[i][1]) + offset;
            items[i]->setPos(std::round(position.x()), std::round(position.y()));
            items[i]->commitPosition();
        }
    });
}

void GraphView::rearrange()
{
    const Array<NodeItem*> items = getNodeItems();
    if (items.empty())
        return;
    arrangeNodes(items, sceneRect().center());
    zoomToNodes(items);
}

void GraphView::onRearrangeSelection()
{
    const Array<NodeItem*> selected = getSelectedNodeItems();
    if (selected.size() > 1)
        arrangeNodes(selected, nodeItemsBoundingRect(selected).center());
}

} // namespace Marlix::Widgets
