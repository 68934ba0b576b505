#include <MarlixLibQt/widgets/color/ColorSliderRow.h>

#include <MarlixLibQt/QtUtils.h>

#include <MarlixLib/base/Exception.h>

#include <QHBoxLayout>
#include <QLabel>

#include <cmath>

namespace Marlix::Widgets {

namespace {

/// Decimals and arrow step of the field for one kind of number.
struct FieldFormat
{
    int decimals;
    double step;
};

// Linear numbers get more decimals: the power law crowds the dark end, where two decimals fewer would merge values.
FieldFormat getFieldFormat(ColorValueType type)
{
    switch (type) {
    case ColorValueType::SrgbByte:
        return { 0, 1.0 };
    case ColorValueType::SrgbUnit:
        return { 3, 0.01 };
    case ColorValueType::SrgbPercent:
        return { 1, 1.0 };
    case ColorValueType::LinearByte:
        return { 2, 1.0 };
    case ColorValueType::LinearUnit:
        return { 4, 0.01 };
    case ColorValueType::LinearPercent:
        return { 2, 1.0 };
    }
    Marlix::Detail::throwStopException("widgets/ColorSliderRow", __LINE__);
}

// A row of its own range: whole numbers on a wide range (kelvins), three decimals on a narrow one (albedo).
constexpr double WIDE_RANGE = 100.0;

bool isPercent(ColorValueType type)
{
    return type == ColorValueType::SrgbPercent || type == ColorValueType::LinearPercent;
}

} // namespace

ColorSliderRow::ColorSliderRow(SharedPtr<Model<float>> component, SharedPtr<Model<long long>> valueType,
    const String& labelText, ColorSlider::MappingFunction mapping, float low, float high, int sliderWidthHint,
    bool showTransparency, SpinBox::StepType stepType, QWidget* parent)
    : QFrame(parent)
    , component(std::move(component))
    , valueTypeModel(std::move(valueType))
    , low(low)
    , high(high)
{
    if (!this->component || !mapping || !(low < high) || !std::isfinite(low) || !std::isfinite(high))
        Marlix::Detail::throwStopException("widgets/ColorSliderRow", __LINE__);

    Model<float>* source = this->component.get();
    auto number = makeSharedPtr<LambdaModel<double>>(
        this->component, [source] { return static_cast<double>(source->get()); },
        [source](double value) { source->set(static_cast<float>(value)); });

    label = new QLabel(toQt(labelText), this);
    label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    slider = new ColorSlider(this->component, std::move(mapping), sliderWidthHint, showTransparency, this);
    spinBox = new SpinBox(std::move(number), 0.0, this);
    spinBox->setStepType(stepType);
    label->setBuddy(spinBox);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label);
    layout->addWidget(slider, 1);
    layout->addWidget(spinBox);

    if (valueTypeModel)
        registerCallback(valueTypeModel->addCallback([this](long long type) { setValueType(toColorValueType(type)); }));
    setValueType(valueTypeModel ? toColorValueType(valueTypeModel->get()) : ColorValueType::SrgbUnit);
    notify();
}

ColorSliderRow::~ColorSliderRow() = default;

void ColorSliderRow::setMappingFunction(ColorSlider::MappingFunction mapping)
{
    slider->setMappingFunction(std::move(mapping));
}

ColorValueRange ColorSliderRow::getShownRange() const
{
    if (!valueTypeModel)
        return { low, high };
    const ColorValueRange range = getDisplayRange(valueType);
    const double scale = (range.high - range.low) / BYTE_RANGE;
    return { static_cast<float>(range.low + low * scale), static_cast<float>(range.low + high * scale) };
}

void ColorSliderRow::setValueType(ColorValueType type)
{
    // Validates first, so that a bad type leaves the field as it was.
    const FieldFormat typeFormat = getFieldFormat(type);
    valueType = type;
    const ColorValueRange shown = getShownRange();
    const double shownLow = shown.low;
    const double shownHigh = shown.high;
    // A row of its own range shows the component as stored; any of the stored curves maps it straight on the range.
    const ColorValueType curve = valueTypeModel ? type : ColorValueType::SrgbUnit;
    const FieldFormat format = valueTypeModel ? typeFormat
        : shownHigh - shownLow >= WIDE_RANGE  ? FieldFormat { 0, 1.0 }
                                              : FieldFormat { 3, 0.01 };

    ModelValueConverter<double> conversion;
    conversion.toDisplay
        = [curve, shownLow, shownHigh](double value) { return componentToDisplay(curve, value, shownLow, shownHigh); };
    conversion.fromDisplay = [curve, shownLow, shownHigh](double shownValue) {
        return displayToComponent(curve, shownValue, shownLow, shownHigh);
    };
    if (valueTypeModel && isPercent(type))
        conversion.suffix = "%";
    spinBox->setConversion(std::move(conversion));
    spinBox->setRange(0.0, 1.0, format.step, format.decimals);
}

QString ColorSliderRow::convertValueToText(double value) const
{
    return spinBox->convertValueToText(value);
}

void ColorSliderRow::notify()
{
    if (valueTypeModel) {
        const ColorValueType type = toColorValueType(valueTypeModel->get());
        if (type != valueType)
            setValueType(type);
    }
    spinBox->notify();
    slider->notify();
}

} // namespace Marlix::Widgets
