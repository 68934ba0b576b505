#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <MarlixLib/base/Function.h>
#include <MarlixLib/color/RgbBytes.h>

#include <QPixmap>
#include <QRect>
#include <QWidget>

namespace Marlix::Widgets {

/// A horizontal colour ramp drawn from a mapping of positions 0..1 to colours, with a margin on both sides and a strip
/// underneath that derived editors use for their handles.
class MARLIXLIBQT_EXPORT GradientDisplay : public QWidget
{
    Q_OBJECT

public:
    /// The display colour at a position of the ramp, 0 at the left end and 1 at the right end.
    using MappingFunction = Function<RgbBytes(float)>;

    /// Width of the side margins and height of the handle strip, in pixels at 96 DPI.
    static constexpr double MARGIN = 6.0;
    /// Height of the ramp itself, in pixels at 96 DPI, for the default height of the widget.
    static constexpr double RAMP_HEIGHT = 24.0;

    /// A ramp of \p mapping, which is first called when the ramp is painted.
    explicit GradientDisplay(MappingFunction mapping, QWidget* parent = nullptr);
    ~GradientDisplay() override;

    void setMappingFunction(MappingFunction mapping); ///< New colours; the ramp is computed again when next painted.

    /// Where the ramp is drawn: the widget less the side margins and the handle strip.
    QRect getGradientRectangle() const;
    /// The ramp position under the widget's `x`, clamped to [0, 1].
    float getRelativePosition(int x) const;
    int getMarginSize() const; ///< MARGIN in device-independent pixels of this widget's screen.

    /// Marks the ramp out of date and schedules a repaint, which computes it again.
    void updateDisplay();

    /// The cached ramp, one evaluation of the mapping per column; null until it was first painted.
    const QPixmap& getRamp() const { return ramp; }

    /// As wide as the parent, as high as the widget is.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override; ///< Four margins wide; half the ramp height plus the strip high.

protected:
    /// Fills the cached ramp for the current size of the gradient rectangle.
    virtual void calculateFade();

    void paintEvent(QPaintEvent* event) override; ///< Draws the cached ramp, computing it first when outdated.
    void resizeEvent(QResizeEvent* event) override; ///< Marks the ramp outdated for the new size.

private:
    MappingFunction mapping;
    QPixmap ramp;
    bool rampOutdated = true;
};

} // namespace Marlix::Widgets
