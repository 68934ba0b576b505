#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/CommonContextMenuOwner.h>
#include <MarlixLibQt/widgets/Container.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/ModelValueConverter.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>

#include <MarlixLib/data/UserData.h>

namespace Marlix::Widgets {

class Slider;

/// The editor of a scalar property: a SpinBox on the model, with a Slider ahead of it when asked for.
///
/// The slider follows the attribute "Zorva.Ui.SliderOptions" of `userData` when it is there; otherwise it spans the
/// spin box's range and follows later range and conversion changes.
class MARLIXLIBQT_EXPORT Number : public Container, public BaseWithModel, public CommonContextMenuOwner
{
    Q_OBJECT

public:
    /// A number on \p model (never null, else StopException) that resets to \p defaultValue; \p userData may carry the
    /// slider's options.
    Number(SharedPtr<Model<double>> model, double defaultValue, bool withSlider = false,
           const UserData& userData = {}, QWidget* parent = nullptr);
    ~Number() override;

    /// Bounds in model units, the step in display units; an automatic slider follows them.
    void setRange(double minimum, double maximum, double step, int decimals);
    void setStepType(SpinBox::StepType type); ///< The stepping of the spin box.
    void setSuffix(const QString& suffix); ///< Replaces the suffix shown after the number.
    /// The display conversion of the spin box; an automatic slider follows it.
    void setConversion(ModelValueConverter<double> converter);

    SpinBox* getSpinBox() const { return spinBox; } ///< The field; it shares the number's model.
    /// Null when the number was made without a slider.
    Slider* getSlider() const { return slider; }

    void notify() override;

protected:
    /// Hands the host's "several values" mark on to the spin box; the slider keeps showing the model's value.
    bool event(QEvent* event) override;

private:
    void updateSliderConversion();

    SharedPtr<Model<double>> model;
    SpinBox* spinBox = nullptr;
    Slider* slider = nullptr;
    bool sliderFromOptions = false;
};

} // namespace Marlix::Widgets
