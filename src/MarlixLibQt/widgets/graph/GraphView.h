#pragma once

#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/graph/GraphModel.h>
#include <MarlixLibQt/widgets/graph/WireLayer.h>

#include <QCursor>
#include <QGraphicsView>
#include <QLineF>
#include <QPointer>
#include <QTimer>

#include <cstdint>
#include <memory>
#include <unordered_map>

class QMenu;

namespace Marlix {
class IUndoManager;
class ThumbnailClient;
class ThumbnailManager;
} // namespace Marlix

namespace Marlix::Widgets {

class ConnectionItem;
class ConnectionPreviewItem;
class NodeItem;

/// The canvas that edits a node graph: zoom, panning, selection, moving nodes and dragging wires, each edit one
/// undo step.
class MARLIXLIBQT_EXPORT GraphView : public QGraphicsView, public BaseWithModel
{
    Q_OBJECT

public:
    /// What the mouse does now. The first three are the idle modes the held modifier keys choose.
    enum class State : std::uint8_t
    {
        /// Clicks select, drags move nodes or draw a selection band; a press on a slot drags a wire.
        Idle = 0,
        /// (Alt) a press anywhere on a node drags a wire from its output.
        ConnectFromNode = 1,
        /// (Ctrl+Alt) a press on a node selects it with everything that feeds it.
        SelectTree = 2,
        /// The middle button pans the view.
        Panning = 3,
        MovingNodes = 4,
        /// Entities dragged from elsewhere hover over the view.
        DraggingDrop = 5,
        Connecting = 6,
        RubberBand = 7,
    };

    /// The cursors of the panning and node-moving states.
    struct Cursors
    {
        QCursor panning { Qt::ClosedHandCursor };
        QCursor moving { Qt::SizeAllCursor };
    };

    /// Drops of this type carry entity identities (decimal, separated by white space) of the model's scene.
    static constexpr const char* ENTITY_IDS_MIME_TYPE = "application/x-marlix-entity-ids";
    /// The identities a drop of ENTITY_IDS_MIME_TYPE names, each once, in order; words that are none are skipped.
    static Array<std::uint64_t> parseEntityIds(const QByteArray& payload);
    static constexpr double MIN_ZOOM = 0.1;
    static constexpr double MAX_ZOOM = 2.0;
    static constexpr double FIT_MARGIN = 32.0;
    static constexpr double GRID_SPACING = 25.0;
    static constexpr double GRID_MIN_ZOOM = 0.35;
    static constexpr int AUTO_SCROLL_INTERVAL_MS = 33;
    static constexpr int AUTO_SCROLL_MARGIN = 20;
    static constexpr double LAYOUT_SPACING_X = 150.0;
    static constexpr double LAYOUT_SPACING_Y = 50.0;

    GraphView(EntityHolder<GraphModel> model, SharedPtr<IUndoManager> undoManager,
        SharedPtr<ThumbnailManager> thumbnailManager, QWidget* parent = nullptr);
    ~GraphView() override;

    const EntityHolder<GraphModel>& getModel() const { return model; }
    State getState() const { return state; }
    double getZoom() const { return zoomFactor; }
    ConnectionPreviewItem* getPreview() const;
    ThumbnailClient* getThumbnailClient() const { return thumbnails.get(); }
    int getThumbnailSize() const;

    NodeItem* lookupNodeItem(const Node& node) const;
    Array<NodeItem*> lookupNodeItems(ArrayView<const EntityHolder<Node>> nodes) const;
    Array<NodeItem*> getNodeItems() const;
    Array<NodeItem*> getSelectedNodeItems() const;
    const Array<ConnectionItem*>& getConnections() const { return connections; }
    std::size_t getGridLineCount() const { return gridLines.size(); }
    /// A wire changed its path or visibility: the cached image of the wires is drawn again on the next paint.
    void invalidateWireLayer() { wireLayer.invalidate(); }

    /// Whether a wire from `from`'s output may end at `to`'s input `input`: the class fits and no loop results.
    bool canConnect(const NodeItem& from, const NodeItem& to, StringView input) const;

    /// Zooms to `factor` (times the current zoom when `relative`) keeping the scene point under `anchor` (viewport
    /// pixels) in place. Zooms close to a whole number or its reciprocal snap to it; outside [0.1, 2] nothing happens.
    void zoom(QPointF anchor, double factor, bool relative);
    /// The zoom at which `rect` fills the viewport less `margin` pixels on each side, within [0.1, 2]; 1 when either
    /// is empty.
    double getScaleToFitInView(const QRectF& rect, double margin) const;
    void zoomToNodes(ArrayView<NodeItem* const> items);
    static QRectF nodeItemsBoundingRect(ArrayView<NodeItem* const> items);
    /// Keeps the viewport's top-left corner on whole scene units, so lines drawn at x + 0.5 stay crisp.
    void snapContentPosition();
    /// Moves the content by `position` pixels when `absolute`, else by how far `position` is from the last mouse
    /// position.
    void updateViewportScrolling(QPointF position, bool absolute);
    /// Selected nodes stack above the others, each group in its present order.
    void updateNodeZOrder();

    /// Lays all nodes out in layers along their wires, centred on the scene, and frames them: one undo step.
    void rearrange();
    void setCursors(const Cursors& cursors);
    /// Off: nodes cannot be moved and no selection band is drawn; clicks still select and wires can be dragged.
    void setDraggingEnabled(bool enabled);
    bool isDraggingEnabled() const { return draggingEnabled; }

