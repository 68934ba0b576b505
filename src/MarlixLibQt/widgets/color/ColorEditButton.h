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
    explicit ColorEditButton(
        SharedPtr<Model<Rgb>> color, ColorFormat format = ColorFormat::Rgb, QWidget* parent = nullptr);
    ~ColorEditButton() override;

    ColorFormat getColorFormat() const { return format; }
    void setDialogTitle(const QString& title) { dialogTitle = title; }
    const QString& getDialogTitle() const { return dialogTitle; }

    /// The colour as the swatch shows it (display-encoded).
    QColor getShownColor() const;

    /// Opens the modal dialog on the model's colour and writes the model if the user accepts.
    void openDialog();

    void notify() override;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The dialog is open and about to run; a host may place or configure it.
    void dialogOpened(Marlix::Widgets::ColorPickerDialog* dialog);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    SharedPtr<Model<Rgb>> model;
    ColorFormat format;
    QString dialogTitle;
};

} // namespace Marlix::Widgets
