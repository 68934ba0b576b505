#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/EntityReferences.h>
#include <MarlixLib/undo/IUndoManager.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>
#include <MarlixLibQt/widgets/thumbnails/ThumbnailManager.h>

#include <QGraphicsScene>
#include <QOpenGLWidget>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace Marlix::Widgets {

namespace {

constexpr double SCENE_SIZE = 100000.0;
constexpr int MIN_VIEW_SIZE = 64;
const QColor BACKGROUND_COLOR(32, 32, 32);
} // namespace

GraphView::GraphView(EntityHolder<GraphModel> model, SharedPtr<IUndoManager> undoManager,
    SharedPtr<ThumbnailManager> thumbnailManager, QWidget* parent)
    : QGraphicsView(parent)
    , model(std::move(model))
    , undoManager(std::move(undoManager))
    , thumbnailManager(std::move(thumbnailManager))
{
    if (!this->model)
        Detail::throwStopException("widgets/Nodes", __LINE__);
    graphScene = new QGraphicsScene(this);
    graphScene->setItemIndexMethod(QGraphicsScene::BspTreeIndex);
    setScene(graphScene);
    setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    grabGesture(Qt::PinchGesture);
    setAcceptDrops(true);
    setBackgroundBrush(BACKGROUND_COLOR);
    setRubberBandSelectionMode(Qt::IntersectsItemBoundingRect);
    setDragMode(RubberBandDrag);
    setViewportUpdateMode(FullViewportUpdate);
    // Every item sets the pen, brush and font it draws with and restores what else it changes, so saving the
    // painter around each of thousands of items would only cost time.
    setOptimizationFlag(DontSavePainterState);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setResizeAnchor(NoAnchor);
    setTransformationAnchor(NoAnchor);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setMinimumSize(getDeviceIndependentPixels(MIN_VIEW_SIZE, this), getDeviceIndependentPixels(MIN_VIEW_SIZE, this));
    setFocusPolicy(Qt::ClickFocus);
    setAccessibleName(tr("Node graph"));
    graphScene->setSceneRect(0.0, 0.0, SCENE_SIZE, SCENE_SIZE);
    centerOn(SCENE_SIZE * 0.5, SCENE_SIZE * 0.5);
    if (LibQt::hasOpenGl())
        setViewport(new QOpenGLWidget);
    // Drops and gestures reach the viewport, which takes these settings only when it is set up.
    viewport()->setAcceptDrops(true);
    viewport()->grabGesture(Qt::PinchGesture);

    if (this->thumbnailManager)
        thumbnails = std::make_unique<ThumbnailClient>(
            this->thumbnailManager, QSize(getThumbnailSize(), getThumbnailSize()),
            [this](ArrayView<const EntityHolder<Entity>> changed) {
                for (const EntityHolder<Entity>& entity : changed)
                    if (const EntityHolder<Node> node = entity ? this->model->findNode(*entity) : nullptr)
                        if (NodeItem* item = lookupNodeItem(*node))
                            item->update();
            },
            ThumbnailManager::OPTION_PLACEHOLDER, this);

    autoScrollTimer.setInterval(AUTO_SCROLL_INTERVAL_MS);
    connect(&autoScrollTimer, &QTimer::timeout, this, &GraphView::onTimeout);
    connect(graphScene, &QGraphicsScene::selectionChanged, this, &GraphView::onSelectionChanged);

    modelLifetime = this->model->setModelObserver(
        [this](ArrayView<const EntityHolder<Node>> added, ArrayView<const EntityHolder<Node>> removed) {
            onModelChanged(added, removed);
        });
    modifierLifetime
        = LibQt::addModifierKeysObserver([view = QPointer<GraphView>(this)](QFlags<Qt::KeyboardModifier> modifiers) {
              if (view)
                  view->onModifierKeysChange(modifiers);
          });
    const Array<EntityHolder<Node>> existing = this->model->getNodes();
    onModelChanged(existing, {});
}

GraphView::~GraphView()
{
    modelLifetime.reset();
    disconnect(graphScene, nullptr, this, nullptr);
    // Items go before the members they point back to.
    connections.clear();
    nodeItems.clear();
    delete graphScene;
}

void GraphView::notify()
{
    model->resynchronize();
    invalidateGrid();
    viewport()->update();
}

