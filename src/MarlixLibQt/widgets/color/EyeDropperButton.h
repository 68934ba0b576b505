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
    static constexpr const char* TOOL_TIP = QT_TR_NOOP(
        "Picks pixel color from anywhere on the screen. To use this picker, just drag the button to anywhere on "
        "the screen. While in this pick mode, the sampled color will be displayed in the button.");
    static constexpr const char* INVERT_TOOL_TIP = QT_TR_NOOP(
        "Picks inverse of a pixel color from anywhere on the screen. The inverse color is useful for example "
        "to select a color tint for the image. To use this picker, just drag the button to anywhere on the "
        "screen. While in this pick mode, the sampled color will be displayed in the button.");

    /// `sampleMode` holds one of the modes of ScreenColorPicker (the size of the averaged square).
    EyeDropperButton(SharedPtr<Model<QColorExtended>> color, SharedPtr<Model<long long>> sampleMode, bool invert,
        QWidget* parent = nullptr);
    ~EyeDropperButton() override;

    bool isInverting() const { return invert; }
    bool isPicking() const { return picking; }
    /// What the drag has picked so far (already inverted by an inverting button); invalid before the first sample.
    const QColorExtended& getSampledColor() const { return sampledColor; }

    void notify() override;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

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
