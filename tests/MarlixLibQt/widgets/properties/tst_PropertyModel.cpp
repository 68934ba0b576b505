#include <MarlixLib/Lib.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/widgets/properties/PropertyModel.h>
#include <MarlixTestScene/TestScene.h>

#include <QTest>

using namespace Marlix;
using namespace Marlix::Widgets;
using namespace Marlix::TestScene;

class TestPropertyModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { Lib::startup(); }
    void cleanupTestCase() { Lib::shutdown(); }
    void init();

    void typeMismatchChangesNothing();
    void gestureIsOneStepAndARefusedWriteOnlyItself_data();
    void gestureIsOneStepAndARefusedWriteOnlyItself();
    void unresolvablePathReadsDefaultAndWritesNothing();
    void withoutUndoManagerEditsStillApply();
    void setFromOwnNotificationIsIgnored();

private:
    EntityHolder<Entity> material;
    EntityHolder<Entity> instance;
    SharedPtr<UndoManager> manager;
};

void TestPropertyModel::init()
{
    material = materialClass().create();
    instance = instanceClass().create();
    manager = makeSharedPtr<UndoManager>();
}

namespace {

// A model of the wrong type on `path`: its edit must leave the value and the undo stack untouched, also in the middle
// of a gesture of another model on the same property.
template <class T> void checkMismatch(const EntityHolder<Entity>& object, const String& path, const T& value)
{
    auto manager = makeSharedPtr<UndoManager>();
    const Value before = object->getProperty(path).getValue();
    PropertyModel<T> wrong(GenericPropertyAccessor(object, path), manager);
    int notified = 0;
    const CallbackLifetime callback = wrong.addCallback([&](T) { ++notified; });
    wrong.set(value);
    QVERIFY(object->getProperty(path).getValue() == before);
    QCOMPARE(manager->getUndoCount(), 0u);
    QCOMPARE(notified, 0);
    QVERIFY(!wrong.isChangeOpen());

    wrong.beginChange();
    wrong.set(value);
    QVERIFY(wrong.isChangeOpen());
    wrong.commitChange();
    QVERIFY(object->getProperty(path).getValue() == before);
    QCOMPARE(manager->getUndoCount(), 0u);
}

} // namespace

void TestPropertyModel::typeMismatchChangesNothing()
{
    checkMismatch<float>(material, "roughness", 0.5f);
    checkMismatch<std::int32_t>(material, "roughness", 3);
    checkMismatch<String>(material, "roughness", "0.5");
    checkMismatch<double>(material, "name", 1.0);
    checkMismatch<Rgb>(material, "tiling", Rgb {});
    checkMismatch<Vector2>(instance, "transform.position", Vector2 {});
}

namespace {

// Refuses negative values on the last object of the selection, so that a selection is refused halfway written.
class RefusingModel : public PropertyModel<double>
{
public:
    using PropertyModel<double>::PropertyModel;
    void writeProperty(GenericProperty& property, double value) const override
    {
        if (value < 0.0 && ++negativeWrites % getAccessor().getObjects().size() == 0)
            throw Exception("negative");
        PropertyModel<double>::writeProperty(property, value);
    }
    mutable std::size_t negativeWrites = 0;
};

} // namespace

void TestPropertyModel::gestureIsOneStepAndARefusedWriteOnlyItself_data()
{
    QTest::addColumn<bool>("gesture");
    QTest::addColumn<int>("objects");
    QTest::addColumn<bool>("commit");
    QTest::newRow("single edits") << false << 1 << true;
    QTest::newRow("single edits on two objects") << false << 2 << true;
    QTest::newRow("gesture") << true << 1 << true;
    QTest::newRow("gesture on two objects") << true << 2 << true;
    QTest::newRow("gesture reverted") << true << 1 << false;
}

void TestPropertyModel::gestureIsOneStepAndARefusedWriteOnlyItself()
{
    QFETCH(bool, gesture);
    QFETCH(int, objects);
    QFETCH(bool, commit);
    Array<EntityHolder<Entity>> selection { material };
    if (objects == 2)
        selection.push_back(materialClass().create());
    for (const auto& object : selection)
        object->setPropertyValue("roughness", 0.5);
    RefusingModel model(GenericPropertyAccessor(selection, "roughness"), manager);
    const auto holdEvery = [&](double value) {
        for (const auto& object : selection)
            QCOMPARE(object->getPropertyValue<double>("roughness"), value);
    };
    int published = 0;
    const CallbackLifetime observer
        = manager->addObserver([&](UndoEvent event) { published += event == UndoEvent::Published ? 1 : 0; });
    if (gesture)
        model.beginChange();
    model.set(0.25);
    model.set(-1.0);
    holdEvery(0.25);
    QCOMPARE(model.isChangeOpen(), gesture);
    model.set(0.75);
    QCOMPARE(published, gesture ? 2 : 0);
    commit ? model.commitChange() : model.revertChange();
    holdEvery(commit ? 0.75 : 0.5);
    QCOMPARE(manager->getUndoCount(), gesture ? (commit ? 1u : 0u) : 2u);
    if (!commit)
        return;
    QCOMPARE(manager->getUndoLabel(), String("Update of roughness"));
    manager->undo();
    holdEvery(gesture ? 0.5 : 0.25);
}

void TestPropertyModel::unresolvablePathReadsDefaultAndWritesNothing()
{
    for (const String path : { "nothing", "transform.nothing" }) {
        PropertyModel<double> model(GenericPropertyAccessor(instance, path), manager);
        int notified = 0;
        const CallbackLifetime callback = model.addCallback([&](double) { ++notified; });
        model.set(4.0);
        QCOMPARE(model.get(), 0.0);
        QCOMPARE(notified, 0);
    }
    // One object of a selection without the property makes the whole selection unresolvable.
    PropertyModel<double> mixed(
        GenericPropertyAccessor(Array<EntityHolder<Entity>> { material, instance }, "roughness"), manager);
    const double before = material->getPropertyValue<double>("roughness");
    mixed.set(before + 1.0);
    QCOMPARE(material->getPropertyValue<double>("roughness"), before);
    QCOMPARE(manager->getUndoCount(), 0u);
}

void TestPropertyModel::withoutUndoManagerEditsStillApply()
{
    PropertyModel<double> model(GenericPropertyAccessor(material, "roughness"), nullptr);
    model.beginChange();
    QVERIFY(!model.isChangeOpen());
    model.set(0.8);
    model.commitChange();
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.8);
}

void TestPropertyModel::setFromOwnNotificationIsIgnored()
{
    PropertyModel<double> model(GenericPropertyAccessor(material, "roughness"), manager);
    const CallbackLifetime callback = model.addCallback([&](double value) {
        if (value == 0.375)
            model.set(0.75);
    });
    model.set(0.375);
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.375);
    QCOMPARE(manager->getUndoCount(), 1u);
}

QTEST_GUILESS_MAIN(TestPropertyModel)
#include "tst_PropertyModel.moc"
