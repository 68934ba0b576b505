#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/color/GradientDisplay.h>
#include <MarlixLibQt/widgets/Model.h>

#include <MarlixLib/color/ColorGradient.h>

#include <QPointF>

namespace Marlix::Widgets {

/// Edits a colour gradient: its stops are handles under the ramp that are dragged along it, removed with a right
/// click, recoloured with a double click, and added with a double click on the ramp.
class MARLIXLIBQT_EXPORT GradientControl : public GradientDisplay, public BaseWithModel
{
    Q_OBJECT

public:
    /// The title of the colour dialog that recolours a stop.
    static constexpr const char* COLOR_DIALOG_TITLE = QT_TR_NOOP("Select Color");

    /// Edits \p gradient; every finished gesture writes the model once. A null model throws StopException.
    explicit GradientControl(SharedPtr<Model<ColorGradient>> gradient, QWidget* parent = nullptr);
    ~GradientControl() override;

    /// The stops as shown, sorted by position; during a drag they differ from the model's.
    const Array<ColorGradient::Stop>& getStops() const { return stops; }
    /// The stop being dragged, by index into getStops().
    Optional<int> getSelectedStop() const { return selected; }

    /// The tip of a stop's handle, on the bottom edge of the ramp.
    QPointF getControlPointPosition(int index) const;
    /// The first stop whose handle tip lies within the margin of `point`.
    Optional<int> getControlPointAtPosition(const QPoint& point) const;

    void notify() override;

protected:
    /// Draws the ramp and a handle per stop, the dragged one highlighted.
    void paintEvent(QPaintEvent* event) override;
    /// A left press takes the stop under the cursor.
    void mousePressEvent(QMouseEvent* event) override;
    /// Drags the taken stop along the ramp; the model follows when the drag ends.
    void mouseMoveEvent(QMouseEvent* event) override;
    /// Writes a moved stop to the model; a right-button release removes the stop under the cursor.
    void mouseReleaseEvent(QMouseEvent* event) override;
    /// Recolours the stop under the cursor, or adds one on the ramp, through the colour dialog.
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void writeModel();
    void editStopColor(int index);
    RgbBytes rampColorAt(float position) const;

    SharedPtr<Model<ColorGradient>> model;
    Array<ColorGradient::Stop> stops;
    // The ramp is read from here, so that it follows a drag before the model is written.
    ColorGradient shown;
    Optional<int> selected;
};

} // namespace Marlix::Widgets
