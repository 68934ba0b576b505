#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/graph/GraphModel.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>

#include <QFont>
#include <QGraphicsObject>
#include <QLineF>
#include <QPointer>
#include <QStaticText>

namespace Marlix::Widgets {

class ConnectionItem;

/// The box that shows one node of a graph: its title, an output slot on the right and one input slot per reference
/// property of the node's entity, with wires ending at the slots.
class MARLIXLIBQT_EXPORT NodeItem : public QGraphicsObject
{
    Q_OBJECT

public:
    static constexpr double WIDTH = 220.0; ///< Width of every node, in scene units.
    static constexpr double ROW_HEIGHT = 20.0; ///< Height of one input row, in scene units.
    /// The space above the first input row and below the last one, together.
    static constexpr double ROWS_MARGIN = 10.0;
    /// Title and class name lines.
    static constexpr double TITLE_HEIGHT = 36.0;
    /// The entity's image, when it has one, sits under the title inside this margin, as wide as the node allows.
    static constexpr double THUMBNAIL_MARGIN = 7.0;
    /// Side of the square thumbnail, in scene units.
    static constexpr double THUMBNAIL_SIZE = WIDTH - 2.0 * THUMBNAIL_MARGIN;
    static constexpr double SLOT_RADIUS = 5.0; ///< Radius of a slot's circle, in scene units.

    /// A connection point: a circle that is also its hit area.
    class MARLIXLIBQT_EXPORT Slot
    {
    public:
        /// The colours of `paint`: 0 as it is, 1 a connection dragged here would be accepted, 2 refused.
        enum State : int
        {
            NORMAL = 0, ///< Drawn as it is: filled when connected.
            ACCEPTING = 1, ///< A wire dropped here would connect.
            REFUSING = 2, ///< A wire dropped here would be refused.
        };

        /// A slot whose circle is `rect`, in item coordinates.
        explicit Slot(const QRectF& rect)
            : rect(rect)
        {
        }
        virtual ~Slot() = default;
        /// Draws the circle in `state`'s colours (a State); `levelOfDetail` is the painter's scale, below which labels
        /// are left out.
        virtual void paint(QPainter& painter, int state, double levelOfDetail);
        virtual bool isConnected() const = 0; ///< Whether a wire ends or starts here.

        const QRectF& getRect() const { return rect; } ///< The circle's bounds, in item coordinates.

    protected:
        QRectF rect; ///< The circle's bounds, in item coordinates.
    };

    /// The slot of one reference property of the node's entity, with its label.
    class MARLIXLIBQT_EXPORT InputSlot final : public Slot
    {
    public:
        /// The slot of `property` at `rect`, labelled `label` within `labelRect`, drawn filled when `connected`.
        InputSlot(const QRectF& rect, String property, QString label, const QRectF& labelRect, bool connected);

        /// Draws the circle and the elided label, or a bar in its place when the view is too far out to read it.
        void paint(QPainter& painter, int state, double levelOfDetail) override;
        /// Whether the property referenced an entity when the slot was made.
        bool isConnected() const override { return connected; }

        const String& getProperty() const { return property; } ///< The reference property's name.
        const QString& getLabel() const { return label; } ///< The text shown next to the slot.
        const QRectF& getLabelRect() const { return labelRect; } ///< Where the label is drawn, in item coordinates.

    private:
        String property;
        QString label;
        QRectF labelRect;
        // Built on the first paint that shows the label and kept: eliding and measuring are the costly part.
        QStaticText elided;
        QRectF elidedRect;
        QRectF barRect;
        bool cacheValid = false;
        bool connected = false;
    };

    /// The node's one output: any number of wires may start here.
    class MARLIXLIBQT_EXPORT OutputSlot final : public Slot
    {
    public:
        using Slot::Slot; ///< The output slot's circle at `rect`, in item coordinates.
        bool isConnected() const override { return wireCount > 0; } ///< Whether at least one wire starts here.

    private:
        friend class NodeItem;
        std::size_t wireCount = 0;
    };

