#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Container.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/properties/UiPathFlags.h>

#include <MarlixLib/base/Function.h>

class QLineEdit;
class QToolButton;

namespace Marlix::Widgets {

/// A file or directory path: a text field to type it and a browse button that asks the host to pick one.
class MARLIXLIBQT_EXPORT Path : public Container, public BaseWithModel
{
    Q_OBJECT

public:
    /// Lets the user pick a path for `flags`, starting at the current one; empty when the user cancels.
    using BrowseFunction = Function<Optional<Io::Path>(const UiPathFlags&, Optional<Io::Path>)>;

    static constexpr const char* BROWSE_TEXT = "..."; ///< The text of the browse button.
    static constexpr const char* BROWSE_TOOLTIP = QT_TR_NOOP("Browse"); ///< Source text of the browse tooltip.

    /// Reads the UiPathFlags of `userData` (a file to open when there are none); a stored mode that is not one of
    /// the three raises the stop exception. Without a browse function the button is hidden. A null model makes the
    /// field keep its own path.
    Path(SharedPtr<Model<Io::Path>> model, BrowseFunction browse, const UserData& userData, QWidget* parent = nullptr);
    ~Path() override;

    /// The path shown; the field's own model when it was made without one.
    const SharedPtr<Model<Io::Path>>& getModel() const { return model; }
    /// The path flags read from the user data: file or directory, open or save, filters.
    const UiPathFlags& getPathFlags() const { return flags; }

    QLineEdit* lineEdit() const { return field; } ///< The text field; the model is written when its editing finishes.
    QToolButton* browseButton() const { return button; } ///< The browse button; hidden without a browse function.

    /// Opens the host's picker and writes the chosen path; returns whether one was chosen.
    bool browse();

    void notify() override;

    static QString toText(const Io::Path& path); ///< The path as it is typed, in the platform's separators.
    static Io::Path fromText(const QString& text); ///< A typed text as a path, without surrounding white space.

private:
    void writeModel(const Io::Path& path);

    SharedPtr<Model<Io::Path>> model;
    BrowseFunction browseFunction;
    UiPathFlags flags;
    QLineEdit* field = nullptr;
    QToolButton* button = nullptr;
};

} // namespace Marlix::Widgets
