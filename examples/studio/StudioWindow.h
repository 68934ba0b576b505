#pragma once

#include "StudioPage.h"

#include <MarlixLib/base/Aliases.h>
#include <MarlixLibQt/widgets/docking/Dock.h>
#include <MarlixLibQt/widgets/frame/MainWindow.h>

class QListWidget;
class QUndoGroup;
class QUndoStack;

namespace Studio {

/// The studio's main window. Every page is a dock, named after its screenshot and titled like it: by default all
/// are tabbed together in the middle, with the page list on the left and the undo history on the right; the user
/// rearranges, tabs and floats them at will.
class StudioWindow : public Marlix::Widgets::MainWindow
{
    Q_OBJECT

public:
    explicit StudioWindow(QWidget* parent = nullptr);
    ~StudioWindow() override;

    int pageCount() const;
    /// Brings the page's dock to the front (its tab raised, its window activated) and makes the page current.
    void showPage(int index);
    /// The widget of the page shown last.
    QWidget* currentPageWidget() const;
    /// The widget of a page, made on first use.
    QWidget* pageWidget(int index);
    const Page& page(int index) const { return pages[static_cast<std::size_t>(index)]; }
    Marlix::Widgets::Dock* pageDock(int index) const { return pageDocks[static_cast<std::size_t>(index)]; }
    Marlix::Widgets::Dock* undoHistoryDock() const { return undoDock; }

    /// Puts every dock back where it starts: the pages tabbed in the middle, the page list and the undo history
    /// beside them, all shown.
    void resetLayout();
    /// The workspace is written to this file when the window closes; none writes nothing.
    void setWorkspaceFile(Marlix::Optional<Marlix::Io::Path> file) { workspaceFile = std::move(file); }

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildDefaultLayout();
    void makeCurrent(int index);

    std::vector<Page> pages;
    std::vector<Marlix::Widgets::Dock*> pageDocks;
    /// The page widgets, null until first shown.
    std::vector<QWidget*> pageWidgets;
    /// The undo stack of each page, null for pages without one (or not made yet).
    std::vector<QUndoStack*> pageStacks;
    QUndoGroup* undoGroup;
    QListWidget* pageList;
    Marlix::Widgets::Dock* pagesDock;
    Marlix::Widgets::Dock* undoDock;
    Marlix::Stack<Marlix::Widgets::Dock::Data> defaultLayout;
    Marlix::Optional<Marlix::Io::Path> workspaceFile;
    int current = -1;
};

} // namespace Studio
