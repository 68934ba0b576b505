#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/data/GroupLayout.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/widgets/editors/Number.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>
#include <MarlixLibQt/widgets/frame/Collapsible.h>
#include <MarlixLibQt/widgets/properties/DefaultPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/PropertySheet.h>
#include <MarlixLibQt/widgets/properties/PropertySheetItem.h>
#include <MarlixLibQt/widgets/properties/UiAttributes.h>
#include <MarlixLibQt/widgets/properties/UiConditions.h>
#include <MarlixTestScene/TestScene.h>

#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QTest>
#include <QToolButton>

#include <functional>

using namespace Marlix;
using namespace Marlix::Widgets;
using namespace Marlix::TestScene;

namespace {

SpinBox* numberField(const PropertySheet& sheet, StringView path)
{
    const PropertySheetItem* row = sheet.findItem(path);
    return row ? row->editor()->findChild<SpinBox*>() : nullptr;
}

/// A press on the field's text, `pixels` one-pixel moves up, a release; `afterMove` runs after every move.
void dragUp(SpinBox* field, int pixels, const std::function<void()>& afterMove = {})
{
    const QPoint press(field->width() / 4, field->height() / 2);
    QTest::mousePress(field, Qt::LeftButton, {}, press);
    for (int i = 1; i <= pixels; ++i) {
        QTest::mouseEvent(QTest::MouseMove, field, Qt::NoButton, {}, press - QPoint(0, i));
        if (afterMove)
            afterMove();
    }
    QTest::mouseRelease(field, Qt::LeftButton, {}, press - QPoint(0, pixels));
}

// A lamp whose light group has one row, shown while the lamp is on; the condition counts its evaluations.
int lightConditionRuns = 0;

bool isOn(const GenericDataObject& lamp)
{
    ++lightConditionRuns;
    return lamp.getPropertyValue<bool>("on");
}

// One property per attribute the sheet reads; "on" switches "strength", renames "size" and shows the light group,
// whose only row has a shown-if condition.
const EntityClassInfo& attributesClass()
{
    static const EntityClassInfo info = [] {
        const auto number = TypeDatabase::instance().lookupNativeTypeDefinition<double>();
        const auto flagged
            = [](Flags<UiFlag> flags) { return UserData().set(String(UiFlags::ATTRIBUTE), UiFlags { flags }); };
        const auto group = makeSharedPtr<const GroupLayout>("Attributes",
            Array<PropertyDefinition> {
                PropertyDefinition::make("on", TypeDatabase::instance().lookupNativeTypeDefinition<bool>(), false),
                PropertyDefinition::make(
                    "strength", number, 0.0, UserData().set(ENABLER_PROPERTY_ATTRIBUTE, String("on"))),
                PropertyDefinition::make("size", number, 0.0,
                    UserData().set(String(UiDynamicName::ATTRIBUTE), UiDynamicName { [](const GenericDataObject& o) {
                        return String(o.getPropertyValue<bool>("on") ? "Diameter" : "Radius");
                    } })),
                PropertyDefinition::make("fixed", number, 0.0, flagged(UiFlag::ReadOnly)),
                PropertyDefinition::make("secret", number, 0.0, flagged(UiFlag::Hidden)),
                PropertyDefinition::make("noReset", number, 0.0, flagged(UiFlag::NoReset)),
                PropertyDefinition::make("scale", number, 0.0,
                    UserData().set(
                        String(UiValueSetter::ATTRIBUTE), UiValueSetter { "Set to 1:1", Value::make(number, 1.0) })),
            });
        const auto light = makeSharedPtr<const GroupLayout>("Light",
            Array<PropertyDefinition> { PropertyDefinition::make(
                "intensity", number, 1.0, UserData().set(String(UiVisibleIf::ATTRIBUTE), UiVisibleIf { &isOn })) });
        return EntityClassInfo("TestAttributes", EntityClassInfo::entityClass(), { group, light },
            [](const EntityClassInfo& of) { return makeSharedPtr<Entity>(of); });
    }();
    return info;
}

bool showSheet(PropertySheet& sheet, QPoint position = QPoint(200, 100))
{
    // Away from the screen's edges, so that a drag does not wrap the cursor.
    sheet.resize(420, 640);
    sheet.move(position);
    sheet.show();
    sheet.activateWindow();
    return QTest::qWaitForWindowActive(&sheet);
}

} // namespace

