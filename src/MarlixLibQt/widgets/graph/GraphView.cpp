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
#include <QMouseEvent>
#include <QOpenGLWidget>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace Marlix::Widgets {

namespace {

constexpr double SCENE_SIZE = 100000.0;
constexpr int MIN_VIEW_SIZE = 64;
const QColor BACKGROUND_COLOR(32, 32, 32);
const QColor GRID_COLOR(255, 255, 255, 16);

// Zooms within 10 % of a whole number, or of the reciprocal of one, land on it exactly.
double snapZoom(double z)
{
    if (z >= 1.0) {
        const double n = std::floor(z + 0.5);
        return std::abs(z - n) < n * 0.1 ? n : z;
    }
    const double inverse = 1.0 / z;
    double m = std::round(inverse);
    if (std::abs(inverse - m) >= m * 0.1)
        m = inverse;
    return 1.0 / m;
}

QPointF roundPoint(QPointF point)
{
    return { std::round(point.x()), std::round(point.y()) };
}

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
    connect(from, &NodeItem::positionChanged, connection, &ConnectionItem::onNodeItemPositionChange);
    connect(to, &NodeItem::positionChanged, connection, &ConnectionItem::onNodeItemPositionChange);
    from->attachConnection(connection);
    to->attachConnection(connection);
    graphScene->addItem(connection);
    connections.push_back(connection);
    return connection;
}

void GraphView::removeConnection(ConnectionItem* connection)
{
    if (NodeItem* from = connection->getFrom())
        from->detachConnection(connection);
    if (NodeItem* to = connection->getTo().second)
        to->detachConnection(connection);
    connections.erase(std::remove(connections.begin(), connections.end(), connection), connections.end());
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

void GraphView::zoom(QPointF anchor, double factor, bool relative)
{
    const double z = snapZoom(relative ? factor * zoomFactor : factor);
    if (!(z <= MAX_ZOOM && z >= MIN_ZOOM))
        return;
    const QPointF pixel = roundPoint(anchor);
    const QPointF before = roundPoint(toScene(pixel));
    setTransform(QTransform::fromScale(z, z));
    const QPointF after = roundPoint(toScene(pixel));
    translate(after.x() - before.x(), after.y() - before.y());
    zoomFactor = z;
    if (thumbnails) {
        const QSize size(getThumbnailSize(), getThumbnailSize());
        if (!size.isEmpty())
            thumbnails->setThumbnailSize(size);
    }
    snapContentPosition();
    invalidateGrid();
}

double GraphView::getScaleToFitInView(const QRectF& rect, double margin) const
{
    const QSizeF view = viewport()->size();
    if (rect.width() * rect.height() <= 0.0 || view.width() < 2.0 * margin || view.height() < 2.0 * margin)
        return 1.0;
    const double scale
        = std::min((view.width() - 2.0 * margin) / rect.width(), (view.height() - 2.0 * margin) / rect.height());
    return std::clamp(scale, MIN_ZOOM, MAX_ZOOM);
}

QRectF GraphView::nodeItemsBoundingRect(ArrayView<NodeItem* const> items)
{
    QRectF result;
    for (const NodeItem* item : items)
        result |= item->geometryBoundingRect().adjusted(-1.0, -1.0, 1.0, 1.0).translated(item->pos());
    return result;
}

void GraphView::zoomToNodes(ArrayView<NodeItem* const> items)
{
    if (items.empty())
        return;
    const QRectF rect = nodeItemsBoundingRect(items);
    const double z = getScaleToFitInView(rect, getDeviceIndependentPixels(FIT_MARGIN, this));
    zoom(toViewport(rect.center()), z, false);
    const QPointF centre = toScene(QPointF(viewport()->width() * 0.5, viewport()->height() * 0.5));
    translate(centre.x() - rect.center().x(), centre.y() - rect.center().y());
    snapContentPosition();
    invalidateGrid();
}

void GraphView::onZoomToAll()
{
    zoomToNodes(getNodeItems());
}

void GraphView::onZoomToAllOrSelection()
{
    const Array<NodeItem*> selected = getSelectedNodeItems();
    zoomToNodes(selected.empty() ? getNodeItems() : selected);
}

void GraphView::snapContentPosition()
{
    const QPointF origin = toScene(QPointF(0.0, 0.0));
    // The offset to the nearest whole unit: a corner a rounding error below one is already there.
    const double dx = origin.x() - std::round(origin.x());
    const double dy = origin.y() - std::round(origin.y());
    if (dx != 0.0 || dy != 0.0)
        translate(dx, dy);
}

void GraphView::updateViewportScrolling(QPointF position, bool absolute)
{
    const QPointF delta = absolute ? position : position - lastMousePosition;
    translate(delta.x() / zoomFactor, delta.y() / zoomFactor);
    snapContentPosition();
    invalidateGrid();
}

void GraphView::onTimeout()
{
    const int margin = getDeviceIndependentPixels(AUTO_SCROLL_MARGIN, this);
    const QRectF inner = QRectF(toScene(QPointF(margin, margin)),
        toScene(QPointF(viewport()->width() - margin, viewport()->height() - margin)));
    const QPointF cursor = toScene(lastMousePosition);
    const double dx = 0.2 * (std::max(inner.left() - cursor.x(), 0.0) + std::min(inner.right() - cursor.x(), 0.0));
    const double dy = 0.2 * (std::max(inner.top() - cursor.y(), 0.0) + std::min(inner.bottom() - cursor.y(), 0.0));
    if (dx != 0.0 || dy != 0.0) {
        translate(dx, dy);
        snapContentPosition();
        invalidateGrid();
        // What follows the mouse (dragged nodes, the band) follows the scene point now under it.
        if (state == State::MovingNodes || state == State::RubberBand) {
            QMouseEvent move(QEvent::MouseMove, lastMousePosition, mapToGlobal(lastMousePosition.toPoint()),
                Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
            QGraphicsView::mouseMoveEvent(&move);
        }
    }
    if (preview) {
        const QPointF end = toScene(lastMousePosition);
        lastFocusedNode = nodeItemAt(lastMousePosition);
        preview->setEnd(end);
    }
}

void GraphView::drawBackground(QPainter* painter, const QRectF& rect)
{
    QGraphicsView::drawBackground(painter, rect);
    if (zoomFactor < GRID_MIN_ZOOM)
        return;
    if (gridLines.empty()) {
        const QRectF area = rect;
        const double first = area.left() - std::fmod(std::trunc(area.left()), GRID_SPACING);
        for (double x = first; x < area.right(); x += GRID_SPACING)
            gridLines.emplace_back(x + 0.5, area.top(), x + 0.5, area.bottom());
        const double top = area.top() - std::fmod(std::trunc(area.top()), GRID_SPACING);
        for (double y = top; y < area.bottom(); y += GRID_SPACING)
            gridLines.emplace_back(area.left(), y + 0.5, area.right(), y + 0.5);
    }
    const bool antialiased = painter->testRenderHint(QPainter::Antialiasing);
    painter->setRenderHint(QPainter::Antialiasing, false);
    painter->setPen(QPen(GRID_COLOR, 1.0));
    painter->drawLines(gridLines.data(), static_cast<int>(gridLines.size()));
    painter->setRenderHint(QPainter::Antialiasing, antialiased);
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
