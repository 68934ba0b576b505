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

    void eachSetIsOneNamedAction_data();
    void eachSetIsOneNamedAction();
    void gestureIsOneActionPublishedAfterEachSet_data();
    void gestureIsOneActionPublishedAfterEachSet();
    void typeMismatchChangesNothing();
    void refusedWriteTakesBackOnlyItself_data();
    void refusedWriteTakesBackOnlyItself();
    void unresolvablePathReadsDefaultAndWritesNothing_data();
    void unresolvablePathReadsDefaultAndWritesNothing();
    void withoutUndoManagerEditsStillApply();
    void secondModelFollowsEveryEdit();
    void multiObjectAccessorEditsAllInOneStep();
    void nestedPropertyIsWrittenThroughItsObject();
    void setFromOwnNotificationIsIgnored();
    void numbersConvertOnRead();

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

void TestPropertyModel::eachSetIsOneNamedAction_data()
{
    QTest::addColumn<QString>("displayName");
    QTest::addColumn<QString>("label");
    QTest::newRow("definition name") << QString() << QStringLiteral("Update of roughness");
    QTest::newRow("display name") << QStringLiteral("Surface roughness")
                                  << QStringLiteral("Update of Surface roughness");
}

void TestPropertyModel::eachSetIsOneNamedAction()
{
    QFETCH(QString, displayName);
    QFETCH(QString, label);
    PropertyModel<double> model(GenericPropertyAccessor(material, "roughness"), manager,
        displayName.isEmpty() ? Optional<String>() : Optional<String>(displayName.toStdString()));
    model.set(0.25);
    model.set(0.75);
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.75);
    QCOMPARE(manager->getUndoCount(), 2u);
    for (const String& step : manager->getUndoLabels())
        QCOMPARE(QString::fromStdString(step), label);
    manager->undo();
    QCOMPARE(model.get(), 0.25);
    QVERIFY(!model.isChangeOpen());
}

void TestPropertyModel::gestureIsOneActionPublishedAfterEachSet_data()
{
    QTest::addColumn<bool>("commit");
    QTest::newRow("commit") << true;
    QTest::newRow("revert") << false;
}

void TestPropertyModel::gestureIsOneActionPublishedAfterEachSet()
{
    QFETCH(bool, commit);
    const double before = material->getPropertyValue<double>("roughness");
    PropertyModel<double> model(GenericPropertyAccessor(material, "roughness"), manager);
    int published = 0;
    const CallbackLifetime observer = manager->addObserver([&](UndoEvent event) {
        if (event == UndoEvent::Published)
            ++published;
    });
    model.beginChange();
    QVERIFY(model.isChangeOpen());
    for (double value : { 0.1, 0.2, 0.3 }) {
        model.set(value);
        QCOMPARE(material->getPropertyValue<double>("roughness"), value);
    }
    QCOMPARE(published, 3);
    QCOMPARE(manager->getUndoCount(), 0u);
    if (commit)
        model.commitChange();
    else
        model.revertChange();
    QVERIFY(!model.isChangeOpen());
    QCOMPARE(manager->getUndoCount(), commit ? 1u : 0u);
    QCOMPARE(material->getPropertyValue<double>("roughness"), commit ? 0.3 : before);
    if (commit) {
        QCOMPARE(manager->getUndoLabel(), String("Update of roughness"));
        manager->undo();
        QCOMPARE(material->getPropertyValue<double>("roughness"), before);
    }
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

void TestPropertyModel::refusedWriteTakesBackOnlyItself_data()
{
    QTest::addColumn<bool>("gesture");
    QTest::addColumn<int>("objects");
    QTest::newRow("single edit") << false << 1;
    QTest::newRow("single edit on two objects") << false << 2;
    QTest::newRow("gesture") << true << 1;
    QTest::newRow("gesture on two objects") << true << 2;
}

void TestPropertyModel::refusedWriteTakesBackOnlyItself()
{
    QFETCH(bool, gesture);
    QFETCH(int, objects);
    Array<EntityHolder<Entity>> selection { material };
    if (objects == 2)
        selection.push_back(materialClass().create());
    for (const auto& object : selection)
        object->setPropertyValue("roughness", 0.5);
    RefusingModel model(GenericPropertyAccessor(selection, "roughness"), manager);
    const auto values = [&] {
        Array<double> read;
        for (const auto& object : selection)
            read.push_back(object->getPropertyValue<double>("roughness"));
        return read;
    };
    if (gesture)
        model.beginChange();
    model.set(0.25);
    model.set(-1.0);
    QCOMPARE(values(), Array<double>(selection.size(), 0.25));
    QCOMPARE(model.isChangeOpen(), gesture);
    model.set(0.75);
    model.commitChange();
    QCOMPARE(values(), Array<double>(selection.size(), 0.75));
    QCOMPARE(manager->getUndoCount(), gesture ? 1u : 2u);
    manager->undo();
    QCOMPARE(values(), Array<double>(selection.size(), gesture ? 0.5 : 0.25));
}

void TestPropertyModel::unresolvablePathReadsDefaultAndWritesNothing_data()
{
    QTest::addColumn<bool>("nested");
    QTest::newRow("root") << false;
    QTest::newRow("nested") << true;
}

void TestPropertyModel::unresolvablePathReadsDefaultAndWritesNothing()
{
    QFETCH(bool, nested);
    const String path = nested ? "transform.nothing" : "nothing";
    PropertyModel<double> model(GenericPropertyAccessor(instance, path), manager);
    QCOMPARE(model.get(), 0.0);
    int notified = 0;
    const CallbackLifetime callback = model.addCallback([&](double) { ++notified; });
    model.set(4.0);
    QCOMPARE(model.get(), 0.0);
    QCOMPARE(notified, 0);
    QCOMPARE(manager->getUndoCount(), 0u);

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
    model.set(0.9);
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.9);
    model.beginChange();
    QVERIFY(!model.isChangeOpen());
    model.set(0.8);
    model.commitChange();
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.8);
}