class TestPropertySheet : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { LibQt::startup("tst_PropertySheet"); }
    void cleanupTestCase() { LibQt::shutdown(); }
    void init();

    void dragIsOneUndoStepAndASecondSheetFollows_data();
    void dragIsOneUndoStepAndASecondSheetFollows();
    void onlyCommonGroupsAreShownAndAnEmptyHolderIsRefused();
    void mixedValuesShownAndCleared_data();
    void mixedValuesShownAndCleared();
    void resetWritesDefaultInOneStep();
    void collapsedStateSurvivesRebuildAndIsShared();
    void conditionsFollowTheShading_data();
    void conditionsFollowTheShading();
    void sectionWithoutShownRowHides();
    void attributesShapeTheRows_data();
    void attributesShapeTheRows();
    void valueSetterIsOneStep();

private:
    SharedPtr<EntityGraphTracker> scene;
    SharedPtr<UndoManager> undo;
    SharedPtr<DefaultPropertySheetHost> host;
    EntityHolder<Entity> wood, steel, glass, table;
};

void TestPropertySheet::init()
{
    scene = makeSharedPtr<EntityGraphTracker>();
    populate(*scene);
    undo = makeSharedPtr<UndoManager>();
    host = makeSharedPtr<DefaultPropertySheetHost>(scene, nullptr, undo);
    const auto materials = scene->getEntitiesOfClass(materialClass());
    wood = materials.at(0);
    steel = materials.at(1);
    glass = materials.at(2);
    table = scene->getEntitiesOfClass(meshClass()).at(0);
}

void TestPropertySheet::dragIsOneUndoStepAndASecondSheetFollows_data()
{
    QTest::addColumn<bool>("both");
    QTest::newRow("one material") << false;
    QTest::newRow("two materials that disagree") << true;
}

void TestPropertySheet::dragIsOneUndoStepAndASecondSheetFollows()
{
    QFETCH(bool, both);
    const auto selection = both ? Array<EntityHolder<Entity>> { wood, steel } : Array<EntityHolder<Entity>> { wood };
    PropertySheet sheet(host);
    PropertySheet mirror(host);
    sheet.setObjects(selection);
    mirror.setObjects(selection);
    QVERIFY(showSheet(sheet));
    SpinBox* field = numberField(sheet, "roughness");
    SpinBox* mirrored = numberField(mirror, "roughness");
    PropertySheetItem* row = sheet.findItem("roughness");
    QVERIFY(field && mirrored && row->hasMixedValues() == both);
    const double woodBefore = wood->getPropertyValue<double>("roughness");
    const double steelBefore = steel->getPropertyValue<double>("roughness");

    int moves = 0;
    dragUp(field, 12, [&] {
        ++moves;
        QCOMPARE(mirrored->value(), wood->getPropertyValue<double>("roughness"));
    });
    QCOMPARE(moves, 12);
    const double after = wood->getPropertyValue<double>("roughness");
    QVERIFY(after != woodBefore);
    QCOMPARE(steel->getPropertyValue<double>("roughness"), both ? after : steelBefore);
    QVERIFY(!row->hasMixedValues());
    QCOMPARE(undo->getUndoCount(), 1u);
    undo->undo();
    QCOMPARE(wood->getPropertyValue<double>("roughness"), woodBefore);
    QCOMPARE(steel->getPropertyValue<double>("roughness"), steelBefore);
    QCOMPARE(row->hasMixedValues(), both);
    if (!both)
        QCOMPARE(mirrored->value(), woodBefore);

    // A roughness stays one, however far the drag goes.
    dragUp(field, 200);
    QCOMPARE(wood->getPropertyValue<double>("roughness"), 1.0);
}

