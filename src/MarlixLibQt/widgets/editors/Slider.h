#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/editors/SliderConverter.h>

#include <QWidget>

class QStyleOptionSlider;

namespace Marlix::Widgets {

/// A horizontal slider bound to a Model<double>; its converter maps values to a track fraction on a linear or
/// logarithmic scale, and one press-move-release is one change bracket of the model.
class MARLIXLIBQT_EXPORT Slider : public QWidget, public BaseWithModel
{
    Q_OBJECT

public:
    /// A linear 0..1 slider on \p model; a null model throws StopException. The slider never takes the keyboard focus.
    explicit Slider(SharedPtr<Model<double>> model, QWidget* parent = nullptr);
    ~Slider() override;

    void setConversion(SliderConverter converter); ///< Replaces the mapping and moves the handle to the model's value.
    /// The mapping in use; linear over 0..1 by default.
    const SliderConverter& getConversion() const { return converter; }
    const SharedPtr<Model<double>>& getModel() const { return model; } ///< The value the slider edits.

    /// The handle's place as a fraction of the track, 0 at the left end and 1 at the right end.
    double getPosition() const { return position; }

    /// The track's x range in widget coordinates: a press at `left` sets the left end, at `right` the right end.
    int getTrackLeft() const;
    int getTrackRight() const; ///< The right end of the track, see getTrackLeft().

    void notify() override;

    QSize sizeHint() const override; ///< The style's slider height; the width is whatever the layout gives.
    QSize minimumSizeHint() const override; ///< Room for the handle alone.

protected:
    void paintEvent(QPaintEvent* event) override; ///< Draws the groove and the handle through the style.
    /// A left press opens a change and moves the value to the press.
    void mousePressEvent(QMouseEvent* event) override;
    /// While the left button is down, writes the value under the cursor.
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override; ///< Writes the value at the release and commits the change.

private:
    void initStyleOption(QStyleOptionSlider& option) const;
    void mouseEvent(QMouseEvent* event);
    int getHalfHandle() const;

    SharedPtr<Model<double>> model;
    SliderConverter converter;
    double position = 0.0;
    bool pressed = false;
};

} // namespace Marlix::Widgets
