#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/Color.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/color/ColorSlider.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/editors/SpinBox.h>

#include <QFrame>

class QLabel;

namespace Marlix::Widgets {

/// One component of a colour: its label, a slider showing the colours the component can give, and a number field.
///
/// With a value-type model the number follows the shared ColorValueType: [low, high] is then the range of the
/// 0-255 forms and is scaled for the others. Without one (temperature, albedo) the number is the component mapped
/// straight onto [low, high].
class MARLIXLIBQT_EXPORT ColorSliderRow : public QFrame, public BaseWithModel
{
    Q_OBJECT

public:
    static constexpr int DEFAULT_SLIDER_WIDTH = 256; ///< The preferred slider width, in pixels.
    /// The scale on which a row's own range is written when it follows a value type.
    static constexpr double BYTE_RANGE = 255.0;

    /// A row on \p component (0..1), labelled \p label; \p valueType may be null (see the class description). A null
    /// component or mapping, or a range that is not finite with \p low below \p high, throws StopException.
    ColorSliderRow(SharedPtr<Model<float>> component, SharedPtr<Model<long long>> valueType, const String& label,
        ColorSlider::MappingFunction mapping, float low, float high, int sliderWidthHint = DEFAULT_SLIDER_WIDTH,
        bool showTransparency = false, SpinBox::StepType stepType = SpinBox::StepType::Fixed,
        QWidget* parent = nullptr);
    ~ColorSliderRow() override;

    void setMappingFunction(ColorSlider::MappingFunction mapping); ///< New colours for the slider's track.
    /// Shows the number in `type`; the component itself is not touched.
    void setValueType(ColorValueType type);
    ColorValueType getValueType() const { return valueType; } ///< The value type the number is shown in.
    /// The numbers the field shows for components 0 and 1 with the current value type.
    ColorValueRange getShownRange() const;

    /// The field's text for a normalised component.
    QString convertValueToText(double value) const;

    const SharedPtr<Model<float>>& getComponentModel() const { return component; } ///< The normalised component edited.
    QLabel* getLabel() const { return label; } ///< The label ahead of the slider; the buddy of the number field.
    ColorSlider* getSlider() const { return slider; } ///< The slider.
    SpinBox* getSpinBox() const { return spinBox; } ///< The number field.

    void notify() override;

private:
    SharedPtr<Model<float>> component;
    SharedPtr<Model<long long>> valueTypeModel;
    float low;
    float high;
    ColorValueType valueType = ColorValueType::SrgbByte;
    QLabel* label = nullptr;
    ColorSlider* slider = nullptr;
    SpinBox* spinBox = nullptr;
};

} // namespace Marlix::Widgets
