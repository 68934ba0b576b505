#include <MarlixLib/Lib.h>
#include <MarlixLib/base/Exception.h>
#include <MarlixLib/color/Rgb.h>
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/data/EntityReferences.h>
#include <MarlixLib/data/GenericPropertyAccessor.h>
#include <MarlixLib/data/Observable.h>
#include <MarlixLib/math/PosRotScaleTm.h>
#include <MarlixLib/undo/UndoManager.h>

#include <MarlixTestScene/TestScene.h>

#include <QtTest/QTest>

using namespace Marlix;
using namespace Marlix::TestScene;

Q_DECLARE_METATYPE(Marlix::PropertyPathStatus)

class TestGenericDataObject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        Lib::startup();
        registerTypes();
    }
    void cleanupTestCase()
    {
        unregisterTypes();
        Lib::shutdown();
    }

    void pathStatus_data();
    void pathStatus();
    void nestedPathReadsAndWritesThePart();
    void handleServesEveryObjectOfItsLayout();
    void typeMismatchThrowsAndChangesNothing_data();
    void typeMismatchThrowsAndChangesNothing();
    void observersAreToldAfterTheChange();
    void throwingWriterNotifiesNobody();
    void accessorWritesEveryObject();
    void accessorMismatchChangesNoObject();
    void accessorTextMarksDisagreement();
    void observationScopeRecordsReads();
    void entityIdentitiesAreUnique();
    void referenceHelpers();
    void cycleTest_data();
    void cycleTest();
    void trackerLooksUpByClassAndReportsChanges();
};

void TestGenericDataObject::pathStatus_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<PropertyPathStatus>("status");
    QTest::newRow("root") << "roughness" << PropertyPathStatus::RootProperty;
    QTest::newRow("nested") << "transform.position" << PropertyPathStatus::NestedProperty;
    QTest::newRow("whole nested object") << "transform" << PropertyPathStatus::RootProperty;
    QTest::newRow("unknown root") << "weight" << PropertyPathStatus::DoesNotResolve;
    QTest::newRow("field of a plain value") << "name.length" << PropertyPathStatus::DoesNotResolve;
    QTest::newRow("too deep") << "transform.position.x" << PropertyPathStatus::DoesNotResolve;
    QTest::newRow("empty") << "" << PropertyPathStatus::Malformed;
    QTest::newRow("empty part") << "transform..position" << PropertyPathStatus::Malformed;
}

void TestGenericDataObject::pathStatus()
{
    QFETCH(QString, path);
    QFETCH(PropertyPathStatus, status);
    auto instance = instanceClass().create();
    auto material = materialClass().create();
    const bool onInstance = !path.startsWith("roughness");
    const auto& object = onInstance ? *instance : *material;
    QCOMPARE(object.checkPropertyPath(path.toStdString()), status);
    if (!isResolved(status))
        QVERIFY_THROWS_EXCEPTION(Exception, object.visitProperty(path.toStdString(), [](const GenericProperty&) { return 0; }));
    // A handle resolves the same way, and reaches the same value.
    const GenericPropertyHandle handle = object.resolveHandle(path.toStdString());
    QCOMPARE(handle.getStatus(), status);
    if (isResolved(status))
        QCOMPARE(object.getProperty(handle).getData(), object.getProperty(path.toStdString()).getData());
    else
        QVERIFY_THROWS_EXCEPTION(Exception, object.getProperty(handle));
}

void TestGenericDataObject::nestedPathReadsAndWritesThePart()
{
    auto instance = instanceClass().create();
    instance->setPropertyValue("transform.position", Pos { 1.0, 2.0, 3.0 });
    const auto& transform = instance->getPropertyValue<PosRotScaleTm>("transform");
    QCOMPARE(transform.position, (Pos { 1.0, 2.0, 3.0 }));
    QCOMPARE(transform.scale, (Vector3 { 1.0, 1.0, 1.0 }));
    const String text = instance->visitProperty("transform.position", [](const GenericProperty& p) {
        return p.getName() + (p.isDataObject() ? " object " : " ") + p.toString();
    });
    QCOMPARE(text, String("position (1, 2, 3)"));
}

