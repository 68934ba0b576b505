// The view's edits besides connecting and moving: drops, the context menu, and the commands on the selection.
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>
#include <MarlixLibQt/widgets/properties/UiAttributes.h>

#include <QDropEvent>
#include <QGraphicsScene>
#include <QMenu>
#include <QMimeData>

#include <algorithm>
#include <unordered_set>

namespace Marlix::Widgets {

namespace {

// Where the copies of duplicated nodes go, relative to the originals, and how far apart dropped nodes are placed.
constexpr QPointF DUPLICATE_OFFSET(40.0, 40.0);
constexpr QPointF DROP_STEP(30.0, 30.0);
constexpr int MAX_MENU_ENTITIES = 200;

// The library's own records (graph nodes, graphs) are classes flagged hidden: no menu or drop offers them.
bool isGraphEntity(const Entity& entity)
{
    return UiFlags::of(entity.getClassInfo().getAttributes()).has(UiFlag::Hidden)
        || entity.isInstanceOf(Node::getClass()) || entity.isInstanceOf(GraphModel::getClass());
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

Array<std::uint64_t> GraphView::parseEntityIds(const QByteArray& payload)
{
    Array<std::uint64_t> ids;
    for (const QByteArray& word : payload.simplified().split(' ')) {
        bool ok = false;
        const qulonglong id = word.toULongLong(&ok);
        // Identities start at 1; anything else names no entity.
        if (ok && id != 0 && std::find(ids.begin(), ids.end(), id) == ids.end())
            ids.push_back(id);
    }
    return ids;
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
    for (const std::uint64_t id : parseEntityIds(payload)) {
        const EntityHolder<Entity> entity = scene ? scene->findEntity(id) : nullptr;
        if (entity && !isGraphEntity(*entity))
            entities.push_back(entity);
    }
    if (entities.empty()) {
        event->ignore();
    } else {
        event->acceptProposedAction();
        addEntitiesAt(entities, toScene(event->position()), fromQt(tr("Add Node")));
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
    runAction(fromQt(tr("Create Node")), [&] {
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
        for (const EntityClassInfo& entityClass : getUiEntityClasses(EntityClassInfo::entityClass()))
            menu.addAction(tr("Add %1").arg(QString::fromStdString(entityClass.getName())), this,
                [this, entityClass, scenePos] { createEntityAt(entityClass, scenePos); });
        QMenu* existing = menu.addMenu(tr("Add Existing"));
        int listed = 0;
        for (const EntityHolder<Entity>& entity : scene->getEntities()) {
            if (listed == MAX_MENU_ENTITIES)
                break;
            if (isGraphEntity(*entity) || model->findNode(*entity))
                continue;
            existing->addAction(entityTitle(*entity), this, [this, entity, scenePos] {
                const EntityHolder<Entity> entities[] = { entity };
                addEntitiesAt(entities, scenePos, fromQt(tr("Add Node")));
            });
            ++listed;
        }
        existing->setEnabled(listed > 0);
        menu.addSeparator();
    }
    const bool selection = !getSelectedNodeItems().empty();
    menu.addAction(tr("Rearrange All"), this, &GraphView::rearrange)->setEnabled(!nodeItems.empty());
    menu.addAction(tr("Rearrange Selection"), this, &GraphView::onRearrangeSelection)
        ->setEnabled(getSelectedNodeItems().size() > 1);
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
        runAction(fromQt(tr("Remove Selected")), [&] { model->removeNodes(nodes); });
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
    runAction(fromQt(tr("Duplicate Selected")), [&] { copies = model->duplicateNodes(nodes, position); });
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
