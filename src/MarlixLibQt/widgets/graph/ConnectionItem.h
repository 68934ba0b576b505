#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QGraphicsObject>
#include <QPainterPath>
#include <QPointer>

#include <utility>

namespace Marlix::Widgets {

class NodeItem;

/// The wire from `start` (an output slot's centre) to `end` (an input slot's centre): it leaves and enters
/// horizontally, bends with corners of at most 40 units and doubles back around the nodes when the target lies to the
/// left. Placed wires and the wire being dragged share it, so both look the same.
MARLIXLIBQT_EXPORT QPainterPath makeConnectionPath(QPointF start, QPointF end);

/// Draws a wire path: below a tenth of a pixel per unit a hairline without antialiasing, which a full graph in view
/// paints many times faster and looks the same at that size.
void paintConnectionPath(QPainter& painter, const QPainterPath& path);

/// A wire of the graph: from the output slot of one node to a named input slot of another.
class MARLIXLIBQT_EXPORT ConnectionItem : public QGraphicsObject
{
    Q_OBJECT

public:
    /// A wire from the output slot of `from` to input `inputName` of `to`; it takes no mouse buttons and is not
    /// selectable.
    ConnectionItem(QPointer<NodeItem> from, QPointer<NodeItem> to, StringView inputName);

    /// The node whose output the wire leaves; null once that item is gone.
    const QPointer<NodeItem>& getFrom() const { return from; }
    /// The input's name and the node it enters; the node is null once that item is gone.
    std::pair<String, QPointer<NodeItem>> getTo() const { return { inputName, to }; }
    const String& getInputName() const { return inputName; } ///< The property name of the input the wire enters.
    const QPainterPath& getPath() const { return path; } ///< The wire in scene coordinates, as last built.

    /// Whether the wire follows a dragged node: it then draws itself rather than through the view's cached layer,
    /// which stays as it is meanwhile.
    bool isLive() const { return live; }
    void setLive(bool live); ///< Switches between drawing itself and being drawn by the view's wire layer.

    QRectF boundingRect() const override { return bounds; } ///< The path's bounds with room for the pen.
    /// Draws nothing on its own view's viewport unless live: the view's wire layer shows it there.
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

protected:
    /// Tells the view's wire layer when the wire is shown or hidden.
    QVariant itemChange(GraphicsItemChange change, const QVariant& value) override;

public Q_SLOTS:
    /// Rebuilds the path with the moved end at `position` (the move is not applied yet when this is called).
    void onNodeItemPositionChange(const Marlix::Widgets::NodeItem& item, QPointF position);
    /// Rebuilds the path from both ends' current positions (after a node's slots changed).
    void updatePath();

private:
    void setPath(QPointF fromPosition, QPointF toPosition);
    void invalidateWireLayer() const;

    QPointer<NodeItem> from;
    QPointer<NodeItem> to;
    String inputName;
    QPainterPath path;
    QRectF bounds;
    bool live = false;
};

/// The wire that follows the mouse while a connection is dragged: anchored at a node's output slot, or at one of its
/// input slots when the drag started there, with the other end at the mouse.
class MARLIXLIBQT_EXPORT ConnectionPreviewItem : public QGraphicsObject
{
    Q_OBJECT

public:
    /// Anchored at the output slot of `anchor`, or at its input `inputName` when that is not empty.
    ConnectionPreviewItem(QPointer<NodeItem> anchor, StringView inputName, QPointF end);

    /// The node the wire is anchored at; null once that item is gone.
    const QPointer<NodeItem>& getAnchor() const { return anchor; }
    /// The input the drag started from; empty when it started at the output slot.
    const String& getAnchorInput() const { return anchorInput; }
    /// True when the drag started at the output slot, so the mouse end is an input.
    bool startsAtOutput() const { return anchorInput.empty(); }
    QPointF getEnd() const { return end; } ///< The mouse end, in scene coordinates.
    void setEnd(QPointF end); ///< Moves the mouse end to `end` (scene coordinates) and rebuilds the path.
    const QPainterPath& getPath() const { return path; } ///< The wire in scene coordinates, as last built.

    QRectF boundingRect() const override { return bounds; } ///< The path's bounds with room for the pen.
    /// Draws the path like a placed wire.
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

private:
    void rebuild();

    QPointer<NodeItem> anchor;
    String anchorInput;
    QPointF end;
    QPainterPath path;
    QRectF bounds;
};

} // namespace Marlix::Widgets