void TestGenericDataObject::handleServesEveryObjectOfItsLayout()
{
    auto first = materialClass().create();
    auto second = materialClass().create();
    const GenericPropertyHandle roughness = first->resolveHandle("roughness");
    UndoManager manager;
    {
        auto action = manager.createAction("Through a handle");
        second->mutateProperty(roughness, [](GenericProperty& p) { p.set(0.75); });
        action.commit();
    }
    QCOMPARE(second->getPropertyValue<double>("roughness"), 0.75);
    const double initial = materialClass().create()->getPropertyValue<double>("roughness");
    QCOMPARE(first->getPropertyValue<double>("roughness"), initial);
    manager.undo();
    QCOMPARE(second->getPropertyValue<double>("roughness"), initial);

    auto instance = instanceClass().create();
    auto other = instanceClass().create();
    const GenericPropertyHandle position = instance->resolveHandle("transform.position");
    other->mutateProperty(position, [](GenericProperty& p) { p.set(Pos { 7.0, 8.0, 9.0 }); });
    QCOMPARE(other->getPropertyValue<PosRotScaleTm>("transform").position, (Pos { 7.0, 8.0, 9.0 }));

    // A handle of another layout, an unresolved one or an empty one is refused before anything changes.
    const String before = instance->getProperty("name").toString();
    for (const GenericPropertyHandle& unusable :
        { first->resolveHandle("name"), instance->resolveHandle("weight"), GenericPropertyHandle() }) {
        QVERIFY_THROWS_EXCEPTION(
            Exception, instance->mutateProperty(unusable, [](GenericProperty& p) { p.set(String("x")); }));
    }
    QCOMPARE(instance->getProperty("name").toString(), before);
}

void TestGenericDataObject::typeMismatchThrowsAndChangesNothing_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("writtenType");
    // 0: float, 1: String, 2: int32, 3: Rgb
    QTest::newRow("float into double") << "roughness" << 0;
    QTest::newRow("string into double") << "roughness" << 1;
    QTest::newRow("int into enumeration") << "shading" << 2;
    QTest::newRow("colour into vector") << "tiling" << 3;
    QTest::newRow("int into bool") << "doubleSided" << 2;
}

void TestGenericDataObject::typeMismatchThrowsAndChangesNothing()
{
    QFETCH(QString, path);
    QFETCH(int, writtenType);
    auto material = materialClass().create();
    const String before = material->getProperty(path.toStdString()).toString();
    int calls = 0;
    auto lifetime = material->addObserver([&](const ObservedProperty&) { ++calls; });
    // Inside an action, as an editor writes: the refused write must not become an undo step either.
    UndoManager manager;
    auto action = manager.createAction("Mismatch");
    try {
        material->mutateProperty(path.toStdString(), [&](GenericProperty& p) {
            switch (writtenType) {
            case 0: p.set(0.25f); break;
            case 1: p.set(String("rough")); break;
            case 2: p.set(std::int32_t(2)); break;
            default: p.set(Rgb {}); break;
            }
        });
        QFAIL("the mismatch was accepted");
    } catch (const Exception& error) {
        const String message = error.getMessage();
        QVERIFY2(message.find(path.toStdString()) != String::npos, message.c_str());
        QVERIFY2(message.find(material->getProperty(path.toStdString()).getTypeDefinition().getName()) != String::npos, message.c_str());
    }
    action.commit();
    QCOMPARE(material->getProperty(path.toStdString()).toString(), before);
    QCOMPARE(calls, 0);
    QVERIFY(!manager.canUndo());
}

void TestGenericDataObject::observersAreToldAfterTheChange()
{
    auto material = materialClass().create();
    Array<double> seen;
    auto lifetime = material->getProperty("roughness").addObserver([&](const ObservedProperty& observed) {
        seen.push_back(observed.getObject().getPropertyValue<double>("roughness"));
    });
    int others = 0;
    auto other = material->getProperty("opacity").addObserver([&](const ObservedProperty&) { ++others; });
    material->setPropertyValue("roughness", 0.9);
    material->setPropertyValue("roughness", 0.1);
    QCOMPARE(seen, (Array<double> { 0.9, 0.1 }));
    QCOMPARE(others, 0);
    lifetime.reset();
    material->setPropertyValue("roughness", 0.3);
    QCOMPARE(seen.size(), std::size_t(2));

    auto instance = instanceClass().create();
    Array<String> nested;
    auto transformLifetime = instance->getProperty("transform").addObserver([&](const ObservedProperty& observed) {
        nested.emplace_back(observed.getPath());
        QCOMPARE(observed.getDefinition().getName(), String("transform"));
    });
    instance->setPropertyValue("transform.scale", Vector3 { 2.0, 2.0, 2.0 });
    QCOMPARE(nested, (Array<String> { "transform.scale" }));
}

void TestGenericDataObject::throwingWriterNotifiesNobody()
{
    auto material = materialClass().create();
    int calls = 0;
    auto lifetime = material->addObserver([&](const ObservedProperty&) { ++calls; });
    QVERIFY_THROWS_EXCEPTION(Exception, material->mutateProperty("texture", [](GenericProperty&) { throw Exception("no"); }));
    QCOMPARE(calls, 0);
    const auto parsed = material->mutateProperty("roughness", [](GenericProperty& p) { return p.fromString("0.75"); });
    QVERIFY(parsed);
    QCOMPARE(calls, 1);
}

