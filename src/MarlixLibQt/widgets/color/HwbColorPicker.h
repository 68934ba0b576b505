#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/Color.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QFrame>
#include <QImage>
#include <QPixmap>
#include <QPointF>
#include <QWidget>

class QPainter;

namespace Marlix::Widgets {

/// The field of all hues (left to right) and blacknesses (top to bottom) at whiteness 0, with a cross-hair cursor.
class MARLIXLIBQT_EXPORT HueBlacknessPicker : public QWidget, public BaseWithModel
{
    Q_OBJECT

public:
    static constexpr int INITIAL_WIDTH = 360; ///< The preferred width in pixels: one column per degree of hue.
    static constexpr int INITIAL_HEIGHT = 256; ///< The preferred height in pixels: one row per 0-255 step of blackness.

    /// `point`: x is the hue, y the blackness, both from 0 to 1.
    explicit HueBlacknessPicker(SharedPtr<Model<QPointF>> point, QWidget* parent = nullptr);
    ~HueBlacknessPicker() override;

    /// The field at `size`, one colour evaluation per pixel.
    static QImage makeField(const QSize& size);
    /// Makes the field again for the current size; skipped while the widget is hidden, whose show event catches up.
    void calculateFade();

    const QPixmap& getField() const { return field; } ///< The cached field; empty until it is first made.
    /// How often the field was made.
    int getFieldUpdateCount() const { return fieldUpdates; }
    /// Where in the widget a press selects hue `point.x()` and blackness `point.y()`.
    QPointF getPositionOf(const QPointF& point) const;
    /// The hue (x) and blackness (y) edited; never null.
    const SharedPtr<Model<QPointF>>& getModel() const { return point; }

    void notify() override;
    QSize sizeHint() const override; ///< INITIAL_WIDTH × INITIAL_HEIGHT.

protected:
    void paintEvent(QPaintEvent* event) override; ///< Draws the cached field and the cross-hair at the model's point.
    void resizeEvent(QResizeEvent* event) override; ///< Makes the field again for the new size.
    void showEvent(QShowEvent* event) override; ///< Makes the field if it went out of date while hidden.
    /// A left press opens a change and sets the point under the cursor.
    void mousePressEvent(QMouseEvent* event) override;
    /// While pressed, sets the point under the cursor, clamped to the field.
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override; ///< Commits the change the press opened.
    /// Arrow keys move the point by one step, with Shift or Page Up/Down by ten; each press is one change.
    void keyPressEvent(QKeyEvent* event) override;

private:
    void drawCursor(QPainter& painter) const;
    void setFromPosition(const QPointF& position);

    SharedPtr<Model<QPointF>> point;
    QPixmap field;
    bool fieldOutdated = true;
    bool pressed = false;
    int fieldUpdates = 0;
};

/// The bar of all whitenesses (top to bottom) at the hue and blackness of the current colour.
class MARLIXLIBQT_EXPORT WhitenessPicker : public QWidget, public BaseWithModel
{
    Q_OBJECT

public:
    static constexpr int INITIAL_WIDTH = 32; ///< The preferred width in pixels.
    static constexpr int INITIAL_HEIGHT = 256; ///< The preferred height in pixels: one row per 0-255 step of whiteness.

    /// A bar on \p color; a null model throws StopException.
    explicit WhitenessPicker(SharedPtr<Model<QColorExtended>> color, QWidget* parent = nullptr);
    ~WhitenessPicker() override;

    /// Makes the bar again for the current size and colour; skipped while hidden.
    void calculateFade();

    const QPixmap& getBar() const { return bar; } ///< The cached bar; empty until it is first made.
    int getBarUpdateCount() const { return barUpdates; } ///< How often the bar was made.
    /// The y of the widget where a press selects `whiteness`.
    double getPositionOf(float whiteness) const;
    const SharedPtr<Model<QColorExtended>>& getModel() const { return color; } ///< The colour edited; never null.

    void notify() override;
    /// The size of the bar as first made: the cursor is drawn on the row of the 0-255 whiteness, which matches the
    /// mouse at this height.
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override; ///< Draws the cached bar and the cursor at the colour's whiteness.
    void resizeEvent(QResizeEvent* event) override; ///< Makes the bar again for the new size.
    void showEvent(QShowEvent* event) override; ///< Makes the bar if it went out of date while hidden.
    /// A left press opens a change and sets the whiteness under the cursor.
    void mousePressEvent(QMouseEvent* event) override;
    /// While pressed, sets the whiteness under the cursor, clamped to the bar.
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override; ///< Commits the change the press opened.
    /// Up and Down move the whiteness by one step, with Shift or Page Up/Down by ten; each press is one change.
    void keyPressEvent(QKeyEvent* event) override;

private:
    void drawCursor(QPainter& painter) const;
    void setFromPosition(double y);

    SharedPtr<Model<QColorExtended>> color;
    QPixmap bar;
    bool barOutdated = true;
    bool pressed = false;
    int barUpdates = 0;
};

/// The HWB panel: the hue-blackness field beside the whiteness bar, both on one colour model. The whiteness stays
/// as entered while the blackness goes to 1, so leaving black restores the colour's former whiteness.
class MARLIXLIBQT_EXPORT HwbColorPicker : public QFrame
{
    Q_OBJECT

public:
    /// The panel on \p color; a null model throws StopException.
    explicit HwbColorPicker(SharedPtr<Model<QColorExtended>> color, QWidget* parent = nullptr);
    ~HwbColorPicker() override;

    HueBlacknessPicker* getHueBlacknessPicker() const { return field; } ///< The hue-blackness field.
    WhitenessPicker* getWhitenessPicker() const { return whitenessBar; } ///< The whiteness bar.
    const SharedPtr<Model<QColorExtended>>& getColorModel() const { return color; } ///< The colour edited; never null.

private:
    SharedPtr<Model<QColorExtended>> color;
    HueBlacknessPicker* field = nullptr;
    WhitenessPicker* whitenessBar = nullptr;
};

} // namespace Marlix::Widgets
