#include <MarlixLib/Lib.h>
#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/CoreTypes.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/data/UserData.h>
#include <MarlixLib/data/Value.h>

#include <QtTest/QTest>

using namespace Marlix;

namespace {
enum class Shade : std::int32_t
{
    Flat = 0,
    Smooth = 3,
};
}

class TestTypeDatabase : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { Lib::startup(); }
    void cleanupTestCase() { Lib::shutdown(); }

    void lastShutdownUnregisters();
    void moduleComesAndGoes();
    void clashRegistersNothing();
    void userDataWrongTypeReadsAsAbsent();
    void textFormRoundTrip_data();
    void textFormRoundTrip();
    void enumerationNames();
    void listTextForm();
};

void TestTypeDatabase::lastShutdownUnregisters()
{
    Lib::startup();
    Lib::shutdown();
    QVERIFY(TypeDatabase::instance().lookupNativeTypeDefinition<double>());
    Lib::shutdown();
    QVERIFY(!TypeDatabase::instance().lookupNativeTypeDefinition<double>());
    QVERIFY(!TypeDatabase::instance().isModuleRegistered("MarlixLib"));
    Lib::startup();
    QCOMPARE(TypeDatabase::instance().lookupNativeTypeDefinition<double>()->getName(), String("double"));
}

void TestTypeDatabase::moduleComesAndGoes()
{
    TypeModuleRecord plugin("Plugin");
    plugin.addType(TypeDefinition::makeEnumeration<Shade>("Shade", { { 0, "Flat" }, { 3, "Smooth" } }));
    const EntityClassInfo lamp("Lamp", EntityClassInfo::entityClass(), {}, [](const EntityClassInfo& c) {
        return makeSharedPtr<Entity>(c);
    });
    plugin.addEntityClass(lamp);
    auto& database = TypeDatabase::instance();
    database.registerModuleTypes(plugin);
    QCOMPARE(database.lookupNativeTypeDefinition<Shade>()->getName(), String("Shade"));
    QVERIFY(database.lookupEntityClass("Lamp") == lamp);
    QVERIFY_THROWS_EXCEPTION(Exception, database.registerModuleTypes(plugin));
    database.unregisterModuleTypes(plugin);
    QVERIFY(!database.lookupTypeDefinition("Shade"));
    QVERIFY(!database.lookupEntityClass("Lamp"));
    QVERIFY_THROWS_EXCEPTION(Exception, database.unregisterModuleTypes(plugin));
}

void TestTypeDatabase::clashRegistersNothing()
{
    TypeModuleRecord clashing("Clashing");
    clashing.addType(TypeDefinition::makeEnumeration<Shade>("Shade", { { 0, "Flat" } }));
    clashing.addType(TypeDefinition::makePlain<float>("AnotherFloat"));
    QVERIFY_THROWS_EXCEPTION(Exception, TypeDatabase::instance().registerModuleTypes(clashing));
    QVERIFY(!TypeDatabase::instance().lookupTypeDefinition("Shade"));
    QVERIFY(!TypeDatabase::instance().isModuleRegistered("Clashing"));
}

void TestTypeDatabase::userDataWrongTypeReadsAsAbsent()
{
    UserData data;
    data.set<double>("Zorva.Ui.Step", 0.5);
    QCOMPARE(*data.get<double>("Zorva.Ui.Step"), 0.5);
    QVERIFY(!data.get<float>("Zorva.Ui.Step"));
    QVERIFY(!data.get<double>("Zorva.Ui.Missing"));
    data.set<String>("Zorva.Ui.Step", "half");
    QVERIFY(!data.get<double>("Zorva.Ui.Step"));
    QCOMPARE(*data.get<String>("Zorva.Ui.Step"), String("half"));
}

void TestTypeDatabase::textFormRoundTrip_data()
{
    // Text given to a type, and the text it then prints; refused text is printed as nothing.
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("bool") << "bool" << "true" << "true";
    QTest::newRow("negative int") << "int32" << "-42" << "-42";
    QTest::newRow("plus sign") << "int16" << "+7" << "7";
    QTest::newRow("double shortest") << "double" << "0.1" << "0.1";
    QTest::newRow("float") << "float" << "2.5" << "2.5";
    QTest::newRow("uint8 max") << "uint8" << "255" << "255";
    QTest::newRow("string keeps spaces") << "String" << " a b " << " a b ";
    QTest::newRow("path") << "Path" << "textures/wood.png" << "textures/wood.png";
    QTest::newRow("letters in int") << "int32" << "12a" << "";
    QTest::newRow("overflow") << "uint8" << "256" << "";
    QTest::newRow("negative unsigned") << "uint32" << "-1" << "";
    QTest::newRow("empty number") << "double" << "" << "";
    QTest::newRow("word bool") << "bool" << "yes" << "";
    QTest::newRow("typed reference") << "EntityReference" << "Lamp #3" << "";
}

void TestTypeDatabase::textFormRoundTrip()
{
    QFETCH(QString, type);
    QFETCH(QString, text);
    QFETCH(QString, expected);
    const auto definition = TypeDatabase::instance().lookupTypeDefinition(type.toStdString());
    Value value(definition);
    const Value before = value;
    const auto result = definition->fromString(text.toStdString(), value.data());
    if (expected.isEmpty()) {
        // A refusal says why and keeps the value.
        QVERIFY(!result);
        QVERIFY(!result.error().empty());
        QVERIFY(value == before);
        return;
    }
    QVERIFY(result);
    QCOMPARE(QString::fromStdString(value.toString()), expected);
}

void TestTypeDatabase::enumerationNames()
{
    const auto type = TypeDefinition::makeEnumeration<Shade>("Shade", { { 0, "Flat" }, { 3, "Smooth" } });
    Value value(type);
    QCOMPARE(value.toString(), String("Flat"));
    QVERIFY(type->fromString("Smooth", value.data()));
    QCOMPARE(*value.get<Shade>(), Shade::Smooth);
    QVERIFY(!type->fromString("Rough", value.data()));
    QCOMPARE(*value.get<Shade>(), Shade::Smooth);
    QCOMPARE(type->toInt64(value.data()), std::int64_t(3));
}

void TestTypeDatabase::listTextForm()
{
    const auto element = TypeDatabase::instance().lookupNativeTypeDefinition<String>();
    const auto list = TypeDefinition::makeList<String>("Names", element);
    const Value value = Value::make(list, Array<String> { "a", "b, c", "" });
    QCOMPARE(value.toString(), String("[a, \"b, c\", \"\"]"));
    Value parsed(list);
    QVERIFY(list->fromString(value.toString(), parsed.data()));
    QVERIFY(parsed == value);
    QVERIFY(!list->fromString("[a, \"b", parsed.data()));
    QVERIFY(parsed == value);
}

QTEST_GUILESS_MAIN(TestTypeDatabase)
#include "tst_TypeDatabase.moc"
