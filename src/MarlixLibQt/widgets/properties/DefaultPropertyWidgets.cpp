#include <MarlixLib/data/CoreTypes.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/math/Vector3.h>
#include <MarlixLib/units/Quantity.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/color/ColorEditButton.h>
#include <MarlixLibQt/widgets/color/GradientControl.h>
#include <MarlixLibQt/widgets/curves/CurvesEditor.h>
#include <MarlixLibQt/widgets/editors/CheckBox.h>
#include <MarlixLibQt/widgets/editors/ComboBox.h>
#include <MarlixLibQt/widgets/editors/LineEdit.h>
#include <MarlixLibQt/widgets/editors/Number.h>
#include <MarlixLibQt/widgets/editors/Path.h>
#include <MarlixLibQt/widgets/editors/PosRotScale.h>
#include <MarlixLibQt/widgets/editors/SliderConverter.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>
#include <MarlixLibQt/widgets/editors/Vector.h>
#include <MarlixLibQt/widgets/properties/IPropertySheetHost.h>
#include <MarlixLibQt/widgets/properties/PropertyEditorSupport.h>
#include <MarlixLibQt/widgets/properties/PropertyModel.h>
#include <MarlixLibQt/widgets/properties/PropertyWidgetConstructor.h>
#include <MarlixLibQt/widgets/properties/UiAttributes.h>

#include <QCoreApplication>
#include <QLineEdit>
#include <QSignalBlocker>

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

