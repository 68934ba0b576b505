#include <MarlixLib/Lib.h>
#include <MarlixLib/color/Rgb.h>
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/data/EntityReferences.h>
#include <MarlixLib/math/PosRotScaleTm.h>
#include <MarlixLib/undo/UndoManager.h>

#include <MarlixTestScene/TestScene.h>

#include <QtTest/QTest>

#include <random>

using namespace Marlix;
using namespace Marlix::TestScene;

namespace {
/// The scene at one moment: which entities it held, in order, and a copy of each one's values.
struct Snapshot
{
    Array<EntityHolder<Entity>> members;
    Array<EntityHolder<Entity>> copies;

    static Snapshot take(const EntityGraphTracker& scene)
    {
        Snapshot snapshot;
        for (const auto& entity : scene.getEntities()) {
            snapshot.members.push_back(entity);
            snapshot.copies.push_back(entity->clone());
        }
        return snapshot;
    }

    bool matches(const EntityGraphTracker& scene) const
    {
        if (scene.getEntities() != members)
            return false;
        for (std::size_t i = 0; i < members.size(); ++i)
            if (!members[i]->hasEqualValues(*copies[i]))
                return false;
        return true;
    }
};
} // namespace

class TestUndoRandomized : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { Lib::startup(); }
    void cleanupTestCase() { Lib::shutdown(); }
    void randomEditsUndoAndRedo();

private:
    void randomEdit(const EntityGraphTracker& scene, std::mt19937& random);
};

void TestUndoRandomized::randomEdit(const EntityGraphTracker& scene, std::mt19937& random)
{
    const auto& entities = scene.getEntities();
    const auto& entity = entities[random() % entities.size()];
    const double number = std::uniform_real_distribution<double>(-10.0, 10.0)(random);
    const auto pick = [&](const EntityClassInfo& entityClass) -> EntityHolder<Entity> {
        const auto candidates = scene.getEntitiesOfClass(entityClass);
        return candidates.empty() || random() % 5 == 0 ? nullptr : candidates[random() % candidates.size()];
    };
    // A plain value, a nested one, a reference and a list of references: each kind restores its own way.
    const unsigned kind = random() % 4;
    if (kind == 0)
        entity->setPropertyValue("name", "n" + std::to_string(random() % 1000));
    else if (entity->isInstanceOf(materialClass()))
        entity->setPropertyValue("color", Rgb { float(number), 0.5f, float(-number), 1.0f });
    else if (entity->isInstanceOf(meshClass()))
        entity->setPropertyValue("material", pick(materialClass()));
    else if (kind == 1)
        entity->setPropertyValue("transform.position", Pos { number, 1.0, -number });
    else if (kind == 2)
        entity->setPropertyValue("mesh", pick(meshClass()));
    else {
        // Children are chosen as an editor would: never closing a cycle.
        Array<EntityHolder<Entity>> children;
        for (const auto& candidate : scene.getEntitiesOfClass(instanceClass()))
            if (random() % 3 == 0 && canAddChildrenWithoutCycles(*entity, *candidate))
                children.push_back(candidate);
        entity->setPropertyValue("children", children);
    }
}

void TestUndoRandomized::randomEditsUndoAndRedo()
{
    EntityGraphTracker scene;
    populate(scene);
    UndoManager manager;
    std::mt19937 random(20261122);
    // history[i] is the scene after i steps; `position` is how many steps are currently applied.
    Array<Snapshot> history { Snapshot::take(scene) };
    std::size_t position = 0;
    const auto committed = [&] {
        history.resize(position + 1);
        history.push_back(Snapshot::take(scene));
        ++position;
    };

    for (int operation = 0; operation < 10000; ++operation) {
        const unsigned choice = random() % 100;
        const std::size_t stepsBefore = manager.getUndoCount();
        if (choice < 40) {
            auto action = manager.createAction("Edit");
            const unsigned writes = 1 + random() % 3;
            for (unsigned i = 0; i < writes; ++i)
                randomEdit(scene, random);
            action.commit();
        } else if (choice < 55) {
            auto action = manager.createAction("Gesture", ActionFlag::UserEdit);
            const unsigned writes = 2 + random() % 30;
            for (unsigned i = 0; i < writes; ++i) {
                randomEdit(scene, random);
                action.publish();
            }
            action.commit();
        } else if (choice < 60) {
            {
                auto action = manager.createAction("Abandoned");
                randomEdit(scene, random);
                if (random() % 2)
                    action.revert();
            }
            QVERIFY2(history[position].matches(scene), qPrintable(QString("revert at operation %1").arg(operation)));
            continue;
        } else if (choice < 66) {
            auto action = manager.createAction("Add");
            const EntityClassInfo& entityClass = random() % 3 == 0 ? materialClass() : random() % 2 ? meshClass() : instanceClass();
            scene.addEntity(entityClass.create());
            action.commit();
        } else if (choice < 70) {
            if (scene.size() > 3) {
                auto action = manager.createAction("Remove");
                scene.removeEntity(*scene.getEntities()[random() % scene.size()]);
                action.commit();
            }
        } else if (choice < 88) {
            if (manager.canUndo()) {
                manager.undo();
                --position;
                QVERIFY2(history[position].matches(scene), qPrintable(QString("undo at operation %1").arg(operation)));
            }
            continue;
        } else {
            if (manager.canRedo()) {
                manager.redo();
                ++position;
                QVERIFY2(history[position].matches(scene), qPrintable(QString("redo at operation %1").arg(operation)));
            }
            continue;
        }
        if (manager.getUndoCount() == stepsBefore + 1) {
            committed();
            QVERIFY(!manager.canRedo());
        }
        QCOMPARE(manager.getUndoCount(), position);
        QVERIFY2(history[position].matches(scene), qPrintable(QString("edit at operation %1").arg(operation)));
    }

    QVERIFY(position > 100);
    // The whole history, back to the start and forward to the end.
    while (manager.canUndo())
        manager.undo();
    QVERIFY(history.front().matches(scene));
    while (manager.canRedo())
        manager.redo();
    QVERIFY(history.back().matches(scene));
}

QTEST_GUILESS_MAIN(TestUndoRandomized)
#include "tst_UndoRandomized.moc"