void TestPropertySheet::onlyCommonGroupsAreShownAndAnEmptyHolderIsRefused()
{
    PropertySheet sheet(host);
    sheet.setObjects({ wood, table });
    QCOMPARE(sheet.sections().size(), 1);
    QVERIFY(sheet.findSection("SceneObject") && sheet.findItem("name")->hasMixedValues());
    QVERIFY(!sheet.findItem("roughness") && !sheet.findItem("vertexCount"));
    PropertySheetItem* row = sheet.findItem("name");
    QVERIFY_THROWS_EXCEPTION(Exception, sheet.setObjects({ steel, nullptr }));
    QVERIFY(sheet.getObjects() == (Array<EntityHolder<Entity>> { wood, table }));
    QCOMPARE(sheet.findItem("name"), row);
    sheet.setObjects({});
    QVERIFY(sheet.sections().isEmpty() && sheet.items().empty());
}

void TestPropertySheet::mixedValuesShownAndCleared_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("mixed");
    QTest::newRow("double") << QStringLiteral("roughness") << true;
    QTest::newRow("enumeration") << QStringLiteral("shading") << true;
    QTest::newRow("colour") << QStringLiteral("color") << true;
    QTest::newRow("text") << QStringLiteral("name") << true;
    QTest::newRow("equal booleans") << QStringLiteral("doubleSided") << false;
}

void TestPropertySheet::mixedValuesShownAndCleared()
{
    QFETCH(QString, path);
    QFETCH(bool, mixed);
    PropertySheet sheet(host);
    sheet.setObjects({ wood, steel });
    const String name = path.toStdString();
    PropertySheetItem* row = sheet.findItem(name);
    QVERIFY(row);
    const auto shows = [row](bool expected) {
        QCOMPARE(row->hasMixedValues(), expected);
        QCOMPARE(row->label()->font().italic(), expected);
        QCOMPARE(row->label()->toolTip().contains(QStringLiteral("<different values>")), expected);
        QCOMPARE(row->editor()->property(PropertySheetItem::MIXED_VALUES_PROPERTY).toBool(), expected);
        // The number field itself hears of it, and shows no number while the values disagree.
        if (row->getPath() == "roughness")
            QVERIFY(qobject_cast<Number*>(row->editor()));
        if (const auto* text = qobject_cast<const QLineEdit*>(row->editor()))
            QCOMPARE(text->placeholderText().isEmpty(), !expected);
        // A drop-down shows no entry, and says why, only while the values disagree.
        if (const auto* dropDown = qobject_cast<const QComboBox*>(row->editor())) {
            QCOMPARE(dropDown->currentIndex() < 0, expected);
            QCOMPARE(dropDown->placeholderText(), QStringLiteral("<different values>"));
        }
    };
    shows(mixed);

    // Steel takes Wood's value in one undoable write: the row agrees; undo makes it disagree again.
    const Value woodValue = wood->getProperty(name).getValue();
    {
        ActionHolder action = undo->createAction("copy");
        GenericPropertyAccessor(steel, name).setValue(woodValue);
        action.commit();
    }
    shows(false);
    if (undo->canUndo())
        undo->undo();
    shows(mixed);
}

