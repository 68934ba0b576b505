#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/Color.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Container.h>
#include <MarlixLibQt/widgets/Model.h>

#include <MarlixLib/color/Rgb.h>

#include <array>
#include <cstdint>

class QTabWidget;

namespace Marlix::Widgets {

class ComboBox;
class HexColorEditor;
class ScreenColorPicker;

/// Whether a colour editor hands out and accepts an alpha channel; without it every colour is opaque.
enum class ColorFormat : std::int32_t
{
    Rgb = 0, ///< Opaque colours only.
    Rgba = 1, ///< Colours with alpha.
};

/// The colour picker of the colour dialog: slider panels of several colour spaces, the kind of numbers they show,
/// hex entry, screen picking and the old colour beside the new one, all on one shared colour model.
class MARLIXLIBQT_EXPORT ColorPickerWidget : public Container, public BaseWithModel
{
    Q_OBJECT

public:
    /// The slider panels, one tab each.
    enum class Panel : std::int32_t
    {
        Rgb = 0, ///< Red, green, blue.
        Rgba = 1, ///< Red, green, blue and alpha; only with ColorFormat::Rgba.
        Hsv = 2, ///< Hue, saturation, value.
        Hwb = 3, ///< Hue, whiteness, blackness: a field and a bar.
        Cmyk = 4, ///< Cyan, magenta, yellow, key.
        Temperature = 5, ///< The colour of a black body by its temperature.
        Albedo = 6, ///< A grey by its albedo.
    };
    static constexpr int PANEL_COUNT = 7; ///< The number of panels.
    /// The tab texts, indexed by Panel.
    static constexpr std::array<const char*, PANEL_COUNT> PANEL_TEXTS { QT_TR_NOOP("RGB"), QT_TR_NOOP("RGBA"),
        QT_TR_NOOP("HSV"), QT_TR_NOOP("HWB"), QT_TR_NOOP("CMYK"), QT_TR_NOOP("Temperature"), QT_TR_NOOP("Albedo") };
    static constexpr const char* VALUE_TYPE_LABEL = QT_TR_NOOP("Values"); ///< Source text of the value-type label.

    /// Binds the picker to `color` and to the value type shown by the spinners (a ColorValueType as integer).
    ColorPickerWidget(ColorFormat format, SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType,
        QWidget* parent = nullptr);
    /// A picker with models of its own, showing sRGB numbers from 0 to 255.
    explicit ColorPickerWidget(ColorFormat format = ColorFormat::Rgba, QWidget* parent = nullptr);
    ~ColorPickerWidget() override;

    ColorFormat getColorFormat() const { return format; } ///< The format given at construction.
    bool hasAlpha() const { return format == ColorFormat::Rgba; } ///< True for ColorFormat::Rgba.

    /// The colour as the rest of the system takes it: linear, through 8 bits per channel, opaque without alpha.
    Rgb value() const;
    /// Shows a linear colour, as the new colour and as the old one it is compared with.
    void setValue(const Rgb& rgb);

    /// The colour the picker started from, shown beside the current one.
    const QColorExtended& getOriginalColor() const { return original; }
    /// Restores the original colour (also done by a click on its swatch).
    void revertToOriginal();

    /// The colour shown and edited (display-encoded).
    const SharedPtr<Model<QColorExtended>>& getColorModel() const { return color; }
    /// The value type of the numbers (a ColorValueType as integer).
    const SharedPtr<Model<long long>>& getValueTypeModel() const { return valueType; }

    /// The panel of a colour space; the RGBA panel is null for a picker without alpha.
    QWidget* getPanel(Panel panel) const { return panels[static_cast<std::size_t>(panel)]; }
    Panel getCurrentPanel() const; ///< The panel of the chosen tab.
    /// Panels that the format does not offer are not chosen.
    void setCurrentPanel(Panel panel);

    QTabWidget* getPanelTabs() const { return tabs; } ///< The tabs of the panels.
    ComboBox* getValueTypeBox() const { return valueTypeBox; } ///< The choice of the value type.
    HexColorEditor* getHexEditor() const { return hexEditor; } ///< The hexadecimal entry.
    ScreenColorPicker* getScreenColorPicker() const { return screenPicker; } ///< The screen colour picking.
    /// The swatch of the old colour (left half) and the new one (right half).
    QWidget* getComparison() const { return comparison; }

    void notify() override;

private:
    void build();

    ColorFormat format;
    SharedPtr<Model<QColorExtended>> color;
    SharedPtr<Model<long long>> valueType;
    SharedPtr<Model<long long>> sampleMode;
    QColorExtended original;
    std::array<QWidget*, PANEL_COUNT> panels {};
    /// The tab page that holds each panel.
    std::array<QWidget*, PANEL_COUNT> pages {};
    QTabWidget* tabs = nullptr;
    ComboBox* valueTypeBox = nullptr;
    HexColorEditor* hexEditor = nullptr;
    ScreenColorPicker* screenPicker = nullptr;
    QWidget* comparison = nullptr;
};

} // namespace Marlix::Widgets
