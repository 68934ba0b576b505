#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/data/GroupLayout.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/widgets/color/ColorEditButton.h>
#include <MarlixLibQt/widgets/color/ColorPickerDialog.h>
#include <MarlixLibQt/widgets/color/GradientControl.h>
#include <MarlixLibQt/widgets/editors/ComboBox.h>
#include <MarlixLibQt/widgets/editors/LineEdit.h>
#include <MarlixLibQt/widgets/editors/Number.h>
#include <MarlixLibQt/widgets/entities/EntityWidget.h>
#include <MarlixLibQt/widgets/properties/DefaultPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/ListEditor.h>
#include <MarlixLibQt/widgets/properties/PropertyWidgetConstructor.h>
#include <MarlixLibQt/widgets/properties/UiAttributes.h>
#include <MarlixTestScene/TestScene.h>

#include <QApplication>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <QToolButton>

using namespace Marlix;
using namespace Marlix::Widgets;
using namespace Marlix::TestScene;

namespace {

using Constructor = PropertyWidgetConstructor::Constructor;

EntityHolder<Entity> entityNamed(const EntityGraphTracker& scene, StringView name)
{
    for (const auto& entity : scene.getEntities())
        if (entity->getPropertyValue<String>("name") == name)
            return entity;
    return nullptr;
}

/// A class with one property of `type`, made for one test so that what it registers on the type stays there.
EntityHolder<Entity> makeObjectWith(
    SharedPtr<const TypeDefinition> type, Value defaultValue, UserData options = {}, Flags<PropertyFlag> flags = {})
{
    const EntityClassInfo info("TestObject", EntityClassInfo::entityClass(),
        { makeSharedPtr<const GroupLayout>("TestObject",
            Array<PropertyDefinition> {
                PropertyDefinition("value", std::move(type), std::move(defaultValue), std::move(options), flags) }) },
        [](const EntityClassInfo& entityClass) { return makeSharedPtr<Entity>(entityClass); });
    return info.create();
}

SharedPtr<TypeDefinition> makeChoiceType()
{
    return TypeDefinition::makeEnumeration<std::int16_t>("TestChoice", { { 0, "Off" }, { 1, "On" }, { 5, "Auto" } });
}

QString className(const QWidget* widget)
{
    return QString::fromLatin1(widget->metaObject()->className());
}

/// Shows `editor`'s window active and types `text` into `field` as a user does: select all, type, Enter.
bool typeInto(QWidget* editor, QLineEdit* field, const QString& text)
{
    editor->window()->move(200, 200);
    editor->window()->show();
    editor->window()->activateWindow();
    if (!QTest::qWaitForWindowActive(editor->window()))
        return false;
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Return);
    return true;
}

} // namespace

class tst_PropertyWidgetConstructor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void constructorLookup_data();
    void constructorLookup();
    void defaultRegistrationKeepsEarlierConstructors();
    void editorClassPerType_data();
    void editorClassPerType();
    void typedNumberIsOneNamedUndoStep_data();
    void typedNumberIsOneNamedUndoStep();
    void enumerationAlternatives_data();
    void enumerationAlternatives();
    void textFormRefusesBadTextAndSaysWhy();
    void listEditsAreOneNamedStep_data();
    void listEditsAreOneNamedStep();
    void gradientStopRemovalIsOneStep();
    void colorAttributesShapeTheEditor_data();
    void colorAttributesShapeTheEditor();
    void readOnlyPropertyRefusesEdits_data();
    void readOnlyPropertyRefusesEdits();
    void mixedValues();
    void entityWidgetPicksAcceptedEntityAndNone();
    void entityWidgetLeavesOutFilteredEntitiesAndCycles_data();
    void entityWidgetLeavesOutFilteredEntitiesAndCycles();

