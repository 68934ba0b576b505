#include <MarlixLibQt/widgets/color/ColorPicker.h>

#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/QtUtils.h>

#include <QCoreApplication>
#include <QLabel>
#include <QPointer>
#include <QVBoxLayout>

#include <algorithm>

namespace Marlix::Widgets {

namespace {

using Specification = QColorExtended::Specification;

// The mapping holds a copy of the colour, not the model: it stays valid until the next change replaces it.
ColorSlider::MappingFunction makeMapping(Specification spec, int index, const QColor& base)
{
    return [base, spec, index](float t) -> QColor {
        return QColorExtended::withComponent(base, spec, index, std::clamp(t, 0.0f, 1.0f));
    };
}

} // namespace

template <class Component, int N>
ColorPicker<Component, N>::ColorPicker(
    SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType, QWidget* parent)
    : QFrame(parent)
    , color(std::move(color))
    , valueType(std::move(valueType))
{
    if (!this->color || !this->valueType)
        Marlix::Detail::throwStopException("widgets/ColorPicker", __LINE__);
    makeColorPicker(ColorPickerTable<Component>::SPECIFICATION, this);
}

template <class Component, int N> ColorPicker<Component, N>::~ColorPicker() = default;

template <class Component, int N> std::size_t ColorPicker<Component, N>::indexOf(Component component)
{
    const auto index = static_cast<std::size_t>(component);
    if (index >= static_cast<std::size_t>(N))
        Marlix::Detail::throwStopException("widgets/ColorPicker", __LINE__);
    return index;
}

template <class Component, int N> ColorSliderRow* ColorPicker<Component, N>::getRow(Component component) const
{
    return rows[indexOf(component)];
}

template <class Component, int N>
void ColorPicker<Component, N>::makeColorPicker(QColorExtended::Specification spec, QWidget* parent)
{
    // The rows address their components by index, and every panel shows its numbers 0-255 before the value type.
    constexpr float LOW = 0.0f;
    constexpr float HIGH = static_cast<float>(ColorSliderRow::BYTE_RANGE);
    for (const auto& description : ColorPickerTable<Component>::ROWS)
        rows[indexOf(description.component)]
            = makeRow(spec, description.component, QColorExtended(), LOW, HIGH, parent);
    makeLayout();
}

template <class Component, int N>
ColorSliderRow* ColorPicker<Component, N>::makeRow(QColorExtended::Specification spec, Component component,
    const QColorExtended& reference, float low, float high, QWidget* parent)
{
    const int index = static_cast<int>(indexOf(component));
    Model<QColorExtended>* source = color.get();
    auto componentModel = makeSharedPtr<LambdaModel<float>>(
        color, [source, spec, index] { return source->get().componentF(spec, index); },
        [source, spec, index](
            float value) { source->set(QColorExtended::withComponent(source->get(), spec, index, value)); });

    String label;
    for (const auto& description : ColorPickerTable<Component>::ROWS)
        if (description.component == component)
            label = fromQt(QCoreApplication::translate("Marlix::Widgets::ColorPicker", description.label));

    const bool followsColor = !reference.isValid();
    references[static_cast<std::size_t>(index)] = reference.getColor();
    const QColor gradientBase = followsColor ? color->get().getColor() : reference.getColor();
    // Every component of an RGBA colour carries its alpha, so every row of that panel may be translucent.
    const bool translucent = spec == QColorExtended::Specification::RgbaSpec;
    auto* row = new ColorSliderRow(std::move(componentModel), valueType, label, makeMapping(spec, index, gradientBase),
        low, high, ColorSliderRow::DEFAULT_SLIDER_WIDTH, translucent, SpinBox::StepType::Fixed, parent);
    if (followsColor)
        registerCallback(color->addCallback([row = QPointer<ColorSliderRow>(row), spec, index](QColorExtended current) {
            if (row)
                row->setMappingFunction(makeMapping(spec, index, current.getColor()));
        }));
    return row;
}

template <class Component, int N> void ColorPicker<Component, N>::makeLayout()
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    // One label column, so that the sliders of all rows start and end together.
    int labelWidth = 0;
    for (const ColorSliderRow* row : rows)
        labelWidth = std::max(labelWidth, row->getLabel()->sizeHint().width());
    for (const auto& description : ColorPickerTable<Component>::ROWS) {
        ColorSliderRow* row = rows[indexOf(description.component)];
        row->getLabel()->setMinimumWidth(labelWidth);
        layout->addWidget(row);
    }
}

template <class Component, int N> void ColorPicker<Component, N>::notify()
{
    const QColor current = color->get().getColor();
    for (const auto& description : ColorPickerTable<Component>::ROWS) {
        const std::size_t index = indexOf(description.component);
        if (!references[index].isValid())
            rows[index]->setMappingFunction(
                makeMapping(ColorPickerTable<Component>::SPECIFICATION, static_cast<int>(index), current));
        rows[index]->notify();
    }
}

template class ColorPicker<QColorExtended::RgbComponent, 3>;
template class ColorPicker<QColorExtended::RgbaComponent, 4>;
template class ColorPicker<QColorExtended::HsvComponent, 3>;
template class ColorPicker<QColorExtended::CmykComponent, 4>;

RgbColorPicker::RgbColorPicker(
    SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType, QWidget* parent)
    : RgbColorPickerBase(std::move(color), std::move(valueType), parent)
{
}

RgbaColorPicker::RgbaColorPicker(
    SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType, QWidget* parent)
    : RgbaColorPickerBase(std::move(color), std::move(valueType), parent)
{
}

HsvColorPicker::HsvColorPicker(
    SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType, QWidget* parent)
    : HsvColorPickerBase(std::move(color), std::move(valueType), parent)
{
}

CmykColorPicker::CmykColorPicker(
    SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType, QWidget* parent)
    : CmykColorPickerBase(std::move(color), std::move(valueType), parent)
{
}

} // namespace Marlix::Widgets
