#include <MarlixLib/Lib.h>
#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/math/PosRotScaleTm.h>
#include <MarlixLib/undo/UndoManager.h>

#include <MarlixTestScene/TestScene.h>

#include <QtTest/QTest>

#include <random>

using namespace Marlix;
using namespace Marlix::TestScene;

class TestUndoManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { Lib::startup(); }
    void cleanupTestCase() { Lib::shutdown(); }
    void init();

    void twoActionsAreTwoStepsWithLabels();
    void gestureIsOneStep();
    void revertRestoresEveryValueExactly();
    void nestedActionsBelongToTheOuter_data();
    void nestedActionsBelongToTheOuter();
    void limitDropsOldestSteps();
    void onlyCommittedChangesAreSteps();
    void undoAfterTheManagerIsGoneIsHarmless();
    void randomHistoryUndoesAndRedoes();

private:
    EntityHolder<Entity> material;
    EntityHolder<Entity> instance;
};

void TestUndoManager::init()
{
    material = materialClass().create();
    instance = instanceClass().create();
}

void TestUndoManager::twoActionsAreTwoStepsWithLabels()
{
    UndoManager manager;
    Array<UndoEvent> events;
    auto lifetime = manager.addObserver([&](UndoEvent e) { events.push_back(e); });
    {
        auto action = manager.createAction("Update of roughness", ActionFlag::UserEdit);
        material->setPropertyValue("roughness", 0.9);
        action.commit();
    }
    {
        auto action = manager.createAction("Update of name");
        material->setPropertyValue("name", String("Oak"));
        action.commit();
    }
    QCOMPARE(manager.getUndoLabels(), (Array<String> { "Update of name", "Update of roughness" }));
    manager.undo();
    QCOMPARE(material->getPropertyValue<String>("name"), String());
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.9);
    QCOMPARE(manager.getUndoLabel(), String("Update of roughness"));
    QCOMPARE(manager.getRedoLabel(), String("Update of name"));
    manager.undo();
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.5);
    QVERIFY(!manager.canUndo());
    manager.redo();
    manager.redo();
    QCOMPARE(material->getPropertyValue<String>("name"), String("Oak"));
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.9);
    QCOMPARE(events, (Array<UndoEvent> { UndoEvent::StepAdded, UndoEvent::StepAdded, UndoEvent::Undone, UndoEvent::Undone,
                         UndoEvent::Redone, UndoEvent::Redone }));
}

void TestUndoManager::gestureIsOneStep()
{
    UndoManager manager;
    int published = 0;
    auto lifetime = manager.addObserver([&](UndoEvent e) { published += e == UndoEvent::Published; });
    Array<double> observed;
    auto observer = material->getProperty("roughness").addObserver(
        [&](const ObservedProperty& p) { observed.push_back(p.getObject().getPropertyValue<double>("roughness")); });
    auto action = manager.createAction("Drag roughness", ActionFlag::UserEdit);
    for (int i = 1; i <= 100; ++i) {
        material->setPropertyValue("roughness", i / 100.0);
        action.publish();
    }
    action.commit();
    QCOMPARE(published, 100);
    QCOMPARE(observed.size(), std::size_t(100));
    QCOMPARE(manager.getUndoCount(), std::size_t(1));
    manager.undo();
    QCOMPARE(observed.back(), 0.5);
}

void TestUndoManager::revertRestoresEveryValueExactly()
{
    UndoManager manager;
    auto before = instance->clone();
    auto other = materialClass().create();
    auto mesh = meshClass().create();
    auto action = manager.createAction("Many");
    instance->setPropertyValue("transform.position", Pos { 0.1, 0.2, 0.3 });
    instance->setPropertyValue("transform.rotation", Vector3 { 1e-300, -0.0, 3.0 });
    instance->setPropertyValue("materialOverride", other);
    instance->setPropertyValue("mesh", mesh);
    instance->setPropertyValue("children", Array<EntityHolder<Entity>> { other, mesh });
    instance->setPropertyValue("name", String("changed"));
    instance->setPropertyValue("visible", false);
    QVERIFY(!instance->hasEqualValues(*before));
    action.revert();
    QVERIFY(!action.isOpen());
    QVERIFY(instance->hasEqualValues(*before));
    QVERIFY(!manager.canUndo());
}

void TestUndoManager::nestedActionsBelongToTheOuter_data()
{
    QTest::addColumn<bool>("innerCommits");
    QTest::addColumn<bool>("outerCommits");
    QTest::newRow("both commit") << true << true;
    QTest::newRow("inner reverts") << false << true;
    QTest::newRow("outer reverts") << true << false;
}

void TestUndoManager::nestedActionsBelongToTheOuter()
{
    QFETCH(bool, innerCommits);
    QFETCH(bool, outerCommits);
    UndoManager manager;
    auto outer = manager.createAction("Outer");
    material->setPropertyValue("roughness", 0.1);
    {
        auto inner = manager.createAction("Inner");
        material->setPropertyValue("roughness", 0.2);
        if (innerCommits)
            inner.commit();
    }
    QCOMPARE(manager.getUndoCount(), std::size_t(0));
    const double afterInner = innerCommits ? 0.2 : 0.1;
    QCOMPARE(material->getPropertyValue<double>("roughness"), afterInner);
    if (!outerCommits) {
        outer.revert();
        QVERIFY(!manager.canUndo());
        QCOMPARE(material->getPropertyValue<double>("roughness"), 0.5);
        return;
    }
    outer.commit();
    QCOMPARE(manager.getUndoLabels(), Array<String> { "Outer" });
    manager.undo();
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.5);
    manager.redo();
    QCOMPARE(material->getPropertyValue<double>("roughness"), afterInner);
}

