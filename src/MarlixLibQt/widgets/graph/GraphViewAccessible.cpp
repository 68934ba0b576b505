#include <MarlixLibQt/widgets/accessibility/AccessibleWidgetsPrivate.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>

#include <QCoreApplication>

// The graph view is a scroll area whose scene holds no widgets: its nodes are added as children of its own, named by
// their titles and placed where they are seen, so a screen reader can list the graph and say what is selected; each
// node's slots are its children, saying whether a wire ends there.
namespace Marlix::Widgets {

namespace {

class AccessibleGraphView final : public AccessibleCompositeWidget
{
    Q_DECLARE_TR_FUNCTIONS(AccessibleGraphView)

public:
    explicit AccessibleGraphView(GraphView* view)
        : AccessibleCompositeWidget(view, QAccessible::Graphic)
    {
    }

    int partCount() const override { return int(view()->getNodeItems().size()); }

    AccessiblePartDescription describePart(int index) const override
    {
        const NodeItem* node = nodeAt(index);
        AccessiblePartDescription part;
        part.role = QAccessible::ListItem;
        part.name = node->getTitle();
        // The output slot stands out over the node's right edge; the node's place takes it in.
        QRectF area = node->sceneBoundingRect();
        area |= node->mapRectToScene(node->getOutputSlot().getRect());
        part.rect = onScreen(area);
        part.state.invisible = !node->isVisible();
        part.state.offscreen = part.rect.isEmpty();
        part.state.selectable = true;
        part.state.selected = node->isSelected();
        return part;
    }

    /// A node's slots: its output, then its inputs from the top.
    int subPartCount(int index) const override { return 1 + int(nodeAt(index)->getInputSlots().size()); }

    AccessiblePartDescription describeSubPart(int index, int sub) const override
    {
        const NodeItem* node = nodeAt(index);
        const NodeItem::Slot& slot = sub == 0 ? static_cast<const NodeItem::Slot&>(node->getOutputSlot())
                                              : node->getInputSlots()[std::size_t(sub - 1)];
        AccessiblePartDescription part;
        part.role = QAccessible::ListItem;
        part.name = sub == 0 ? tr("Output") : node->getInputSlots()[std::size_t(sub - 1)].getLabel();
        part.description = slot.isConnected() ? tr("connected") : tr("not connected");
        part.rect = onScreen(node->mapRectToScene(slot.getRect()));
        part.state.invisible = !node->isVisible();
        part.state.offscreen = part.rect.isEmpty();
        return part;
    }

private:
    const GraphView* view() const { return static_cast<const GraphView*>(widget()); }
    const NodeItem* nodeAt(int index) const { return view()->getNodeItems()[std::size_t(index)]; }

    /// Only the part inside the viewport is on the screen; what is scrolled out of view has no rectangle.
    QRect onScreen(const QRectF& sceneRect) const
    {
        const QWidget* viewport = view()->viewport();
        const QRect shown = view()->mapFromScene(sceneRect).boundingRect() & viewport->rect();
        return shown.isEmpty() ? QRect() : QRect(viewport->mapToGlobal(shown.topLeft()), shown.size());
    }
};

} // namespace

QAccessibleInterface* makeGraphViewAccessible(QWidget* view)
{
    return new AccessibleGraphView(static_cast<GraphView*>(view));
}

} // namespace Marlix::Widgets
