#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/CommonContextMenuOwner.h>
#include <MarlixLibQt/widgets/Model.h>

#include <MarlixLib/base/Flags.h>

#include <QLineEdit>

#include <cstdint>

namespace Marlix::Widgets {

/// A one-line text field bound to a string model. A read-only field takes the window colour as background, so that
/// it reads as a label that can still be selected and copied.
class MARLIXLIBQT_EXPORT LineEdit : public QLineEdit, public BaseWithModel, public CommonContextMenuOwner
{
    Q_OBJECT

public:
    /// How the field behaves, given once at construction.
    enum class Option : std::uint32_t {
        /// Starts read-only (see setReadOnly).
        ReadOnly = 1 << 0,
        /// Writes the model on every keystroke; otherwise once when editing finishes (Return or focus loss), so a
        /// property-backed model gets one undo step per edit.
        UpdateWhileTyping = 1 << 1,
        /// Shows the clear button inside the field.
        ClearButton = 1 << 2,
    };

    /// A null model makes the field keep its own text, starting at `defaultValue`.
    LineEdit(SharedPtr<Model<String>> model, const String& defaultValue, Flags<Option> options = {},
        QWidget* parent = nullptr);
    ~LineEdit() override;

    /// The text shown; the field's own model when it was made without one.
    const SharedPtr<Model<String>>& getModel() const { return model; }
    Flags<Option> getOptions() const { return options; } ///< The options given at construction.

    /// Switches read-only and the background: the default palette's Window colour when read-only, its Base colour
    /// when editable.
    void setReadOnly(bool readOnly);

    void notify() override;

private:
    void showValue(const String& value);
    void writeModel();

    SharedPtr<Model<String>> model;
    String defaultValue;
    Flags<Option> options;
};

} // namespace Marlix::Widgets