void TestPropertySheet::resetWritesDefaultInOneStep()
{
    PropertySheet sheet(host);
    sheet.setObjects({ wood, steel });
    QVERIFY(showSheet(sheet));
    const double woodBefore = wood->getPropertyValue<double>("roughness");
    const double steelBefore = steel->getPropertyValue<double>("roughness");
    const double fallback
        = *materialClass().getLayouts().front()->findProperty("roughness")->getDefaultValue().get<double>();
    QVERIFY(woodBefore != fallback);

    PropertySheetItem* visible = sheet.findItem("visible");
    QVERIFY(!visible->canReset());
    QVERIFY(!visible->resetButton() || !visible->resetButton()->isVisible());

    PropertySheetItem* row = sheet.findItem("roughness");
    QVERIFY(row->canReset());
    QVERIFY(row->resetButton() && row->resetButton()->isVisible());
    QTest::mouseClick(row->resetButton(), Qt::LeftButton);
    QCOMPARE(wood->getPropertyValue<double>("roughness"), fallback);
    QCOMPARE(steel->getPropertyValue<double>("roughness"), fallback);
    QCOMPARE(undo->getUndoCount(), 1u);
    QCOMPARE(QString::fromStdString(undo->getUndoLabel()), QStringLiteral("Reset of Roughness"));
    QVERIFY(!row->canReset());
    QVERIFY(!row->resetButton()->isVisible());

    undo->undo();
    QCOMPARE(wood->getPropertyValue<double>("roughness"), woodBefore);
    QCOMPARE(steel->getPropertyValue<double>("roughness"), steelBefore);
    QVERIFY(row->resetButton()->isVisible());
}

void TestPropertySheet::collapsedStateSurvivesRebuildAndIsShared()
{
    PropertySheet first(host);
    first.setObjects({ wood });
    QVERIFY(showSheet(first));
    Collapsible* material = first.findSection("Material");
    QTest::mouseClick(material, Qt::LeftButton, {}, material->arrowRectangle().center());
    QVERIFY(material->isCollapsed() && !first.findItem("roughness")->isVisible());
    QVERIFY(first.findItem("name")->isVisible());

    first.setObjects({ steel });
    QVERIFY(first.findSection("Material")->isCollapsed() && !first.findSection("SceneObject")->isCollapsed());

    PropertySheet second(host);
    second.setObjects({ glass });
    QVERIFY(second.findSection("Material")->isCollapsed());
    second.findSection("Material")->expand();
    QVERIFY(!first.findSection("Material")->isCollapsed());
    QTRY_VERIFY(first.findItem("roughness")->isVisible());
}

void TestPropertySheet::conditionsFollowTheShading_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("visibility"); // else the enabled state
    QTest::addColumn<bool>("withSteel");
    QTest::addColumn<int>("woodShading");
    QTest::addColumn<bool>("after"); // false before
    const int glossy = int(ShadingModel::Glossy);
    const int glass = int(ShadingModel::Glass);
    QTest::newRow("anisotropy shown once wood is glossy") << "anisotropyRotation" << true << false << glossy << true;
    QTest::newRow("anisotropy shown when both are specular") << "anisotropyRotation" << true << true << glossy << true;
    QTest::newRow("anisotropy hidden while one is not") << "anisotropyRotation" << true << true << glass << false;
    QTest::newRow("opacity enabled for glass") << "opacity" << false << false << glass << true;
    QTest::newRow("opacity enabled only when both are glass") << "opacity" << false << true << glass << false;
}

void TestPropertySheet::conditionsFollowTheShading()
{
    QFETCH(QString, path);
    QFETCH(bool, visibility);
    QFETCH(bool, withSteel);
    QFETCH(int, woodShading);
    QFETCH(bool, after);
    PropertySheet sheet(host);
    sheet.setObjects(withSteel ? Array<EntityHolder<Entity>> { wood, steel } : Array<EntityHolder<Entity>> { wood });
    QVERIFY(showSheet(sheet));
    PropertySheetItem* row = sheet.findItem(path.toStdString());
    const auto state = [&] { return visibility ? row->isVisible() : row->isEnabled(); };
    QVERIFY(row && !state());

    {
        ActionHolder action = undo->createAction("shading");
        wood->setPropertyValue("shading", ShadingModel(woodShading));
        action.commit();
    }
    QCOMPARE(state(), after);
    if (visibility && after) {
        // Back in its place: after the row before it in the group.
        QLayout* rows = row->getSection()->layout();
        QCOMPARE(rows->indexOf(row), rows->indexOf(sheet.findItem("thickness")) + 1);
    }
    undo->undo();
    QVERIFY(!state());
}

