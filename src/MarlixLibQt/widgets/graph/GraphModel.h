#pragma once

#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QPointF>
#include <QString>

#include <cstdint>
#include <tuple>
#include <utility>

namespace Marlix {
class EntityGraphTracker;
}

namespace Marlix::Widgets {

class GraphModel;

/// Places one scene entity on the canvas of a graph. Its inputs are the entity's reference properties, and a wire is
/// such a reference itself: connecting two nodes is an edit of the scene entity, removing a node breaks nothing.
class MARLIXLIBQT_EXPORT Node final : public Entity
{
public:
    static constexpr const char* ENTITY = "entity"; ///< Name of the reference property that holds the wrapped entity.
    /// Name of the Vector2f property that holds the position on the canvas.
    static constexpr const char* POSITION = "position";

    /// What `synchronize` refreshes.
    enum class Synchronize : std::uint8_t
    {
        /// The sources of the inputs already known: a reference changed.
        Sources = 0,
        /// The inputs themselves, their labels and sources: after loading or a change of the wrapped entity.
        Everything = 2,
    };

    /// One input: its property name (the key of every other operation), its label and whether a wire ends there.
    using InputDescriptor = std::tuple<String, QString, bool>;

    /// The class "GraphNode" of the type database.
    static const EntityClassInfo& getClass();

    /// Empty: for the type database, which fills it when loading.
    Node();
    /// For the type database: an empty node of `entityClass`, a subclass of "GraphNode".
    explicit Node(const EntityClassInfo& entityClass);
    /// A node showing `entity` in `model`, not yet added to it; the entity is set without an undo record.
    Node(EntityHolder<Entity> entity, const EntityHolder<GraphModel>& model);

    bool isTransitiveToUndoTracking() const override { return false; }

    EntityHolder<Entity> getEntity() const; ///< The entity shown; empty when none is set.
    /// The graph the node belongs to; empty once that graph is gone.
    EntityHolder<GraphModel> getModel() const { return model.lock(); }
    QPointF getPosition() const; ///< Top-left corner on the canvas, in scene units.
    /// Narrows `position` to two floats and writes it: an undoable edit in the open action.
    void setPosition(QPointF position);
    /// The wrapped entity's "name" when it has one, else its class name.
    QString getTitle() const;

    /// Reads the inputs again from the wrapped entity; with no entity the node has no inputs. The first call reads
    /// everything whatever `mode` says.
    void synchronize(Synchronize mode);
    /// Calls `observer` (posted, once per burst of changes) after the wrapped entity or the node itself changed.
    void setEntityObserver(Function<void()> observer);

    /// The reference properties of the wrapped entity, read now and in property order; empty without an entity.
    Stack<InputDescriptor> getAvailableInputs() const;
    /// The entity that input `property` references as of the last synchronisation; empty when none.
    EntityHolder<Entity> getInputSource(StringView property) const;
    /// Whether the wrapped entity's `property` may reference `from`'s entity: the class fits and no loop results.
    bool canConnectProperty(const EntityHolder<Node>& from, StringView property) const;
    /// Writes the reference through the entity's property mutation, so it is observed and undoable. An Exception when
    /// the connection is refused.
    void connectProperty(const EntityHolder<Node>& from, StringView property) const;
    /// Clears the reference `property` through the entity's property mutation, so it is observed and undoable. An
    /// Exception when the entity has no such reference; nothing happens without an entity.
    void disconnectProperty(StringView property) const;

private:
    friend class GraphModel;
    struct Input
    {
        String property;
        QString label;
        EntityHandle source;
    };
    void runObserver();

    WeakPtr<GraphModel> model;
    Array<Input> inputs;
    Function<void()> observer;
    CallbacksOwner observerLifetimes;
    bool synchronized = false;
    bool refreshPending = false;
};

/// The document of a node graph: the nodes in the order they were added. Only membership and positions are stored;
/// wires are the scene's own references. Nodes are found by their entity through an index sorted by identity.
class MARLIXLIBQT_EXPORT GraphModel final : public Entity
{
public:
    static constexpr const char* NODES = "nodes"; ///< Name of the list property that holds the nodes.

