#include <MarlixLib/Lib.h>
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/math/Pos.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/lister/ListerModel.h>
#include <MarlixLibQt/lister/ListerProxy.h>
#include <MarlixLibQt/lister/ListerSceneBinding.h>
#include <MarlixTestScene/TestScene.h>

#include <QAbstractItemModelTester>
#include <QFont>
#include <QSignalSpy>
#include <QTest>

using namespace Marlix;
using namespace Marlix::Widgets;
using namespace Marlix::TestScene;
using Presentation = ListerValuePresentation;

namespace {
enum Column
{
    NAME,
    ROUGHNESS,
    DOUBLE_SIDED,
    LAYERS,
    SHADING,
    ACTIONS,
    POSITION,
};

Stack<ListerColumnDefinition> makeColumns()
{
    return {
        { "Name", "The object's name", Presentation::Name, "name" },
        { "Roughness", "", Presentation::Number, "roughness" },
        { "Double sided", "", Presentation::Centered, "doubleSided" },
        { "Layers", "", Presentation::ReadOnly, "layers" },
        { "Shading", "", Presentation::Editor, "shading" },
        { "", "", Presentation::Actions, "" },
        { "Position", "Where it stands", Presentation::Text, "transform.position" },
    };
}

EntityHolder<Entity> make(const EntityClassInfo& entityClass, const String& name, double roughness = 0.5)
{
    auto entity = entityClass.create();
    entity->setPropertyValue("name", name);
    if (entity->indexOfProperty("roughness") >= 0)
        entity->setPropertyValue("roughness", roughness);
    return entity;
}

// "Row|Row(Sub,Sub)|...", read through data() of the name column, so that it serves the model and its proxies alike.
QString describe(const QAbstractItemModel& model)
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row) {
        const QModelIndex index = model.index(row, NAME);
        QString text = index.data().toString();
        QStringList subRows;
        for (int sub = 0; sub < model.rowCount(index); ++sub)
            subRows << model.index(sub, NAME, index).data().toString();
        if (!subRows.isEmpty())
            text += QLatin1Char('(') + subRows.join(QLatin1Char(',')) + QLatin1Char(')');
        rows << text;
    }
    return rows.join(QLatin1Char('|'));
}

EntityHolder<Entity> findNamed(const EntityGraphTracker& scene, const String& name)
{
    for (const auto& entity : scene.getEntities())
        if (entity->getPropertyValue<String>("name") == name)
            return entity;
    return nullptr;
}
} // namespace

class TestListerModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { Lib::startup(); }
    void cleanupTestCase() { Lib::shutdown(); }

    void cellsFollowThePresentation_data();
    void cellsFollowThePresentation();
    void rowsResolveThroughTheirKeys();
    void reorderKeepsIndexes_data();
    void reorderKeepsIndexes();
    void bindingFollowsTheScene();
    void editShowsInExactlyItsCell_data();
    void editShowsInExactlyItsCell();
    void proxySortsAndFilters_data();
    void proxySortsAndFilters();
    void proxySortsNumbersInNamesAsNumbers();
};

void TestListerModel::cellsFollowThePresentation_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("instance");
    QTest::addColumn<int>("flags");
    QTest::addColumn<int>("alignment");
    QTest::addColumn<QString>("shown"); // a part of the cell's text; empty for a cell without text
    QTest::addColumn<bool>("hasAccessor");

    const QString none;
    QTest::newRow("name") << int(NAME) << false << 35 << 0x81 << QStringLiteral("Wood") << true;
    QTest::newRow("number") << int(ROUGHNESS) << false << 35 << 0x82 << none << true;
    QTest::newRow("centred") << int(DOUBLE_SIDED) << false << 35 << 0x84 << none << true;
    QTest::newRow("read-only") << int(LAYERS) << false << 33 << 0x84 << none << true;
    QTest::newRow("editor") << int(SHADING) << false << 35 << 0x81 << none << true;
    QTest::newRow("actions") << int(ACTIONS) << false << 35 << 0x81 << none << false;
    QTest::newRow("path the entity lacks") << int(POSITION) << false << 35 << 0x81 << none << false;
    QTest::newRow("nested text") << int(POSITION) << true << 35 << 0x81 << QStringLiteral("1.5") << true;
    QTest::newRow("name of another class") << int(NAME) << true << 35 << 0x81 << QStringLiteral("Lamp") << true;
}

