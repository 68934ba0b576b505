// The view's input: mouse, wheel, pinch, keys, drops and the context menu, and the states they move through.
#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>

#include <QGestureEvent>
#include <QGraphicsScene>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QPinchGesture>
#include <QScrollBar>

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace Marlix::Widgets {

namespace {

constexpr Qt::KeyboardModifiers MODIFIER_MASK
    = Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier | Qt::MetaModifier;
// Where the copies of duplicated nodes go, relative to the originals, and how far apart dropped nodes are placed.
constexpr QPointF DUPLICATE_OFFSET(40.0, 40.0);
constexpr QPointF DROP_STEP(30.0, 30.0);
constexpr int MAX_MENU_ENTITIES = 200;

bool isGraphEntity(const Entity& entity)
{
    return entity.isInstanceOf(Node::getClass()) || entity.isInstanceOf(GraphModel::getClass());
}

QString entityTitle(const Entity& entity)
{
    const QString className = QString::fromStdString(entity.getClassInfo().getName());
    if (entity.indexOfProperty("name") < 0)
        return className;
    const GenericProperty name = entity.getProperty("name");
    if (!name.getTypeDefinition().isNative<String>() || name.get<String>().empty())
        return className;
    return QStringLiteral("%1 (%2)").arg(QString::fromStdString(name.get<String>()), className);
}

} // namespace

bool GraphView::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (handleShortcut(key, true)) {
            // The key press that follows is ours already: it must not run the command a second time.
            consumedShortcutKey = key->key() | static_cast<int>(key->modifiers() & MODIFIER_MASK);
            event->accept();
            return true;
        }
    }
    if (event->type() == QEvent::Gesture) {
        auto* gestureEvent = static_cast<QGestureEvent*>(event);
        if (auto* pinch = static_cast<QPinchGesture*>(gestureEvent->gesture(Qt::PinchGesture))) {
            if (pinch->changeFlags() & QPinchGesture::ScaleFactorChanged)
                zoom(viewport()->mapFromGlobal(pinch->centerPoint()), pinch->scaleFactor(), true);
            gestureEvent->accept(pinch);
            return true;
        }
    }
    return QGraphicsView::event(event);
}

bool GraphView::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::Gesture)
        return GraphView::event(event);
    return QGraphicsView::viewportEvent(event);
}

bool GraphView::handleShortcut(QKeyEvent* event, bool perform)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & MODIFIER_MASK;
    const int key = event->key();
    Function<void()> command;
    if (modifiers == Qt::ControlModifier && key == Qt::Key_A)
        command = [this] { onSelectAllNodes(); };
    else if (modifiers == Qt::ControlModifier && key == Qt::Key_U)
        command = [this] { onClearSelection(); };
    else if (modifiers == Qt::NoModifier && key == Qt::Key_Delete)
        command = [this] { onRemoveSelection(); };
    else if (modifiers == Qt::ControlModifier && key == Qt::Key_D)
        command = [this] { onDuplicateSelection(); };
    else if (modifiers == (Qt::ControlModifier | Qt::AltModifier) && key == Qt::Key_Z)
        command = [this] { onZoomToAll(); };
    else if (modifiers == Qt::NoModifier && key == Qt::Key_Z)
        command = [this] { onZoomToAllOrSelection(); };
    if (!command)
        return false;
    if (perform)
        command();
    return true;
}

void GraphView::keyPressEvent(QKeyEvent* event)
{
    const int combination = event->key() | static_cast<int>(event->modifiers() & MODIFIER_MASK);
    if (consumedShortcutKey != 0 && consumedShortcutKey == combination) {
        consumedShortcutKey = 0;
        event->accept();
        return;
    }
    consumedShortcutKey = 0;
    if (handleShortcut(event, true)) {
        event->accept();
        return;
    }
    QGraphicsView::keyPressEvent(event);
}

