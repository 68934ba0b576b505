#include <MarlixLibQt/widgets/accessibility/AccessibleWidgetsPrivate.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>

// The graph view is a scroll area whose scene holds no widgets: its nodes are added as children of its own, named by
// their titles and placed where they are seen, so a screen reader can list the graph and say what is selected.
namespace Marlix::Widgets {

namespace {

class AccessibleGraphView final : public AccessibleCompositeWidget
{
public:
    explicit AccessibleGraphView(GraphView* view)
        : AccessibleCompositeWidget(view, QAccessible::Graphic)
    {
    }

    int partCount() const override { return int(view()->getNodeItems().size()); }

    AccessiblePartDescription describePart(int index) const override
    {
        const GraphView* owner = view();
        const NodeItem* node = owner->getNodeItems()[std::size_t(index)];
        AccessiblePartDescription part;
        part.role = QAccessible::ListItem;
        part.name = node->getTitle();
        // Only the part inside the viewport is on the screen; a node scrolled out of view has no rectangle.
        const QWidget* viewport = owner->viewport();
        const QRect shown = owner->mapFromScene(node->sceneBoundingRect()).boundingRect() & viewport->rect();
        part.rect = shown.isEmpty() ? QRect() : QRect(viewport->mapToGlobal(shown.topLeft()), shown.size());
        part.state.invisible = !node->isVisible();
        part.state.offscreen = shown.isEmpty();
        part.state.selectable = true;
        part.state.selected = node->isSelected();
        return part;
    }

private:
    const GraphView* view() const { return static_cast<const GraphView*>(widget()); }
};

} // namespace

QAccessibleInterface* makeGraphViewAccessible(QWidget* view)
{
    return new AccessibleGraphView(static_cast<GraphView*>(view));
}

} // namespace Marlix::Widgets
