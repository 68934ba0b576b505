#include <MarlixLibQt/Color.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/QtUtils.h>

#include <MarlixLib/Lib.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLib/data/GenericProperty.h>
#include <MarlixLib/data/GroupLayout.h>
#include <MarlixLib/data/TypeDatabase.h>

#include <QScopeGuard>
#include <QTest>

using namespace Marlix;

namespace {

SharedPtr<Entity> makeEntity(const EntityClassInfo& c)
{
    return makeSharedPtr<Entity>(c);
}

} // namespace

/// The naming helpers of the property sheet over real entity classes of the core.
class tst_QtData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void propertyNames_data();
    void propertyNames();
    void uiEntityClasses_data();
    void uiEntityClasses();
    void uiEntityClassesStayValid();
    void dataTypes_data();
    void dataTypes();
    void dataTypesRegisterAgain();

private:
    Optional<TypeModuleRecord> module;
    Optional<EntityClassInfo> light;
};

void tst_QtData::initTestCase()
{
    Lib::startup();
    const auto number = TypeDatabase::instance().lookupNativeTypeDefinition<double>();
    const auto text = TypeDatabase::instance().lookupNativeTypeDefinition<String>();
    QVERIFY(number && text);

    UserData named;
    named.set(String(UI_NAME_ATTRIBUTE), String("Albedo"));
    named.set(String(UI_DESCRIPTION_ATTRIBUTE), String("The colour of the surface under white light"));
    UserData emptyName;
    emptyName.set(String(UI_NAME_ATTRIBUTE), String());
    UserData wrongType;
    wrongType.set(String(UI_NAME_ATTRIBUTE), 42);
    wrongType.set(String(UI_DESCRIPTION_ATTRIBUTE), 7);

    const auto layout = makeSharedPtr<GroupLayout>(
        "Light", Array<PropertyDefinition> {
                     PropertyDefinition::make<double>("lightIntensity", number, 1.0, {}, {}, "How bright the light is"),
                     PropertyDefinition::make<String>("baseColor", text, String(), named, {}, "ignored"),
                     PropertyDefinition::make<double>("falloffRadius", number, 2.0, emptyName),
                     PropertyDefinition::make<double>("shadowBias", number, 0.1, wrongType, {}, "Offset of shadows"),
                 });
    light = EntityClassInfo("Light", EntityClassInfo::entityClass(), { layout }, nullptr);
    const EntityClassInfo point("PointLight", *light, {}, makeEntity);
    const EntityClassInfo area("AreaLight", *light, {}, makeEntity);
    const EntityClassInfo camera("Camera", EntityClassInfo::entityClass(), {}, makeEntity);
    module.emplace("UiTestScene");
    module->addEntityClass(*light).addEntityClass(point).addEntityClass(area).addEntityClass(camera);
    TypeDatabase::instance().registerModuleTypes(*module);
}

void tst_QtData::cleanupTestCase()
{
    if (module && TypeDatabase::instance().isModuleRegistered(module->getModuleName()))
        TypeDatabase::instance().unregisterModuleTypes(*module);
    Lib::shutdown();
}

void tst_QtData::propertyNames_data()
{
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("description");

    QTest::newRow("made readable") << "lightIntensity" << "Light intensity" << "How bright the light is";
    QTest::newRow("own ui name and description") << "baseColor" << "Albedo"
                                                 << "The colour of the surface under white light";
    QTest::newRow("empty ui name") << "falloffRadius" << "Falloff radius" << "";
    QTest::newRow("ui entries of the wrong type") << "shadowBias" << "Shadow bias" << "Offset of shadows";
}

void tst_QtData::propertyNames()
{
    QFETCH(QString, property);
    QFETCH(QString, name);
    QFETCH(QString, description);

    const auto point = TypeDatabase::instance().lookupEntityClass("PointLight");
    QVERIFY(point);
    const SharedPtr<Entity> entity = point->create();
    const GenericProperty value = entity->getProperty(property.toStdString());

    QCOMPARE(getPropertyUiName(value), name);
    QCOMPARE(getPropertyUiDescription(value), description);
}

void tst_QtData::uiEntityClasses_data()
{
    QTest::addColumn<QString>("base");
    QTest::addColumn<QStringList>("offered");

    QTest::newRow("abstract base") << "Light" << QStringList { "AreaLight", "PointLight" };
    QTest::newRow("creatable leaf") << "Camera" << QStringList { "Camera" };
    QTest::newRow("root") << "Entity" << QStringList { "AreaLight", "Camera", "PointLight" };
}

