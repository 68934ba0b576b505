#include <MarlixLibQt/widgets/editors/Number.h>

#include <MarlixLibQt/widgets/editors/Slider.h>

#include <MarlixLib/base/Exception.h>

#include <QDynamicPropertyChangeEvent>
#include <QHBoxLayout>

namespace Marlix::Widgets {

Number::Number(SharedPtr<Model<double>> model, double defaultValue, bool withSlider, const UserData& userData,
               QWidget* parent)
    : Container(parent)
    , CommonContextMenuOwner(this)
    , model(std::move(model))
{
    if (!this->model)
        Marlix::Detail::throwStopException("widgets/Number", __LINE__);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    spinBox = new SpinBox(this->model, defaultValue, this);
    // The number's own menu applies to the whole row.
    spinBox->setContextMenuPolicy(Qt::NoContextMenu);
    if (withSlider) {
        slider = new Slider(this->model, this);
        if (const auto* options = userData.get<UiSliderOptions>(SLIDER_OPTIONS_KEY)) {
            sliderFromOptions = true;
            slider->setConversion(SliderConverter(*options));
        } else {
            updateSliderConversion();
        }
        layout->addWidget(slider, 1);
    }
    layout->addWidget(spinBox, withSlider ? 0 : 1);
    // The spin box and the slider follow the model on their own callbacks; the number adds none, so a change is
    // shown once.
    setFocusProxy(spinBox);

    // Through the spin box, which also ends a display of several values.
    setResetFunction([this] { spinBox->resetToDefault(); });
    setIsDefaultFunction([this, defaultValue] {
        return !spinBox->isShowingMixedValues() && this->model->get() == defaultValue;
    });
    setTextFunctions([this] { return spinBox->convertValueToText(this->model->get()); },
                     [this](const QString& text) { return spinBox->pasteText(text); });
    setEditableFunction([this] { return isEnabled() && !spinBox->isReadOnly(); });
}

Number::~Number() = default;

void Number::setRange(double minimum, double maximum, double step, int decimals)
{
    spinBox->setRange(minimum, maximum, step, decimals);
    updateSliderConversion();
}

void Number::setStepType(SpinBox::StepType type)
{
    spinBox->setStepType(type);
}

void Number::setSuffix(const QString& suffix)
{
    spinBox->setDisplaySuffix(suffix);
}

void Number::setConversion(ModelValueConverter<double> converter)
{
    spinBox->setConversion(std::move(converter));
    updateSliderConversion();
}

void Number::updateSliderConversion()
{
    if (!slider || sliderFromOptions)
        return;
    slider->setConversion(SliderConverter(spinBox->getModelMinimum(), spinBox->getModelMaximum(),
                                          SliderScale::Linear, spinBox->getConversion().suffix));
}

bool Number::event(QEvent* event)
{
    if (event->type() == QEvent::DynamicPropertyChange
        && static_cast<QDynamicPropertyChangeEvent*>(event)->propertyName() == SpinBox::MIXED_VALUES_PROPERTY)
        spinBox->setProperty(SpinBox::MIXED_VALUES_PROPERTY, property(SpinBox::MIXED_VALUES_PROPERTY));
    return Container::event(event);
}

void Number::notify()
{
    spinBox->notify();
}

} // namespace Marlix::Widgets
