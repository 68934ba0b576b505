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
    static constexpr double WIDTH = 220.0;
    static constexpr double ROW_HEIGHT = 20.0;
    /// The space above the first input row and below the last one, together.
    static constexpr double ROWS_MARGIN = 10.0;
    /// Title and class name lines.
    static constexpr double TITLE_HEIGHT = 36.0;
    /// The entity's image, when it has one, sits under the title inside this margin, as wide as the node allows.
    static constexpr double THUMBNAIL_MARGIN = 7.0;
    static constexpr double THUMBNAIL_SIZE = WIDTH - 2.0 * THUMBNAIL_MARGIN;
    static constexpr double SLOT_RADIUS = 5.0;

    /// A connection point: a circle that is also its hit area.
    class MARLIXLIBQT_EXPORT Slot
    {
    public:
        /// The colours of `paint`: 0 as it is, 1 a connection dragged here would be accepted, 2 refused.
        enum State : int
        {
            NORMAL = 0,
            ACCEPTING = 1,
            REFUSING = 2,
        };

        explicit Slot(const QRectF& rect)
            : rect(rect)
        {
        }
        virtual ~Slot() = default;
        virtual void paint(QPainter& painter, int state, double levelOfDetail);
        virtual bool isConnected() const = 0;

        const QRectF& getRect() const { return rect; }

    protected:
        QRectF rect;
    };

    class MARLIXLIBQT_EXPORT InputSlot final : public Slot
    {
    public:
        InputSlot(const QRectF& rect, String property, QString label, const QRectF& labelRect, bool connected);

        void paint(QPainter& painter, int state, double levelOfDetail) override;
        bool isConnected() const override { return connected; }

        const String& getProperty() const { return property; }
        const QString& getLabel() const { return label; }
        const QRectF& getLabelRect() const { return labelRect; }

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

    class MARLIXLIBQT_EXPORT OutputSlot final : public Slot
    {
    public:
        using Slot::Slot;
        bool isConnected() const override { return wireCount > 0; }

    private:
        friend class NodeItem;
        std::size_t wireCount = 0;
    };

    NodeItem(const EntityHolder<Node>& node, QPointer<GraphView> view);
    ~NodeItem() override;

    const EntityHolder<Node>& getNode() const { return node; }
    GraphView* getView() const { return view.data(); }
    const QString& getTitle() const { return title; }
    double getHeaderHeight() const { return headerHeight; }

    /// Reads title, position and inputs from the node again.
    void synchronize();

    QRectF boundingRect() const override;
    QRectF geometryBoundingRect() const { return QRectF(0.0, 0.0, WIDTH, height()); }
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

    /// The slot under `scenePos`, the output first; null when there is none.
    Slot* getSlotOnPosition(const QPointF& scenePos);
    InputSlot* getInputSlot(StringView name);
    const Array<InputSlot>& getInputSlots() const { return inputSlots; }
    const OutputSlot& getOutputSlot() const { return outputSlot; }
    /// The centre of input `name`'s slot in item coordinates; (0, 0) for an unknown input.
    QPointF inSlotPosition(StringView name) const;
    QPointF outSlotPosition() const { return outputSlot.getRect().center(); }
    /// The node items that feed this node's inputs.
    Array<QPointer<NodeItem>> getInputs() const;
    /// The wires that start or end here.
    const Array<ConnectionItem*>& getConnections() const { return connections; }
    const Array<QLineF>& getSeparators() const { return separators; }

    /// Writes the item's position into the node, in the undo action open now.
    void commitPosition();

    // The view keeps the wire lists as it adds and removes wires.
    void attachConnection(ConnectionItem* connection);
    void detachConnection(ConnectionItem* connection);

Q_SIGNALS:
    void positionChanged(const Marlix::Widgets::NodeItem& item, QPointF position);
    void synchronized(Marlix::Widgets::NodeItem& item);

protected:
    QVariant itemChange(GraphicsItemChange change, const QVariant& value) override;
    void mousePressEvent(QGraphicsSceneMouseEvent* event) override;
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