private:
    QWidget* make(const EntityHolder<Entity>& object, const String& path);
    QWidget* make(const GenericPropertyAccessor& property);
    static bool showActive(QWidget* widget);

    SharedPtr<EntityGraphTracker> scene;
    SharedPtr<UndoManager> undo;
    SharedPtr<DefaultPropertySheetHost> host;
    std::vector<std::unique_ptr<QWidget>> editors;
};

void tst_PropertyWidgetConstructor::initTestCase()
{
    QLocale::setDefault(QLocale::c());
    registerTypes();
}

void tst_PropertyWidgetConstructor::init()
{
    editors.clear();
    scene = makeSharedPtr<EntityGraphTracker>();
    populate(*scene);
    undo = makeSharedPtr<UndoManager>();
    host = makeSharedPtr<DefaultPropertySheetHost>(scene, nullptr, undo);
}

QWidget* tst_PropertyWidgetConstructor::make(const EntityHolder<Entity>& object, const String& path)
{
    return make(GenericPropertyAccessor(object, path));
}

QWidget* tst_PropertyWidgetConstructor::make(const GenericPropertyAccessor& property)
{
    editors.emplace_back(PropertyWidgetConstructor::make(property, { nullptr, host, {} }));
    return editors.back().get();
}

bool tst_PropertyWidgetConstructor::showActive(QWidget* widget)
{
    widget->move(200, 200);
    widget->show();
    widget->activateWindow();
    return QTest::qWaitForWindowActive(widget);
}

void tst_PropertyWidgetConstructor::constructorLookup_data()
{
    // Each entry: a constructor tagged n is registered for n > 0; 0 stores a value of another type under the key.
    QTest::addColumn<QList<int>>("entries");
    QTest::addColumn<QString>("expected");
    QTest::newRow("none: the enumeration's drop-down") << QList<int> {} << QStringLiteral("Marlix::Widgets::ComboBox");
    QTest::newRow("registered wins over the enumeration") << QList<int> { 1 } << QStringLiteral("custom 1");
    QTest::newRow("wrong-typed entry is ignored") << QList<int> { 0 } << QStringLiteral("Marlix::Widgets::ComboBox");
    QTest::newRow("re-registering replaces") << QList<int> { 1, 2 } << QStringLiteral("custom 2");
    QTest::newRow("wrong type stored over a constructor")
        << QList<int> { 1, 0 } << QStringLiteral("Marlix::Widgets::ComboBox");
}

void tst_PropertyWidgetConstructor::constructorLookup()
{
    QFETCH(QList<int>, entries);
    QFETCH(QString, expected);
    const SharedPtr<TypeDefinition> type = makeChoiceType();
    for (const int tag : entries) {
        if (tag == 0) {
            type->getMutableUserData().set(String(PropertyWidgetConstructor::CONSTRUCTOR_ATTRIBUTE), String("label"));
            continue;
        }
        PropertyWidgetConstructor::registerConstructor(
            type, [tag](const GenericPropertyAccessor&, const auto& arguments) {
                return static_cast<QWidget*>(new QLabel(QStringLiteral("custom %1").arg(tag), arguments.parent));
            });
    }
    const GenericPropertyAccessor property(makeObjectWith(type, Value::make(type, std::int16_t(1))), "value");
    QWidget* editor = make(property);
    const auto* label = qobject_cast<QLabel*>(editor);
    QCOMPARE(label ? label->text() : className(editor), expected);
    QCOMPARE(PropertyWidgetConstructor::hasCustomConstructor(property), label != nullptr);
}

