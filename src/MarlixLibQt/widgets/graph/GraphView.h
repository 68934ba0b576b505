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
        MovingNodes = 4, ///< The left button drags the selected nodes.
        /// Entities dragged from elsewhere hover over the view.
        DraggingDrop = 5,
        Connecting = 6, ///< The left button drags a wire from a slot; released over a slot it connects.
        RubberBand = 7, ///< The left button draws a selection band.
    };

    /// The cursors of the panning and node-moving states.
    struct Cursors
    {
        QCursor panning { Qt::ClosedHandCursor }; ///< Shown while panning.
        QCursor moving { Qt::SizeAllCursor }; ///< Shown while nodes are dragged.
    };

    /// Drops of this type carry entity identities (decimal, separated by white space) of the model's scene.
    static constexpr const char* ENTITY_IDS_MIME_TYPE = "application/x-marlix-entity-ids";
    /// The identities a drop of ENTITY_IDS_MIME_TYPE names, each once, in order; words that are none are skipped.
    static Array<std::uint64_t> parseEntityIds(const QByteArray& payload);
    static constexpr double MIN_ZOOM = 0.1; ///< Smallest zoom factor.
    static constexpr double MAX_ZOOM = 2.0; ///< Largest zoom factor.
    /// Margin, in device-independent pixels, that zooming to nodes leaves around them.
    static constexpr double FIT_MARGIN = 32.0;
    static constexpr double GRID_SPACING = 25.0; ///< Distance of grid lines, in scene units.
    static constexpr double GRID_MIN_ZOOM = 0.35; ///< Below this zoom no grid is drawn.
    /// Period of the auto-scroll steps while a drag is near the edge.
    static constexpr int AUTO_SCROLL_INTERVAL_MS = 33;
    /// Depth of the viewport's edge, in device-independent pixels, in which a drag scrolls the view.
    static constexpr int AUTO_SCROLL_MARGIN = 20;
    static constexpr double LAYOUT_SPACING_X = 150.0; ///< Horizontal distance between layers when nodes are laid out.
    /// Vertical distance between nodes of a layer when they are laid out.
    static constexpr double LAYOUT_SPACING_Y = 50.0;

    /// A view of `model`, which must not be null (the stop exception otherwise). Edits are undoable through
    /// `undoManager` when it is set; nodes show thumbnails when `thumbnailManager` is set.
    GraphView(EntityHolder<GraphModel> model, SharedPtr<IUndoManager> undoManager,
        SharedPtr<ThumbnailManager> thumbnailManager, QWidget* parent = nullptr);
    ~GraphView() override;

    const EntityHolder<GraphModel>& getModel() const { return model; } ///< The graph shown; never null.
    State getState() const { return state; } ///< What the mouse does now.
    double getZoom() const { return zoomFactor; } ///< The zoom factor, 1 showing scene units as pixels.
    ConnectionPreviewItem* getPreview() const; ///< The wire being dragged; null when none is.
    /// Renders the nodes' thumbnails; null without a thumbnail manager.
    ThumbnailClient* getThumbnailClient() const { return thumbnails.get(); }
    int getThumbnailSize() const; ///< Side of the thumbnails in pixels at the current zoom.

    NodeItem* lookupNodeItem(const Node& node) const; ///< The item of `node`; null when the view shows none.
    /// The items of those of `nodes` that the view shows, in the same order.
    Array<NodeItem*> lookupNodeItems(ArrayView<const EntityHolder<Node>> nodes) const;
    Array<NodeItem*> getNodeItems() const; ///< Every node's item, in the model's order.
    Array<NodeItem*> getSelectedNodeItems() const; ///< The selected nodes' items, in the model's order.
    /// Every wire shown, in the order they were made.
    const Array<ConnectionItem*>& getConnections() const { return connections; }
    /// Number of grid lines drawn by the last paint of the background; 0 when the zoom hides the grid.
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
    /// Centres `items` and zooms so that they fill the viewport less FIT_MARGIN; does nothing for no items.
    void zoomToNodes(ArrayView<NodeItem* const> items);
    /// The scene rectangle around `items`' outlines; empty for no items.
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
    void setCursors(const Cursors& cursors); ///< Replaces the panning and moving cursors, at once if one is shown.
    /// Off: nodes cannot be moved and no selection band is drawn; clicks still select and wires can be dragged.
    void setDraggingEnabled(bool enabled);
    /// Whether nodes can be moved and a selection band drawn.
    bool isDraggingEnabled() const { return draggingEnabled; }

    /// `observer` receives the entities of the nodes that each change of the model added; the lifetime unsubscribes.
    [[nodiscard]] CallbackLifetime addNodeAddedObserver(Function<void(ArrayView<const EntityHolder<Entity>>)> observer);
    /// `observer` receives the entities of the selected nodes after every change of the selection; the lifetime
    /// unsubscribes.
    [[nodiscard]] CallbackLifetime addNodeSelectedObserver(
        Function<void(ArrayView<const EntityHolder<Entity>>)> observer);
    /// `observer` receives every new State.
    [[nodiscard]] CallbackLifetime addStateChangedObserver(Function<void(State)> observer);

    void notify() override; ///< Reads every node again and repaints.

public Q_SLOTS:
    void onZoomToAll(); ///< Frames every node (Ctrl+Alt+Z).
    void onZoomToAllOrSelection(); ///< Frames the selected nodes, or every node when none is selected (Z).
    void onSelectAllNodes(); ///< Selects every node (Ctrl+A).
    void onClearSelection(); ///< Deselects every node (Ctrl+U).
    /// Takes the selected nodes out of the graph, one undo step; their entities stay in the scene (Delete).
    void onRemoveSelection();
    /// Copies the selected nodes and their entities next to them and selects the copies, one undo step (Ctrl+D).
    void onDuplicateSelection();
    /// Lays the selected nodes (more than one) out in layers around the centre of where they are now.
    void onRearrangeSelection();
    /// One auto-scroll step: the view moves towards the cursor while it is outside the viewport's inner rectangle.
    void onTimeout();
    /// Chooses the idle mode from the held modifiers: none 0, Alt 1, Ctrl+Alt 2.
    void onModifierKeysChange(QFlags<Qt::KeyboardModifier> modifiers);

protected:
    /// Runs the view's shortcuts before any application shortcut takes the keys, and zooms on pinch gestures.
    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override; ///< Hands gestures on the viewport to event().
    void keyPressEvent(QKeyEvent* event) override; ///< Runs the view's shortcuts; other keys go to the scene.
    /// Zooms about the mouse position, by 1.6 per full turn of the wheel.
    void wheelEvent(QWheelEvent* event) override;
    /// Starts the gesture the state and the pressed button choose; the right button opens the context menu.
    void mousePressEvent(QMouseEvent* event) override;
    /// Pans, moves the dragged wire's end, or moves the dragged nodes or the selection band.
    void mouseMoveEvent(QMouseEvent* event) override;
    /// Ends the gesture, one undo step each: the dragged wire connects (a wire lifted off an input and dropped on
    /// empty canvas disconnects), or the moved nodes' positions are stored.
    void mouseReleaseEvent(QMouseEvent* event) override;
    /// Accepts drags of ENTITY_IDS_MIME_TYPE while the graph has a scene.
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override; ///< Keeps accepting the drag while it hovers.
    void dragLeaveEvent(QDragLeaveEvent* event) override; ///< Returns to the idle state.
    /// Adds a node for each dropped entity of the scene at the drop position, one undo step, and selects them.
    void dropEvent(QDropEvent* event) override;
    /// Draws background, grid and every wire that is not live from the cached wire layer.
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
