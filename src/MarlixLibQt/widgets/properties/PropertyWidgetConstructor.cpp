#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/TypeDefinition.h>
#include <MarlixLib/undo/IUndoManager.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/editors/ComboBox.h>
#include <MarlixLibQt/widgets/editors/LineEdit.h>
#include <MarlixLibQt/widgets/editors/Slider.h>
#include <MarlixLibQt/widgets/properties/EnumPropertyModel.h>
#include <MarlixLibQt/widgets/properties/IPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/PropertyControllerObserver.h>
#include <MarlixLibQt/widgets/properties/PropertyEditorSupport.h>
#include <MarlixLibQt/widgets/properties/PropertyWidgetConstructor.h>
#include <MarlixLibQt/widgets/properties/TextPropertyModel.h>
#include <MarlixLibQt/widgets/properties/UiAttributes.h>

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <QToolTip>

namespace Marlix::Widgets {

namespace Detail {

bool isReadOnlyProperty(const GenericPropertyAccessor& property)
{
    return !property.isEmpty() && isResolved(property.checkProperty())
        && (property.getDefinition().getFlags().has(PropertyFlag::ReadOnly)
            || UiFlags::of(PropertyWidgetConstructor::getUiOptions(property)).has(UiFlag::ReadOnly));
}

bool hasMixedValues(const GenericPropertyAccessor& property)
{
    return property.getObjects().size() > 1 && isResolved(property.checkProperty()) && !property.hasSameValues();
}

void showMixedInDropDown(QWidget* editor, const GenericPropertyAccessor& property)
{
    // A single object shows no entry only for a value outside the enumeration; that is no mix of values.
    if (auto* dropDown = qobject_cast<QComboBox*>(editor); dropDown && property.getObjects().size() > 1)
        dropDown->setPlaceholderText(QCoreApplication::translate("Marlix::Widgets::SpinBox", "<different values>"));
}

void applyReadOnlyLook(QWidget* editor)
{
    QList<QWidget*> widgets = editor->findChildren<QWidget*>();
    widgets.prepend(editor);
    for (QWidget* widget : widgets) {
        if (auto* lineEdit = qobject_cast<LineEdit*>(widget))
            lineEdit->setReadOnly(true); // hides QLineEdit::setReadOnly to take the read-only background
        else if (auto* field = qobject_cast<QLineEdit*>(widget))
            field->setReadOnly(true);
        else if (auto* spinBox = qobject_cast<QAbstractSpinBox*>(widget))
            spinBox->setReadOnly(true);
        else if (qobject_cast<QAbstractButton*>(widget) || qobject_cast<QComboBox*>(widget)
            || qobject_cast<QAbstractSlider*>(widget) || qobject_cast<Slider*>(widget))
            widget->setEnabled(false);
    }
}

void showRejection(QWidget* editor, const String& message)
{
    const QString text = QString::fromStdString(message);
    editor->setToolTip(text);
    QToolTip::showText(editor->mapToGlobal(QPoint(0, editor->height())), text, editor);
}

SharedPtr<IUndoManager> undoManagerOf(const PropertyWidgetConstructor::Arguments& arguments)
{
    return arguments.host ? arguments.host->getUndoManager() : nullptr;
}

double defaultNumber(const GenericPropertyAccessor& property)
{
    const PropertyDefinition& definition = property.getDefinition();
    const Value& value = definition.getDefaultValue();
    if (value.isEmpty() || !value.getType()->isNumber())
        return 0.0;
    return value.getType()->toDouble(value.data());
}

} // namespace Detail

namespace {

constexpr const char* UNIT = "widgets/PropertyWidgetConstructor";

const PropertyWidgetConstructor::Constructor* findConstructor(const TypeDefinition& type)
{
    const StringView key = PropertyWidgetConstructor::CONSTRUCTOR_ATTRIBUTE;
    // Only an entry of exactly the constructor's type counts; anything else stored under the key is somebody else's.
    const auto* constructor = type.getMutableUserData().get<PropertyWidgetConstructor::Constructor>(key);
    if (!constructor || !*constructor)
        constructor = type.getAttributes().get<PropertyWidgetConstructor::Constructor>(key);
    return constructor && *constructor ? constructor : nullptr;
}

std::int64_t defaultInteger(const GenericPropertyAccessor& property)
{
    const Value& value = property.getDefinition().getDefaultValue();
    if (value.isEmpty() || !value.getType()->isNumber())
        return 0;
    return value.getType()->toInt64(value.data());
}

QWidget* makeEnumerationEditor(
    const GenericPropertyAccessor& property, const PropertyWidgetConstructor::Arguments& arguments)
{
    auto model = makeSharedPtr<EnumPropertyModel>(property, Detail::undoManagerOf(arguments), arguments.displayName);
    SharedPtr<Model<std::int64_t>> bound = model;
    if (property.getObjects().size() > 1) {
        EnumPropertyModel* source = model.get();
        bound = makeSharedPtr<LambdaModel<std::int64_t>>(
            model,
            [source] { return Detail::hasMixedValues(source->getAccessor()) ? Detail::NO_ENTRY : source->get(); },
            [source](std::int64_t value) { source->set(value); });
    }
    bound = Detail::guardReadOnly(std::move(bound), Detail::isReadOnlyProperty(property));

    const UserData& options = PropertyWidgetConstructor::getUiOptions(property);
    const Array<EnumerationValue> values = model->getEnumerationValues();
    const std::int64_t defaultValue = defaultInteger(property);
    QWidget* editor = nullptr;
    if (const auto* alternative = options.get<UiEnumEditor>(UiEnumEditor::ATTRIBUTE); alternative && alternative->make)
        editor = alternative->make(bound, values, arguments.parent);
    if (!editor) {
        if (const auto* virtualEnum = options.get<UiVirtualEnum>(UiVirtualEnum::ATTRIBUTE)) {
            editor = ComboBox::makeVirtualEnumDropDownImpl(virtualEnum->entries, bound, defaultValue, arguments.parent);
        } else {
            Array<String> labels;
            Array<std::int64_t> numbers;
            for (const EnumerationValue& value : values) {
                labels.push_back(value.name);
                numbers.push_back(value.value);
            }
            editor = new ComboBox(makeSharedPtr<ListViewModel<String>>(std::move(labels)), bound,
                makeSharedPtr<ListViewModel<std::int64_t>>(std::move(numbers)), defaultValue, arguments.parent);
        }
    }
    Detail::showMixedInDropDown(editor, property);
    Detail::reportRejectionsAt(*model, editor);
    return editor;
}

QWidget* makeByType(const GenericPropertyAccessor& property, const PropertyWidgetConstructor::Arguments& arguments)
{
    if (property.isEmpty() || !isResolved(property.checkProperty()))
        return PropertyWidgetConstructor::unsupportedPropertyConstructor(
            QCoreApplication::translate("Marlix::Widgets::PropertyWidgetConstructor", "Property \"%1\" not found")
                .arg(QString::fromStdString(property.getPath())),
            arguments.parent);
    const TypeDefinition& type = property.getDefinition().getTypeDefinition();
    // A registered constructor that returns nothing leaves the property to the editors of its kind.
    if (const PropertyWidgetConstructor::Constructor* constructor = findConstructor(type))
        if (QWidget* editor = (*constructor)(property, arguments))
            return editor;
    switch (type.getKind()) {
    case TypeKind::Enumeration:
        return makeEnumerationEditor(property, arguments);
    case TypeKind::EntityReference:
        return Detail::makeEntityEditor(property, arguments);
    case TypeKind::List:
        if (QWidget* editor = Detail::makeListEditor(property, arguments))
            return editor;
        return Detail::makeTextEditor(property, arguments);
    default:
        return Detail::makeTextEditor(property, arguments);
    }
}

} // namespace

QWidget* Detail::makeTextEditor(
    const GenericPropertyAccessor& property, const PropertyWidgetConstructor::Arguments& arguments)
{
    const TypeDefinition& type = property.getDefinition().getTypeDefinition();
    if (!TextPropertyModel::hasTextForm(type))
        return PropertyWidgetConstructor::unsupportedPropertyConstructor(
            QCoreApplication::translate("Marlix::Widgets::PropertyWidgetConstructor", "Values of %1 cannot be edited")
                .arg(QString::fromStdString(type.getName())),
            arguments.parent);
    auto model = makeSharedPtr<TextPropertyModel>(property, Detail::undoManagerOf(arguments), arguments.displayName);
    auto* editor = new LineEdit(
        Detail::guardReadOnly<String>(model, Detail::isReadOnlyProperty(property)), String(), {}, arguments.parent);
    Detail::reportRejectionsAt(*model, editor);
    return editor;
}

QWidget* PropertyWidgetConstructor::make(const GenericPropertyAccessor& property, const Arguments& arguments)
{
    // Every editor needs the host for its undo manager, units and controller: a call without one is a programming
    // error.
    if (!arguments.host)
        Marlix::Detail::throwStopException(UNIT, __LINE__);
    QWidget* editor = makeByType(property, arguments);
    if (Detail::isReadOnlyProperty(property))
        Detail::applyReadOnlyLook(editor);
    PropertyControllerHandler::installOnWidget(editor, *arguments.host, property);
    return editor;
}

void PropertyWidgetConstructor::registerConstructor(const SharedPtr<TypeDefinition>& type, Constructor constructor)
{
    if (!type)
        Marlix::Detail::throwStopException(UNIT, __LINE__);
    type->getMutableUserData().set(String(CONSTRUCTOR_ATTRIBUTE), std::move(constructor));
}

bool PropertyWidgetConstructor::hasCustomConstructor(const GenericPropertyAccessor& property)
{
    if (property.isEmpty() || !isResolved(property.checkProperty()))
        return false;
    return findConstructor(property.getDefinition().getTypeDefinition()) != nullptr;
}

const UserData& PropertyWidgetConstructor::getUiOptions(const GenericPropertyAccessor& property)
{
    static const UserData none;
    if (property.isEmpty() || !isResolved(property.checkProperty()))
        return none;
    if (property.isRootProperty())
        return property.getDefinition().getUserData();
    // A field of a nested data object carries the attributes of its own definition in the nested layout.
    const GenericDataObject& parent = *property.getObjects().front();
    return parent.visitProperty(property.getPath(),
        [](const GenericProperty& field) -> const UserData& { return field.getDefinition().getUserData(); });
}

QWidget* PropertyWidgetConstructor::unsupportedPropertyConstructor(QString text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setProperty(USE_ELLIPSIS_PROPERTY, true);
    label->setToolTip(text);
    // Not the whole text: the row must not widen the sheet.
    label->setMinimumWidth(1);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    return label;
}

} // namespace Marlix::Widgets