void tst_PropertyWidgetConstructor::defaultRegistrationKeepsEarlierConstructors()
{
    const SharedPtr<TypeDefinition> type = TypeDatabase::instance().lookupTypeDefinition("bool");
    const Constructor defaults
        = *type->getMutableUserData().get<Constructor>(PropertyWidgetConstructor::CONSTRUCTOR_ATTRIBUTE);
    const EntityHolder<Entity> wood = entityNamed(*scene, "Wood");

    PropertyWidgetConstructor::registerConstructor(type, [](const GenericPropertyAccessor&, const auto& arguments) {
        return static_cast<QWidget*>(new QLabel(QStringLiteral("host's"), arguments.parent));
    });
    PropertyWidgetConstructor::registerDefaultWidgets();
    auto* label = qobject_cast<QLabel*>(make(wood, "doubleSided"));
    PropertyWidgetConstructor::registerConstructor(type, defaults);
    QVERIFY(label && label->text() == QStringLiteral("host's"));
    PropertyWidgetConstructor::registerDefaultWidgets();
    QCOMPARE(className(make(wood, "doubleSided")), QStringLiteral("Marlix::Widgets::CheckBox"));
}

void tst_PropertyWidgetConstructor::editorClassPerType_data()
{
    QTest::addColumn<QString>("entity");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("slider");
    const auto row = [](const char* tag, const char* entity, const char* path, QString expected, bool slider) {
        if (!expected.startsWith(QLatin1Char('Q')))
            expected.prepend(QStringLiteral("Marlix::Widgets::"));
        QTest::newRow(tag) << QString::fromLatin1(entity) << QString::fromLatin1(path) << expected << slider;
    };
    row("double with slider", "Wood", "roughness", "Number", true);
    row("double", "Wood", "thickness", "Number", false);
    row("float with slider", "Wood", "opacity", "Number", true);
    row("int32", "Wood", "layers", "Number", false);
    row("uint32", "Table", "vertexCount", "Number", false);
    row("bool", "Wood", "doubleSided", "CheckBox", false);
    row("String", "Wood", "name", "LineEdit", false);
    row("Path", "Wood", "texture", "Path", false);
    row("enumeration", "Wood", "shading", "ComboBox", false);
    row("Rgb", "Wood", "color", "ColorEditButton", false);
    row("ColorGradient", "Table", "colorRamp", "GradientControl", false);
    row("Vector2", "Wood", "tiling", "Vector", false);
    row("Pixel", "Table", "resolution", "Vector", false);
    row("Dir", "Lamp 1", "pivot", "Vector", false);
    row("Pos, nested", "Lamp 1", "transform.position", "Vector", false);
    row("Vector3, nested", "Lamp 1", "transform.scale", "Vector", false);
    row("PosRotScaleTm", "Lamp 1", "transform", "PosRotScale", false);
    row("entity reference", "Table", "material", "EntityWidget", false);
    row("entity reference, other type", "Lamp 1", "materialOverride", "EntityWidget", false);
    row("list of references", "Table group", "children", "ListEditor", false);
    row("list of numbers", "Table", "lodDistances", "ListEditor", false);
    row("missing property", "Wood", "nothing", "QLabel", false);
}

void tst_PropertyWidgetConstructor::editorClassPerType()
{
    QFETCH(QString, entity);
    QFETCH(QString, path);
    QFETCH(QString, expected);
    QFETCH(bool, slider);
    QWidget* editor = make(entityNamed(*scene, entity.toStdString()), path.toStdString());
    QCOMPARE(className(editor), expected);
    // What cannot be edited says so in a label that elides rather than widening the sheet.
    if (auto* label = qobject_cast<QLabel*>(editor)) {
        QHBoxLayout row;
        row.addWidget(label);
        QVERIFY(label->property(PropertyWidgetConstructor::USE_ELLIPSIS_PROPERTY).toBool());
        QVERIFY(row.minimumSize().width() < label->sizeHint().width() / 4);
    }
    if (auto* number = qobject_cast<Number*>(editor))
        QCOMPARE(number->getSlider() != nullptr, slider);
}

void tst_PropertyWidgetConstructor::typedNumberIsOneNamedUndoStep_data()
{
    QTest::addColumn<QString>("entity");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<double>("expected");
    const auto row = [](const char* tag, const char* entity, const char* path, const char* typed, double expected) {
        QTest::newRow(tag) << QString::fromLatin1(entity) << QString::fromLatin1(path) << QString::fromLatin1(typed)
                           << expected;
    };
    row("double", "Wood", "roughness", "0.25", 0.25);
    row("float", "Wood", "opacity", "0.5", 0.5);
    row("int32, range of its type", "Wood", "layers", "-7", -7.0);
    row("length typed in the shown centimetres", "Glass", "thickness", "1.5", 0.015);
}