void TestPropertyModel::secondModelFollowsEveryEdit()
{
    const GenericPropertyAccessor accessor(material, "roughness");
    PropertyModel<double> editor(accessor, manager);
    PropertyModel<double> follower(accessor, manager);
    Array<double> seen;
    const CallbackLifetime callback = follower.addCallback([&](double value) { seen.push_back(value); });

    editor.set(0.4);
    QVERIFY(!seen.empty());
    QCOMPARE(seen.back(), 0.4);
    editor.beginChange();
    editor.set(0.5);
    QCOMPARE(seen.back(), 0.5);
    editor.revertChange();
    QCOMPARE(seen.back(), 0.4);
    manager->undo();
    QCOMPARE(seen.back(), follower.get());
    QCOMPARE(follower.get(), material->getPropertyValue<double>("roughness"));
    manager->redo();
    QCOMPARE(seen.back(), 0.4);
    material->setPropertyValue("roughness", 0.125);
    QCOMPARE(seen.back(), 0.125);
}

void TestPropertyModel::multiObjectAccessorEditsAllInOneStep()
{
    const EntityHolder<Entity> other = materialClass().create();
    material->setPropertyValue("roughness", 0.1);
    other->setPropertyValue("roughness", 0.2);
    PropertyModel<double> model(
        GenericPropertyAccessor(Array<EntityHolder<Entity>> { material, other }, "roughness"), manager);
    int notified = 0;
    const CallbackLifetime callback = model.addCallback([&](double) { ++notified; });
    model.set(0.6);
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.6);
    QCOMPARE(other->getPropertyValue<double>("roughness"), 0.6);
    QCOMPARE(manager->getUndoCount(), 1u);
    manager->undo();
    QCOMPARE(material->getPropertyValue<double>("roughness"), 0.1);
    QCOMPARE(other->getPropertyValue<double>("roughness"), 0.2);

    // A change of the second object alone is seen as well.
    const int before = notified;
    other->setPropertyValue("roughness", 0.3);
    QVERIFY(notified > before);
}

void TestPropertyModel::nestedPropertyIsWrittenThroughItsObject()
{
    const EntityHolder<Entity> other = instanceClass().create();
    PropertyModel<Pos> model(
        GenericPropertyAccessor(Array<EntityHolder<Entity>> { instance, other }, "transform.position"), manager);
    const Pos position { 1.0, 2.0, 3.0 };
    model.set(position);
    QCOMPARE(model.get(), position);
    QCOMPARE(other->getPropertyValue<Pos>("transform.position"), position);
    QCOMPARE(manager->getUndoLabel(), String("Update of position"));
    manager->undo();
    QCOMPARE(model.get(), Pos {});
    QCOMPARE(other->getPropertyValue<Pos>("transform.position"), Pos {});
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

void TestPropertyModel::numbersConvertOnRead()
{
    material->setPropertyValue("layers", std::int32_t { 7 });
    PropertyModel<double> layers(GenericPropertyAccessor(material, "layers"), manager);
    QCOMPARE(layers.get(), 7.0);
    material->setPropertyValue("opacity", 0.5f);
    PropertyModel<double> opacity(GenericPropertyAccessor(material, "opacity"), manager);
    QCOMPARE(opacity.get(), 0.5);
}

QTEST_GUILESS_MAIN(TestPropertyModel)
#include "tst_PropertyModel.moc"
