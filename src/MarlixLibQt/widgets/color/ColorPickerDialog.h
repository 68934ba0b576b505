#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/color/ColorPickerWidget.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QDialog>

class QDialogButtonBox;

namespace Marlix::Widgets {

/// A modal dialog around a ColorPickerWidget with OK and Cancel. All colour dialogs of the process show the same kind
/// of numbers: they share one value-type model.
class MARLIXLIBQT_EXPORT ColorPickerDialog : public QDialog
{
    Q_OBJECT

public:
    static constexpr const char* DEFAULT_TITLE = QT_TR_NOOP("Select Color"); ///< Source text of the window title.

    /// A dialog on white, showing the shared value type; \p format decides whether alpha is offered.
    explicit ColorPickerDialog(QWidget* parent = nullptr, ColorFormat format = ColorFormat::Rgba);
    ~ColorPickerDialog() override;

    /// The value type (a ColorValueType as integer) that every colour dialog made from now on shows.
    static SharedPtr<Model<long long>> getGlobalValueTypeModel();
    /// Replaces the shared value type for dialogs made from now on; a null model stops the program.
    static void setGlobalValueTypeModel(SharedPtr<Model<long long>> model);

    /// The chosen colour, linear, opaque when the format has no alpha.
    Rgb value() const { return picker->value(); }
    /// The colour the dialog starts from.
    void setValue(const Rgb& rgb) { picker->setValue(rgb); }

    ColorPickerWidget* getPickerWidget() const { return picker; } ///< The picker inside the dialog.
    QDialogButtonBox* getButtonBox() const { return buttons; } ///< The OK and Cancel buttons.

private:
    ColorPickerWidget* picker = nullptr;
    QDialogButtonBox* buttons = nullptr;
};

} // namespace Marlix::Widgets
