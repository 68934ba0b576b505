#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/Color.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QColor>
#include <QFrame>
#include <QString>

namespace Marlix::Widgets {

class ColorSliderRow;

/// Sets a colour to the grey of a linear reflectance (albedo) from 0 to 1, and shows the albedo of any colour as the
/// mean of its linearised channels.
class MARLIXLIBQT_EXPORT AlbedoColorPicker : public QFrame
{
    Q_OBJECT

public:
    static constexpr const char* LABEL = QT_TR_NOOP("Albedo"); ///< Source text of the row's label.

    /// A row on \p color; a null model throws StopException.
    explicit AlbedoColorPicker(SharedPtr<Model<QColorExtended>> color, QWidget* parent = nullptr);
    ~AlbedoColorPicker() override;

    /// The field's text for an albedo.
    QString convertValueToText(float value) const;
    /// The text of the albedo last read from the colour.
    const QString& getValueText() const { return valueText; }
    ColorSliderRow* getRow() const { return row; } ///< The albedo row; its number runs from 0 to 1.

    /// \copydoc Marlix::albedoToColor
    static QColor albedoToColor(float albedo) { return Marlix::albedoToColor(albedo); }
    /// \copydoc Marlix::colorToAlbedo
    static float colorToAlbedo(const QColor& color) { return Marlix::colorToAlbedo(color); }

private:
    float readAlbedo();

    SharedPtr<Model<QColorExtended>> color;
    ColorSliderRow* row = nullptr;
    QString valueText;
};

} // namespace Marlix::Widgets
