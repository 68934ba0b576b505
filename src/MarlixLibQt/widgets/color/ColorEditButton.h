#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/color/ColorPickerWidget.h>
#include <MarlixLibQt/widgets/Model.h>

#include <MarlixLib/color/Rgb.h>

#include <QString>
#include <QToolButton>

namespace Marlix::Widgets {

class ColorPickerDialog;

/// A swatch of a linear colour that opens the colour dialog when clicked; the model is written once, when the
/// dialog is accepted.
class MARLIXLIBQT_EXPORT ColorEditButton : public QToolButton, public BaseWithModel
{
    Q_OBJECT

public:
    /// A swatch of \p color (never null, else StopException); \p format decides whether the dialog offers alpha.
    explicit ColorEditButton(
        SharedPtr<Model<Rgb>> color, ColorFormat format = ColorFormat::Rgb, QWidget* parent = nullptr);
    ~ColorEditButton() override;

    ColorFormat getColorFormat() const { return format; } ///< Whether the dialog offers alpha (Rgba) or not.
    /// The title of the dialog it opens; "Select Color" (translated) by default.
    void setDialogTitle(const QString& title) { dialogTitle = title; }
    const QString& getDialogTitle() const { return dialogTitle; } ///< The title of the dialog it opens.

    /// The colour as the swatch shows it (display-encoded).
    QColor getShownColor() const;

    /// Opens the modal dialog on the model's colour and writes the model if the user accepts.
    void openDialog();

    void notify() override;

    QSize sizeHint() const override; ///< A 40 × 20 pixel swatch at 96 DPI.
    QSize minimumSizeHint() const override; ///< The same as sizeHint(): the swatch does not shrink.

Q_SIGNALS:
    /// The dialog is open and about to run; a host may place or configure it.
    void dialogOpened(Marlix::Widgets::ColorPickerDialog* dialog);

protected:
    /// Draws the button and the swatch, over a checkerboard where the colour is translucent.
    void paintEvent(QPaintEvent* event) override;

private:
    SharedPtr<Model<Rgb>> model;
    ColorFormat format;
    QString dialogTitle;
};

} // namespace Marlix::Widgets
