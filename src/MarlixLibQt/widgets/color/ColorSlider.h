#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QColor>
#include <QPixmap>
#include <QWidget>

class QStyleOptionSlider;

namespace Marlix::Widgets {

/// A horizontal slider over a normalised value whose track shows, at each position, the colour that value would give.
class MARLIXLIBQT_EXPORT ColorSlider : public QWidget, public BaseWithModel
{
    Q_OBJECT

public:
    /// The colour shown at a position of the track, for a value from 0 (left end) to 1 (right end).
    using MappingFunction = Function<QColor(float)>;

    /// A slider on \p model (0..1) whose track is coloured by \p mapping, over a checkerboard with \p showTransparency;
    /// \p widthHint is the preferred width in pixels. A null model or mapping throws StopException.
    ColorSlider(SharedPtr<Model<float>> model, MappingFunction mapping, int widthHint, bool showTransparency,
        QWidget* parent = nullptr);
    ~ColorSlider() override;

    /// New colours for the track; the gradient is made again at once while the slider is visible, else when it is next
    /// shown.
    void setMappingFunction(MappingFunction mapping);
    const MappingFunction& getMappingFunction() const { return mapping; } ///< The colours of the track.

    const SharedPtr<Model<float>>& getModel() const { return model; } ///< The channel value the slider edits.
    /// Whether translucent colours are drawn over a checkerboard.
    bool isShowingTransparency() const { return showTransparency; }
    /// The cached track, one pixel per column; empty while nothing was drawn yet.
    const QPixmap& getGradient() const { return gradient; }
    /// How often the track was made: each time costs one evaluation of the mapping per column.
    int getGradientUpdateCount() const { return gradientUpdates; }

    /// The x of the widget where a press selects `value` (0 at the left edge, the width at the right edge).
    double getPositionOfValue(float value) const;
    /// The x at the centre of the handle as it is drawn.
    int getHandlePosition() const;

    void notify() override;

    QSize sizeHint() const override; ///< The width hint given at construction and the style's slider thickness.

protected:
    /// Draws the cached track (over a checkerboard if asked) and the handle through the style.
    void paintEvent(QPaintEvent* event) override;
    /// Makes the track again while visible; otherwise on the next show.
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override; ///< Makes the track if it is outdated.
    void changeEvent(QEvent* event) override; ///< Follows font changes in the slider's thickness.
    /// A left press opens a change and sets the value under the cursor.
    void mousePressEvent(QMouseEvent* event) override;
    /// While pressed, sets the value under the cursor, clamped to the track.
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override; ///< Commits the change the press opened.

private:
    void calculateFade();
    void initStyleOption(QStyleOptionSlider& option) const;
    int getThickness() const;
    void setFromPosition(double x);

    SharedPtr<Model<float>> model;
    MappingFunction mapping;
    int widthHint;
    QPixmap gradient;
    bool showTransparency;
    bool gradientOutdated = true;
    bool pressed = false;
    int gradientUpdates = 0;
};

} // namespace Marlix::Widgets