void TestGenericDataObject::accessorWritesEveryObject()
{
    Array<EntityHolder<Entity>> materials { materialClass().create(), materialClass().create(), materialClass().create() };
    const GenericPropertyAccessor accessor(materials, "roughness");
    QVERIFY(accessor.isRootProperty());
    QCOMPARE(accessor.getDefinition().getName(), String("roughness"));
    int calls = 0;
    CallbacksOwner owner;
    accessor.addObserver(owner, [&](const ObservedProperty&) { ++calls; });
    accessor.setValue(0.125);
    for (const auto& material : materials)
        QCOMPARE(material->getPropertyValue<double>("roughness"), 0.125);
    QCOMPARE(calls, 3);
    QVERIFY(accessor.setFromString("0.5"));
    for (const auto& material : materials)
        QCOMPARE(material->getPropertyValue<double>("roughness"), 0.5);
    QVERIFY(!accessor.setFromString("half"));
    QCOMPARE(materials[2]->getPropertyValue<double>("roughness"), 0.5);

    Array<EntityHolder<Entity>> instances { instanceClass().create(), instanceClass().create() };
    const GenericPropertyAccessor nested(instances, "transform.position");
    QVERIFY(!nested.isRootProperty());
    nested.setValue(Pos { 4.0, 5.0, 6.0 });
    for (const auto& instance : instances)
        QCOMPARE(instance->getPropertyValue<PosRotScaleTm>("transform").position, (Pos { 4.0, 5.0, 6.0 }));
    QCOMPARE(&nested.getProperty().getParentObject(), static_cast<GenericDataObject*>(instances[0].get()));
}

void TestGenericDataObject::accessorMismatchChangesNoObject()
{
    // A mesh lacks "roughness": the accessor does not resolve on the whole selection and writes nowhere.
    Array<EntityHolder<Entity>> objects { materialClass().create(), meshClass().create() };
    const GenericPropertyAccessor accessor(objects, "roughness");
    QCOMPARE(accessor.checkProperty(), PropertyPathStatus::DoesNotResolve);
    QVERIFY_THROWS_EXCEPTION(Exception, accessor.setValue(0.9));
    QCOMPARE(objects[0]->getPropertyValue<double>("roughness"), 0.5);
    const GenericPropertyAccessor names(objects, "name");
    QVERIFY_THROWS_EXCEPTION(Exception, names.setValue(42.0));
    QCOMPARE(objects[0]->getPropertyValue<String>("name"), String());
    // One object alone takes the shorter road, with the same refusal.
    int calls = 0;
    auto lifetime = objects[0]->addObserver([&](const ObservedProperty&) { ++calls; });
    QVERIFY_THROWS_EXCEPTION(Exception, GenericPropertyAccessor(objects[0], "roughness").setValue(String("rough")));
    QCOMPARE(objects[0]->getPropertyValue<double>("roughness"), 0.5);
    QCOMPARE(calls, 0);
}

void TestGenericDataObject::accessorTextMarksDisagreement()
{
    Array<EntityHolder<Entity>> materials { materialClass().create(), materialClass().create() };
    const GenericPropertyAccessor accessor(materials, "shading");
    QCOMPARE(accessor.toString(), String("Diffuse"));
    materials[1]->setPropertyValue("shading", ShadingModel::Metal);
    QVERIFY(!accessor.hasSameValues());
    QCOMPARE(accessor.toString(), String(GenericPropertyAccessor::MIXED_VALUES_TEXT));
    QVERIFY_THROWS_EXCEPTION(Exception, GenericPropertyAccessor(Array<EntityHolder<Entity>> {}, "shading"));
}

void TestGenericDataObject::observationScopeRecordsReads()
{
    auto material = materialClass().create();
    const auto& roughness = material->getProperty("roughness").getDefinition();
    const auto& opacity = material->getProperty("opacity").getDefinition();
    QVERIFY(!Observable::getCurrentScope());
    ObservationScope outer;
    (void)material->getPropertyValue<double>("roughness");
    {
        ObservationScope inner;
        (void)material->getPropertyValue<float>("opacity");
        QVERIFY(inner.hasAccessed(opacity) && !inner.hasAccessed(roughness));
    }
    QVERIFY(outer.hasAccessed(roughness) && !outer.hasAccessed(opacity));
    QCOMPARE(Observable::getCurrentScope(), &outer);
}

