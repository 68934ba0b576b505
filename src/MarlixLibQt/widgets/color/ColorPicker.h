#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/Color.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/color/ColorSliderRow.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QFrame>

#include <array>
#include <cstddef>

namespace Marlix::Widgets {

/// One row of a component panel: the component it edits and its label.
template <class Component> struct ColorPickerRowDescription
{
    Component component; ///< The component the row edits.
    const char* label; ///< The row's label, untranslated.
};

/// The rows of the panel of one component enumeration, top to bottom, and the colour space they address.
template <class Component> struct ColorPickerTable;

/// The rows of the RGB panel.
template <> struct ColorPickerTable<QColorExtended::RgbComponent>
{
    using C = QColorExtended::RgbComponent; ///< The component enumeration.
    /// The colour space the components are read in.
    static constexpr QColorExtended::Specification SPECIFICATION = QColorExtended::Specification::RgbSpec;
    /// Red, green, blue.
    static constexpr std::array<ColorPickerRowDescription<C>, 3> ROWS { {
        { C::Red, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Red") },
        { C::Green, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Green") },
        { C::Blue, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Blue") },
    } };
};

/// The rows of the RGBA panel.
template <> struct ColorPickerTable<QColorExtended::RgbaComponent>
{
    using C = QColorExtended::RgbaComponent; ///< The component enumeration.
    /// The colour space the components are read in.
    static constexpr QColorExtended::Specification SPECIFICATION = QColorExtended::Specification::RgbaSpec;
    /// Red, green, blue, alpha.
    static constexpr std::array<ColorPickerRowDescription<C>, 4> ROWS { {
        { C::Red, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Red") },
        { C::Green, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Green") },
        { C::Blue, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Blue") },
        { C::Alpha, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Alpha") },
    } };
};

/// The rows of the HSV panel.
template <> struct ColorPickerTable<QColorExtended::HsvComponent>
{
    using C = QColorExtended::HsvComponent; ///< The component enumeration.
    /// The colour space the components are read in.
    static constexpr QColorExtended::Specification SPECIFICATION = QColorExtended::Specification::HsvSpec;
    /// Hue, saturation, value.
    static constexpr std::array<ColorPickerRowDescription<C>, 3> ROWS { {
        { C::Hue, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Hue") },
        { C::Saturation, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Saturation") },
        //: The V of HSV: how light the colour is
        { C::Value, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Value") },
    } };
};

/// The rows of the CMYK panel.
template <> struct ColorPickerTable<QColorExtended::CmykComponent>
{
    using C = QColorExtended::CmykComponent; ///< The component enumeration.
    /// The colour space the components are read in.
    static constexpr QColorExtended::Specification SPECIFICATION = QColorExtended::Specification::CmykSpec;
    /// Cyan, magenta, yellow, key.
    static constexpr std::array<ColorPickerRowDescription<C>, 4> ROWS { {
        { C::Cyan, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Cyan") },
        { C::Magenta, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Magenta") },
        { C::Yellow, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Yellow") },
        //: The K of CMYK: the black ink
        { C::Key, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Key") },
    } };
};

/// A panel of one slider row per component of a colour space, all bound to one colour model. Every colour
/// change redraws every row, so each slider shows what its component would give if it were moved.
template <class Component, int N> class ColorPicker : public QFrame, public BaseWithModel
{
    static_assert(ColorPickerTable<Component>::ROWS.size() == N, "one row per component");

public:
    ~ColorPicker() override;

    /// The row of \p component; a component outside the panel throws StopException.
    ColorSliderRow* getRow(Component component) const;
    /// The rows by component value.
    const std::array<ColorSliderRow*, N>& getRows() const { return rows; }
    const SharedPtr<Model<QColorExtended>>& getColorModel() const { return color; } ///< The colour edited; never null.
    /// The value type of the numbers (a ColorValueType as integer); never null.
    const SharedPtr<Model<long long>>& getValueTypeModel() const { return valueType; }

    void notify() override;

protected:
    /// Builds the rows on \p color and \p valueType; a null model throws StopException.
    ColorPicker(SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType, QWidget* parent);

    /// Builds one row per entry of the panel's table, then the layout.
    void makeColorPicker(QColorExtended::Specification spec, QWidget* parent);
    /// A valid `reference` fixes the row's gradient to that colour instead of following the colour model.
    ColorSliderRow* makeRow(QColorExtended::Specification spec, Component component, const QColorExtended& reference,
        float low, float high, QWidget* parent);
    void makeLayout(); ///< Lays the rows out top to bottom with one label column, so that all sliders line up.

private:
    static std::size_t indexOf(Component component);

    SharedPtr<Model<QColorExtended>> color;
    SharedPtr<Model<long long>> valueType;
    std::array<ColorSliderRow*, N> rows {};
    /// The fixed gradient colour of each row; invalid for rows that follow the colour model.
    std::array<QColor, N> references {};
};

using RgbColorPickerBase = ColorPicker<QColorExtended::RgbComponent, 3>; ///< The RGB panel's base.
using RgbaColorPickerBase = ColorPicker<QColorExtended::RgbaComponent, 4>; ///< The RGBA panel's base.
using HsvColorPickerBase = ColorPicker<QColorExtended::HsvComponent, 3>; ///< The HSV panel's base.
using CmykColorPickerBase = ColorPicker<QColorExtended::CmykComponent, 4>; ///< The CMYK panel's base.

} // namespace Marlix::Widgets

extern template class MARLIXLIBQT_EXPORT Marlix::Widgets::ColorPicker<Marlix::QColorExtended::RgbComponent, 3>;
extern template class MARLIXLIBQT_EXPORT Marlix::Widgets::ColorPicker<Marlix::QColorExtended::RgbaComponent, 4>;
extern template class MARLIXLIBQT_EXPORT Marlix::Widgets::ColorPicker<Marlix::QColorExtended::HsvComponent, 3>;
extern template class MARLIXLIBQT_EXPORT Marlix::Widgets::ColorPicker<Marlix::QColorExtended::CmykComponent, 4>;

namespace Marlix::Widgets {

/// Red, green and blue of a colour; its alpha is kept as it is.
class MARLIXLIBQT_EXPORT RgbColorPicker : public RgbColorPickerBase
{
    Q_OBJECT

public:
    /// A panel on \p color; \p valueType sets how the numbers are shown.
    RgbColorPicker(
        SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType, QWidget* parent = nullptr);
};

/// Red, green, blue and alpha of a colour, over a checkerboard where the colour is translucent.
class MARLIXLIBQT_EXPORT RgbaColorPicker : public RgbaColorPickerBase
{
    Q_OBJECT

public:
    /// A panel on \p color; \p valueType sets how the numbers are shown.
    RgbaColorPicker(
        SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType, QWidget* parent = nullptr);
};

/// Hue, saturation and value of a colour.
class MARLIXLIBQT_EXPORT HsvColorPicker : public HsvColorPickerBase
{
    Q_OBJECT

public:
    /// A panel on \p color; \p valueType sets how the numbers are shown.
    HsvColorPicker(
        SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType, QWidget* parent = nullptr);
};

/// Cyan, magenta, yellow and key of a colour.
class MARLIXLIBQT_EXPORT CmykColorPicker : public CmykColorPickerBase
{
    Q_OBJECT

public:
    /// A panel on \p color; \p valueType sets how the numbers are shown.
    CmykColorPicker(
        SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType, QWidget* parent = nullptr);
};

} // namespace Marlix::Widgets
