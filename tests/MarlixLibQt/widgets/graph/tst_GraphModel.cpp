#include <MarlixLib/Lib.h>
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/io/SceneSerializer.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/widgets/graph/GraphModel.h>
#include <MarlixTestScene/TestScene.h>

#include <QTest>

using namespace Marlix;
using namespace Marlix::Widgets;
using namespace Marlix::TestScene;

namespace {

/// A scene holding a graph, the way a host keeps one: the graph is an entity of the scene it shows.
struct GraphScene
{
    SharedPtr<EntityGraphTracker> scene = makeSharedPtr<EntityGraphTracker>();
    EntityHolder<GraphModel> graph = makeSharedPtr<GraphModel>();
    Array<Array<std::uint64_t>> added;
    Array<Array<std::uint64_t>> removed;
    CallbackLifetime lifetime;

    GraphScene()
    {
        scene->addEntity(graph);
        graph->setScene(scene);
        lifetime = graph->setModelObserver([this](auto addedNodes, auto removedNodes) {
            added.push_back(ids(addedNodes));
            removed.push_back(ids(removedNodes));
        });
    }
    static Array<std::uint64_t> ids(ArrayView<const EntityHolder<Node>> nodes)
    {
        Array<std::uint64_t> result;
        for (const auto& node : nodes)
            result.push_back(node->getEntity()->getId());
        return result;
    }
    EntityHolder<Entity> add(const EntityClassInfo& entityClass, const char* name)
    {
        auto entity = entityClass.create();
        entity->setPropertyValue("name", String(name));
        scene->addEntity(entity);
        return entity;
    }
};

} // namespace

class tst_GraphModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        LibQt::startup("tst_GraphModel");
        registerTypes();
    }
    void cleanupTestCase() { LibQt::shutdown(); }

    void addingAnEntityTwiceMovesItsNode();
    void membershipChangesAreReportedAsDifferences();
    void positionsAreStoredAsFloats();
    void removingNodesLeavesTheSceneAlone();
    void connectionTest_data();
    void connectionTest();
    void refreshIsPostedAfterTheChange();
    void undoRestoresMembershipAndIndex();
    void graphIsSavedWithItsScene();
    void treeAndDuplicates();
};

void tst_GraphModel::addingAnEntityTwiceMovesItsNode()
{
    GraphScene s;
    const auto texture = s.add(textureClass(), "Oak");
    const auto first = s.graph->getOrCreateNode(texture, { 10, 20 });
    const auto again = s.graph->getOrCreateNode(texture, { 300, -40 });
    QCOMPARE(again, first);
    QCOMPARE(s.graph->getNodeCount(), 1u);
    QCOMPARE(first->getPosition(), QPointF(300, -40));
    QCOMPARE(s.graph->findNode(*texture), first);
    QVERIFY(s.scene->contains(*first)); // saved with the scene
}

void tst_GraphModel::membershipChangesAreReportedAsDifferences()
{
    GraphScene s;
    const auto a = s.add(textureClass(), "A");
    const auto b = s.add(textureClass(), "B");
    const auto nodeA = s.graph->getOrCreateNode(a, {});
    const auto nodeB = s.graph->getOrCreateNode(b, {});
    QCOMPARE(s.added, (Array<Array<std::uint64_t>> { { a->getId() }, { b->getId() } }));

    // A reorder changes the list but not the membership.
    s.graph->setPropertyValue(GraphModel::NODES, Array<EntityHolder<Entity>> { nodeB, nodeA });
    QCOMPARE(s.added.back(), Array<std::uint64_t> {});
    QCOMPARE(s.removed.back(), Array<std::uint64_t> {});

    s.graph->removeNodes(std::array { nodeA });
    QCOMPARE(s.removed.back(), Array<std::uint64_t> { a->getId() });
    QCOMPARE(s.added.back(), Array<std::uint64_t> {});
    QVERIFY(!s.graph->findNode(*a));
    QCOMPARE(s.graph->findNode(*b), nodeB);
}

void tst_GraphModel::positionsAreStoredAsFloats()
{
    GraphScene s;
    const auto node = s.graph->getOrCreateNode(s.add(textureClass(), "T"), { 0.1, -1e7 / 3.0 });
    QCOMPARE(node->getPosition(), QPointF(double(0.1f), double(float(-1e7 / 3.0))));
    QVERIFY(node->getPosition().x() != 0.1);
}

