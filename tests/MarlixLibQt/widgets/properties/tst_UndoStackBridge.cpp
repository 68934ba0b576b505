#include <MarlixLib/Lib.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/widgets/properties/PropertyModel.h>
#include <MarlixLibQt/widgets/properties/UndoStackBridge.h>
#include <MarlixTestScene/TestScene.h>

#include <QAction>
#include <QTest>
#include <QUndoStack>

using namespace Marlix;
using namespace Marlix::Widgets;
using namespace Marlix::TestScene;

class TestUndoStackBridge : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { Lib::startup(); }
    void cleanupTestCase() { Lib::shutdown(); }
    void init();

    void undoOnEitherSideUndoesBoth_data();
    void undoOnEitherSideUndoesBoth();
    void clearedAndTrimmedManagerIsFollowed();
    void refusedUndoPutsTheStackBack();

private:
    void edit(const String& name, double value);
    void checkInStep() const;

    EntityHolder<Entity> material;
    SharedPtr<UndoManager> manager;
    std::unique_ptr<UndoStackBridge> bridge;
};

void TestUndoStackBridge::init()
{
    material = materialClass().create();
    manager = makeSharedPtr<UndoManager>();
    bridge = std::make_unique<UndoStackBridge>(manager);
}

void TestUndoStackBridge::edit(const String& name, double value)
{
    PropertyModel<double>(GenericPropertyAccessor(material, "roughness"), manager, name).set(value);
}

void TestUndoStackBridge::checkInStep() const
{
    QUndoStack* stack = bridge->undoStack();
    QCOMPARE(static_cast<std::size_t>(stack->index()), manager->getUndoCount());
    QCOMPARE(static_cast<std::size_t>(stack->count()), manager->getUndoCount() + manager->getRedoCount());
    QCOMPARE(stack->undoText(), QString::fromStdString(manager->getUndoLabel()));
    QCOMPARE(stack->redoText(), QString::fromStdString(manager->getRedoLabel()));
    QCOMPARE(stack->canUndo(), manager->canUndo());
    QCOMPARE(stack->canRedo(), manager->canRedo());
}

void TestUndoStackBridge::undoOnEitherSideUndoesBoth_data()
{
    QTest::addColumn<bool>("fromStack");
    QTest::newRow("from the stack") << true;
    QTest::newRow("from the manager") << false;
}

void TestUndoStackBridge::undoOnEitherSideUndoesBoth()
{
    QFETCH(bool, fromStack);
    material->setPropertyValue("roughness", 0.0);
    edit("a", 0.1);
    edit("b", 0.2);
    edit("c", 0.3);
    QUndoStack* stack = bridge->undoStack();
    const auto undo = [&] { fromStack ? stack->undo() : manager->undo(); };
    const auto redo = [&] { fromStack ? stack->redo() : manager->redo(); };

    undo();
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.2);
    checkInStep();
    undo();
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.1);
    QCOMPARE(stack->redoText(), QStringLiteral("Update of b"));
    checkInStep();
    redo();
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.2);
    checkInStep();

    // The actions a host puts in its menu drive the manager too.
    std::unique_ptr<QAction> undoAction(stack->createUndoAction(nullptr));
    QCOMPARE(undoAction->text(), QStringLiteral("Undo Update of b"));
    undoAction->trigger();
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.1);
    checkInStep();

    // A new step drops the redo steps on both sides.
    edit("d", 0.4);
    QCOMPARE(stack->count(), 2);
    QCOMPARE(stack->text(1), QStringLiteral("Update of d"));
    checkInStep();
}

void TestUndoStackBridge::clearedAndTrimmedManagerIsFollowed()
{
    for (int i = 0; i < 4; ++i)
        edit("step " + std::to_string(i), 0.1 * (i + 1));
    manager->undo();
    // The oldest undo step goes first, then the redo step that no longer fits.
    manager->setLimit(2);
    QCOMPARE(bridge->undoStack()->count(), 2);
    QCOMPARE(bridge->undoStack()->text(0), QStringLiteral("Update of step 1"));
    checkInStep();
    // A bridge made late shows the steps already there.
    bridge = std::make_unique<UndoStackBridge>(manager);
    QCOMPARE(bridge->undoStack()->text(1), QStringLiteral("Update of step 2"));
    checkInStep();
    manager->clear();
    QCOMPARE(bridge->undoStack()->count(), 0);
    checkInStep();
}

void TestUndoStackBridge::refusedUndoPutsTheStackBack()
{
    edit("a", 0.1);
    edit("b", 0.2);
    PropertyModel<double> model(GenericPropertyAccessor(material, "roughness"), manager);
    model.beginChange();
    model.set(0.5);
    // The manager refuses while a gesture is open; the stack follows it back from the event loop.
    bridge->undoStack()->undo();
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.5);
    QCoreApplication::sendPostedEvents();
    checkInStep();
    model.commitChange();
    checkInStep();
    QCOMPARE(bridge->undoStack()->count(), 3);
}

QTEST_MAIN(TestUndoStackBridge)
#include "tst_UndoStackBridge.moc"