void GraphView::wheelEvent(QWheelEvent* event)
{
    event->accept();
    // The begin and end phases of a gesture carry no movement; zooming by 1 would still snap the zoom.
    if (event->angleDelta().y() != 0)
        zoom(event->position(), std::pow(1.6, event->angleDelta().y() / 360.0), true);
}

NodeItem* GraphView::nodeItemAt(QPointF viewportPos) const
{
    const QList<QGraphicsItem*> found = graphScene->items(
        toScene(viewportPos), Qt::IntersectsItemBoundingRect, Qt::DescendingOrder, viewportTransform());
    for (QGraphicsItem* item : found)
        if (auto* node = dynamic_cast<NodeItem*>(item))
            return node;
    return nullptr;
}

void GraphView::mousePressEvent(QMouseEvent* event)
{
    lastMousePosition = event->position();
    const QPointF scenePos = toScene(event->position());
    NodeItem* node = nodeItemAt(event->position());
    const bool left = event->button() == Qt::LeftButton;
    if (state == State::ConnectFromNode && left && node) {
        setState(State::Connecting, node, scenePos);
        event->accept();
        return;
    }
    if (state == State::SelectTree && left && node) {
        selectNodeItems(getNodeTree(node), true);
        QGraphicsView::mousePressEvent(event);
        if (draggingEnabled)
            startMovingNodes();
        return;
    }
    if (state != State::Idle && state != State::ConnectFromNode && state != State::SelectTree) {
        event->accept();
        return;
    }
    if (event->button() == Qt::MiddleButton) {
        setState(State::Panning);
        event->accept();
        return;
    }
    if (event->button() == Qt::RightButton) {
        event->accept();
        showContextMenu(event->position().toPoint());
        return;
    }
    if (!left) {
        QGraphicsView::mousePressEvent(event);
        return;
    }
    if (NodeItem::Slot* slot = node ? node->getSlotOnPosition(scenePos) : nullptr) {
        const auto* input = dynamic_cast<const NodeItem::InputSlot*>(slot);
        setState(State::Connecting, node, scenePos, input ? StringView(input->getProperty()) : StringView());
        event->accept();
        return;
    }
    QGraphicsView::mousePressEvent(event);
    if (!draggingEnabled)
        return;
    if (node) {
        startMovingNodes();
        setState(State::MovingNodes);
    } else {
        setState(State::RubberBand);
    }
}

void GraphView::mouseMoveEvent(QMouseEvent* event)
{
    if (state == State::Panning) {
        updateViewportScrolling(event->position(), false);
        lastMousePosition = event->position();
        event->accept();
        return;
    }
    lastMousePosition = event->position();
    if (state == State::Connecting && preview) {
        lastFocusedNode = nodeItemAt(event->position());
        preview->setEnd(toScene(event->position()));
        event->accept();
        return;
    }
    QGraphicsView::mouseMoveEvent(event);
}

void GraphView::mouseReleaseEvent(QMouseEvent* event)
{
    lastMousePosition = event->position();
    if (state == State::Panning) {
        if (event->button() == Qt::MiddleButton)
            setIdleState();
        event->accept();
        return;
    }
    if (state == State::Connecting) {
        if (event->button() == Qt::LeftButton) {
            stopConnectionPreview(toScene(event->position()));
            lastFocusedNode = nodeItemAt(event->position());
            setIdleState();
        }
        event->accept();
        return;
    }
    QGraphicsView::mouseReleaseEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    commitMovedNodes();
    if (state == State::MovingNodes || state == State::RubberBand)
        setIdleState();
}

