#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/Color.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QColor>
#include <QFrame>

namespace Marlix::Widgets {

class ColorSliderRow;

/// Sets a colour to the colour of a black body between 1700 K and 15000 K. The temperature is kept here, since a
/// colour cannot be turned back into one; only a move to another whole kelvin changes the colour.
class MARLIXLIBQT_EXPORT TemperatureColorPicker : public QFrame
{
    Q_OBJECT

public:
    static constexpr float LOWEST_KELVIN = 1700.0f; ///< The temperature at the left end of the slider.
    static constexpr float HIGHEST_KELVIN = 15000.0f; ///< The temperature at the right end of the slider.
    /// The reference white, where the colour of the temperature is white.
    static constexpr float INITIAL_KELVIN = 6500.0f;
    static constexpr const char* LABEL = QT_TR_NOOP("Temp. [K]"); ///< Source text of the row's label.

    /// A row on \p color, starting at INITIAL_KELVIN without changing the colour; a null model throws StopException.
    explicit TemperatureColorPicker(SharedPtr<Model<QColorExtended>> color, QWidget* parent = nullptr);
    ~TemperatureColorPicker() override;

    /// The stored temperature, normalised: 0 is 1700 K and 1 is 15000 K.
    float getTemperature() const { return temperature; }
    ColorSliderRow* getRow() const { return row; } ///< The temperature row; its number is in kelvins.

    /// \copydoc Marlix::temperatureToOriginalRange
    static float temperatureToOriginalRange(float t) { return Marlix::temperatureToOriginalRange(t); }
    /// \copydoc Marlix::temperatureToColor
    static QColor temperatureToColor(float t) { return Marlix::temperatureToColor(t); }

private:
    void setTemperature(float t);

    SharedPtr<Model<QColorExtended>> color;
    float temperature;
    ColorSliderRow* row = nullptr;
};

} // namespace Marlix::Widgets