    /// The item of `node`, which must not be null (the stop exception otherwise), in `view`; it follows the node's
    /// changes until destroyed.
    NodeItem(const EntityHolder<Node>& node, QPointer<GraphView> view);
    ~NodeItem() override;

    const EntityHolder<Node>& getNode() const { return node; } ///< The node shown; never null.
    GraphView* getView() const { return view.data(); } ///< The view showing the item; null once it is gone.
    const QString& getTitle() const { return title; } ///< The node's title as last read.
    double getHeaderHeight() const { return headerHeight; } ///< Height of title and thumbnail together, in scene units.

    /// Reads title, position and inputs from the node again.
    void synchronize();

    QRectF boundingRect() const override; ///< The outline with one unit of room for the pen.
    /// The outline of the box, in item coordinates.
    QRectF geometryBoundingRect() const { return QRectF(0.0, 0.0, WIDTH, height()); }
    /// Draws box, title, thumbnail and slots; far out only coloured boxes.
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

    /// The slot under `scenePos`, the output first; null when there is none.
    Slot* getSlotOnPosition(const QPointF& scenePos);
    /// The slot of input `name`; null for an unknown input. Valid until the inputs are read again.
    InputSlot* getInputSlot(StringView name);
    /// One slot per input, top to bottom; rebuilt when the inputs change.
    const Array<InputSlot>& getInputSlots() const { return inputSlots; }
    const OutputSlot& getOutputSlot() const { return outputSlot; } ///< The slot every wire of this node leaves from.
    /// The centre of input `name`'s slot in item coordinates; (0, 0) for an unknown input.
    QPointF inSlotPosition(StringView name) const;
    /// The centre of the output slot, in item coordinates.
    QPointF outSlotPosition() const { return outputSlot.getRect().center(); }
    /// The node items that feed this node's inputs.
    Array<QPointer<NodeItem>> getInputs() const;
    /// The wires that start or end here.
    const Array<ConnectionItem*>& getConnections() const { return connections; }
    /// The lines between input rows, in item coordinates.
    const Array<QLineF>& getSeparators() const { return separators; }

    /// Writes the item's position into the node, in the undo action open now.
    void commitPosition();

    // The view keeps the wire lists as it adds and removes wires.
    /// Adds `connection` to the wires of this node; called by the view.
    void attachConnection(ConnectionItem* connection);
    /// Removes `connection` from the wires of this node; called by the view.
    void detachConnection(ConnectionItem* connection);

Q_SIGNALS:
    /// The item is about to move to `position` (scene coordinates): wires follow before the move is drawn.
    void positionChanged(const Marlix::Widgets::NodeItem& item, QPointF position);
    /// The item has read its node again (title, position and inputs).
    void synchronized(Marlix::Widgets::NodeItem& item);

protected:
    /// Emits positionChanged() before every move.
    QVariant itemChange(GraphicsItemChange change, const QVariant& value) override;
    /// Remembers where the press was, then selects or starts a move like any item.
    void mousePressEvent(QGraphicsSceneMouseEvent* event) override;
    /// A click without moving in the tree-selection mode keeps the whole tree selected.
    void mouseReleaseEvent(QGraphicsSceneMouseEvent* event) override;

private:
    double height() const { return static_cast<double>(inputSlots.size()) * ROW_HEIGHT + headerHeight + ROWS_MARGIN; }
    void synchronizeSlots();
    void updateSeparators();
    int inputSlotState(const InputSlot& slot) const;
    int outputSlotState() const;
    void paintTitle(QPainter& painter, double levelOfDetail);
    void paintThumbnail(QPainter& painter);
    void paintLowDetail(QPainter& painter);

    EntityHolder<Node> node;
    QPointer<GraphView> view;
    QString title;
    QString className;
    QStaticText titleText;
    QStaticText classText;
    bool titleCacheValid = false;
    double headerHeight = TITLE_HEIGHT;
    bool hasThumbnail = false;
    Array<InputSlot> inputSlots;
    OutputSlot outputSlot;
    Array<QLineF> separators;
    Array<ConnectionItem*> connections;
    QPointF pressScenePos;
};

} // namespace Marlix::Widgets
