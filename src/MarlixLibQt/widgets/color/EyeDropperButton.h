#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QToolButton>

namespace Marlix::Widgets {

/// A tool button that the user drags anywhere on any screen to pick the colour (or its inverse) under the cursor.
///
/// While the drag lasts the button shows the colour under the cursor; the colour model changes once, on release, in
/// red, green and blue only, so a pick is one undoable change that keeps the alpha.
class MARLIXLIBQT_EXPORT EyeDropperButton : public QToolButton, public BaseWithModel
{
    Q_OBJECT

public:
    /// Source text of the tooltip of the button that picks the colour.
    static constexpr const char* TOOL_TIP = QT_TR_NOOP(
        "Picks pixel color from anywhere on the screen. To use this picker, just drag the button to anywhere on "
        "the screen. While in this pick mode, the sampled color will be displayed in the button.");
    /// Source text of the tooltip of the button that picks the inverse colour.
    static constexpr const char* INVERT_TOOL_TIP = QT_TR_NOOP(
        "Picks inverse of a pixel color from anywhere on the screen. The inverse color is useful for example "
        "to select a color tint for the image. To use this picker, just drag the button to anywhere on the "
        "screen. While in this pick mode, the sampled color will be displayed in the button.");

    /// `sampleMode` holds one of the modes of ScreenColorPicker (the size of the averaged square).
    EyeDropperButton(SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> sampleMode, bool invert,
        QWidget* parent = nullptr);
    ~EyeDropperButton() override;

    /// Whether the button picks the inverse of the colour under the cursor.
    bool isInverting() const { return invert; }
    bool isPicking() const { return picking; } ///< Whether a pick drag is under way.
    /// What the drag has picked so far (already inverted by an inverting button); invalid before the first sample.
    const QColorExtended& getSampledColor() const { return sampledColor; }

    void notify() override;

protected:
    /// A left press grabs the mouse and starts sampling under the cursor.
    void mousePressEvent(QMouseEvent* event) override;
    /// Samples under the cursor while picking, also over other windows and applications.
    void mouseMoveEvent(QMouseEvent* event) override;
    /// Samples once more, ends the pick and writes the colour's red, green and blue, if anything was read.
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override; ///< Fills the button with the sampled colour while picking.

    /// The colour under the global position `position`, averaged over a square reaching `halfSize` pixels from its
    /// centre; invalid where nothing could be read. The screen by default.
    virtual QColor sampleColor(const QPoint& position, int halfSize) const;

private:
    void sample(const QPointF& globalPosition);

    SharedPtr<Model<QColorExtended>> color;
    SharedPtr<Model<long long>> sampleMode;
    bool invert = false;
    bool picking = false;
    QColorExtended sampledColor;
};

} // namespace Marlix::Widgets