void tst_PropertyWidgetConstructor::typedNumberIsOneNamedUndoStep()
{
    QFETCH(QString, entity);
    QFETCH(QString, path);
    QFETCH(QString, typed);
    QFETCH(double, expected);
    const EntityHolder<Entity> object = entityNamed(*scene, entity.toStdString());
    const String name = path.toStdString();
    auto* number = qobject_cast<Number*>(make(object, name));
    QVERIFY(number);
    SpinBox* field = number->getSpinBox();
    const double before = object->getProperty(name).read<double>();
    if (name == "thickness") {
        // The field follows the host's display units.
        QCOMPARE(field->getConversion().suffix, String("m"));
        host->getDisplayUnitsModel()->set(
            { LengthUnit::Centimeter, AngleUnit::Degree, RadianceUnit::Nit, TimeUnit::Second });
        QCOMPARE(field->getConversion().suffix, String("cm"));
        QCOMPARE(field->value(), 0.4);
    }
    QVERIFY(typeInto(number, field->getLineEdit(), typed));
    QCOMPARE(object->getProperty(name).read<double>(), expected);
    QCOMPARE(undo->getUndoLabels(), Array<String> { "Update of " + name });
    undo->undo();
    QCOMPARE(object->getProperty(name).read<double>(), before);
    QCOMPARE(field->getModel()->get(), before);
}

void tst_PropertyWidgetConstructor::enumerationAlternatives_data()
{
    QTest::addColumn<QString>("alternative");
    QTest::addColumn<QStringList>("entries");
    QTest::newRow("virtual enumeration") << "virtual" << QStringList { "Disabled", "Automatic" };
    QTest::newRow("alternative editor") << "editor" << QStringList { "Off", "On", "Auto" };
}

void tst_PropertyWidgetConstructor::enumerationAlternatives()
{
    QFETCH(QString, alternative);
    QFETCH(QStringList, entries);
    UserData options;
    if (alternative == QStringLiteral("virtual"))
        options.set(String(UiVirtualEnum::ATTRIBUTE), UiVirtualEnum { { { 0, "Disabled" }, { 5, "Automatic" } } });
    else
        // A plain drop-down of the names, to show that the alternative gets the model and the values.
        options.set(String(UiEnumEditor::ATTRIBUTE),
            UiEnumEditor { [](SharedPtr<Model<std::int64_t>> value, const Array<EnumerationValue>& values,
                               QWidget* parent) -> QWidget* {
                FlatMap<int, String> named;
                for (const auto& entry : values)
                    named.insertOrAssign(static_cast<int>(entry.value), entry.name);
                auto* box = ComboBox::makeVirtualEnumDropDownImpl(named, std::move(value), 0, parent);
                box->setObjectName(QStringLiteral("alternative"));
                return box;
            } });
    const SharedPtr<TypeDefinition> type = makeChoiceType();
    const EntityHolder<Entity> object = makeObjectWith(type, Value::make(type, std::int16_t(0)), options);
    auto* box = qobject_cast<ComboBox*>(make(object, "value"));
    QVERIFY(box);
    QCOMPARE(box->objectName() == QStringLiteral("alternative"), alternative == QStringLiteral("editor"));
    QStringList shown;
    for (int i = 0; i < box->count(); ++i)
        shown << box->itemText(i);
    QCOMPARE(shown, entries);
    QVERIFY(showActive(box));
    box->setFocus();
    QTest::keyClick(box, Qt::Key_End);
    QCOMPARE(object->getPropertyValue<std::int16_t>("value"), std::int16_t(5));
    QCOMPARE(undo->getUndoCount(), 1u);
}

