#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/styles/MarlixStyle.h>

#include <QColor>

class QStyleOptionGroupBox;
class QStyleOptionSlider;
class QStyleOptionSpinBox;

namespace Marlix {

/// The look of the library's own applications: the dark palette over "fusion", flat fields in the control colour,
/// the property-sheet behaviour and the markers of animated properties.
class MARLIXLIBQT_EXPORT MarlixOriginalStyle : public MarlixStyle
{
    Q_OBJECT

public:
    /// The palette's window and text colours.
    static constexpr QRgb WINDOW_COLOR = 0xff444444;
    static constexpr QRgb TEXT_COLOR = 0xffc8c8c8; ///< Text on windows, fields and buttons.
    static constexpr QRgb DISABLED_TEXT_COLOR = 0xff6e6e6e; ///< Text of disabled fields and buttons.
    static constexpr QRgb HIGHLIGHT_COLOR = 0xff4e7dba; ///< Selections, focus outlines and the drag-hover marker.
    /// Fields, tracks and sunken panels are filled with the control colour "333333".
    static constexpr QRgb CONTROL_COLOR = 0xff333333;

    MarlixOriginalStyle(); ///< Over "fusion", which it owns.
    ~MarlixOriginalStyle() override; ///< Destroys the style and its base style.

    /// Turns hover events on for line edits and spin boxes, whose outline lightens under the mouse.
    void polish(QWidget* widget) override;
    void polish(QPalette& palette) override; ///< Fills \p palette with the dark colours above.
    using MarlixStyle::polish;

    /// Draws fields rounded in the control colour (read-only ones in the window colour) with the animation marker,
    /// and its own frames, group boxes, tool-button panels and branch arrows.
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget = nullptr) const override;
    /// Draws push buttons, check boxes and radio buttons with the animation marker of their property.
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget = nullptr) const override;
    /// Draws spin boxes, sliders and group boxes in the library's look; combo boxes and tool buttons with the marker.
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
        const QWidget* widget = nullptr) const override;
    /// Keeps the text of framed line edits clear of the rounded corners.
    QRect subElementRect(SubElement element, const QStyleOption* option, const QWidget* widget) const override;
    /// Lays spin boxes out with narrow stacked arrow buttons on the right; other controls as MarlixStyle.
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl subControl,
        const QWidget* widget) const override;
    /// Sizes spin boxes for their narrow buttons, then fits property-sheet editors to the row height.
    QSize sizeFromContents(
        ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const override;
    /// Wraps tool tips at 300 pixels and gives gradient displays and spin box frames their sizes.
    int pixelMetric(
        PixelMetric metric, const QStyleOption* option = nullptr, const QWidget* widget = nullptr) const override;
    /// Turns the pin off and the key handler, drag hint and context menu on; combo boxes drop down as lists.
    int styleHint(StyleHint hint, const QStyleOption* option = nullptr, const QWidget* widget = nullptr,
        QStyleHintReturn* returnData = nullptr) const override;

protected:
    /// The outline of a field or panel in `rect`: highlighted with focus, lighter under the mouse.
    void drawFrame(const QRect& rect, const QStyleOption* option, QPainter* painter, const QWidget* widget) const;
    /// The marker of the animation or variant state of the widget's property ("Zorva.PropertyControllerState").
    virtual void drawAnimationOverlay(
        const QRect& rect, const QStyleOption* option, QPainter* painter, const QWidget* widget) const;

private:
    void drawSpinBox(const QStyleOptionSpinBox* option, QPainter* painter, const QWidget* widget) const;
    void drawSlider(const QStyleOptionSlider* option, QPainter* painter, const QWidget* widget) const;
    void drawGroupBox(const QStyleOptionGroupBox* option, QPainter* painter, const QWidget* widget) const;
    void drawToolButtonPanel(const QStyleOption* option, QPainter* painter, const QWidget* widget) const;
    void drawBranchArrow(const QStyleOption* option, QPainter* painter, const QWidget* widget) const;
};

} // namespace Marlix
