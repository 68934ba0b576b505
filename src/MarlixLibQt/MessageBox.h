#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>

#include <QIcon>
#include <QMessageBox>
#include <QString>

class QWidget;

namespace Marlix {

/// One button of a message box: its text, its role (which decides its place and the Escape key), and what a click
/// does.
struct MARLIXLIBQT_EXPORT MessageBoxButton
{
    QString text; ///< The label, already translated.
    /// Where the button goes; the reject role also answers Escape and closing the box.
    QMessageBox::ButtonRole role = QMessageBox::AcceptRole;
    Function<void()> onClicked; ///< Run when the button is chosen; may be empty.
};

/// Shows a modal message box with the given buttons and runs the action of the one the user clicks. Closing the box
/// without a button counts as the button with the reject role, if there is one. `details` may be empty; a null
/// `windowIcon` means the product icon.
MARLIXLIBQT_EXPORT void showMessageBox(QMessageBox::Icon icon, StringView title, StringView text, StringView details,
                                       ArrayView<const MessageBoxButton> buttons, const QIcon& windowIcon,
                                       QWidget* parent);

/// A message with one OK button.
MARLIXLIBQT_EXPORT void showOkMessageBox(QMessageBox::Icon icon, StringView title, StringView text, StringView details,
                                         const QIcon& windowIcon, QWidget* parent);

/// A question with OK and Cancel; true when the user chose OK.
MARLIXLIBQT_EXPORT bool showOkCancelMessageBox(QMessageBox::Icon icon, StringView title, StringView text,
                                               StringView details, const QIcon& windowIcon, QWidget* parent);

/// The OK / Cancel logic apart from the box: `show` gets the two buttons and must run the action of at most one of
/// them. True when it ran OK's. Hosts with their own dialogs (and tests) call it with their own `show`.
MARLIXLIBQT_EXPORT bool runOkCancelMessageBoxImpl(const Function<void(ArrayView<const MessageBoxButton>)>& show);

} // namespace Marlix
