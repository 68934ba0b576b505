#include <MarlixLib/data/CoreTypes.h>
#include <MarlixLib/data/EntityClassInfo.h>
#include <MarlixLib/data/GenericProperty.h>
#include <MarlixLib/data/GroupLayout.h>
#include <MarlixLib/data/MathValueTraits.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLibQt/Color.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/docking/Dock.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>
#include <MarlixLibQt/widgets/graph/GraphModel.h>
#include <MarlixLibQt/widgets/properties/UiAttributes.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>

namespace Marlix {

/// A colour is stored as its straight RGBA in unit floats, the text form of `Rgb` ("r, g, b, a"): floats hold Qt's 16
/// bits per channel exactly, so a colour read back equals the one written. Components outside 0 to 1 are refused
/// rather than turned into an extended-range colour that the editors cannot show.
template <> struct ValueTraits<QColorExtended>
{
    static Rgb toComponents(const QColorExtended& value)
    {
        const QColor rgb = value.getColor().toRgb();
        return { rgb.redF(), rgb.greenF(), rgb.blueF(), rgb.alphaF() };
    }
    static Expected<QColorExtended, String> fromComponents(const Rgb& c)
    {
        for (const float component : { c.r, c.g, c.b, c.a })
            if (!(component >= 0.0f && component <= 1.0f)) // NaN fails too
                return Unexpected<String>("A colour component must lie between 0 and 1.");
        return QColorExtended(QColor::fromRgbF(c.r, c.g, c.b, c.a));
    }

    static String toString(const QColorExtended& value) { return ValueTraits<Rgb>::toString(toComponents(value)); }
    static Expected<QColorExtended, String> fromString(StringView text)
    {
        const auto parsed = ValueTraits<Rgb>::fromString(text);
        if (!parsed)
            return Unexpected<String>(parsed.error());
        return fromComponents(*parsed);
    }
    static void serialize(ISerializer& out, StringView key, const QColorExtended& value)
    {
        ValueTraits<Rgb>::serialize(out, key, toComponents(value));
    }
    static Expected<QColorExtended, String> deserialize(IDeserializer& in, StringView key)
    {
        const auto read = ValueTraits<Rgb>::deserialize(in, key);
        if (!read)
            return Unexpected<String>(read.error());
        return fromComponents(*read);
    }
};

/// Bytes are written as bytes; their text form is base64, and text that is not base64 is refused rather than read as
/// whatever part of it decodes.
template <> struct ValueTraits<QByteArray>
{
    static String toString(const QByteArray& value) { return value.toBase64().toStdString(); }
    static Expected<QByteArray, String> fromString(StringView text)
    {
        auto decoded = QByteArray::fromBase64Encoding(
            QByteArray(text.data(), static_cast<qsizetype>(text.size())), QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded)
            return Unexpected<String>("\"" + String(text) + "\" is not base64 text");
        return std::move(*decoded);
    }
    static void serialize(ISerializer& out, StringView key, const QByteArray& value)
    {
        out.writeBytes(key,
            ArrayView<const std::byte>(
                reinterpret_cast<const std::byte*>(value.constData()), std::size_t(value.size())));
    }
    static Expected<QByteArray, String> deserialize(IDeserializer& in, StringView key)
    {
        const auto read = in.readBytes(key);
        if (!read)
            return Unexpected<String>(read.error());
        return QByteArray(reinterpret_cast<const char*>(read->data()), static_cast<qsizetype>(read->size()));
    }
};

namespace {

template <class E> Array<EnumerationValue> enumerationValues(std::initializer_list<std::pair<E, const char*>> values)
{
    Array<EnumerationValue> result;
    for (const auto& [value, name] : values)
        result.push_back({ static_cast<std::int64_t>(value), name });
    return result;
}

// The value types of the library's editors that hosts store in properties: a colour, and the editor settings a host
// may keep per property or in its preferences.
TypeModuleRecord makeDataTypesRecord()
{
    using Widgets::ColorValueType;
    using Widgets::SpinBox;
    using Spec = QColorExtended::Specification;
    TypeModuleRecord record("MarlixLibQt");
    record.addType(TypeDefinition::makePlain<QColorExtended>("QColorExtended"));
    record.addType(TypeDefinition::makeEnumeration<Spec>("ColorSpecification",
        enumerationValues<Spec>({ { Spec::RgbSpec, "Rgb" }, { Spec::RgbaSpec, "Rgba" }, { Spec::HsvSpec, "Hsv" },
            { Spec::HwbSpec, "Hwb" }, { Spec::CmykSpec, "Cmyk" } })));
    record.addType(TypeDefinition::makeEnumeration<ColorValueType>("ColorValueType",
        enumerationValues<ColorValueType>(
            { { ColorValueType::SrgbByte, "SrgbByte" }, { ColorValueType::SrgbUnit, "SrgbUnit" },
                { ColorValueType::SrgbPercent, "SrgbPercent" }, { ColorValueType::LinearByte, "LinearByte" },
                { ColorValueType::LinearUnit, "LinearUnit" }, { ColorValueType::LinearPercent, "LinearPercent" } })));
    record.addType(TypeDefinition::makeEnumeration<SpinBox::StepType>("SpinBoxStepType",
        enumerationValues<SpinBox::StepType>({ { SpinBox::StepType::Fixed, "Fixed" },
            { SpinBox::StepType::Adaptive, "Adaptive" }, { SpinBox::StepType::Proportional, "Proportional" } })));
    record.addType(TypeDefinition::makeEnumeration<SpinBox::PrecisionType>("SpinBoxPrecisionType",
        enumerationValues<SpinBox::PrecisionType>({ { SpinBox::PrecisionType::AllDecimals, "AllDecimals" },
            { SpinBox::PrecisionType::TrimTrailingZeros, "TrimTrailingZeros" } })));
    using Speed = SpinBox::ScrollSpeedAdjustmentType;
    record.addType(TypeDefinition::makeEnumeration<Speed>("SpinBoxScrollSpeedAdjustmentType",
        enumerationValues<Speed>({ { Speed::ShiftFasterCtrlSlower, "ShiftFasterCtrlSlower" },
            { Speed::CtrlFasterAltSlower, "CtrlFasterAltSlower" }, { Speed::NoAdjustment, "NoAdjustment" } })));
    // A workspace is a list of dock records, so a host saves it like any other value.
    const auto coreType = [](StringView name) {
        for (const auto& type : getCoreTypesRecord().getTypes())
            if (type->getName() == name)
                return SharedPtr<const TypeDefinition>(type);
        Detail::throwStopException("QtData", __LINE__);
    };
    auto bytes = TypeDefinition::makePlain<QByteArray>("QByteArray");
    record.addType(bytes);
    using Widgets::Dock;
    auto dockData = TypeDefinition::makeNativeDataObject<Dock::Data>("DockData",
        makeSharedPtr<const GroupLayout>("DockData",
            Array<PropertyDefinition> { PropertyDefinition("path", coreType("String")),
                PropertyDefinition("hidden", coreType("bool")), PropertyDefinition("geometry", bytes) }),
        { offsetof(Dock::Data, path), offsetof(Dock::Data, hidden), offsetof(Dock::Data, geometry) });
    record.addType(dockData);
    record.addType(TypeDefinition::makeList<Dock::Data>("DockDataList", dockData));
    // Graphs are saved with their scene, so loading must find their classes by name.
    record.addEntityClass(*Widgets::Node::getClass().getBaseClass());
    record.addEntityClass(Widgets::Node::getClass());
    record.addEntityClass(Widgets::GraphModel::getClass());
    return record;
}

} // namespace

namespace LibQt {

const TypeModuleRecord& getDataTypesRecord()
{
    static const TypeModuleRecord record = makeDataTypesRecord();
    return record;
}

void registerDataTypes()
{
    TypeDatabase::instance().registerModuleTypes(getDataTypesRecord());
}

void unregisterDataTypes()
{
    TypeDatabase::instance().unregisterModuleTypes(getDataTypesRecord());
}

} // namespace LibQt

QString getPropertyUiName(const GenericProperty& property)
{
    if (const String* name = property.getDefinition().getAttributes().get<String>(UI_NAME_ATTRIBUTE);
        name && !name->empty())
        return toQt(*name);
    return propertyNameToReadableName(toQt(property.getName()));
}

QString getPropertyUiDescription(const GenericProperty& property)
{
    if (const String* text = property.getDefinition().getAttributes().get<String>(UI_DESCRIPTION_ATTRIBUTE))
        return toQt(*text);
    return toQt(property.getDefinition().getDescription());
}

const Stack<EntityClassInfo>& getUiEntityClasses(const EntityClassInfo& base)
{
    // Menus iterate the list while their actions ask for other lists (nested menus) or for the same one again: a list
    // handed out is never changed. When the classes change, a new list replaces it and the old one is retired, kept
    // for the life of the process; classes change only when modules load or unload, so few lists ever retire.
    static Mutex mutex;
    static std::map<String, UniquePtr<const Stack<EntityClassInfo>>, std::less<>> lists;
    static Stack<UniquePtr<const Stack<EntityClassInfo>>> retired;

    Stack<EntityClassInfo> classes = TypeDatabase::instance().getDerivedEntityClasses(base);
    // The bare root class has nothing to edit, and classes flagged hidden are the library's own records (graph
    // nodes, for one): neither is ever offered.
    std::erase_if(classes, [](const EntityClassInfo& c) {
        return !c.canCreate() || c == EntityClassInfo::entityClass()
            || Widgets::UiFlags::of(c.getAttributes()).has(Widgets::UiFlag::Hidden);
    });
    std::ranges::sort(classes, {}, &EntityClassInfo::getName);

    const std::lock_guard lock(mutex);
    UniquePtr<const Stack<EntityClassInfo>>& list = lists[base.getName()];
    if (!list || *list != classes) {
        if (list)
            retired.push_back(std::move(list));
        list = std::make_unique<const Stack<EntityClassInfo>>(std::move(classes));
    }
    return *list;
}

} // namespace Marlix