void GraphView::setState(State next, NodeItem* node, QPointF scenePos, StringView input)
{
    switch (next) {
    case State::Idle:
    case State::ConnectFromNode:
    case State::SelectTree:
        viewport()->unsetCursor();
        autoScrollTimer.stop();
        if (dragMode() == NoDrag && draggingEnabled)
            setDragMode(RubberBandDrag);
        break;
    case State::Panning:
        setDragMode(NoDrag);
        viewport()->setCursor(cursors.panning);
        break;
    case State::MovingNodes:
        viewport()->setCursor(cursors.moving);
        autoScrollTimer.start();
        break;
    case State::DraggingDrop:
        break;
    case State::Connecting:
        autoScrollTimer.start();
        if (node)
            startConnectionPreview(node, scenePos, input);
        break;
    case State::RubberBand:
        autoScrollTimer.start();
        break;
    }
    if (next == state)
        return;
    state = next;
    stateChangedObservers.call(next);
}

void GraphView::setIdleState()
{
    if (idleMode != State::Idle && idleMode != State::ConnectFromNode && idleMode != State::SelectTree)
        Detail::throwStopException("widgets/Nodes", __LINE__);
    setState(idleMode);
}

void GraphView::onModifierKeysChange(QFlags<Qt::KeyboardModifier> modifiers)
{
    static constexpr std::pair<Qt::KeyboardModifiers::Int, State> MODES[] = {
        { Qt::NoModifier, State::Idle },
        { Qt::AltModifier, State::ConnectFromNode },
        { Qt::ControlModifier | Qt::AltModifier, State::SelectTree },
    };
    const auto held = (modifiers & MODIFIER_MASK).toInt();
    idleMode = State::Idle;
    for (const auto& [combination, mode] : MODES)
        if (combination == held)
            idleMode = mode;
    if (state == State::Idle || state == State::ConnectFromNode || state == State::SelectTree)
        setIdleState();
}

void GraphView::startConnectionPreview(NodeItem* node, QPointF scenePos, StringView input)
{
    delete preview.data();
    NodeItem* anchor = node;
    String anchorInput(input);
    if (!input.empty()) {
        // A wire already ends here: the drag picks it up from its source, to drop it elsewhere or nowhere.
        const Array<ConnectionItem*>& wires = node->getConnections();
        const auto found = std::find_if(wires.begin(), wires.end(), [&](const ConnectionItem* wire) {
            return wire->getTo().second == node && wire->getInputName() == input && wire->getFrom();
        });
        if (found != wires.end()) {
            liftedConnection = *found;
            liftedConnection->hide();
            anchor = liftedConnection->getFrom();
            anchorInput.clear();
        }
    }
    preview = new ConnectionPreviewItem(anchor, anchorInput, scenePos);
    graphScene->addItem(preview);
}

void GraphView::stopConnectionPreview(QPointF scenePos)
{
    if (preview) {
        completeConnection(scenePos);
        delete preview.data();
    }
    if (liftedConnection)
        liftedConnection->show();
    liftedConnection = nullptr;
    viewport()->update();
}

void GraphView::completeConnection(QPointF scenePos)
{
    NodeItem* anchor = preview->getAnchor();
    if (!anchor)
        return;
    NodeItem* target = nodeItemAt(toViewport(scenePos));
    NodeItem::Slot* slot = target ? target->getSlotOnPosition(scenePos) : nullptr;
    if (!preview->startsAtOutput()) {
        const EntityHolder<Node> to = anchor->getNode();
        const String input = preview->getAnchorInput();
        if (slot && slot == &target->getOutputSlot() && canConnect(*target, *anchor, input)) {
            const EntityHolder<Node> from = target->getNode();
            runAction("Connect Node", [&] { to->connectProperty(from, input); });
        }
        return;
    }
    const EntityHolder<Node> from = anchor->getNode();
    NodeItem* liftedTarget = liftedConnection ? liftedConnection->getTo().second.data() : nullptr;
    const String liftedInput = liftedConnection ? liftedConnection->getInputName() : String();
    if (const auto* input = dynamic_cast<const NodeItem::InputSlot*>(slot)) {
        if (target == liftedTarget && input->getProperty() == liftedInput)
            return;
        if (!canConnect(*anchor, *target, input->getProperty()))
            return;
        const EntityHolder<Node> to = target->getNode();
        const String property = input->getProperty();
        runAction("Connect Node", [&] {
            if (liftedTarget)
                liftedTarget->getNode()->disconnectProperty(liftedInput);
            to->connectProperty(from, property);
        });
        return;
    }
    if (!target && liftedTarget)
        runAction("Disconnect Node", [&] { liftedTarget->getNode()->disconnectProperty(liftedInput); });
}