void tst_GraphModel::removingNodesLeavesTheSceneAlone()
{
    GraphScene s;
    const auto texture = s.add(textureClass(), "Albedo");
    const auto material = s.add(layeredMaterialClass(), "Wood");
    material->setPropertyValue("baseColorMap", texture);
    const auto textureNode = s.graph->getOrCreateNode(texture, {});
    const auto materialNode = s.graph->getOrCreateNode(material, { 300, 0 });

    s.graph->removeNodes(std::array { textureNode, materialNode });
    QCOMPARE(s.graph->getNodeCount(), 0u);
    QVERIFY(s.scene->contains(*texture));
    QVERIFY(!s.scene->contains(*textureNode));
    QCOMPARE(material->getPropertyValue<EntityHolder<Entity>>("baseColorMap"), texture);
}

void tst_GraphModel::connectionTest_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("source");
    QTest::addColumn<bool>("allowed");

    // Scene: noise <- scratches <- brushed (texture chain), layered material "steel" uses brushed.
    QTest::newRow("texture into a map") << "steel" << "roughnessMap" << "noise" << true;
    QTest::newRow("derived material into a coat") << "steel" << "coat" << "paint" << true;
    QTest::newRow("texture into a coat") << "steel" << "coat" << "noise" << false;
    QTest::newRow("material into a texture's source") << "noise" << "source" << "steel" << false;
    QTest::newRow("closes a loop") << "noise" << "source" << "brushed" << false;
    QTest::newRow("onto itself") << "noise" << "source" << "noise" << false;
    QTest::newRow("re-routing a chain") << "brushed" << "source" << "noise" << true;
    QTest::newRow("not a reference") << "steel" << "name" << "noise" << false;
    QTest::newRow("no such property") << "steel" << "missing" << "noise" << false;
}

void tst_GraphModel::connectionTest()
{
    QFETCH(QString, target);
    QFETCH(QString, property);
    QFETCH(QString, source);
    QFETCH(bool, allowed);

    GraphScene s;
    std::map<QString, EntityHolder<Node>> nodes;
    const auto node = [&](const char* name, const EntityClassInfo& entityClass) {
        nodes[name] = s.graph->getOrCreateNode(s.add(entityClass, name), {});
        return nodes[name]->getEntity();
    };
    const auto noise = node("noise", textureClass());
    const auto scratches = node("scratches", textureClass());
    const auto brushed = node("brushed", textureClass());
    const auto steel = node("steel", layeredMaterialClass());
    node("paint", layeredMaterialClass());
    scratches->setPropertyValue("source", noise);
    brushed->setPropertyValue("source", scratches);
    steel->setPropertyValue("roughnessMap", brushed);

    const auto& to = nodes.at(target);
    const auto& from = nodes.at(source);
    const String name = property.toStdString();
    QCOMPARE(to->canConnectProperty(from, name), allowed);
    UndoManager undo;
    auto action = undo.createAction("Connect Node");
    if (allowed) {
        to->connectProperty(from, name);
        QCOMPARE(to->getEntity()->getPropertyValue<EntityHolder<Entity>>(name), from->getEntity());
    } else {
        QVERIFY_THROWS_EXCEPTION(Exception, to->connectProperty(from, name));
    }
    action.commit();
    QCOMPARE(undo.getUndoCount(), allowed ? 1u : 0u);
}

void tst_GraphModel::refreshIsPostedAfterTheChange()
{
    GraphScene s;
    const auto texture = s.add(textureClass(), "Source");
    const auto material = s.add(layeredMaterialClass(), "Target");
    const auto from = s.graph->getOrCreateNode(texture, {});
    const auto to = s.graph->getOrCreateNode(material, {});
    int refreshes = 0;
    to->setEntityObserver([&] { ++refreshes; });

    to->connectProperty(from, "normalMap");
    to->setPosition({ 5, 5 });
    // Nothing runs inside the notifications; one refresh follows the burst.
    QCOMPARE(refreshes, 0);
    QCOMPARE(to->getInputSource("normalMap"), nullptr);
    QCoreApplication::processEvents();
    QCOMPARE(refreshes, 1);
    QCOMPARE(to->getInputSource("normalMap"), texture);

    const auto inputs = to->getAvailableInputs();
    QCOMPARE(inputs.size(), 4u);
    QCOMPARE(inputs[2], Node::InputDescriptor("normalMap", "Normal map", true));
    QCOMPARE(std::get<2>(inputs[0]), false);
}