namespace Marlix::Widgets {

namespace {

using Arguments = PropertyWidgetConstructor::Arguments;

constexpr const char* QUANTITY_ATTRIBUTE = "Zorva.Quantity";
// Doubles hold every integer up to 2^53 exactly; 64-bit fields are limited to that so that no value is rounded away.
constexpr double LARGEST_EXACT_INTEGER = 9007199254740992.0;

template <class N> constexpr double lowestOf()
{
    if constexpr (std::is_floating_point_v<N>)
        return static_cast<double>(std::numeric_limits<N>::lowest());
    else
        return std::max(static_cast<double>(std::numeric_limits<N>::lowest()), -LARGEST_EXACT_INTEGER);
}

template <class N> constexpr double highestOf()
{
    if constexpr (std::is_floating_point_v<N>)
        return static_cast<double>(std::numeric_limits<N>::max());
    else
        return std::min(static_cast<double>(std::numeric_limits<N>::max()), LARGEST_EXACT_INTEGER);
}

/// `value` as an N: rounded for integers, limited to what N holds.
template <class N> N toNumber(double value)
{
    const double limited = std::clamp(std::is_integral_v<N> ? std::round(value) : value, lowestOf<N>(), highestOf<N>());
    return static_cast<N>(limited);
}

/// Shows `quantity` in the host's display units, and follows every change of them.
template <class Editor>
void followDisplayUnits(Editor* editor, const UserData& options, const SharedPtr<IPropertySheetHost>& host)
{
    const auto* quantity = options.get<Quantity>(QUANTITY_ATTRIBUTE);
    if (!quantity)
        return;
    const SharedPtr<Model<DisplayUnits>> units = host->getDisplayUnitsModel();
    if (!units)
        return;
    const Quantity shown = *quantity;
    editor->setConversion(ModelValueConverter<double>::fromQuantity(shown, units->get()));
    editor->registerCallback(units->addCallback([editor, shown](const DisplayUnits& changed) {
        editor->setConversion(ModelValueConverter<double>::fromQuantity(shown, changed));
    }));
}

/// While the objects disagree, the model reads `empty` and the field shows the mixed-values text as its placeholder;
/// leaving the field untouched then writes nothing.
template <class T> SharedPtr<Model<T>> showMixedAsEmpty(SharedPtr<PropertyModel<T>> model)
{
    PropertyModel<T>* source = model.get();
    return makeSharedPtr<LambdaModel<T>>(
        model, [source] { return Detail::hasMixedValues(source->getAccessor()) ? T {} : source->get(); },
        [source](T value) { source->set(std::move(value)); });
}

void updateMixedPlaceholder(QLineEdit* field, const GenericPropertyAccessor& property)
{
    field->setPlaceholderText(Detail::hasMixedValues(property)
            ? QCoreApplication::translate("Marlix::Widgets::SpinBox", "<different values>")
            : QString());
}

template <class N> QWidget* makeNumber(const GenericPropertyAccessor& property, const Arguments& arguments)
{
    const UserData& options = PropertyWidgetConstructor::getUiOptions(property);
    const bool readOnly = Detail::isReadOnlyProperty(property);
    auto propertyModel
        = makeSharedPtr<PropertyModel<N>>(property, Detail::undoManagerOf(arguments), arguments.displayName);
    PropertyModel<N>* source = propertyModel.get();

    if constexpr (std::is_integral_v<N>) {
        if (const auto* entries = options.get<UiVirtualEnum>(UiVirtualEnum::ATTRIBUTE)) {
            auto index = makeSharedPtr<LambdaModel<std::int64_t>>(
                propertyModel,
                [source] {
                    return Detail::hasMixedValues(source->getAccessor()) ? Detail::NO_ENTRY
                                                                         : static_cast<std::int64_t>(source->get());
                },
                [source](std::int64_t value) { source->set(toNumber<N>(static_cast<double>(value))); });
            QWidget* dropDown = ComboBox::makeVirtualEnumDropDownImpl(entries->entries,
                Detail::guardReadOnly<std::int64_t>(index, readOnly),
                static_cast<std::int64_t>(Detail::defaultNumber(property)), arguments.parent);
            Detail::showMixedInDropDown(dropDown, property);
            return dropDown;
        }
    }

    SharedPtr<Model<double>> model;
    if constexpr (std::is_same_v<N, double>)
        model = propertyModel;
    else
        model = makeSharedPtr<LambdaModel<double>>(
            propertyModel, [source] { return static_cast<double>(source->get()); },
            [source](double value) {
                if (!std::isnan(value))
                    source->set(toNumber<N>(value));
            });
    const auto* sliderOptions = options.get<UiSliderOptions>(SLIDER_OPTIONS_KEY);
    auto* number = new Number(Detail::guardReadOnly(std::move(model), readOnly), Detail::defaultNumber(property),
        sliderOptions != nullptr, options, arguments.parent);
    if constexpr (std::is_integral_v<N>)
        number->setRange(lowestOf<N>(), highestOf<N>(), 1.0, 0);
    // A physical range (a roughness, an opacity) bounds what is typed and dragged as well as the slider's track.
    if (sliderOptions && UiFlags::of(options).has(UiFlag::Clamped)) {
        const SpinBox* field = number->getSpinBox();
        number->setRange(std::max(sliderOptions->minimum, lowestOf<N>()),
            std::min(sliderOptions->maximum, highestOf<N>()), field->singleStep(), field->decimals());
    }
    followDisplayUnits(number, options, arguments.host);
    return number;
}

/// The box shows "partly checked" while the objects disagree; a click then checks every object.
void showMixedAsPartlyChecked(CheckBox* box, const GenericPropertyAccessor& property)
{
    const QSignalBlocker blocker(box);
    if (Detail::hasMixedValues(property)) {
        box->setCheckState(Qt::PartiallyChecked);
    } else {
        box->setCheckState(box->getModel()->get() ? Qt::Checked : Qt::Unchecked);
        box->setTristate(false);
    }
}

QWidget* makeCheckBox(const GenericPropertyAccessor& property, const Arguments& arguments)
{
    auto model = makeSharedPtr<PropertyModel<bool>>(property, Detail::undoManagerOf(arguments), arguments.displayName);
    auto* box = new CheckBox(Detail::guardReadOnly<bool>(model, Detail::isReadOnlyProperty(property)),
        Detail::defaultNumber(property) != 0.0, QString(), arguments.parent);
    if (property.getObjects().size() > 1) {
        // Registered after the box's own observer, so it has the last word on what the box shows.
        box->registerCallback(
            model->addCallback([box, accessor = property](bool) { showMixedAsPartlyChecked(box, accessor); }));
        // From "partly checked" a click goes to "checked" without a toggle, which is what the box writes on.
        QObject::connect(box, &QAbstractButton::clicked, box, [box, accessor = property](bool checked) {
            if (Detail::hasMixedValues(accessor))
                box->getModel()->set(checked);
        });
        showMixedAsPartlyChecked(box, property);
    }
    return box;
}

template <class T> T defaultValueOf(const GenericPropertyAccessor& property)
{
    const T* value = property.getDefinition().getDefaultValue().template get<T>();
    return value ? *value : T {};
}

QWidget* makeString(const GenericPropertyAccessor& property, const Arguments& arguments)
{
    auto propertyModel
        = makeSharedPtr<PropertyModel<String>>(property, Detail::undoManagerOf(arguments), arguments.displayName);
    SharedPtr<Model<String>> model = propertyModel;
    const bool several = property.getObjects().size() > 1;
    if (several)
        model = showMixedAsEmpty<String>(propertyModel);
    auto* editor = new LineEdit(Detail::guardReadOnly(std::move(model), Detail::isReadOnlyProperty(property)),
        defaultValueOf<String>(property), {}, arguments.parent);
    if (several) {
        updateMixedPlaceholder(editor, property);
        editor->registerCallback(propertyModel->addCallback(
            [editor, accessor = property](const String&) { updateMixedPlaceholder(editor, accessor); }));
    }
    return editor;
}

QWidget* makePath(const GenericPropertyAccessor& property, const Arguments& arguments)
{
    auto propertyModel
        = makeSharedPtr<PropertyModel<Io::Path>>(property, Detail::undoManagerOf(arguments), arguments.displayName);
    SharedPtr<Model<Io::Path>> model = propertyModel;
    const bool several = property.getObjects().size() > 1;
    if (several)
        model = showMixedAsEmpty<Io::Path>(propertyModel);
    Path::BrowseFunction browse = [host = arguments.host](const UiPathFlags& flags, Optional<Io::Path> current) {
        return host->pickFile(flags, std::move(current));
    };
    auto* editor = new Path(Detail::guardReadOnly(std::move(model), Detail::isReadOnlyProperty(property)),
        std::move(browse), PropertyWidgetConstructor::getUiOptions(property), arguments.parent);
    if (several) {
        updateMixedPlaceholder(editor->lineEdit(), property);
        editor->registerCallback(
            propertyModel->addCallback([field = editor->lineEdit(), accessor = property](
                                           const Io::Path&) { updateMixedPlaceholder(field, accessor); }));
    }
    return editor;
}

// The components of the vector types, in the order their fields show them.
Array<double> toArray(const Vector2& v)
{
    return { v.x, v.y };
}
Array<double> toArray(const Pixel& v)
{
    return { double(v.x), double(v.y) };
}
Array<double> toArray(const Pos& v)
{
    return { v.x, v.y, v.z };
}
Array<double> toArray(const Dir& v)
{
    return { v.x, v.y, v.z };
}
Array<double> toArray(const Vector3& v)
{
    return { v.x, v.y, v.z };
}

template <class V> V fromArray(const Array<double>& a);
template <> Vector2 fromArray(const Array<double>& a)
{
    return { a[0], a[1] };
}
template <> Pixel fromArray(const Array<double>& a)
{
    return { toNumber<std::int32_t>(a[0]), toNumber<std::int32_t>(a[1]) };
}
template <> Pos fromArray(const Array<double>& a)
{
    return { a[0], a[1], a[2] };
}
template <> Dir fromArray(const Array<double>& a)
{
    return { a[0], a[1], a[2] };
}
template <> Vector3 fromArray(const Array<double>& a)
{
    return { a[0], a[1], a[2] };
}

template <class V> QWidget* makeVector(const GenericPropertyAccessor& property, const Arguments& arguments)
{
    const UserData& options = PropertyWidgetConstructor::getUiOptions(property);
    auto propertyModel
        = makeSharedPtr<PropertyModel<V>>(property, Detail::undoManagerOf(arguments), arguments.displayName);
    PropertyModel<V>* source = propertyModel.get();
    const std::size_t size = toArray(V {}).size();
    SharedPtr<Model<Array<double>>> model = makeSharedPtr<LambdaModel<Array<double>>>(
        propertyModel, [source] { return toArray(source->get()); },
        [source, size](const Array<double>& components) {
            // A component list of another length is somebody's mistake; the value stays as it was.
            if (components.size() == size)
                source->set(fromArray<V>(components));
        });
    const Array<QString> labels = size == 2
        ? Array<QString> { QStringLiteral("X"), QStringLiteral("Y") }
        : Array<QString> { QStringLiteral("X"), QStringLiteral("Y"), QStringLiteral("Z") };
    auto* vector = new Vector(Detail::guardReadOnly(std::move(model), Detail::isReadOnlyProperty(property)),
        toArray(defaultValueOf<V>(property)), options.get<UiSliderOptions>(SLIDER_OPTIONS_KEY) != nullptr, options,
        labels, LabelPosition::Left, arguments.parent);
    if constexpr (std::is_same_v<V, Pixel>)
        vector->setRange(
            Array<double>(size, lowestOf<std::int32_t>()), Array<double>(size, highestOf<std::int32_t>()), 1.0f, 0);
    followDisplayUnits(vector, options, arguments.host);
    return vector;
}

QWidget* makeTransform(const GenericPropertyAccessor& property, const Arguments& arguments)
{
    auto model = makeSharedPtr<PropertyModel<PosRotScaleTm>>(
        property, Detail::undoManagerOf(arguments), arguments.displayName);
    return new PosRotScale(Detail::guardReadOnly<PosRotScaleTm>(model, Detail::isReadOnlyProperty(property)),
        arguments.host->getDisplayUnitsModel(), arguments.parent);
}

/// The colour as the editor shows and writes it: through the property's display transform, with the components it
/// writes limited to the property's colour range (1 for colours without the HDR flag) and alpha kept when the
/// editor shows none.
SharedPtr<Model<Rgb>> shownColor(SharedPtr<PropertyModel<Rgb>> model, const UserData& options)
{
    const Flags<UiColorFlag> flags = UiColorFlags::of(options);
    const auto* range = options.get<UiColorRange>(UiColorRange::ATTRIBUTE);
    const auto* transform = options.get<UiColorTransform>(UiColorTransform::ATTRIBUTE);
    if (!range && !transform && !flags.has(UiColorFlag::NoAlpha))
        return model;
    const float low = range ? range->minimum : 0.0f;
    const float high = range ? std::max(range->minimum, range->maximum) : (flags.has(UiColorFlag::Hdr) ? 1e6f : 1.0f);
    const bool keepAlpha = flags.has(UiColorFlag::NoAlpha);
    Function<Rgb(const Rgb&)> toShown, fromShown;
    if (transform && transform->toShown && transform->fromShown) {
        toShown = transform->toShown;
        fromShown = transform->fromShown;
    }
    PropertyModel<Rgb>* source = model.get();
    return makeSharedPtr<LambdaModel<Rgb>>(
        model, [source, toShown] { return toShown ? toShown(source->get()) : source->get(); },
        [source, fromShown, low, high, keepAlpha](const Rgb& shown) {
            Rgb stored = fromShown ? fromShown(shown) : shown;
            // NaN fails both comparisons and becomes the low end: a bad component is never stored.
            const auto limit = [low, high](float value) { return value >= low ? std::min(value, high) : low; };
            stored.r = limit(stored.r);
            stored.g = limit(stored.g);
            stored.b = limit(stored.b);
            stored.a = keepAlpha ? source->get().a : std::clamp(stored.a >= 0.0f ? stored.a : 0.0f, 0.0f, 1.0f);
            source->set(stored);
        });
}

QWidget* makeColor(const GenericPropertyAccessor& property, const Arguments& arguments)
{
    const UserData& options = PropertyWidgetConstructor::getUiOptions(property);
    auto model = makeSharedPtr<PropertyModel<Rgb>>(property, Detail::undoManagerOf(arguments), arguments.displayName);
    const ColorFormat format
        = UiColorFlags::of(options).has(UiColorFlag::NoAlpha) ? ColorFormat::Rgb : ColorFormat::Rgba;
    auto* button
        = new ColorEditButton(Detail::guardReadOnly(shownColor(model, options), Detail::isReadOnlyProperty(property)),
            format, arguments.parent);
    button->setDialogTitle(getPropertyUiName(property.getProperty()));
    Detail::reportRejectionsAt(*model, button);
    return button;
}

QWidget* makeGradient(const GenericPropertyAccessor& property, const Arguments& arguments)
{
    auto model = makeSharedPtr<PropertyModel<ColorGradient>>(
        property, Detail::undoManagerOf(arguments), arguments.displayName);
    auto* control = new GradientControl(
        Detail::guardReadOnly<ColorGradient>(model, Detail::isReadOnlyProperty(property)), arguments.parent);
    Detail::reportRejectionsAt(*model, control);
    return control;
}

QWidget* makeCurves(const GenericPropertyAccessor& property, const Arguments& arguments)
{
    auto model = makeSharedPtr<PropertyModel<Marlix::Curves>>(property, Detail::undoManagerOf(arguments), arguments.displayName);
    const std::size_t channels = model->get().getChannelCount();
    auto* editor = new CurvesEditor(Detail::guardReadOnly<Marlix::Curves>(model, Detail::isReadOnlyProperty(property)),
        CurvesEditor::getColorChannelNames(channels), CurvesEditor::getColorChannelColors(channels), {}, nullptr,
        DefaultCurveType::Identity, arguments.parent);
    Detail::reportRejectionsAt(*model, editor);
    return editor;
}

/// Installs `constructor` on the type registered under `name`, unless the type is unknown or already has one: a
/// host's own choice, made before the library started, stays.
void installDefault(StringView name, PropertyWidgetConstructor::Constructor constructor)
{
    const SharedPtr<TypeDefinition> type = TypeDatabase::instance().lookupTypeDefinition(name);
    if (!type)
        return;
    const auto* present = type->getMutableUserData().get<PropertyWidgetConstructor::Constructor>(
        PropertyWidgetConstructor::CONSTRUCTOR_ATTRIBUTE);
    if (present && *present)
        return;
    PropertyWidgetConstructor::registerConstructor(type, std::move(constructor));
}

} // namespace

void PropertyWidgetConstructor::registerDefaultWidgets()
{
    installDefault("bool", &makeCheckBox);
    installDefault("int8", &makeNumber<std::int8_t>);
    installDefault("uint8", &makeNumber<std::uint8_t>);
    installDefault("int16", &makeNumber<std::int16_t>);
    installDefault("uint16", &makeNumber<std::uint16_t>);
    installDefault("int32", &makeNumber<std::int32_t>);
    installDefault("uint32", &makeNumber<std::uint32_t>);
    installDefault("int64", &makeNumber<std::int64_t>);
    installDefault("uint64", &makeNumber<std::uint64_t>);
    installDefault("float", &makeNumber<float>);
    installDefault("double", &makeNumber<double>);
    installDefault("String", &makeString);
    installDefault("Path", &makePath);
    installDefault("Vector2", &makeVector<Vector2>);
    installDefault("Pixel", &makeVector<Pixel>);
    installDefault("Pos", &makeVector<Pos>);
    installDefault("Dir", &makeVector<Dir>);
    installDefault("Vector3", &makeVector<Vector3>);
    installDefault("PosRotScaleTm", &makeTransform);
    installDefault("Rgb", &makeColor);
    installDefault("ColorGradient", &makeGradient);
    installDefault("Curves", &makeCurves);
    installDefault(ENTITY_REFERENCE_TYPE_NAME, &Detail::makeEntityEditor);
}

} // namespace Marlix::Widgets
