#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/CommonContextMenuOwner.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QCheckBox>

namespace Marlix::Widgets {

/// A check box bound to a boolean model; its context menu resets it to the default and copies "true" or "false".
class MARLIXLIBQT_EXPORT CheckBox : public QCheckBox, public BaseWithModel, public CommonContextMenuOwner
{
    Q_OBJECT

public:
    /// A null model makes the box keep its own value, starting at `defaultValue`.
    CheckBox(SharedPtr<Model<bool>> model, bool defaultValue, const QString& text, QWidget* parent = nullptr);
    ~CheckBox() override;

    /// The value shown; the box's own model when it was made without one.
    const SharedPtr<Model<bool>>& getModel() const { return model; }
    bool getDefaultValue() const { return defaultValue; } ///< The value "Reset to default" sets.

    void notify() override;

    /// Reads "true"/"false", "1"/"0", "yes"/"no" and "on"/"off" in any letter case; empty for anything else.
    static Optional<bool> parseBool(const QString& text);

private:
    void showValue(bool value);

    SharedPtr<Model<bool>> model;
    bool defaultValue;
};

} // namespace Marlix::Widgets