void tst_GraphModel::undoRestoresMembershipAndIndex()
{
    GraphScene s;
    UndoManager undo;
    const auto texture = s.add(textureClass(), "T");
    auto action = undo.createAction("Add Node");
    const auto node = s.graph->getOrCreateNode(texture, { 1, 2 });
    action.commit();

    undo.undo();
    QCOMPARE(s.graph->getNodeCount(), 0u);
    QVERIFY(!s.graph->findNode(*texture));
    QVERIFY(!s.scene->contains(*node));
    QCOMPARE(s.removed.back(), Array<std::uint64_t> { texture->getId() });
    undo.redo();
    QCOMPARE(s.graph->findNode(*texture), node);
    QCOMPARE(node->getPosition(), QPointF(1, 2));
}

void tst_GraphModel::graphIsSavedWithItsScene()
{
    GraphScene s;
    const auto network = populateMaterialNetwork(*s.scene);
    for (std::size_t i = 0; i < network.size(); ++i)
        s.graph->getOrCreateNode(network[i], QPointF(double(i) * 10.5, double(i) * -3.25));
    const auto bytes = SceneSerializer::saveToBytes(*s.scene);

    EntityGraphTracker loaded;
    QVERIFY(SceneSerializer::loadFromBytes(loaded, bytes).has_value());
    const auto graphs = loaded.getEntitiesOfClass(GraphModel::getClass());
    QCOMPARE(graphs.size(), 1u);
    const auto graph = std::static_pointer_cast<GraphModel>(graphs.front());
    QCOMPARE(graph->getNodeCount(), network.size());
    for (std::size_t i = 0; i < network.size(); ++i) {
        const auto node = graph->getNodes()[i];
        QCOMPARE(node->getPosition(), QPointF(double(i) * 10.5, double(i) * -3.25));
        QCOMPARE(node->getTitle(), s.graph->getNodes()[i]->getTitle());
        // The index is derived again from the list that was read.
        QCOMPARE(graph->findNode(*node->getEntity()), node);
        QCOMPARE(node->getModel(), graph);
    }
}

void tst_GraphModel::treeAndDuplicates()
{
    GraphScene s;
    const auto network = populateMaterialNetwork(*s.scene);
    const auto car = *std::find_if(network.begin(), network.end(),
        [](const auto& e) { return e->template getPropertyValue<String>("name") == "Toy car"; });
    Stack<EntityHolder<Node>> created;
    int roots = 0;
    s.graph->createNodeTree(created, car, { 1000, 0 }, true, [&](const auto&, bool isNew, bool root) {
        QVERIFY(isNew);
        roots += root ? 1 : 0;
    });
    // Toy car <- Car body <- Car paint <- Paint albedo, Scratches <- Noise, Bumps normal, Clear coat.
    QCOMPARE(created.size(), 8u);
    QCOMPARE(roots, 1);
    for (std::size_t i = 1; i < created.size(); ++i)
        QVERIFY(created[i]->getPosition().x() < 1000);

    const auto copies = s.graph->duplicateNodes(std::array { created[1], created[2] }, { -500, -500 });
    QCOMPARE(copies.size(), 2u);
    const auto body = copies[0]->getEntity();
    const auto paint = copies[1]->getEntity();
    QVERIFY(body != created[1]->getEntity());
    QCOMPARE(body->getPropertyValue<EntityHolder<Entity>>("material"), paint); // re-pointed at the copy
    QCOMPARE(paint->getPropertyValue<EntityHolder<Entity>>("coat"),
        created[2]->getEntity()->getPropertyValue<EntityHolder<Entity>>("coat")); // outside the copy: kept
    QVERIFY(s.scene->contains(*body));
    const QPointF topLeft(std::min(copies[0]->getPosition().x(), copies[1]->getPosition().x()),
        std::min(copies[0]->getPosition().y(), copies[1]->getPosition().y()));
    QCOMPARE(topLeft, QPointF(-500, -500));
}

QTEST_MAIN(tst_GraphModel)
#include "tst_GraphModel.moc"