void tst_PropertyWidgetConstructor::textFormRefusesBadTextAndSaysWhy()
{
    // A type without an editor of its own is edited in its text form.
    const auto type = TypeDefinition::makePlain<std::int16_t>("TestPlain");
    const EntityHolder<Entity> object = makeObjectWith(type, Value::make(type, std::int16_t(3)));
    auto* field = qobject_cast<LineEdit*>(make(object, "value"));
    QVERIFY(field && typeInto(field, field, QStringLiteral("three")));
    QCOMPARE(object->getPropertyValue<std::int16_t>("value"), std::int16_t(3));
    QCOMPARE(field->text(), QStringLiteral("3"));
    QVERIFY(!field->toolTip().isEmpty());
    QVERIFY(typeInto(field, field, QStringLiteral("12")));
    QCOMPARE(object->getPropertyValue<std::int16_t>("value"), std::int16_t(12));
    QCOMPARE(undo->getUndoLabels(), Array<String> { "Update of value" });
}

void tst_PropertyWidgetConstructor::listEditsAreOneNamedStep_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QList<double>>("expected");
    QTest::addColumn<QString>("label");
    QTest::newRow("add the default item") << "Add Item" << QList<double> { 10, 50, 100 } << "Add Item to lodDistances";
    QTest::newRow("remove") << "Remove Item 1" << QList<double> { 50 } << "Remove Item from lodDistances";
    QTest::newRow("move down") << "Move Item 1 Down" << QList<double> { 50, 10 } << "Move Item in lodDistances";
    QTest::newRow("preset") << "Doubling" << QList<double> { 10, 20, 40 } << "Apply Preset to lodDistances";
    QTest::newRow("edit an item") << "" << QList<double> { 10, 75 } << "Update of lodDistances";
}

void tst_PropertyWidgetConstructor::listEditsAreOneNamedStep()
{
    QFETCH(QString, button);
    QFETCH(QList<double>, expected);
    QFETCH(QString, label);
    const EntityHolder<Entity> table = entityNamed(*scene, "Table");
    auto* list = qobject_cast<ListEditor*>(make(table, "lodDistances"));
    QVERIFY(list && showActive(list));
    QCOMPARE(list->count(), 2u);
    const auto values = [&] {
        const auto stored = table->getPropertyValue<Array<double>>("lodDistances");
        return QList<double>(stored.begin(), stored.end());
    };
    QAction* preset = list->presetsButton()->menu()->actions().value(0);
    if (button.isEmpty())
        QVERIFY(typeInto(list, list->itemEditor(1)->findChild<QLineEdit*>(), QStringLiteral("75")));
    else if (button == preset->text())
        preset->trigger();
    for (auto* target : list->findChildren<QToolButton*>())
        if (target->accessibleName() == button)
            QTest::mouseClick(target, Qt::LeftButton);
    QCOMPARE(values(), expected);
    QCOMPARE(list->count(), std::size_t(expected.size()));
    QCOMPARE(undo->getUndoLabels(), Array<String> { label.toStdString() });
    undo->undo();
    QCOMPARE(values(), (QList<double> { 10, 50 }));
    QCOMPARE(list->count(), 2u);
}

void tst_PropertyWidgetConstructor::gradientStopRemovalIsOneStep()
{
    const EntityHolder<Entity> table = entityNamed(*scene, "Table");
    auto* control = qobject_cast<GradientControl*>(make(table, "colorRamp"));
    QVERIFY(control);
    control->resize(300, 40);
    QVERIFY(showActive(control));
    // A right click on the middle stop removes it.
    QTest::mouseClick(control, Qt::RightButton, {}, control->getControlPointPosition(1).toPoint());
    QCOMPARE(table->getPropertyValue<ColorGradient>("colorRamp").getStopCount(), 2u);
    QCOMPARE(undo->getUndoLabels(), Array<String> { "Update of colorRamp" });
    undo->undo();
    QCOMPARE(table->getPropertyValue<ColorGradient>("colorRamp").getStopCount(), 3u);
}

