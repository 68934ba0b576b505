#include <MarlixLibQt/widgets/color/TemperatureColorPicker.h>

#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/color/ColorSliderRow.h>

#include <MarlixLib/base/Exception.h>

#include <QVBoxLayout>

#include <utility>

namespace Marlix::Widgets {

TemperatureColorPicker::TemperatureColorPicker(SharedPtr<Model<QColorExtended>> color, QWidget* parent)
    : QFrame(parent)
    , color(std::move(color))
    , temperature((INITIAL_KELVIN - LOWEST_KELVIN) / (HIGHEST_KELVIN - LOWEST_KELVIN))
{
    if (!this->color)
        Marlix::Detail::throwStopException("widgets/TemperatureColorPicker", __LINE__);
    auto component = makeSharedPtr<LambdaModel<float>>(
        this->color, [this] { return temperature; }, [this](float t) { setTemperature(t); });
    // No value type: kelvins are no colour component, neither sRGB nor linear.
    row = new ColorSliderRow(std::move(component), nullptr, fromQt(tr(LABEL)), &Marlix::temperatureToColor,
        LOWEST_KELVIN, HIGHEST_KELVIN, ColorSliderRow::DEFAULT_SLIDER_WIDTH, false, SpinBox::StepType::Fixed, this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(row);
}

TemperatureColorPicker::~TemperatureColorPicker()
{
    // The row's model reads this picker: the row goes while the picker is still whole, not after its members.
    delete std::exchange(row, nullptr);
}

void TemperatureColorPicker::setTemperature(float t)
{
    // The colour is made from whole kelvins: a move inside one kelvin would give the same colour, so it is no change.
    if (Marlix::temperatureToOriginalRange(t) == Marlix::temperatureToOriginalRange(temperature))
        return;
    temperature = t;
    const QColor blackBody = Marlix::temperatureToColor(t);
    const float alpha = color->get().alphaF();
    color->set(QColor::fromRgbF(blackBody.redF(), blackBody.greenF(), blackBody.blueF(), alpha));
}

} // namespace Marlix::Widgets