    [[nodiscard]] CallbackLifetime addNodeAddedObserver(Function<void(ArrayView<const EntityHolder<Entity>>)> observer);
    [[nodiscard]] CallbackLifetime addNodeSelectedObserver(
        Function<void(ArrayView<const EntityHolder<Entity>>)> observer);
    [[nodiscard]] CallbackLifetime addStateChangedObserver(Function<void(State)> observer);

    void notify() override;

public Q_SLOTS:
    void onZoomToAll();
    void onZoomToAllOrSelection();
    void onSelectAllNodes();
    void onClearSelection();
    void onRemoveSelection();
    void onDuplicateSelection();
    /// Lays the selected nodes (more than one) out in layers around the centre of where they are now.
    void onRearrangeSelection();
    /// One auto-scroll step: the view moves towards the cursor while it is outside the viewport's inner rectangle.
    void onTimeout();
    /// Chooses the idle mode from the held modifiers: none 0, Alt 1, Ctrl+Alt 2.
    void onModifierKeysChange(QFlags<Qt::KeyboardModifier> modifiers);

protected:
    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void drawBackground(QPainter* painter, const QRectF& rect) override;

private:
    void drawGrid(QPainter& painter, const QRectF& rect);
    void onModelChanged(ArrayView<const EntityHolder<Node>> added, ArrayView<const EntityHolder<Node>> removed);
    NodeItem* addNode(const EntityHolder<Node>& node);
    void removeNode(const Node& node);
    ConnectionItem* addConnection(NodeItem* from, NodeItem* to, StringView inputName);
    /// Removes the wires into `node`'s inputs and, unless `inputsOnly`, those out of its output.
    void removeConnections(const Node& node, bool inputsOnly);
    void removeConnection(ConnectionItem* connection);
    /// Makes one wire per connected input of each item whose source has an item, unless it is there already.
    void addMissingConnections(ArrayView<NodeItem* const> items);
    /// The item of the entity that `item`'s input `input` (one of its slots) references now; null when there is none or
    /// it is not shown.
    NodeItem* sourceItemOf(const NodeItem& item, StringView input) const;
    void onNodeItemSynchronized(NodeItem& item);
    void onSelectionChanged();

    void setState(State next, NodeItem* node = nullptr, QPointF scenePos = {}, StringView input = {});
    void setIdleState();
    void startConnectionPreview(NodeItem* node, QPointF scenePos, StringView input);
    void stopConnectionPreview(QPointF scenePos);
    void completeConnection(QPointF scenePos);
    void startMovingNodes();
    void commitMovedNodes();
    bool handleShortcut(QKeyEvent* event);
    void showContextMenu(QPoint viewportPos);
    void addEntitiesAt(ArrayView<const EntityHolder<Entity>> entities, QPointF scenePos, StringView label);
    void createEntityAt(const EntityClassInfo& entityClass, QPointF scenePos);
    void selectNodeItems(ArrayView<NodeItem* const> items, bool exclusive);
    Array<NodeItem*> getNodeTree(NodeItem* root) const;
    void arrangeNodes(ArrayView<NodeItem* const> items, QPointF centre);
    /// Runs `work` in one undo action named `label`, or unrecorded without an undo manager; a failure reverts it and is
    /// logged.
    bool runAction(StringView label, const Function<void()>& work);
    void invalidateGrid() { gridLines.clear(); }
    bool wiresWithoutContents() const { return zoomFactor <= WireLayer::ITEMLESS_ZOOM; }
    /// The wires of the nodes being dragged draw themselves while the others stay in the layer.
    void setMovingWiresLive(bool live);
    NodeItem* nodeItemAt(QPointF viewportPos) const;
    QPointF toScene(QPointF viewportPos) const;
    QPointF toViewport(QPointF scenePos) const;

    EntityHolder<GraphModel> model;
    SharedPtr<IUndoManager> undoManager;
    SharedPtr<ThumbnailManager> thumbnailManager;
    std::unique_ptr<ThumbnailClient> thumbnails;
    QGraphicsScene* graphScene = nullptr;
    std::unordered_map<const Node*, NodeItem*> nodeItems;
    Array<ConnectionItem*> connections;
    double zoomFactor = 1.0;
    State state = State::Idle;
    State idleMode = State::Idle;
    QPointer<ConnectionPreviewItem> preview;
    // The wire a drag from a connected input lifted off; it comes back unless the drop changes the input.
    QPointer<ConnectionItem> liftedConnection;
    QPointer<NodeItem> lastFocusedNode;
    QPointF lastMousePosition;
    Array<QLineF> gridLines;
    WireLayer wireLayer;
    QTimer autoScrollTimer;
    Cursors cursors;
    bool draggingEnabled = true;
    bool rubberBandWasOn = true;
    Array<std::pair<QPointer<NodeItem>, QPointF>> moveStarts;
    int consumedShortcutKey = 0;
    CallbackList<ArrayView<const EntityHolder<Entity>>> nodeAddedObservers;
    CallbackList<ArrayView<const EntityHolder<Entity>>> nodeSelectedObservers;
    CallbackList<State> stateChangedObservers;
    CallbackLifetime modelLifetime;
    CallbackLifetime modifierLifetime;
};

} // namespace Marlix::Widgets
