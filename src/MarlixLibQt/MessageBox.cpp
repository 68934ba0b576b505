#include <MarlixLibQt/MessageBox.h>

#include <MarlixLibQt/Icons.h>
#include <MarlixLibQt/QtUtils.h>

#include <MarlixLib/base/Exception.h>

#include <QAbstractButton>
#include <QCoreApplication>
#include <QPushButton>

#include <array>

namespace Marlix {

void showMessageBox(QMessageBox::Icon icon, StringView title, StringView text, StringView details,
                    ArrayView<const MessageBoxButton> buttons, const QIcon& windowIcon, QWidget* parent)
{
    if (buttons.empty())
        throw Exception("A message box needs at least one button.");
    QMessageBox box(icon, toQt(title), toQt(text), QMessageBox::NoButton, parent);
    box.setWindowIcon(windowIcon.isNull() ? getVelkinIcon() : windowIcon);
    if (!details.empty())
        box.setDetailedText(toQt(details));
    Array<QAbstractButton*> made;
    for (const MessageBoxButton& button : buttons) {
        made.push_back(box.addButton(button.text, button.role));
        if (button.role == QMessageBox::AcceptRole && !box.defaultButton())
            box.setDefaultButton(static_cast<QPushButton*>(made.back()));
    }
    box.exec();

    const QAbstractButton* clicked = box.clickedButton();
    for (std::size_t i = 0; i < made.size(); ++i) {
        const bool chosen = clicked ? made[i] == clicked : buttons[i].role == QMessageBox::RejectRole;
        if (chosen) {
            if (buttons[i].onClicked)
                buttons[i].onClicked();
            return;
        }
    }
}

void showOkMessageBox(QMessageBox::Icon icon, StringView title, StringView text, StringView details,
                      const QIcon& windowIcon, QWidget* parent)
{
    const MessageBoxButton ok { QCoreApplication::translate("Marlix::MessageBox", "OK"), QMessageBox::AcceptRole, {} };
    showMessageBox(icon, title, text, details, ArrayView<const MessageBoxButton>(&ok, 1), windowIcon, parent);
}

bool showOkCancelMessageBox(QMessageBox::Icon icon, StringView title, StringView text, StringView details,
                            const QIcon& windowIcon, QWidget* parent)
{
    return runOkCancelMessageBoxImpl([&](ArrayView<const MessageBoxButton> buttons) {
        showMessageBox(icon, title, text, details, buttons, windowIcon, parent);
    });
}

bool runOkCancelMessageBoxImpl(const Function<void(ArrayView<const MessageBoxButton>)>& show)
{
    if (!show)
        Detail::throwStopException("MessageBox", __LINE__);
    bool accepted = false;
    const std::array<MessageBoxButton, 2> buttons = {
        MessageBoxButton { QCoreApplication::translate("Marlix::MessageBox", "OK"), QMessageBox::AcceptRole,
                           [&accepted] { accepted = true; } },
        MessageBoxButton { QCoreApplication::translate("Marlix::MessageBox", "Cancel"), QMessageBox::RejectRole,
                           [&accepted] { accepted = false; } },
    };
    show(buttons);
    return accepted;
}

} // namespace Marlix