void GraphView::onModelChanged(ArrayView<const EntityHolder<Node>> added, ArrayView<const EntityHolder<Node>> removed)
{
    for (const EntityHolder<Node>& node : removed) {
        removeConnections(*node, false);
        removeNode(*node);
    }
    const bool wereShown = !nodeItems.empty();
    Array<NodeItem*> addedItems;
    addedItems.reserve(added.size());
    for (const EntityHolder<Node>& node : added)
        addedItems.push_back(addNode(node));
    // Wires after all items exist: into the new nodes and, when others were shown already, from the new ones into
    // those, which only a look at every node finds.
    if (!added.empty())
        addMissingConnections(wereShown ? getNodeItems() : addedItems);
    invalidateGrid();
    QMetaObject::invokeMethod(
        this,
        [this] {
            updateNodeZOrder();
            viewport()->update();
        },
        Qt::QueuedConnection);
    if (!added.empty()) {
        Array<EntityHolder<Entity>> entities;
        entities.reserve(added.size());
        for (const EntityHolder<Node>& node : added)
            entities.push_back(node->getEntity());
        nodeAddedObservers.call(ArrayView<const EntityHolder<Entity>>(entities));
    }
}

NodeItem* GraphView::addNode(const EntityHolder<Node>& node)
{
    if (NodeItem* existing = lookupNodeItem(*node))
        return existing;
    auto* item = new NodeItem(node, this);
    item->setFlag(QGraphicsItem::ItemIsMovable, draggingEnabled);
    graphScene->addItem(item);
    nodeItems.emplace(node.get(), item);
    connect(item, &NodeItem::synchronized, this, &GraphView::onNodeItemSynchronized);
    return item;
}

void GraphView::removeNode(const Node& node)
{
    const auto found = nodeItems.find(&node);
    if (found == nodeItems.end())
        return;
    NodeItem* item = found->second;
    nodeItems.erase(found);
    if (lastFocusedNode == item)
        lastFocusedNode = nullptr;
    if (preview && preview->getAnchor() == item)
        delete preview.data();
    delete item;
}

ConnectionItem* GraphView::addConnection(NodeItem* from, NodeItem* to, StringView inputName)
{
    auto* connection = new ConnectionItem(from, to, inputName);
    // The wire layer shows it; far away, where thousands are in view, an item without contents costs nothing.
    connection->setFlag(QGraphicsItem::ItemHasNoContents, wiresWithoutContents());
    connect(from, &NodeItem::positionChanged, connection, &ConnectionItem::onNodeItemPositionChange);
    connect(to, &NodeItem::positionChanged, connection, &ConnectionItem::onNodeItemPositionChange);
    from->attachConnection(connection);
    to->attachConnection(connection);
    graphScene->addItem(connection);
    connections.push_back(connection);
    wireLayer.invalidate();
    return connection;
}

void GraphView::removeConnection(ConnectionItem* connection)
{
    if (NodeItem* from = connection->getFrom())
        from->detachConnection(connection);
    if (NodeItem* to = connection->getTo().second)
        to->detachConnection(connection);
    connections.erase(std::remove(connections.begin(), connections.end(), connection), connections.end());
    wireLayer.invalidate();
    delete connection;
}

void GraphView::removeConnections(const Node& node, bool inputsOnly)
{
    NodeItem* item = lookupNodeItem(node);
    if (!item)
        return;
    const Array<ConnectionItem*> touching = item->getConnections();
    for (ConnectionItem* connection : touching)
        if (!inputsOnly || connection->getTo().second == item)
            removeConnection(connection);
}

NodeItem* GraphView::sourceItemOf(const NodeItem& item, StringView input) const
{
    // Read from the entity itself: the node's own record of its sources may not be refreshed yet.
    const EntityHolder<Entity> entity = item.getNode()->getEntity();
    const EntityHolder<Entity> source = entity
        ? entity->visitProperty(input, [](const GenericProperty& property) { return getEntityFromProperty(property); })
        : nullptr;
    const EntityHolder<Node> sourceNode = source ? model->findNode(*source) : nullptr;
    return sourceNode ? lookupNodeItem(*sourceNode) : nullptr;
}

void GraphView::addMissingConnections(ArrayView<NodeItem* const> items)
{
    for (NodeItem* item : items) {
        for (const NodeItem::InputSlot& slot : item->getInputSlots()) {
            NodeItem* from = slot.isConnected() ? sourceItemOf(*item, slot.getProperty()) : nullptr;
            if (!from)
                continue;
            const Array<ConnectionItem*>& existing = item->getConnections();
            const bool present = std::any_of(existing.begin(), existing.end(), [&](const ConnectionItem* connection) {
                return connection->getTo().second == item && connection->getInputName() == slot.getProperty()
                    && connection->getFrom() == from;
            });
            if (!present)
                addConnection(from, item, slot.getProperty());
        }
    }
}