void TestUndoManager::limitDropsOldestSteps()
{
    UndoManager manager(3);
    for (int i = 1; i <= 5; ++i) {
        auto action = manager.createAction("Step " + std::to_string(i));
        material->setPropertyValue("layers", std::int32_t(i));
        action.commit();
    }
    QCOMPARE(manager.getUndoLabels(), (Array<String> { "Step 5", "Step 4", "Step 3" }));
    while (manager.canUndo())
        manager.undo();
    QCOMPARE(material->getPropertyValue<std::int32_t>("layers"), 2);
}

void TestUndoManager::onlyCommittedChangesAreSteps()
{
    UndoManager manager;
    // Writes outside an action, an empty action and one that ends where it started leave no step.
    material->setPropertyValue("roughness", 0.2);
    manager.createAction("Nothing").commit();
    {
        auto action = manager.createAction("Back and forth");
        material->setPropertyValue("roughness", 0.9);
        material->setPropertyValue("roughness", 0.2);
        action.commit();
    }
    QVERIFY(!manager.canUndo());
    QVERIFY_THROWS_EXCEPTION(Exception, manager.undo());
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.2);
    {
        auto action = manager.createAction("First");
        material->setPropertyValue("layers", std::int32_t(4));
        action.commit();
    }
    // No undo while an action is open.
    auto open = manager.createAction("Open");
    QVERIFY_THROWS_EXCEPTION(Exception, manager.undo());
    QCOMPARE(material->getPropertyValue<std::int32_t>("layers"), 4);
    open.revert();
    manager.undo();
    QCOMPARE(material->getPropertyValue<std::int32_t>("layers"), 1);
}

void TestUndoManager::undoAfterTheManagerIsGoneIsHarmless()
{
    auto manager = std::make_unique<UndoManager>();
    auto action = manager->createAction("Orphan");
    material->setPropertyValue("layers", std::int32_t(9));
    manager.reset();
    action.commit();
    QCOMPARE(material->getPropertyValue<std::int32_t>("layers"), 9);
}

void TestUndoManager::randomHistoryUndoesAndRedoes()
{
    EntityGraphTracker scene;
    populate(scene);
    UndoManager manager;
    std::mt19937 random(20261122);
    // The scene after each step: its members in order, with a copy of each one's values.
    using State = Array<std::pair<EntityHolder<Entity>, EntityHolder<Entity>>>;
    const auto snapshot = [&] {
        State state;
        for (const auto& entity : scene.getEntities())
            state.emplace_back(entity, entity->clone());
        return state;
    };
    const auto matches = [&](const State& state) {
        for (std::size_t i = 0; i < state.size(); ++i)
            if (i >= scene.size() || scene.getEntities()[i] != state[i].first
                || !state[i].first->hasEqualValues(*state[i].second))
                return false;
        return state.size() == scene.size();
    };
    Array<State> history { snapshot() };
    std::size_t position = 0;
    const auto& entities = scene.getEntities();
    for (int operation = 0; operation < 3000; ++operation) {
        const unsigned choice = random() % 10;
        if (choice < 3 && manager.canUndo()) {
            manager.undo();
            --position;
        } else if (choice < 5 && manager.canRedo()) {
            manager.redo();
            ++position;
        } else {
            // A gesture of a few writes of every kind: plain, nested, reference and membership.
            const std::size_t stepsBefore = manager.getUndoCount();
            auto action = manager.createAction("Edit", ActionFlag::UserEdit);
            for (unsigned i = 0, writes = 1 + random() % 5; i < writes; ++i) {
                const auto entity = entities[random() % entities.size()];
                const unsigned kind = random() % 5;
                if (kind == 0)
                    entity->setPropertyValue("name", "n" + std::to_string(random() % 100));
                else if (kind == 1 && entity->isInstanceOf(instanceClass()))
                    entity->setPropertyValue("transform.position", Pos { double(random() % 9), 0.0, 1.0 });
                else if (kind == 2 && entity->isInstanceOf(meshClass()))
                    entity->setPropertyValue("material",
                        random() % 3 == 0 ? EntityHolder<Entity>() : scene.getEntitiesOfClass(materialClass()).front());
                else if (kind == 3)
                    scene.addEntity(materialClass().create());
                else if (kind == 4 && scene.size() > 3)
                    scene.removeEntity(*entity);
                action.publish();
            }
            if (random() % 8 == 0) {
                action.revert();
            } else {
                action.commit();
                if (manager.getUndoCount() == stepsBefore + 1) {
                    history.resize(++position);
                    history.push_back(snapshot());
                }
            }
        }
        QCOMPARE(manager.getUndoCount(), position);
        QVERIFY2(matches(history[position]), qPrintable(QString("operation %1").arg(operation)));
    }
    QVERIFY(history.size() > 100);
}

QTEST_GUILESS_MAIN(TestUndoManager)
#include "tst_UndoManager.moc"
