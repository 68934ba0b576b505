#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <MarlixLib/base/Function.h>

#include <QPoint>
#include <QPointer>
#include <QString>

class QMenu;
class QObject;
class QWidget;

namespace Marlix::Widgets {

/// Mix-in of every editor: the right-click menu with "Reset to default", "Copy" and "Paste" of the value as text.
///
/// The editor derives from its Qt widget class first and from this class after it, passes `this` to the constructor
/// and hands over the functions it supports. The menu opens on the widget's context-menu event (when its policy is
/// Qt::DefaultContextMenu) and greys out every entry whose function is missing or does not apply at that moment:
/// Reset when the value already is the default, Reset and Paste when the editor is read-only or disabled, Paste when
/// the clipboard holds no text.
class MARLIXLIBQT_EXPORT CommonContextMenuOwner
{
public:
    /// Source text of the Reset entry, translated where the menu is made.
    static constexpr const char* RESET_TEXT
        = QT_TRANSLATE_NOOP("Marlix::Widgets::CommonContextMenuOwner", "Reset to default");
    /// Source text of the Copy entry.
    static constexpr const char* COPY_TEXT = QT_TRANSLATE_NOOP("Marlix::Widgets::CommonContextMenuOwner", "Copy");
    /// Source text of the Paste entry.
    static constexpr const char* PASTE_TEXT = QT_TRANSLATE_NOOP("Marlix::Widgets::CommonContextMenuOwner", "Paste");
    /// Object names of the menu and its entries, so hosts and tests can find them.
    static constexpr const char* MENU_OBJECT_NAME = "CommonContextMenu";
    static constexpr const char* RESET_OBJECT_NAME = "CommonContextMenu.Reset"; ///< Object name of the Reset entry.
    static constexpr const char* COPY_OBJECT_NAME = "CommonContextMenu.Copy"; ///< Object name of the Copy entry.
    static constexpr const char* PASTE_OBJECT_NAME = "CommonContextMenu.Paste"; ///< Object name of the Paste entry.

    /// Watches `widget` for context-menu events; the widget must outlive nothing but this owner (it is its own base).
    explicit CommonContextMenuOwner(QWidget* widget);
    virtual ~CommonContextMenuOwner();
    CommonContextMenuOwner(const CommonContextMenuOwner&) = delete;
    CommonContextMenuOwner& operator=(const CommonContextMenuOwner&) = delete;

    /// Sets the value to its default; usually one model set, so that it is one undo step.
    void setResetFunction(Function<void()> reset);
    /// Optional: tells whether the value already is the default, which greys "Reset to default" out.
    void setIsDefaultFunction(Function<bool()> isDefault);
    /// `getText` gives the value as text for "Copy"; `setText` parses a text for "Paste" and returns false, changing
    /// nothing, when the text is not a valid value.
    void setTextFunctions(Function<QString()> getText, Function<bool(const QString&)> setText);
    /// Optional: tells whether the value can be changed now (false for a read-only field). Without it, the editor is
    /// editable while the widget is enabled.
    void setEditableFunction(Function<bool()> isEditable);

    /// Whether "Reset to default" applies: a reset function, an editable value that is not the default.
    bool canReset() const;
    bool canCopy() const; ///< Whether "Copy" applies: the editor gave a text getter.
    /// Whether "Paste" applies: an editable value and text on the clipboard (whether it parses is only known on paste).
    bool canPaste() const;

    /// What the menu entries do; each returns whether it happened.
    bool resetToDefault();
    bool copyToClipboard() const; ///< Puts the value's text on the clipboard; false without a text getter or clipboard.
    /// Pastes the clipboard's text; false, changing nothing, when it does not apply or does not parse.
    bool pasteFromClipboard();
    /// Parses `text` as "Paste" would; false changes nothing.
    bool pasteText(const QString& text);

    /// Builds the menu as a child of the widget, with the entries enabled as they apply now. The caller owns it.
    QMenu* createContextMenu();
    /// Opens the menu at `globalPosition` without blocking; it deletes itself when it closes.
    QMenu* showContextMenu(const QPoint& globalPosition);

    /// The widget the menu belongs to; null once it is destroyed.
    QWidget* getContextMenuWidget() const { return menuWidget; }

protected:
    /// Lets an editor add its own entries below the common ones.
    virtual void extendContextMenu(QMenu& menu);

private:
    bool isValueEditable() const;

    QPointer<QWidget> menuWidget;
    QPointer<QObject> menuEventFilter;
    Function<void()> resetFunction;
    Function<bool()> isDefaultFunction;
    Function<QString()> textGetter;
    Function<bool(const QString&)> textSetter;
    Function<bool()> isEditableFunction;
};

} // namespace Marlix::Widgets