void TestListerModel::cellsFollowThePresentation()
{
    QFETCH(int, column);
    QFETCH(bool, instance);
    QFETCH(int, flags);
    QFETCH(int, alignment);
    QFETCH(QString, shown);
    QFETCH(bool, hasAccessor);

    ListerModel model(makeColumns(), {});
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(model.columnCount(), 7);
    const auto material = make(materialClass(), "Wood");
    const auto lamp = make(instanceClass(), "Lamp");
    lamp->setPropertyValue("transform.position", Pos { 1.5, 0.0, 0.0 });
    model.addTopLevelEntity(material);
    model.addTopLevelEntity(lamp);

    const QModelIndex index = model.index(instance ? 1 : 0, column);
    QCOMPARE(int(model.flags(index)), flags);
    QCOMPARE(model.data(index, Qt::TextAlignmentRole).toInt(), alignment);
    QCOMPARE(model.getPropertyAccessor(index).has_value(), hasAccessor);
    QVERIFY(!model.data(index, Qt::EditRole).isValid());
    const QVariant text = model.data(index, Qt::DisplayRole);
    QCOMPARE(text.isValid(), !shown.isEmpty());
    QCOMPARE(model.data(index, Qt::ToolTipRole), text);
    if (text.isValid()) {
        const auto entity = model.getEntity(index);
        const String path = model.getColumnDefinition(column).propertyPath;
        QCOMPARE(text.toString(), QString::fromStdString(GenericPropertyAccessor(entity, path).toString()));
        QVERIFY2(text.toString().contains(shown), qPrintable(text.toString()));
    }

    const ListerColumnDefinition& definition = model.getColumnDefinition(column);
    QCOMPARE(model.headerData(column, Qt::Horizontal).toString(), QString::fromStdString(definition.headerText));
    QCOMPARE(model.headerData(column, Qt::Horizontal, Qt::ToolTipRole).toString(),
        QString::fromStdString(definition.headerToolTip));
    QCOMPARE(model.headerData(column, Qt::Horizontal, Qt::FontRole).value<QFont>().weight(), 700);
    QCOMPARE(model.headerData(column, Qt::Horizontal, Qt::TextAlignmentRole).toInt(), 0x84);
    QVERIFY(!model.headerData(column, Qt::Vertical).isValid());
    QVERIFY(!model.headerData(column, Qt::Horizontal, Qt::DecorationRole).isValid());
}

void TestListerModel::rowsResolveThroughTheirKeys()
{
    ListerModel model(makeColumns(), {});
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    const auto group = make(instanceClass(), "Group");
    const auto other = make(instanceClass(), "Other");
    const auto shared = make(instanceClass(), "Shared");
    const auto master = make(instanceClass(), "All");
    model.addTopLevelEntity(group);
    model.addTopLevelEntity(other);
    // One entity in three places: under two parents and as a row of its own. Each index must name its own place.
    const EntityHolder<Entity> subs[] = { shared, make(instanceClass(), "Leaf") };
    model.addSubEntities(subs, group);
    model.addSubEntities(ArrayView<const EntityHolder<Entity>>(subs).first(1), other);
    model.addTopLevelEntity(shared);
    model.addTopLevelEntity(shared);
    model.setMasterEntity(master);
    QCOMPARE(describe(model), QStringLiteral("Group(Shared,Leaf)|Other(Shared)|Shared|All"));
    QCOMPARE(model.getMasterEntity(), master);
    QVERIFY(model.isTopLevel(*shared) && !model.isTopLevel(*subs[1]));
    QCOMPARE(model.getChildrenCount(*group), 2);

    const QModelIndex underOther = model.index(0, POSITION, model.index(1, 0));
    QCOMPARE(model.getEntity(underOther), shared);
    QCOMPARE(model.parent(underOther), model.index(1, 0));
    QCOMPARE(model.getTopLevelIndex(*shared), model.index(2, 0));
    QCOMPARE(model.sibling(0, NAME, underOther).internalId(), underOther.internalId());

    const QPersistentModelIndex leaf = model.index(1, NAME, model.index(0, 0));
    const QModelIndex staleLeaf = leaf;
    QSignalSpy finished(&model, &ListerModel::rowsRemovingFinished);
    model.removeTopLevelEntity(group);
    QCOMPARE(finished.count(), 1);
    QVERIFY(!leaf.isValid());
    QVERIFY(!model.getEntity(staleLeaf) && !model.parent(staleLeaf).isValid());
    QCOMPARE(describe(model), QStringLiteral("Other(Shared)|Shared|All"));

    QVERIFY(model.moveTopLevelEntity(*master, 0));
    QVERIFY(!model.moveTopLevelEntity(*group, 0));
    const EntityHolder<Entity> order[] = { master, other, make(instanceClass(), "New"), shared };
    model.setTopLevelEntities(order);
    QCOMPARE(describe(model), QStringLiteral("All|Other(Shared)|New|Shared"));
    model.setMasterEntity(nullptr);
    QCOMPARE(describe(model), QStringLiteral("Other(Shared)|New|Shared"));
}

