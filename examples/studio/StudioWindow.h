#pragma once

#include "StudioPage.h"

#include <QMainWindow>

class QListWidget;
class QStackedWidget;
class QUndoGroup;
class QUndoStack;

namespace Studio {

/// The studio's main window: a list of pages on the left, the current page on the right.
class StudioWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit StudioWindow(QWidget* parent = nullptr);

    int pageCount() const;
    void showPage(int index);
    /// The widget of the page shown now.
    QWidget* currentPageWidget() const;
    const Page& page(int index) const { return pages[static_cast<std::size_t>(index)]; }

private:
    std::vector<Page> pages;
    QListWidget* pageList;
    QStackedWidget* stack;
    /// The undo stack of each page, null for pages without one; the Edit menu acts on the current page's.
    std::vector<QUndoStack*> pageStacks;
    QUndoGroup* undoGroup;
};

} // namespace Studio