void GraphView::startMovingNodes()
{
    moveStarts.clear();
    for (NodeItem* item : getSelectedNodeItems())
        moveStarts.emplace_back(item, item->pos());
}

void GraphView::commitMovedNodes()
{
    Array<NodeItem*> moved;
    for (const auto& [item, start] : moveStarts)
        if (item && item->pos() != start)
            moved.push_back(item);
    moveStarts.clear();
    if (!moved.empty())
        runAction("Move Node", [&] {
            for (NodeItem* item : moved)
                item->commitPosition();
        });
}

void GraphView::dragEnterEvent(QDragEnterEvent* event)
{
    if (!event->mimeData()->hasFormat(QString::fromLatin1(ENTITY_IDS_MIME_TYPE)) || !model->getScene()) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    setState(State::DraggingDrop);
}

void GraphView::dragMoveEvent(QDragMoveEvent* event)
{
    lastMousePosition = event->position();
    if (state == State::DraggingDrop)
        event->acceptProposedAction();
    else
        event->ignore();
}

void GraphView::dragLeaveEvent(QDragLeaveEvent* event)
{
    event->accept();
    if (state == State::DraggingDrop)
        setIdleState();
}

void GraphView::dropEvent(QDropEvent* event)
{
    const SharedPtr<EntityGraphTracker> scene = model->getScene();
    const QByteArray payload = event->mimeData()->data(QString::fromLatin1(ENTITY_IDS_MIME_TYPE));
    Array<EntityHolder<Entity>> entities;
    // Anything that is not an identity of an entity in the scene is skipped: a drop never adds what it cannot show.
    for (const QByteArray& word : payload.simplified().split(' ')) {
        bool ok = false;
        const qulonglong id = word.toULongLong(&ok);
        const EntityHolder<Entity> entity = ok && scene ? scene->findEntity(id) : nullptr;
        if (entity && !isGraphEntity(*entity) && std::find(entities.begin(), entities.end(), entity) == entities.end())
            entities.push_back(entity);
    }
    if (entities.empty()) {
        event->ignore();
    } else {
        event->acceptProposedAction();
        addEntitiesAt(entities, toScene(event->position()), "Add Node");
    }
    if (state == State::DraggingDrop)
        setIdleState();
}

void GraphView::addEntitiesAt(ArrayView<const EntityHolder<Entity>> entities, QPointF scenePos, StringView label)
{
    Array<EntityHolder<Node>> nodes;
    runAction(label, [&] {
        QPointF position = scenePos;
        for (const EntityHolder<Entity>& entity : entities) {
            nodes.push_back(model->getOrCreateNode(entity, position));
            position += DROP_STEP;
        }
    });
    selectNodeItems(lookupNodeItems(nodes), true);
}

void GraphView::createEntityAt(const EntityClassInfo& entityClass, QPointF scenePos)
{
    const SharedPtr<EntityGraphTracker> scene = model->getScene();
    if (!scene)
        return;
    EntityHolder<Node> node;
    runAction("Create Node", [&] {
        const EntityHolder<Entity> entity = entityClass.create();
        scene->addEntity(entity);
        node = model->getOrCreateNode(entity, scenePos);
    });
    if (node)
        selectNodeItems(lookupNodeItems({ &node, 1 }), true);
}