void TestListerModel::reorderKeepsIndexes_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<bool>("asLayoutChange");

    QTest::newRow("a few rows move one by one") << 6 << false;
    QTest::newRow("many rows in one layout change") << 60 << true;
}

void TestListerModel::reorderKeepsIndexes()
{
    QFETCH(int, rows);
    QFETCH(bool, asLayoutChange);

    ListerModel model(makeColumns(), {});
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    Array<EntityHolder<Entity>> entities;
    for (int i = 0; i < rows; ++i)
        entities.push_back(make(materialClass(), "M" + std::to_string(i)));
    model.setTopLevelEntities(entities);
    const EntityHolder<Entity> subs[] = { make(materialClass(), "S1"), make(materialClass(), "S2") };
    model.addSubEntities(subs, entities[1]);
    const QPersistentModelIndex second = model.index(1, LAYERS);
    const QPersistentModelIndex sub = model.index(1, NAME, second.sibling(1, 0));
    QSignalSpy moved(&model, &QAbstractItemModel::rowsMoved);
    QSignalSpy layout(&model, &QAbstractItemModel::layoutChanged);

    std::reverse(entities.begin(), entities.end());
    model.setTopLevelEntities(entities);
    QCOMPARE(model.getTopLevelEntities(), entities);
    QCOMPARE(layout.count(), asLayoutChange ? 1 : 0);
    QCOMPARE(moved.isEmpty(), asLayoutChange);
    QCOMPARE(second.row(), rows - 2);
    QCOMPARE(second.column(), int(LAYERS));
    QCOMPARE(model.getEntity(sub), subs[1]);
    QCOMPARE(sub.parent(), model.index(rows - 2, 0));

    const EntityHolder<Entity> reversedSubs[] = { subs[1], subs[0] };
    model.setSubEntities(reversedSubs, entities[rows - 2]);
    QCOMPARE(sub.row(), 0);
}

