// The view's input: mouse, wheel, pinch, keys, drops and the context menu, and the states they move through.
#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>

#include <QGestureEvent>
#include <QGraphicsScene>
#include <QKeyEvent>
#include <QPinchGesture>

#include <algorithm>
#include <cmath>

namespace Marlix::Widgets {

namespace {

constexpr Qt::KeyboardModifiers MODIFIER_MASK
    = Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier | Qt::MetaModifier;
} // namespace

bool GraphView::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (handleShortcut(key)) {
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

bool GraphView::handleShortcut(QKeyEvent* event)
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
    if (handleShortcut(event)) {
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
            runAction(fromQt(tr("Connect Node")), [&] { to->connectProperty(from, input); });
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
        runAction(fromQt(tr("Connect Node")), [&] {
            if (liftedTarget)
                liftedTarget->getNode()->disconnectProperty(liftedInput);
            to->connectProperty(from, property);
        });
        return;
    }
    if (!target && liftedTarget)
        runAction(fromQt(tr("Disconnect Node")), [&] { liftedTarget->getNode()->disconnectProperty(liftedInput); });
}

void GraphView::startMovingNodes()
{
    moveStarts.clear();
    for (NodeItem* item : getSelectedNodeItems())
        moveStarts.emplace_back(item, item->pos());
    setMovingWiresLive(true);
}

void GraphView::setMovingWiresLive(bool live)
{
    // Drawing the moving wires again into the layer on every mouse move would cost more than the layer saves.
    const auto setLive = [this, live](ConnectionItem* connection) {
        connection->setLive(live);
        connection->setFlag(QGraphicsItem::ItemHasNoContents, !live && wiresWithoutContents());
    };
    if (live) {
        for (const auto& [item, start] : moveStarts)
            if (item)
                for (ConnectionItem* connection : item->getConnections())
                    setLive(connection);
    } else {
        for (ConnectionItem* connection : connections)
            if (connection->isLive())
                setLive(connection);
    }
}

void GraphView::commitMovedNodes()
{
    Array<NodeItem*> moved;
    for (const auto& [item, start] : moveStarts)
        if (item && item->pos() != start)
            moved.push_back(item);
    moveStarts.clear();
    setMovingWiresLive(false);
    if (!moved.empty())
        runAction(fromQt(tr("Move Node")), [&] {
            for (NodeItem* item : moved)
                item->commitPosition();
        });
}

} // namespace Marlix::Widgets