    /// Receives the nodes added and the nodes removed by one change of the node list.
    using ModelObserver = Function<void(ArrayView<const EntityHolder<Node>> added, ArrayView<const EntityHolder<Node>> removed)>;
    /// Reports each node `createNodeTree` produced: the node, whether it was made now (not found), and whether it is
    /// the root of the tree.
    using NodeCallback = Function<void(const EntityHolder<Node>&, bool created, bool root)>;

    /// The class "GraphModel" of the type database.
    static const EntityClassInfo& getClass();

    GraphModel();
    /// For the type database: an empty graph of `entityClass`, a subclass of "GraphModel".
    explicit GraphModel(const EntityClassInfo& entityClass);
    ~GraphModel() override;

    /// The scene that new and duplicated entities and the nodes themselves are added to, so a graph is saved with its
    /// scene. Held weakly: the scene usually holds the graph.
    void setScene(const SharedPtr<EntityGraphTracker>& scene);
    /// The scene set by setScene(); null once it is gone or before one was set.
    SharedPtr<EntityGraphTracker> getScene() const { return scene.lock(); }

    /// The one consumer of membership changes (the view): called after every change of "nodes" with the nodes only
    /// present after it and those only present before it. A reorder reports two empty lists.
    CallbackLifetime setModelObserver(ModelObserver observer);

    Array<EntityHolder<Node>> getNodes() const; ///< The nodes, in the order they were added.
    std::size_t getNodeCount() const; ///< Number of nodes, without making the list.
    /// The node that shows `entity`; empty when the graph has none.
    EntityHolder<Node> findNode(const Entity& entity) const;

    /// The node of `entity` moved to `position`, or a new one there, added to the graph and its scene.
    EntityHolder<Node> getOrCreateNode(const EntityHolder<Entity>& entity, const QPointF& position);
    /// The node of `entity` at `position` and, with `withInputs`, nodes of everything it references, placed to its
    /// left. Every node is pushed to `created` and reported to `onNode`.
    EntityHolder<Node> createNodeTree(Stack<EntityHolder<Node>>& created, const EntityHolder<Entity>& entity,
        const QPointF& position, bool withInputs, const NodeCallback& onNode);
    /// Copies of the nodes' entities, references among them re-pointed at the copies, each copy added to the scene and
    /// passed to `onCopy`, then shown by new nodes whose top-left corner as a group is `position`.
    Stack<EntityHolder<Node>> duplicateNodes(ArrayView<const EntityHolder<Node>> nodes, const QPointF& position,
        const Function<void(EntityHolder<Entity>&)>& onCopy = {});
    /// Takes the nodes out of the graph and their records out of the scene; the entities they show stay untouched.
    void removeNodes(ArrayView<const EntityHolder<Node>> nodes);

    /// Posts a refresh of `node`: its sources are read again and its observer called after the current change.
    void updateNode(Node& node);
    /// Every node brought up to date, in list order.
    void resynchronize();

    /// The horizontal distance `createNodeTree` leaves between a node and the inputs placed to its left.
    static constexpr double TREE_SPACING_X = 300.0;
    static constexpr double TREE_SPACING_Y = 120.0; ///< The vertical distance it leaves between sibling inputs.

private:
    struct IndexEntry
    {
        std::uint64_t key;
        EntityHolder<Node> node;
    };
    void ensureObserved();
    void onNodesChanged();
    void indexInsert(const EntityHolder<Node>& node);
    void rebuildIndex();
    Array<IndexEntry>::const_iterator lowerBound(std::uint64_t key) const;
    void appendNode(const EntityHolder<Node>& node);
    EntityHolder<Node> createTree(Stack<EntityHolder<Node>>& created, const EntityHolder<Entity>& entity,
        const QPointF& position, bool withInputs, const NodeCallback& onNode, bool root, Array<std::uint64_t>& visited);

    Array<IndexEntry> index;
    Array<EntityHolder<Entity>> lastNodes;
    WeakPtr<EntityGraphTracker> scene;
    CallbackList<ArrayView<const EntityHolder<Node>>, ArrayView<const EntityHolder<Node>>> modelObservers;
    CallbackLifetime nodesLifetime;
    bool observing = false;
};

} // namespace Marlix::Widgets