void TestListerModel::bindingFollowsTheScene()
{
    auto scene = makeSharedPtr<EntityGraphTracker>();
    populate(*scene);
    ListerModel model(makeColumns(), {});
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    ListerSceneBinding binding(model, scene, instanceClass());
    binding.setSubEntitiesPropertyPath("children");
    UndoManager undo;
    const auto inAction = [&](auto&& change) {
        ActionHolder action = undo.createAction("Change");
        change();
        action.commit();
    };
    const auto group = findNamed(*scene, "Table group");
    const auto lamp2 = findNamed(*scene, "Lamp 2");
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    QSignalSpy moved(&model, &QAbstractItemModel::rowsMoved);

    struct Step
    {
        const char* what;
        Function<void()> change;
        QString rows;
    };
    const Step steps[] = {
        { "start", [] {}, "Table 1|Lamp 1|Lamp 2|Table group(Table 1,Lamp 1)" },
        { "add", [&] { scene->addEntity(make(instanceClass(), "Extra")); },
            "Table 1|Lamp 1|Lamp 2|Table group(Table 1,Lamp 1)|Extra" },
        { "other class", [&] { scene->addEntity(make(materialClass(), "Paint")); },
            "Table 1|Lamp 1|Lamp 2|Table group(Table 1,Lamp 1)|Extra" },
        { "remove", [&] { inAction([&] { scene->removeEntity(*lamp2); }); },
            "Table 1|Lamp 1|Table group(Table 1,Lamp 1)|Extra" },
        { "undo remove", [&] { undo.undo(); }, "Table 1|Lamp 1|Lamp 2|Table group(Table 1,Lamp 1)|Extra" },
        { "children",
            [&] { inAction([&] { group->setPropertyValue("children", Array<EntityHolder<Entity>> { lamp2 }); }); },
            "Table 1|Lamp 1|Lamp 2|Table group(Lamp 2)|Extra" },
        { "undo children", [&] { undo.undo(); }, "Table 1|Lamp 1|Lamp 2|Table group(Table 1,Lamp 1)|Extra" },
        { "reorder",
            [&] {
                auto reversed = scene->getEntities();
                std::reverse(reversed.begin(), reversed.end());
                scene->replaceEntities(reversed);
            },
            "Extra|Table group(Table 1,Lamp 1)|Lamp 2|Lamp 1|Table 1" },
        { "remove a sub-entity's row", [&] { scene->removeEntity(*findNamed(*scene, "Table 1")); },
            "Extra|Table group(Table 1,Lamp 1)|Lamp 2|Lamp 1" },
    };
    for (const Step& step : steps) {
        const qsizetype movesBefore = moved.count();
        inserted.clear();
        removed.clear();
        step.change();
        QVERIFY2(describe(model) == step.rows, qPrintable(step.what + QStringLiteral(": ") + describe(model)));
        if (QByteArray(step.what) == "reorder") {
            QVERIFY(moved.count() > movesBefore);
            QVERIFY(inserted.isEmpty() && removed.isEmpty());
        }
    }
}

void TestListerModel::editShowsInExactlyItsCell_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("throughUndo");

    QTest::newRow("name") << QStringLiteral("name") << int(NAME) << false;
    QTest::newRow("number") << QStringLiteral("roughness") << int(ROUGHNESS) << false;
    QTest::newRow("undo of a number") << QStringLiteral("roughness") << int(ROUGHNESS) << true;
}

void TestListerModel::editShowsInExactlyItsCell()
{
    QFETCH(QString, path);
    QFETCH(int, column);
    QFETCH(bool, throughUndo);

    ListerModel model(makeColumns(), {});
    const auto wood = make(materialClass(), "Wood", 0.25);
    const auto steel = make(materialClass(), "Steel", 0.25);
    model.addTopLevelEntity(wood);
    model.addTopLevelEntity(steel);
    const EntityHolder<Entity> subs[] = { make(materialClass(), "Veneer") };
    model.addSubEntities(subs, steel);
    for (const QModelIndex& read :
        { model.index(0, NAME), model.index(1, NAME), model.index(0, NAME, model.index(1, 0)) })
        QVERIFY(read.data().isValid()); // cells that were read are the ones watched
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);

    UndoManager undo;
    const QModelIndex cell = model.index(1, column);
    const auto accessor = model.getPropertyAccessor(cell);
    QVERIFY(accessor);
    {
        ActionHolder action = undo.createAction("Edit");
        // A burst of writes is shown once.
        for (const double value : { 0.5, 0.75 })
            path == QLatin1String("name") ? accessor->setValue(String("Iron") + std::to_string(value))
                                          : accessor->setValue(value);
        action.commit();
    }
    if (throughUndo) {
        QCoreApplication::sendPostedEvents();
        changed.clear();
        undo.undo();
        QCOMPARE(steel->getPropertyValue<double>("roughness"), 0.25);
    }
    QVERIFY(changed.isEmpty()); // told once per pass of the event loop, not inside the edit
    QCoreApplication::sendPostedEvents();
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.front().at(0).value<QModelIndex>(), cell);
    QCOMPARE(changed.front().at(1).value<QModelIndex>(), cell);

    changed.clear();
    model.removeTopLevelEntity(steel);
    wood->setPropertyValue("thickness", 0.25); // not a shown column's property
    subs[0]->setPropertyValue("roughness", 0.1); // its row is gone
    QCoreApplication::sendPostedEvents();
    QVERIFY(changed.isEmpty());
}