void TestPropertySheet::sectionWithoutShownRowHides()
{
    PropertySheet sheet(host);
    const EntityHolder<Entity> lamp = attributesClass().create();
    sheet.setObjects({ lamp });
    QVERIFY(showSheet(sheet));
    Collapsible* light = sheet.findSection("Light");
    QVERIFY(!light->isVisible());

    // Only a change of what the condition read evaluates it again.
    const int runs = lightConditionRuns;
    lamp->setPropertyValue("fixed", 3.0);
    QCOMPARE(lightConditionRuns, runs);
    lamp->setPropertyValue("on", true);
    QCOMPARE(lightConditionRuns, runs + 1);
    QVERIFY(light->isVisible());
    QVERIFY(sheet.findItem("intensity")->isVisible());
    lamp->setPropertyValue("on", false);
    QVERIFY(!light->isVisible());
}

void TestPropertySheet::attributesShapeTheRows_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("off"); // the row while "on" is false, then while it is true
    QTest::addColumn<QString>("on");
    QTest::newRow("enabler") << "strength"
                             << "disabled"
                             << "";
    QTest::newRow("dynamic name") << "size"
                                  << "Radius"
                                  << "Diameter";
    QTest::newRow("read-only") << "fixed"
                               << "read-only no-reset"
                               << "read-only no-reset";
    QTest::newRow("hidden") << "secret"
                            << "hidden"
                            << "hidden";
    QTest::newRow("no reset") << "noReset"
                              << "no-reset"
                              << "no-reset";
}

void TestPropertySheet::attributesShapeTheRows()
{
    QFETCH(QString, path);
    QFETCH(QString, off);
    QFETCH(QString, on);
    const EntityHolder<Entity> object = attributesClass().create();
    for (const char* name : { "strength", "size", "fixed", "secret", "noReset" })
        object->setPropertyValue(name, 2.0);
    PropertySheet sheet(host);
    sheet.setObjects({ object });
    QVERIFY(showSheet(sheet));
    PropertySheetItem* row = sheet.findItem(path.toStdString());
    const auto describe = [row, path] {
        if (!row->isVisible())
            return QStringLiteral("hidden");
        QString text = path == "size" ? row->label()->text() : QString();
        if (!row->isEnabled())
            text += QStringLiteral(" disabled");
        if (const auto* field = row->editor()->findChild<QLineEdit*>(); field && field->isReadOnly())
            text += QStringLiteral(" read-only");
        if (!row->resetButton() || !row->resetButton()->isVisible())
            text += QStringLiteral(" no-reset");
        return text.trimmed();
    };
    QCOMPARE(describe(), off);
    object->setPropertyValue("on", true);
    QCOMPARE(describe(), on);
}

void TestPropertySheet::valueSetterIsOneStep()
{
    const EntityHolder<Entity> object = attributesClass().create();
    PropertySheet sheet(host);
    sheet.setObjects({ object });
    QVERIFY(sheet.findItem("scale")->applyValueSetter());
    QCOMPARE(object->getPropertyValue<double>("scale"), 1.0);
    QCOMPARE(undo->getUndoLabels(), Array<String> { "Update of Scale" });
    QVERIFY(!sheet.findItem("strength")->applyValueSetter());

    // The lister's attributes are read as well.
    const PropertyDefinition& rotation = *materialClass().getLayouts().front()->findProperty("anisotropyRotation");
    QCOMPARE(getPropertyUiAbbreviation(rotation), String("Rot"));
    QVERIFY(getPropertyUiRatioDisplayMode(rotation) == UiRatioDisplayMode::Mode::Fraction
        && !getPropertyUiListerViewOptions(rotation).hiddenByDefault);
}

QTEST_MAIN(TestPropertySheet)
#include "tst_PropertySheet.moc"
