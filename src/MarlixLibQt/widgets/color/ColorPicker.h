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
    Component component;
    const char* label;
};

/// The rows of the panel of one component enumeration, top to bottom, and the colour space they address.
template <class Component> struct ColorPickerTable;

template <> struct ColorPickerTable<QColorExtended::RgbComponent>
{
    using C = QColorExtended::RgbComponent;
    static constexpr QColorExtended::Specification SPECIFICATION = QColorExtended::Specification::RgbSpec;
    static constexpr std::array<ColorPickerRowDescription<C>, 3> ROWS { {
        { C::Red, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Red") },
        { C::Green, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Green") },
        { C::Blue, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Blue") },
    } };
};

template <> struct ColorPickerTable<QColorExtended::RgbaComponent>
{
    using C = QColorExtended::RgbaComponent;
    static constexpr QColorExtended::Specification SPECIFICATION = QColorExtended::Specification::RgbaSpec;
    static constexpr std::array<ColorPickerRowDescription<C>, 4> ROWS { {
        { C::Red, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Red") },
        { C::Green, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Green") },
        { C::Blue, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Blue") },
        { C::Alpha, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Alpha") },
    } };
};

template <> struct ColorPickerTable<QColorExtended::HsvComponent>
{
    using C = QColorExtended::HsvComponent;
    static constexpr QColorExtended::Specification SPECIFICATION = QColorExtended::Specification::HsvSpec;
    static constexpr std::array<ColorPickerRowDescription<C>, 3> ROWS { {
        { C::Hue, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Hue") },
        { C::Saturation, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Saturation") },
        //: The V of HSV: how light the colour is
        { C::Value, QT_TRANSLATE_NOOP("Marlix::Widgets::ColorPicker", "Value") },
    } };
};

template <> struct ColorPickerTable<QColorExtended::CmykComponent>
{
    using C = QColorExtended::CmykComponent;
    static constexpr QColorExtended::Specification SPECIFICATION = QColorExtended::Specification::CmykSpec;
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

    ColorSliderRow* getRow(Component component) const;
    /// The rows by component value.
    const std::array<ColorSliderRow*, N>& getRows() const { return rows; }
    const SharedPtr<Model<QColorExtended>>& getColorModel() const { return color; }
    const SharedPtr<Model<long long>>& getValueTypeModel() const { return valueType; }

    void notify() override;

protected:
    ColorPicker(SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType, QWidget* parent);

    void makeColorPicker(QColorExtended::Specification spec, QWidget* parent);
    /// A valid `reference` fixes the row's gradient to that colour instead of following the colour model.
    ColorSliderRow* makeRow(QColorExtended::Specification spec, Component component, const QColorExtended& reference,
        float low, float high, QWidget* parent);
    void makeLayout();

private:
    static std::size_t indexOf(Component component);

    SharedPtr<Model<QColorExtended>> color;
    SharedPtr<Model<long long>> valueType;
    std::array<ColorSliderRow*, N> rows {};
    /// The fixed gradient colour of each row; invalid for rows that follow the colour model.
    std::array<QColor, N> references {};
};

using RgbColorPickerBase = ColorPicker<QColorExtended::RgbComponent, 3>;
using RgbaColorPickerBase = ColorPicker<QColorExtended::RgbaComponent, 4>;
using HsvColorPickerBase = ColorPicker<QColorExtended::HsvComponent, 3>;
using CmykColorPickerBase = ColorPicker<QColorExtended::CmykComponent, 4>;

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
    RgbColorPicker(
        SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType, QWidget* parent = nullptr);
};

/// Red, green, blue and alpha of a colour, over a checkerboard where the colour is translucent.
class MARLIXLIBQT_EXPORT RgbaColorPicker : public RgbaColorPickerBase
{
    Q_OBJECT

public:
    RgbaColorPicker(
        SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType, QWidget* parent = nullptr);
};

/// Hue, saturation and value of a colour.
class MARLIXLIBQT_EXPORT HsvColorPicker : public HsvColorPickerBase
{
    Q_OBJECT

public:
    HsvColorPicker(
        SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType, QWidget* parent = nullptr);
};

/// Cyan, magenta, yellow and key of a colour.
class MARLIXLIBQT_EXPORT CmykColorPicker : public CmykColorPickerBase
{
    Q_OBJECT

public:
    CmykColorPicker(
        SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> valueType, QWidget* parent = nullptr);
};

} // namespace Marlix::Widgets