void TestGenericDataObject::entityIdentitiesAreUnique()
{
    auto material = materialClass().create();
    auto copy = material->clone();
    QVERIFY(copy->getId() > material->getId());
    QVERIFY(copy->hasEqualValues(*material));
    const EntityHandle handle(material);
    QCOMPARE(handle.lock(), material);
    material.reset();
    QVERIFY(handle.isExpired());
    QVERIFY(!handle.lock());
    QVERIFY(handle.getId() != 0);
}

void TestGenericDataObject::referenceHelpers()
{
    QVERIFY_THROWS_EXCEPTION(Exception, sceneObjectClass().create());
    auto mesh = meshClass().create();
    auto material = materialClass().create();
    mesh->setPropertyValue("material", material);
    QCOMPARE(getEntityFromProperty(mesh->getProperty("material")), material);
    QCOMPARE(getEntityClassAcceptedByProperty(mesh->getProperty("material"))->getName(), String("Material"));
    QVERIFY(!getEntityClassAcceptedByProperty(mesh->getProperty("name")));
    QVERIFY(!getEntityFromProperty(mesh->getProperty("name")));
    auto instance = instanceClass().create();
    QCOMPARE(getEntityClassAcceptedByProperty(instance->getProperty("children"))->getName(), String("SceneObject"));
    QCOMPARE(getEntityClassAcceptedByProperty(GenericPropertyAccessor(instance, "mesh"))->getName(), String("Mesh"));
    QVERIFY(!getEntityClassAcceptedByProperty(GenericPropertyAccessor(instance, "nothing")));
}

void TestGenericDataObject::cycleTest_data()
{
    // Scene: a.children = [b], b.children = [c], c.mesh = m; x stands apart. May `parent` reference `child`?
    QTest::addColumn<QString>("parent");
    QTest::addColumn<QString>("child");
    QTest::addColumn<bool>("allowed");
    QTest::newRow("itself") << "a" << "a" << false;
    QTest::newRow("through a list") << "b" << "a" << false;
    QTest::newRow("through a list twice") << "c" << "a" << false;
    QTest::newRow("through a single reference") << "m" << "c" << false;
    QTest::newRow("through lists and a reference") << "m" << "a" << false;
    QTest::newRow("downwards") << "a" << "c" << true;
    QTest::newRow("unrelated") << "x" << "c" << true;
    QTest::newRow("leaf under unrelated") << "c" << "x" << true;
}

void TestGenericDataObject::cycleTest()
{
    QFETCH(QString, parent);
    QFETCH(QString, child);
    QFETCH(bool, allowed);
    FlatMap<String, EntityHolder<Entity>> e;
    for (const char* name : { "a", "b", "c", "x" })
        e[name] = instanceClass().create();
    e["m"] = meshClass().create();
    e["a"]->setPropertyValue("children", Array<EntityHolder<Entity>> { e["b"] });
    e["b"]->setPropertyValue("children", Array<EntityHolder<Entity>> { e["c"] });
    e["c"]->setPropertyValue("mesh", e["m"]);
    QCOMPARE(canAddChildrenWithoutCycles(*e[parent.toStdString()], *e[child.toStdString()]), allowed);
}

void TestGenericDataObject::trackerLooksUpByClassAndReportsChanges()
{
    EntityGraphTracker scene;
    populate(scene);
    QCOMPARE(scene.getEntitiesOfClass(meshClass()).size(), std::size_t(2));
    QCOMPARE(scene.getEntitiesOfClass(sceneObjectClass()).size(), scene.size());
    Array<std::uint64_t> added;
    Array<std::uint64_t> removed;
    auto lifetime = scene.addObserver([&](ArrayView<const EntityHolder<Entity>> a, ArrayView<const EntityHolder<Entity>> r) {
        for (const auto& entity : a)
            added.push_back(entity->getId());
        for (const auto& entity : r)
            removed.push_back(entity->getId());
    });
    auto extra = materialClass().create();
    scene.addEntity(extra);
    QVERIFY_THROWS_EXCEPTION(Exception, scene.addEntity(extra));
    QCOMPARE(scene.findEntity(extra->getId()), extra);
    QVERIFY(scene.removeEntity(*extra));
    QVERIFY(!scene.removeEntity(*extra));
    QCOMPARE(added, (Array<std::uint64_t> { extra->getId() }));
    QCOMPARE(removed, (Array<std::uint64_t> { extra->getId() }));
    QVERIFY(!scene.findEntity(extra->getId()));
    const auto first = scene.getEntities().front();
    QVERIFY(scene.removeEntity(*first));
    QCOMPARE(scene.findEntity(scene.getEntities().front()->getId()), scene.getEntities().front());
}

QTEST_GUILESS_MAIN(TestGenericDataObject)
#include "tst_GenericDataObject.moc"
