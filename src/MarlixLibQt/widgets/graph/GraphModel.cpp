#include "GraphModel.h"

#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/data/EntityReferences.h>
#include <MarlixLib/data/GroupLayout.h>
#include <MarlixLib/data/MathValueTraits.h>
#include <MarlixLib/data/PropertyDefinition.h>
#include <MarlixLib/data/TypeDefinition.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/properties/UiAttributes.h>

#include <QCoreApplication>
#include <QMetaObject>

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace Marlix::Widgets {

namespace {
using EntityList = Array<EntityHolder<Entity>>;

EntityHolder<Entity> makeNode(const EntityClassInfo& entityClass) { return makeSharedPtr<Node>(entityClass); }
EntityHolder<Entity> makeGraph(const EntityClassInfo& entityClass) { return makeSharedPtr<GraphModel>(entityClass); }

const EntityClassInfo& nodeBaseClass()
{
    // The reference type of "nodes" must name the node class before it exists; the node class then derives from
    // this propertyless base, which only graphs reference.
    static const EntityClassInfo info("GraphNodeBase", EntityClassInfo::entityClass(), {}, nullptr);
    return info;
}

// Graph records are the library's own: never offered where a user picks a class to create.
UserData hiddenClass()
{
    return UserData().set(String(UiFlags::ATTRIBUTE), UiFlags { UiFlag::Hidden });
}

bool isInput(const PropertyDefinition& property)
{
    return property.getTypeDefinition().getKind() == TypeKind::EntityReference;
}

QString labelOf(const PropertyDefinition& property)
{
    if (const String* name = property.getAttributes().get<String>("Zorva.Ui.Name"); name && !name->empty())
        return toQt(*name);
    return toQt(property.getName());
}

// The list may hold empty references (a stream may say so); they are no nodes and are skipped everywhere.
EntityHolder<Node> asNode(const EntityHolder<Entity>& entity)
{
    return std::dynamic_pointer_cast<Node>(entity);
}

const EntityList& nodeList(const GenericDataObject& graph)
{
    return graph.getPropertyValue<EntityList>(GraphModel::NODES);
}

// Runs `work` on the GUI thread's event loop once the current notification has unwound; without an application the
// work runs at once, so models also work in tools without an event loop.
void post(Function<void()> work)
{
    if (auto* application = QCoreApplication::instance())
        QMetaObject::invokeMethod(application, [work = std::move(work)] { work(); }, Qt::QueuedConnection);
    else
        work();
}
} // namespace

// ---- Node ----------------------------------------------------------------------------------------------------------

const EntityClassInfo& Node::getClass()
{
    static const EntityClassInfo info = [] {
        static const auto anyEntity = TypeDefinition::makeEntityReference("GraphNodeEntity", EntityClassInfo::entityClass());
        static const auto position = TypeDefinition::makePlain<Vector2f>("Vector2f");
        return EntityClassInfo("GraphNode", nodeBaseClass(),
            { makeSharedPtr<const GroupLayout>("GraphNode",
                Array<PropertyDefinition> {
                    PropertyDefinition(ENTITY, anyEntity),
                    PropertyDefinition::make(POSITION, position, Vector2f {}),
                }) },
            makeNode, hiddenClass());
    }();
    return info;
}

Node::Node()
    : Node(getClass())
{
}

Node::Node(const EntityClassInfo& entityClass)
    : Entity(entityClass)
{
}

Node::Node(EntityHolder<Entity> entity, const EntityHolder<GraphModel>& model)
    : Entity(getClass())
    , model(model)
{
    // Set once, before anybody can observe the node: no undo record.
    restoreProperty(static_cast<std::uint32_t>(indexOfProperty(ENTITY)), &entity);
}

EntityHolder<Entity> Node::getEntity() const
{
    return getPropertyValue<EntityHolder<Entity>>(ENTITY);
}

QPointF Node::getPosition() const
{
    const auto& position = getPropertyValue<Vector2f>(POSITION);
    return { position.x, position.y };
}

void Node::setPosition(QPointF position)
{
    const Vector2f narrowed { static_cast<float>(position.x()), static_cast<float>(position.y()) };
    if (narrowed != getPropertyValue<Vector2f>(POSITION))
        setPropertyValue(POSITION, narrowed);
}

QString Node::getTitle() const
{
    const auto entity = getEntity();
    if (!entity)
        return {};
    if (const int name = entity->indexOfProperty("name"); name >= 0) {
        const GenericProperty property = entity->getProperty(static_cast<std::uint32_t>(name));
        if (property.getTypeDefinition().isNative<String>() && !property.get<String>().empty())
            return toQt(property.get<String>());
    }
    return toQt(entity->getClassInfo().getName());
}

void Node::synchronize(Synchronize mode)
{
    const auto entity = getEntity();
    if (!entity) {
        inputs.clear();
        return;
    }
    if (mode == Synchronize::Everything || !synchronized) {
        inputs.clear();
        for (std::uint32_t i = 0; i < entity->getPropertyCount(); ++i)
            if (const PropertyDefinition& property = entity->getPropertyDefinition(i); isInput(property))
                inputs.push_back({ property.getName(), labelOf(property), {} });
        synchronized = true;
    }
    for (Input& input : inputs)
        input.source = EntityHandle(entity->visitProperty(input.property, [](const GenericProperty& property) {
            return getEntityFromProperty(property);
        }));
}

void Node::setEntityObserver(Function<void()> function)
{
    observerLifetimes.clear();
    observer = std::move(function);
    if (!observer)
        return;
    const auto onChange = [weak = WeakPtr<Node>(std::static_pointer_cast<Node>(getHolder()))](const ObservedProperty&) {
        const auto node = weak.lock();
        if (!node)
            return;
        if (const auto graph = node->getModel())
            graph->updateNode(*node);
        else
            node->runObserver();
    };
    if (const auto entity = getEntity())
        observerLifetimes.add(entity->addObserver(onChange));
    observerLifetimes.add(addObserver(onChange));
}

void Node::runObserver()
{
    if (observer)
        observer();
}

Stack<Node::InputDescriptor> Node::getAvailableInputs() const
{
    Stack<InputDescriptor> result;
    const auto entity = getEntity();
    if (!entity)
        return result;
    for (std::uint32_t i = 0; i < entity->getPropertyCount(); ++i) {
        const PropertyDefinition& property = entity->getPropertyDefinition(i);
        if (!isInput(property))
            continue;
        const bool connected = getEntityFromProperty(entity->getProperty(i)) != nullptr;
        result.emplace_back(property.getName(), labelOf(property), connected);
    }
    return result;
}

EntityHolder<Entity> Node::getInputSource(StringView property) const
{
    for (const Input& input : inputs)
        if (input.property == property)
            return input.source.lock();
    return nullptr;
}

bool Node::canConnectProperty(const EntityHolder<Node>& from, StringView property) const
{
    const auto target = getEntity();
    const auto source = from ? from->getEntity() : nullptr;
    if (!target || !source)
        return false;
    const int index = target->indexOfProperty(property);
    if (index < 0 || !isInput(target->getPropertyDefinition(static_cast<std::uint32_t>(index))))
        return false;
    const auto accepted = getEntityClassAcceptedByProperty(target->getProperty(static_cast<std::uint32_t>(index)));
    if (!accepted || !source->isInstanceOf(*accepted))
        return false;
    return canAddChildrenWithoutCycles(*target, *source);
}

void Node::connectProperty(const EntityHolder<Node>& from, StringView property) const
{
    if (!canConnectProperty(from, property))
        throw Exception("\"" + String(property) + "\" cannot reference that entity: its class does not fit, or the "
            "reference would lead back to the entity itself");
    getEntity()->setPropertyValue(property, from->getEntity());
}

void Node::disconnectProperty(StringView property) const
{
    const auto entity = getEntity();
    if (!entity)
        return;
    const int index = entity->indexOfProperty(property);
    if (index < 0 || !isInput(entity->getPropertyDefinition(static_cast<std::uint32_t>(index))))
        throw Exception("\"" + String(property) + "\" is not a reference of " + entity->getClassInfo().getName());
    if (getEntityFromProperty(entity->getProperty(static_cast<std::uint32_t>(index))))
        entity->setPropertyValue(property, EntityHolder<Entity>());
}

// ---- GraphModel ----------------------------------------------------------------------------------------------------

const EntityClassInfo& GraphModel::getClass()
{
    static const EntityClassInfo info = [] {
        static const auto reference = TypeDefinition::makeEntityReference("GraphNodeReference", nodeBaseClass());
        static const auto list = TypeDefinition::makeList<EntityHolder<Entity>>("GraphNodeList", reference);
        return EntityClassInfo("GraphModel", EntityClassInfo::entityClass(),
            { makeSharedPtr<const GroupLayout>("GraphModel", Array<PropertyDefinition> { PropertyDefinition(NODES, list) }) },
            makeGraph, hiddenClass());
    }();
    return info;
}

GraphModel::GraphModel()
    : GraphModel(getClass())
{
}

GraphModel::GraphModel(const EntityClassInfo& entityClass)
    : Entity(entityClass)
{
}

GraphModel::~GraphModel() = default;

void GraphModel::setScene(const SharedPtr<EntityGraphTracker>& tracker)
{
    scene = tracker;
}

CallbackLifetime GraphModel::setModelObserver(ModelObserver observer)
{
    ensureObserved();
    // One consumer is the design (the view); a list makes the registration's end safe from either side.
    return modelObservers.add(std::move(observer));
}

void GraphModel::ensureObserved()
{
    if (observing)
        return;
    observing = true;
    // A graph read from a stream comes without index and without back references: both are derived from "nodes".
    lastNodes = nodeList(*this);
    const auto self = std::static_pointer_cast<GraphModel>(getHolder());
    for (const auto& entity : lastNodes)
        if (const auto node = asNode(entity))
            node->model = self;
    rebuildIndex();
    nodesLifetime = addPropertyObserver(static_cast<std::uint32_t>(indexOfProperty(NODES)),
        [this](const ObservedProperty&) { onNodesChanged(); });
}

void GraphModel::onNodesChanged()
{
    const EntityList& after = nodeList(*this);
    const auto contains = [](const EntityList& list, const EntityHolder<Entity>& entity) {
        return std::find(list.begin(), list.end(), entity) != list.end();
    };
    Array<EntityHolder<Node>> added;
    Array<EntityHolder<Node>> removed;
    for (const auto& entity : after)
        if (const auto node = asNode(entity); node && !contains(lastNodes, entity))
            added.push_back(node);
    for (const auto& entity : lastNodes)
        if (const auto node = asNode(entity); node && !contains(after, entity))
            removed.push_back(node);
    lastNodes = after;
    const auto self = std::static_pointer_cast<GraphModel>(getHolder());
    for (const auto& node : added)
        node->model = self;
    if (removed.empty()) {
        for (const auto& node : added)
            indexInsert(node);
    } else {
        // A list read from a stream or set by a host may show one entity by two nodes: when the indexed one goes, the
        // other must be found again, so removals derive the index anew.
        rebuildIndex();
    }
    const ArrayView<const EntityHolder<Node>> addedView(added);
    const ArrayView<const EntityHolder<Node>> removedView(removed);
    modelObservers.call(addedView, removedView);
}

Array<GraphModel::IndexEntry>::const_iterator GraphModel::lowerBound(std::uint64_t key) const
{
    return std::lower_bound(
        index.begin(), index.end(), key, [](const IndexEntry& entry, std::uint64_t value) { return entry.key < value; });
}

void GraphModel::indexInsert(const EntityHolder<Node>& node)
{
    const auto entity = node->getEntity();
    if (!entity)
        return;
    const std::uint64_t key = entity->getId();
    const auto place = lowerBound(key);
    if (place != index.end() && place->key == key)
        index[static_cast<std::size_t>(place - index.begin())].node = node;
    else
        index.insert(place, { key, node });
}

void GraphModel::rebuildIndex()
{
    index.clear();
    for (const auto& entity : lastNodes)
        if (const auto node = asNode(entity))
            if (const auto shown = node->getEntity())
                index.push_back({ shown->getId(), node });
    // Of two nodes of one entity the later in the list wins, as it does when nodes are added one by one.
    std::stable_sort(index.begin(), index.end(), [](const auto& a, const auto& b) { return a.key < b.key; });
    const auto last = std::unique(index.rbegin(), index.rend(), [](const auto& a, const auto& b) { return a.key == b.key; });
    index.erase(index.begin(), last.base());
}

Array<EntityHolder<Node>> GraphModel::getNodes() const
{
    Array<EntityHolder<Node>> nodes;
    for (const auto& entity : nodeList(*this))
        if (auto node = asNode(entity))
            nodes.push_back(std::move(node));
    return nodes;
}

std::size_t GraphModel::getNodeCount() const
{
    const EntityList& list = nodeList(*this);
    return static_cast<std::size_t>(std::count_if(list.begin(), list.end(), [](const auto& e) { return asNode(e) != nullptr; }));
}

EntityHolder<Node> GraphModel::findNode(const Entity& entity) const
{
    const_cast<GraphModel*>(this)->ensureObserved();
    const auto place = lowerBound(entity.getId());
    return place != index.end() && place->key == entity.getId() ? place->node : nullptr;
}

void GraphModel::appendNode(const EntityHolder<Node>& node)
{
    ensureObserved();
    if (const auto tracker = scene.lock(); tracker && !tracker->contains(*node))
        tracker->addEntity(node);
    mutateProperty(NODES, [&](GenericProperty& property) {
        static_cast<EntityList*>(property.getMutableData())->push_back(node);
    });
}

EntityHolder<Node> GraphModel::getOrCreateNode(const EntityHolder<Entity>& entity, const QPointF& position)
{
    if (!entity)
        throw Exception("A graph node needs an entity to show");
    if (auto node = findNode(*entity)) {
        node->setPosition(position);
        return node;
    }
    auto node = makeSharedPtr<Node>(entity, std::static_pointer_cast<GraphModel>(getHolder()));
    node->setPosition(position);
    node->synchronize(Node::Synchronize::Everything);
    appendNode(node);
    return node;
}

EntityHolder<Node> GraphModel::createNodeTree(Stack<EntityHolder<Node>>& created, const EntityHolder<Entity>& entity,
    const QPointF& position, bool withInputs, const NodeCallback& onNode)
{
    Array<std::uint64_t> visited;
    return createTree(created, entity, position, withInputs, onNode, true, visited);
}

EntityHolder<Node> GraphModel::createTree(Stack<EntityHolder<Node>>& created, const EntityHolder<Entity>& entity,
    const QPointF& position, bool withInputs, const NodeCallback& onNode, bool root, Array<std::uint64_t>& visited)
{
    // An entity reached twice (fan-out within the tree) keeps the place it got first.
    if (std::find(visited.begin(), visited.end(), entity->getId()) != visited.end())
        return findNode(*entity);
    visited.push_back(entity->getId());
    const bool existed = findNode(*entity) != nullptr;
    auto node = getOrCreateNode(entity, position);
    created.push_back(node);
    if (onNode)
        onNode(node, !existed, root);
    if (!withInputs)
        return node;
    double y = position.y();
    for (const auto& [property, label, connected] : node->getAvailableInputs()) {
        if (!connected)
            continue;
        const auto source = entity->visitProperty(property, [](const GenericProperty& p) { return getEntityFromProperty(p); });
        if (!source || std::find(visited.begin(), visited.end(), source->getId()) != visited.end())
            continue;
        createTree(created, source, QPointF(position.x() - TREE_SPACING_X, y), true, onNode, false, visited);
        y += TREE_SPACING_Y;
    }
    return node;
}

Stack<EntityHolder<Node>> GraphModel::duplicateNodes(ArrayView<const EntityHolder<Node>> nodes, const QPointF& position,
    const Function<void(EntityHolder<Entity>&)>& onCopy)
{
    Stack<EntityHolder<Node>> result;
    Array<std::pair<EntityHolder<Node>, EntityHolder<Entity>>> originals;
    for (const auto& node : nodes)
        if (node)
            if (auto entity = node->getEntity())
                originals.emplace_back(node, std::move(entity));
    if (originals.empty())
        return result;
    double left = originals.front().first->getPosition().x();
    double top = originals.front().first->getPosition().y();
    for (const auto& [node, entity] : originals) {
        left = std::min(left, node->getPosition().x());
        top = std::min(top, node->getPosition().y());
    }
    std::unordered_map<std::uint64_t, EntityHolder<Entity>> copies;
    Array<EntityHolder<Entity>> ordered;
    for (const auto& [node, entity] : originals) {
        auto copy = entity->clone();
        copies.emplace(entity->getId(), copy);
        ordered.push_back(std::move(copy));
    }
    // Copies that referenced each other now reference the copies, so a duplicated network is a network of its own.
    for (auto& copy : ordered) {
        for (std::uint32_t i = 0; i < copy->getPropertyCount(); ++i) {
            if (!isInput(copy->getPropertyDefinition(i)))
                continue;
            const auto source = getEntityFromProperty(copy->getProperty(i));
            if (!source)
                continue;
            if (const auto found = copies.find(source->getId()); found != copies.end())
                copy->setPropertyValue(copy->getPropertyDefinition(i).getName(), found->second);
        }
        if (const auto tracker = scene.lock())
            tracker->addEntity(copy);
        if (onCopy)
            onCopy(copy);
    }
    for (std::size_t i = 0; i < originals.size(); ++i) {
        const QPointF offset = originals[i].first->getPosition() - QPointF(left, top);
        result.push_back(getOrCreateNode(ordered[i], position + offset));
    }
    return result;
}

void GraphModel::removeNodes(ArrayView<const EntityHolder<Node>> nodes)
{
    ensureObserved();
    const EntityList& current = nodeList(*this);
    EntityList kept;
    kept.reserve(current.size());
    Array<EntityHolder<Entity>> taken;
    for (const auto& entity : current) {
        const bool remove = std::any_of(nodes.begin(), nodes.end(), [&](const auto& node) { return node == entity; });
        (remove ? taken : kept).push_back(entity);
    }
    if (taken.empty())
        return;
    setPropertyValue(NODES, kept);
    if (const auto tracker = scene.lock())
        for (const auto& node : taken)
            tracker->removeEntity(*node);
}

void GraphModel::updateNode(Node& node)
{
    if (node.refreshPending)
        return;
    node.refreshPending = true;
    post([weak = WeakPtr<Node>(std::static_pointer_cast<Node>(node.getHolder()))] {
        const auto locked = weak.lock();
        if (!locked)
            return;
        locked->refreshPending = false;
        locked->synchronize(Node::Synchronize::Sources);
        locked->runObserver();
    });
}

void GraphModel::resynchronize()
{
    for (const auto& node : getNodes())
        node->synchronize(Node::Synchronize::Everything);
}

} // namespace Marlix::Widgets
