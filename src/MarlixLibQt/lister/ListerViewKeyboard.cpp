#include <MarlixLibQt/lister/ListerView.h>

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>

// The lister by keyboard alone: arrows go from cell to cell, Enter or F2 hands the focus to the cell's editor (or opens
// one on a text cell), Tab goes through the editors of the current row in the order the columns are shown, Escape
// comes back from an editor to the rows.
namespace Marlix::Widgets {

namespace {

bool takesTab(const QWidget* widget)
{
    return widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus);
}

/// The widget of an editor that takes the focus: itself, the widget it forwards the focus to, or its first field
/// (its last one when the focus comes back from the next cell).
QWidget* focusTarget(QWidget* editor, bool lastField)
{
    QWidget* target = editor;
    while (target->focusProxy())
        target = target->focusProxy();
    QList<QWidget*> fields;
    for (QWidget* child : editor->findChildren<QWidget*>()) {
        if (!child->focusProxy() && takesTab(child))
            fields.append(child);
    }
    if (lastField && !fields.isEmpty())
        return fields.back();
    if (takesTab(target))
        return target;
    return fields.isEmpty() ? nullptr : fields.front();
}

} // namespace

QModelIndex ListerView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    // Rows are selected whole, yet Left and Right go from cell to cell as in a table; past the first or the last
    // shown column they fold and unfold the row as in a tree.
    const QModelIndex current = currentIndex();
    if ((action == MoveLeft || action == MoveRight) && current.isValid()) {
        const int step = action == MoveRight ? 1 : -1;
        const QHeaderView* columns = header();
        for (int visual = columns->visualIndex(current.column()) + step; visual >= 0 && visual < columns->count();
             visual += step) {
            const int logical = columns->logicalIndex(visual);
            if (!columns->isSectionHidden(logical))
                return current.siblingAtColumn(logical);
        }
    }
    return QTreeView::moveCursor(action, modifiers);
}

bool ListerView::focusEditor(const QModelIndex& index, bool lastField)
{
    QWidget* editor = index.isValid() ? indexWidget(index) : nullptr;
    QWidget* target = editor ? focusTarget(editor, lastField) : nullptr;
    if (!target)
        return false;
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    target->setFocus(Qt::TabFocusReason);
    return true;
}

QModelIndex ListerView::editorCellOf(const QWidget* widget) const
{
    // Editors are children of the viewport that cover their cells.
    while (widget && widget->parentWidget() != viewport())
        widget = widget->parentWidget();
    return widget ? indexAt(widget->geometry().center()) : QModelIndex();
}

void ListerView::keyPressEvent(QKeyEvent* event)
{
    const QModelIndex current = currentIndex();
    const int key = event->key();
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    const bool inEditor = QApplication::focusWidget() != this;
    if (plain && key == Qt::Key_Escape && inEditor) {
        // An editor that leaves Escape alone hands the focus back to the rows.
        setFocus(Qt::ShortcutFocusReason);
        event->accept();
        return;
    }
    // Keys an editor passes on (a field confirms with Enter and ignores it) stay with that editor.
    if (plain && !inEditor && state() != EditingState
        && (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_F2)) {
        if (focusEditor(current) || edit(current, EditKeyPressed, event)) {
            event->accept();
            return;
        }
    }
    QTreeView::keyPressEvent(event);
}

bool ListerView::focusNextPrevChild(bool next)
{
    QWidget* focus = QApplication::focusWidget();
    // Qt also moves the focus on when the focused widget is hidden or disabled (an editor closed as its row left the
    // view): that is no Tab of the user's and must not scroll the view to another cell.
    if (!focus || !(focus == this || isAncestorOf(focus)) || !focus->isVisible() || !focus->isEnabled()
        || state() == EditingState)
        return QTreeView::focusNextPrevChild(next);
    // From the rows, Tab enters the current row's editors and Shift+Tab leaves; from an editor, Tab goes on along
    // the row, and Shift+Tab from its first editor goes back to the rows.
    const QModelIndex from = focus == this ? currentIndex() : editorCellOf(focus);
    if (QWidget* editor = focus == this || !from.isValid() ? nullptr : indexWidget(from)) {
        // The fields of one editor (the components of a vector) come one after the other first.
        for (QWidget* widget = next ? focus->nextInFocusChain() : focus->previousInFocusChain();
             widget && widget != focus && editor->isAncestorOf(widget);
             widget = next ? widget->nextInFocusChain() : widget->previousInFocusChain()) {
            if (!widget->focusProxy() && takesTab(widget)) {
                widget->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
                return true;
            }
        }
    }
    if (focus != this || next) {
        const QHeaderView* columns = header();
        const int step = next ? 1 : -1;
        const int start = focus == this || !from.isValid() ? 0 : columns->visualIndex(from.column()) + step;
        for (int visual = start; from.isValid() && visual >= 0 && visual < columns->count(); visual += step) {
            const int logical = columns->logicalIndex(visual);
            if (!columns->isSectionHidden(logical) && focusEditor(from.siblingAtColumn(logical), !next))
                return true;
        }
        if (!next) {
            setFocus(Qt::BacktabFocusReason);
            return true;
        }
    }
    // Out of the lister, to the next widget outside it in the window's order, as if it had no editors inside.
    for (QWidget* widget = next ? nextInFocusChain() : previousInFocusChain(); widget && widget != this;
         widget = next ? widget->nextInFocusChain() : widget->previousInFocusChain()) {
        if (!isAncestorOf(widget) && widget->window() == window() && !widget->focusProxy() && takesTab(widget)) {
            widget->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    }
    return QTreeView::focusNextPrevChild(next);
}

} // namespace Marlix::Widgets