void tst_PropertyWidgetConstructor::colorAttributesShapeTheEditor_data()
{
    // The stored colour is (0.5, 0.5, 0.5, 0.7); the dialog opens and answers (red, 0.5, 0.5, 0.25).
    QTest::addColumn<QString>("attribute");
    QTest::addColumn<QList<float>>("shownRedAnswerStoredRedAlpha");
    QTest::newRow("none") << "" << QList<float> { 0.5f, 0.9f, 0.9f, 0.25f };
    QTest::newRow("no alpha") << "noAlpha" << QList<float> { 0.5f, 0.25f, 0.25f, 0.7f };
    QTest::newRow("range 0.2 to 0.8") << "range" << QList<float> { 0.5f, 0.9f, 0.8f, 0.25f };
    QTest::newRow("shown doubled") << "transform" << QList<float> { 1.0f, 0.5f, 0.25f, 0.25f };
}

void tst_PropertyWidgetConstructor::colorAttributesShapeTheEditor()
{
    QFETCH(QString, attribute);
    QFETCH(QList<float>, shownRedAnswerStoredRedAlpha);
    const auto scaled = [](float by) {
        return [by](const Rgb& c) { return Rgb { c.r * by, c.g * by, c.b * by, c.a }; };
    };
    UserData options;
    options.set(String(UiColorFlags::ATTRIBUTE),
        UiColorFlags { attribute == "noAlpha" ? UiColorFlag::NoAlpha : UiColorFlag::Hdr });
    if (attribute == "range")
        options.set(String(UiColorRange::ATTRIBUTE), UiColorRange { 0.2f, 0.8f });
    if (attribute == "transform")
        options.set(String(UiColorTransform::ATTRIBUTE), UiColorTransform { scaled(2.0f), scaled(0.5f) });
    const auto type = TypeDatabase::instance().lookupTypeDefinition("Rgb");
    const EntityHolder<Entity> object
        = makeObjectWith(type, Value::make(type, Rgb { 0.5f, 0.5f, 0.5f, 0.7f }), options);
    auto* button = qobject_cast<ColorEditButton*>(make(object, "value"));
    QVERIFY(button);
    QCOMPARE(button->getColorFormat(), attribute == "noAlpha" ? ColorFormat::Rgb : ColorFormat::Rgba);
    float opened = -1.0f;
    connect(button, &ColorEditButton::dialogOpened, this, [&](ColorPickerDialog* dialog) {
        opened = dialog->value().r;
        dialog->setValue(Rgb { shownRedAnswerStoredRedAlpha[1], 0.5f, 0.5f, 0.25f });
        QTimer::singleShot(0, dialog, &QDialog::accept);
    });
    button->openDialog();
    const Rgb stored = object->getPropertyValue<Rgb>("value");
    // The dialog keeps alpha in 8 bits.
    const QList<float> seen { opened, shownRedAnswerStoredRedAlpha[1], stored.r, stored.a };
    for (int i = 0; i < 4; ++i)
        QVERIFY2(std::abs(seen[i] - shownRedAnswerStoredRedAlpha[i]) < 0.005f, qPrintable(QString::number(seen[i])));
    QCOMPARE(undo->getUndoCount(), 1u);
}

void tst_PropertyWidgetConstructor::readOnlyPropertyRefusesEdits_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<bool>("byAttribute"); // else by the definition's flag
    QTest::newRow("double") << "double" << false;
    QTest::newRow("String") << "String" << false;
    QTest::newRow("double, read-only attribute") << "double" << true;
}