void tst_QtData::uiEntityClasses()
{
    QFETCH(QString, base);
    QFETCH(QStringList, offered);

    const EntityClassInfo baseClass = base == QLatin1String("Entity")
        ? EntityClassInfo::entityClass()
        : *TypeDatabase::instance().lookupEntityClass(base.toStdString());
    QStringList names;
    for (const EntityClassInfo& c : getUiEntityClasses(baseClass))
        names.append(toQt(c.getName()));
    QCOMPARE(names, offered);
}

void tst_QtData::uiEntityClassesStayValid()
{
    // A menu iterates the list while nested menus ask for other lists, for the same one again, and the classes change.
    const Stack<EntityClassInfo>& forLight = getUiEntityClasses(*light);
    const auto first = forLight.begin();
    QCOMPARE(getUiEntityClasses(EntityClassInfo::entityClass()).size(), 3u);
    QCOMPARE(&getUiEntityClasses(*light), &forLight);

    TypeDatabase::instance().unregisterModuleTypes(*module);
    QVERIFY(getUiEntityClasses(*light).empty());
    TypeDatabase::instance().registerModuleTypes(*module);
    QCOMPARE(getUiEntityClasses(*light).size(), 2u);

    QCOMPARE(forLight.size(), 2u);
    QStringList names;
    for (auto it = first; it != forLight.end(); ++it)
        names.append(toQt(it->getName()));
    QCOMPARE(names, (QStringList { "AreaLight", "PointLight" }));
}

void tst_QtData::dataTypes_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");

    QTest::newRow("colour") << "QColorExtended" << "(0.25, 0.5, 1, 0.75)" << true;
    QTest::newRow("colour out of range") << "QColorExtended" << "(0.25, 1.5, 1, 1)" << false;
    QTest::newRow("colour, not a number") << "QColorExtended" << "(0.25, nan, 1, 1)" << false;
    QTest::newRow("step type") << "SpinBoxStepType" << "Proportional" << true;
    QTest::newRow("unknown step type") << "SpinBoxStepType" << "Sideways" << false;
    QTest::newRow("colour value type") << "ColorValueType" << "LinearPercent" << true;
    QTest::newRow("scroll speed") << "SpinBoxScrollSpeedAdjustmentType" << "NoAdjustment" << true;
}

void tst_QtData::dataTypes()
{
    QFETCH(QString, type);
    QFETCH(QString, text);
    QFETCH(bool, valid);

    LibQt::registerDataTypes();
    const auto cleanup = qScopeGuard([] { LibQt::unregisterDataTypes(); });
    const auto definition = TypeDatabase::instance().lookupTypeDefinition(type.toStdString());
    QVERIFY(definition);
    Detail::ScratchValue value(*definition);
    const String before = definition->toString(value.data());
    QCOMPARE(definition->fromString(text.toStdString(), value.data()).has_value(), valid);
    if (!valid) {
        QCOMPARE(definition->toString(value.data()), before);
        return;
    }
    // A colour keeps Qt's 16 bits per channel, so its text is what it holds of the text read; names stay as read.
    const String written = definition->toString(value.data());
    if (definition->isNative<QColorExtended>())
        QCOMPARE(static_cast<const QColorExtended*>(value.data())->getColor(),
            QColor::fromRgbF(0.25f, 0.5f, 1.0f, 0.75f));
    else
        QCOMPARE(toQt(written), text);
    Detail::ScratchValue again(*definition);
    QVERIFY(definition->fromString(written, again.data()).has_value());
    QVERIFY(definition->equals(value.data(), again.data()));
}

void tst_QtData::dataTypesRegisterAgain()
{
    // As a plug-in does when it is unloaded and loaded again.
    for (int round = 0; round < 2; ++round) {
        LibQt::registerDataTypes();
        const auto colour = TypeDatabase::instance().lookupNativeTypeDefinition<QColorExtended>();
        QVERIFY(colour);
        QCOMPARE(colour->getName(), String("QColorExtended"));
        QVERIFY(TypeDatabase::instance().lookupNativeTypeDefinition<Widgets::ColorValueType>());
        LibQt::unregisterDataTypes();
        QVERIFY(!TypeDatabase::instance().lookupNativeTypeDefinition<QColorExtended>());
    }
}

QTEST_MAIN(tst_QtData)
#include "tst_QtData.moc"