void TestListerModel::proxySortsAndFilters_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("descending");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("rows");

    QTest::newRow("source order") << -1 << false << QString() << "Wood(Oak glass,Pine)|Steel|Glass|Amber|Glaze|All";
    QTest::newRow("by number, ties stay")
        << int(ROUGHNESS) << false << QString() << "All|Glass|Steel|Amber|Wood(Pine,Oak glass)|Glaze";
    QTest::newRow("by number, falling") << int(ROUGHNESS) << true << QString()
                                        << "All|Glaze|Wood(Oak glass,Pine)|Steel|Amber|Glass";
    QTest::newRow("by text") << int(NAME) << false << QString() << "All|Amber|Glass|Glaze|Steel|Wood(Oak glass,Pine)";
    QTest::newRow("by text, falling") << int(NAME) << true << QString()
                                      << "All|Wood(Pine,Oak glass)|Steel|Glaze|Glass|Amber";
    QTest::newRow("row kept for its sub-row") << -1 << false << "GLA"
                                              << "Wood(Oak glass)|Glass|Glaze|All";
    QTest::newRow("sub-row only") << -1 << false << "pine"
                                  << "Wood(Pine)|All";
    QTest::newRow("row shows all its sub-rows") << -1 << false << "wood"
                                                << "Wood(Oak glass,Pine)|All";
    QTest::newRow("nothing matches") << int(NAME) << false << "zzz"
                                     << "All";
}

void TestListerModel::proxySortsAndFilters()
{
    QFETCH(int, column);
    QFETCH(bool, descending);
    QFETCH(QString, filter);
    QFETCH(QString, rows);

    ListerModel model(makeColumns(), {});
    const auto wood = make(materialClass(), "Wood", 0.7);
    for (const auto& entity : { wood, make(materialClass(), "Steel", 0.2), make(materialClass(), "Glass", 0.0),
             make(materialClass(), "Amber", 0.2), make(materialClass(), "Glaze", 0.9) })
        model.addTopLevelEntity(entity);
    const EntityHolder<Entity> subs[] = { make(materialClass(), "Oak glass", 0.6), make(materialClass(), "Pine", 0.3) };
    model.addSubEntities(subs, wood);
    model.setMasterEntity(make(materialClass(), "All", 1.0));

    ListerProxy proxy;
    QAbstractItemModelTester tester(&proxy, QAbstractItemModelTester::FailureReportingMode::Fatal);
    proxy.setListerModel(&model);
    proxy.setNameFilter(filter);
    proxy.sort(column, descending ? Qt::DescendingOrder : Qt::AscendingOrder);
    QCOMPARE(describe(proxy), rows);
    QCOMPARE(proxy.getEntity(proxy.index(0, SHADING))->getPropertyValue<String>("name"),
        rows.section(QLatin1Char('|'), 0, 0).section(QLatin1Char('('), 0, 0).toStdString());

    // The order and the filter follow edits.
    subs[1]->setPropertyValue("name", String("Glass pine"));
    wood->setPropertyValue("roughness", 0.05);
    QCoreApplication::sendPostedEvents();
    if (column == ROUGHNESS && !descending)
        QCOMPARE(describe(proxy), QStringLiteral("All|Glass|Wood(Glass pine,Oak glass)|Steel|Amber|Glaze"));
    if (filter == QLatin1String("GLA"))
        QCOMPARE(describe(proxy), QStringLiteral("Wood(Oak glass,Glass pine)|Glass|Glaze|All"));
}

void TestListerModel::proxySortsNumbersInNamesAsNumbers()
{
    // Whatever the user's locale (the C locale's collation knows no numbers).
    ListerModel model(makeColumns(), {});
    for (const char* name : { "Object 10", "object 9", "Object 1", "Object 09a", "Object 100" })
        model.addTopLevelEntity(make(materialClass(), name));
    ListerProxy proxy;
    proxy.setListerModel(&model);
    proxy.sort(NAME, Qt::AscendingOrder);
    QCOMPARE(describe(proxy), QStringLiteral("Object 1|object 9|Object 09a|Object 10|Object 100"));
}

QTEST_MAIN(TestListerModel)
#include "tst_ListerModel.moc"