void tst_PropertyWidgetConstructor::readOnlyPropertyRefusesEdits()
{
    QFETCH(QString, type);
    QFETCH(bool, byAttribute);
    const SharedPtr<TypeDefinition> definition = TypeDatabase::instance().lookupTypeDefinition(type.toStdString());
    const EntityHolder<Entity> object = byAttribute
        ? makeObjectWith(
            definition, Value(definition), UserData().set(String(UiFlags::ATTRIBUTE), UiFlags { UiFlag::ReadOnly }))
        : makeObjectWith(definition, Value(definition), {}, Flags<PropertyFlag>(PropertyFlag::ReadOnly));
    QWidget* editor = make(object, "value");
    const String before = object->getProperty("value").toString();
    auto* field = qobject_cast<QLineEdit*>(editor) ? qobject_cast<QLineEdit*>(editor) : editor->findChild<QLineEdit*>();
    QVERIFY(field->isReadOnly());
    QVERIFY(typeInto(editor, field, QStringLiteral("12")));
    // A drag on a number field writes through the model, whatever the field's own state: the model refuses too.
    if (auto* number = qobject_cast<Number*>(editor))
        number->getSpinBox()->getModel()->set(12.0);
    QCOMPARE(object->getProperty("value").toString(), before);
    QCOMPARE(undo->getUndoCount(), 0u);
}

void tst_PropertyWidgetConstructor::mixedValues()
{
    // How each row looks while the objects disagree is the sheet's test; here the editors' own answers to a mix.
    const EntityHolder<Entity> wood = entityNamed(*scene, "Wood");
    const QString mixed = QString::fromLatin1(GenericPropertyAccessor::MIXED_VALUES_TEXT.data());
    auto* material = qobject_cast<EntityWidget*>(
        make(GenericPropertyAccessor({ entityNamed(*scene, "Table"), entityNamed(*scene, "Lamp") }, "material")));
    auto* check = qobject_cast<QCheckBox*>(
        make(GenericPropertyAccessor({ wood, entityNamed(*scene, "Glass") }, "doubleSided")));
    QVERIFY(material && check && showActive(check));
    QCOMPARE(material->text(), mixed);
    QCOMPARE(check->checkState(), Qt::PartiallyChecked);
    // From "partly checked" a click checks every object, in one step.
    QTest::mouseClick(check, Qt::LeftButton, {}, check->rect().center());
    QCOMPARE(check->checkState(), Qt::Checked);
    QVERIFY(wood->getPropertyValue<bool>("doubleSided"));
    QCOMPARE(undo->getUndoCount(), 1u);
    undo->undo();
    QCOMPARE(check->checkState(), Qt::PartiallyChecked);
}

void tst_PropertyWidgetConstructor::entityWidgetPicksAcceptedEntityAndNone()
{
    const EntityHolder<Entity> table = entityNamed(*scene, "Table");
    auto* widget = qobject_cast<EntityWidget*>(make(table, "material"));
    QVERIFY(widget && widget->text() == QStringLiteral("Wood"));
    QVERIFY(showActive(widget));

    // Drives the menu as a user does: the press opens it, a click on the entry picks.
    const auto choose = [widget](const QString& entry) {
        QStringList offered;
        QTimer poll;
        poll.setInterval(10);
        connect(&poll, &QTimer::timeout, widget, [&] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu)
                return;
            poll.stop();
            QAction* target = nullptr;
            for (QAction* action : menu->actions())
                if (!action->isSeparator()) {
                    offered << action->text();
                    if (action->text() == entry && !target)
                        target = action;
                }
            if (target)
                QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(target).center());
            else
                menu->close();
        });
        poll.start();
        QTest::mouseClick(widget, Qt::LeftButton);
        return offered;
    };

    QCOMPARE(choose(QStringLiteral("Steel")), (QStringList { "None", "Wood", "Steel", "Glass" }));
    QCOMPARE(table->getPropertyValue<EntityHolder<Entity>>("material"), entityNamed(*scene, "Steel"));
    QCOMPARE(widget->text(), QStringLiteral("Steel"));
    QCOMPARE(host->getRecentEntitiesModel()->get(), Stack<EntityHolder<Entity>> { entityNamed(*scene, "Steel") });

    // The recent entity comes first; meshes are never offered for a material.
    QCOMPARE(choose(QStringLiteral("None")), (QStringList { "None", "Steel", "Wood", "Steel", "Glass" }));
    QCOMPARE(table->getPropertyValue<EntityHolder<Entity>>("material"), nullptr);
    QCOMPARE(widget->text(), QStringLiteral("None"));
    QCOMPARE(undo->getUndoLabels(), (Array<String> { "Update of material", "Update of material" }));
    QVERIFY(!widget->pick(entityNamed(*scene, "Lamp")));
    QCOMPARE(undo->getUndoCount(), 2u);

    undo->undo();
    QCOMPARE(widget->text(), QStringLiteral("Steel"));
    entityNamed(*scene, "Steel")->setPropertyValue("name", String("Brushed steel"));
    QCOMPARE(widget->text(), QStringLiteral("Brushed steel"));
}

