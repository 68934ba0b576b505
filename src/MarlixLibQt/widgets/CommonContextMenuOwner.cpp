#include <MarlixLibQt/widgets/CommonContextMenuOwner.h>

#include <QClipboard>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QMenu>
#include <QWidget>

namespace Marlix::Widgets {

namespace {

/// Catches the context-menu event before the widget's own handler, so that Qt's standard text menu of line edits and
/// spin boxes gives way to the common one.
class ContextMenuFilter final : public QObject
{
public:
    ContextMenuFilter(QWidget* widget, CommonContextMenuOwner* owner)
        : QObject(widget)
        , owner(owner)
    {
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::ContextMenu)
            return false;
        auto* widget = qobject_cast<QWidget*>(watched);
        // A widget that asked for a custom menu or none keeps what it asked for.
        if (!widget || widget->contextMenuPolicy() != Qt::DefaultContextMenu)
            return false;
        owner->showContextMenu(static_cast<QContextMenuEvent*>(event)->globalPos());
        event->accept();
        return true;
    }

private:
    CommonContextMenuOwner* owner;
};

QString clipboardText()
{
    const QClipboard* clipboard = QGuiApplication::clipboard();
    return clipboard ? clipboard->text() : QString();
}

} // namespace

CommonContextMenuOwner::CommonContextMenuOwner(QWidget* widget)
    : menuWidget(widget)
{
    if (!widget)
        return;
    auto* filter = new ContextMenuFilter(widget, this);
    widget->installEventFilter(filter);
    menuEventFilter = filter;
}

CommonContextMenuOwner::~CommonContextMenuOwner()
{
    // The widget part outlives this base for a moment; the filter must not reach a destroyed owner.
    delete menuEventFilter.data();
}

void CommonContextMenuOwner::setResetFunction(Function<void()> function)
{
    resetFunction = std::move(function);
}

void CommonContextMenuOwner::setIsDefaultFunction(Function<bool()> function)
{
    isDefaultFunction = std::move(function);
}

void CommonContextMenuOwner::setTextFunctions(Function<QString()> getter, Function<bool(const QString&)> setter)
{
    textGetter = std::move(getter);
    textSetter = std::move(setter);
}

void CommonContextMenuOwner::setEditableFunction(Function<bool()> function)
{
    isEditableFunction = std::move(function);
}

bool CommonContextMenuOwner::isValueEditable() const
{
    if (isEditableFunction)
        return isEditableFunction();
    return !menuWidget || menuWidget->isEnabled();
}

bool CommonContextMenuOwner::canReset() const
{
    return resetFunction && isValueEditable() && !(isDefaultFunction && isDefaultFunction());
}

bool CommonContextMenuOwner::canCopy() const
{
    return static_cast<bool>(textGetter);
}

bool CommonContextMenuOwner::canPaste() const
{
    return textSetter && isValueEditable() && !clipboardText().isEmpty();
}

bool CommonContextMenuOwner::resetToDefault()
{
    if (!canReset())
        return false;
    resetFunction();
    return true;
}

bool CommonContextMenuOwner::copyToClipboard() const
{
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (!canCopy() || !clipboard)
        return false;
    clipboard->setText(textGetter());
    return true;
}

bool CommonContextMenuOwner::pasteFromClipboard()
{
    if (!canPaste())
        return false;
    return pasteText(clipboardText());
}

bool CommonContextMenuOwner::pasteText(const QString& text)
{
    if (!textSetter || !isValueEditable())
        return false;
    // Values copied from other programs often carry blanks or a line break, which are never part of a value.
    return textSetter(text.trimmed());
}

QMenu* CommonContextMenuOwner::createContextMenu()
{
    auto* menu = new QMenu(menuWidget);
    menu->setObjectName(QString::fromLatin1(MENU_OBJECT_NAME));

    QAction* resetAction
        = menu->addAction(QCoreApplication::translate("Marlix::Widgets::CommonContextMenuOwner", RESET_TEXT));
    resetAction->setObjectName(QString::fromLatin1(RESET_OBJECT_NAME));
    resetAction->setEnabled(canReset());
    QObject::connect(resetAction, &QAction::triggered, menu, [this] { resetToDefault(); });

    menu->addSeparator();

    QAction* copyAction
        = menu->addAction(QCoreApplication::translate("Marlix::Widgets::CommonContextMenuOwner", COPY_TEXT));
    copyAction->setObjectName(QString::fromLatin1(COPY_OBJECT_NAME));
    copyAction->setEnabled(canCopy());
    QObject::connect(copyAction, &QAction::triggered, menu, [this] { copyToClipboard(); });

    QAction* pasteAction
        = menu->addAction(QCoreApplication::translate("Marlix::Widgets::CommonContextMenuOwner", PASTE_TEXT));
    pasteAction->setObjectName(QString::fromLatin1(PASTE_OBJECT_NAME));
    pasteAction->setEnabled(canPaste());
    QObject::connect(pasteAction, &QAction::triggered, menu, [this] { pasteFromClipboard(); });

    extendContextMenu(*menu);
    return menu;
}

QMenu* CommonContextMenuOwner::showContextMenu(const QPoint& globalPosition)
{
    QMenu* menu = createContextMenu();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(globalPosition);
    return menu;
}

void CommonContextMenuOwner::extendContextMenu(QMenu&) { }

} // namespace Marlix::Widgets
