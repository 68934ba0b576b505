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
    static constexpr QRgb TEXT_COLOR = 0xffc8c8c8;
    static constexpr QRgb DISABLED_TEXT_COLOR = 0xff6e6e6e;
    static constexpr QRgb HIGHLIGHT_COLOR = 0xff4e7dba;
    /// Fields, tracks and sunken panels are filled with the control colour "333333".
    static constexpr QRgb CONTROL_COLOR = 0xff333333;

    MarlixOriginalStyle();
    ~MarlixOriginalStyle() override;

    void polish(QWidget* widget) override;
    void polish(QPalette& palette) override;
    using MarlixStyle::polish;

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget = nullptr) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget = nullptr) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
        const QWidget* widget = nullptr) const override;
    QRect subElementRect(SubElement element, const QStyleOption* option, const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl subControl,
        const QWidget* widget) const override;
    QSize sizeFromContents(
        ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const override;
    int pixelMetric(
        PixelMetric metric, const QStyleOption* option = nullptr, const QWidget* widget = nullptr) const override;
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