void tst_PropertyWidgetConstructor::entityWidgetLeavesOutFilteredEntitiesAndCycles_data()
{
    QTest::addColumn<bool>("byHost"); // else by the property's entity picker, which also leaves out "None"
    QTest::newRow("host's filter") << true;
    QTest::newRow("entity picker") << false;
}

void tst_PropertyWidgetConstructor::entityWidgetLeavesOutFilteredEntitiesAndCycles()
{
    QFETCH(bool, byHost);
    class FilteringHost : public DefaultPropertySheetHost
    {
    public:
        using DefaultPropertySheetHost::DefaultPropertySheetHost;
        EntityFilter getDefaultEntityFilter() const override { return &notGlass; }
        static bool notGlass(const EntityHolder<Entity>& entity)
        {
            return entity->indexOfProperty("name") < 0 || entity->getPropertyValue<String>("name") != "Glass";
        }
    };
    if (byHost)
        host = makeSharedPtr<FilteringHost>(scene, nullptr, undo);
    const auto reference = TypeDefinition::makeEntityReference("TestMaterialReference", materialClass());
    const EntityHolder<Entity> object = makeObjectWith(reference, Value(reference),
        byHost ? UserData()
               : UserData().set(String(UiEntityPicker::ATTRIBUTE), UiEntityPicker { &FilteringHost::notGlass, false }));
    auto* material = qobject_cast<EntityWidget*>(make(object, "value"));
    QVERIFY(material);
    QCOMPARE(material->getCandidates(),
        (Array<EntityHolder<Entity>> { entityNamed(*scene, "Wood"), entityNamed(*scene, "Steel") }));
    QVERIFY(!material->pick(entityNamed(*scene, "Glass")));
    QVERIFY(material->pick(entityNamed(*scene, "Wood")));
    QCOMPARE(material->pick(nullptr), byHost);
    QCOMPARE(undo->getUndoCount(), byHost ? 2u : 1u);
    if (!byHost)
        return;

    // A chain first -> second: second may not point back at first, nor at itself.
    const auto next = TypeDefinition::makeEntityReference("TestNodeReference", EntityClassInfo::entityClass());
    const EntityHolder<Entity> first = makeObjectWith(next, Value(next));
    const EntityHolder<Entity> second = makeObjectWith(next, Value(next));
    const EntityHolder<Entity> third = makeObjectWith(next, Value(next));
    first->setPropertyValue("value", second);
    scene->replaceEntities({ first, second, third });
    QCOMPARE(
        qobject_cast<EntityWidget*>(make(second, "value"))->getCandidates(), Array<EntityHolder<Entity>> { third });
}

int main(int argc, char** argv)
{
    // The library's own start-up: its style elides, and it installs the default editors.
    LibQt::startup("PropertyWidgetConstructor test", LibQt::ApplicationType::Gui, {}, Io::Path(argv[0]));
    int result = 0;
    {
        tst_PropertyWidgetConstructor test;
        result = QTest::qExec(&test, argc, argv);
    }
    LibQt::shutdown();
    return result;
}

#include "tst_PropertyWidgetConstructor.moc"