void GraphView::showContextMenu(QPoint viewportPos)
{
    const QPointF scenePos = toScene(viewportPos);
    QMenu menu(this);
    if (const SharedPtr<EntityGraphTracker> scene = model->getScene()) {
        Array<EntityClassInfo> classes
            = TypeDatabase::instance().getDerivedEntityClasses(EntityClassInfo::entityClass());
        std::sort(classes.begin(), classes.end(),
            [](const EntityClassInfo& a, const EntityClassInfo& b) { return a.getName() < b.getName(); });
        for (const EntityClassInfo& entityClass : classes) {
            if (!entityClass.canCreate() || Node::getClass().isBaseClassOf(entityClass)
                || GraphModel::getClass().isBaseClassOf(entityClass))
                continue;
            menu.addAction(tr("Add %1").arg(QString::fromStdString(entityClass.getName())), this,
                [this, entityClass, scenePos] { createEntityAt(entityClass, scenePos); });
        }
        QMenu* existing = menu.addMenu(tr("Add Existing"));
        int listed = 0;
        for (const EntityHolder<Entity>& entity : scene->getEntities()) {
            if (listed == MAX_MENU_ENTITIES)
                break;
            if (isGraphEntity(*entity) || model->findNode(*entity))
                continue;
            existing->addAction(entityTitle(*entity), this, [this, entity, scenePos] {
                const EntityHolder<Entity> entities[] = { entity };
                addEntitiesAt(entities, scenePos, "Add Node");
            });
            ++listed;
        }
        existing->setEnabled(listed > 0);
        menu.addSeparator();
    }
    const bool selection = !getSelectedNodeItems().empty();
    menu.addAction(tr("Zoom to All"), this, &GraphView::onZoomToAll)->setEnabled(!nodeItems.empty());
    menu.addAction(tr("Zoom to Selection"), this, &GraphView::onZoomToAllOrSelection)->setEnabled(selection);
    menu.addSeparator();
    menu.addAction(tr("Duplicate Selected"), this, &GraphView::onDuplicateSelection)->setEnabled(selection);
    menu.addAction(tr("Remove Selected"), this, &GraphView::onRemoveSelection)->setEnabled(selection);
    menu.exec(viewport()->mapToGlobal(viewportPos));
}

void GraphView::selectNodeItems(ArrayView<NodeItem* const> items, bool exclusive)
{
    // One notice for the whole change: a notice per item would restack the scene once per item.
    {
        const QSignalBlocker blocker(graphScene);
        if (exclusive)
            graphScene->clearSelection();
        for (NodeItem* item : items)
            item->setSelected(true);
    }
    onSelectionChanged();
}

void GraphView::onSelectAllNodes()
{
    selectNodeItems(getNodeItems(), false);
}

void GraphView::onClearSelection()
{
    selectNodeItems({}, true);
}

void GraphView::onRemoveSelection()
{
    Array<EntityHolder<Node>> nodes;
    for (const NodeItem* item : getSelectedNodeItems())
        nodes.push_back(item->getNode());
    if (!nodes.empty())
        runAction("Remove Selected", [&] { model->removeNodes(nodes); });
}

void GraphView::onDuplicateSelection()
{
    const Array<NodeItem*> selected = getSelectedNodeItems();
    if (selected.empty())
        return;
    Array<EntityHolder<Node>> nodes;
    for (const NodeItem* item : selected)
        nodes.push_back(item->getNode());
    const QPointF position = nodeItemsBoundingRect(selected).topLeft() + DUPLICATE_OFFSET;
    Stack<EntityHolder<Node>> copies;
    runAction("Duplicate Selected", [&] { copies = model->duplicateNodes(nodes, position); });
    selectNodeItems(lookupNodeItems(copies), true);
}

Array<NodeItem*> GraphView::getNodeTree(NodeItem* root) const
{
    Array<NodeItem*> tree { root };
    std::unordered_set<NodeItem*> seen { root };
    for (std::size_t i = 0; i < tree.size(); ++i)
        for (const QPointer<NodeItem>& input : tree[i]->getInputs())
            if (input && seen.insert(input.data()).second)
                tree.push_back(input.data());
    return tree;
}

} // namespace Marlix::Widgets