void GraphView::onNodeItemSynchronized(NodeItem& item)
{
    // Wires into the node that its entity no longer has go; the others follow the slots, which may have moved.
    const Array<ConnectionItem*> touching = item.getConnections();
    for (ConnectionItem* connection : touching) {
        if (connection->getTo().second != &item) {
            connection->updatePath();
            continue;
        }
        if (item.getInputSlot(connection->getInputName())
            && sourceItemOf(item, connection->getInputName()) == connection->getFrom())
            connection->updatePath();
        else
            removeConnection(connection);
    }
    NodeItem* const items[] = { &item };
    addMissingConnections(items);
}

NodeItem* GraphView::lookupNodeItem(const Node& node) const
{
    const auto found = nodeItems.find(&node);
    return found == nodeItems.end() ? nullptr : found->second;
}

Array<NodeItem*> GraphView::lookupNodeItems(ArrayView<const EntityHolder<Node>> nodes) const
{
    Array<NodeItem*> result;
    result.reserve(nodes.size());
    for (const EntityHolder<Node>& node : nodes)
        if (NodeItem* item = node ? lookupNodeItem(*node) : nullptr)
            result.push_back(item);
    return result;
}

Array<NodeItem*> GraphView::getNodeItems() const
{
    // In the model's order, so that everything that walks all nodes is repeatable.
    return lookupNodeItems(model->getNodes());
}

Array<NodeItem*> GraphView::getSelectedNodeItems() const
{
    Array<NodeItem*> result;
    for (NodeItem* item : getNodeItems())
        if (item->isSelected())
            result.push_back(item);
    return result;
}

bool GraphView::canConnect(const NodeItem& from, const NodeItem& to, StringView input) const
{
    return to.getNode()->canConnectProperty(from.getNode(), input);
}

ConnectionPreviewItem* GraphView::getPreview() const
{
    return preview.data();
}

int GraphView::getThumbnailSize() const
{
    return static_cast<int>(std::round(zoomFactor * NodeItem::THUMBNAIL_SIZE));
}

QPointF GraphView::toScene(QPointF viewportPos) const
{
    return viewportTransform().inverted().map(viewportPos);
}

QPointF GraphView::toViewport(QPointF scenePos) const
{
    return viewportTransform().map(scenePos);
}

void GraphView::updateNodeZOrder()
{
    const QList<QGraphicsItem*> items = graphScene->items(Qt::AscendingOrder);
    const double count = static_cast<double>(items.size()) + 1.0;
    int index = 0;
    for (QGraphicsItem* item : items) {
        if (auto* node = dynamic_cast<NodeItem*>(item)) {
            ++index;
            node->setZValue(static_cast<double>(index) / count + (node->isSelected() ? 1.0 : 0.0));
        }
    }
}

void GraphView::onSelectionChanged()
{
    updateNodeZOrder();
    Array<EntityHolder<Entity>> entities;
    for (const NodeItem* item : getSelectedNodeItems())
        entities.push_back(item->getNode()->getEntity());
    nodeSelectedObservers.call(ArrayView<const EntityHolder<Entity>>(entities));
}

bool GraphView::runAction(StringView label, const Function<void()>& work)
{
    ActionHolder action;
    if (undoManager)
        action = undoManager->createAction(label);
    try {
        work();
    } catch (const Exception& error) {
        // A failed edit changes nothing: what it wrote so far is restored, and the reason goes to the log since the
        // gesture that caused it has no place to show it.
        if (action)
            action.revert();
        qWarning("%s: %s", String(label).c_str(), error.what());
        return false;
    }
    if (action)
        action.commit();
    return true;
}

void GraphView::setCursors(const Cursors& next)
{
    cursors = next;
    if (state == State::Panning)
        viewport()->setCursor(cursors.panning);
    else if (state == State::MovingNodes)
        viewport()->setCursor(cursors.moving);
}

void GraphView::setDraggingEnabled(bool enabled)
{
    draggingEnabled = enabled;
    for (const auto& [node, item] : nodeItems)
        item->setFlag(QGraphicsItem::ItemIsMovable, enabled);
    setDragMode(enabled ? RubberBandDrag : NoDrag);
}

CallbackLifetime GraphView::addNodeAddedObserver(Function<void(ArrayView<const EntityHolder<Entity>>)> observer)
{
    return nodeAddedObservers.add(std::move(observer));
}

CallbackLifetime GraphView::addNodeSelectedObserver(Function<void(ArrayView<const EntityHolder<Entity>>)> observer)
{
    return nodeSelectedObservers.add(std::move(observer));
}

CallbackLifetime GraphView::addStateChangedObserver(Function<void(State)> observer)
{
    return stateChangedObservers.add(std::move(observer));
}

} // namespace Marlix::Widgets
