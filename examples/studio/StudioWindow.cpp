#include "StudioWindow.h"

#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/docking/DockWorkspaceFile.h>

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QListWidget>
#include <QMenuBar>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>
#include <QUndoGroup>
#include <QUndoStack>
#include <QUndoView>

#include <algorithm>

using Marlix::Widgets::Dock;

namespace Studio {

namespace {

constexpr int PAGE_LIST_WIDTH = 150;
constexpr int UNDO_HISTORY_WIDTH = 220;
constexpr int PAGES_WIDTH = 1000;

/// The tab widgets that hold `widget`, innermost first, with the index of the tab that leads to it.
std::vector<std::pair<QTabWidget*, int>> tabsAround(QWidget* widget)
{
    std::vector<std::pair<QTabWidget*, int>> found;
    for (QWidget* w = widget ? widget->parentWidget() : nullptr; w && !w->isWindow(); w = w->parentWidget()) {
        if (auto* tabs = qobject_cast<QTabWidget*>(w)) {
            for (int i = 0; i < tabs->count(); ++i)
                if (tabs->widget(i) == widget || tabs->widget(i)->isAncestorOf(widget))
                    found.emplace_back(tabs, i);
        }
    }
    return found;
}

} // namespace

StudioWindow::StudioWindow(QWidget* parent)
    : MainWindow(parent)
    , pages(allPages())
    , undoGroup(new QUndoGroup(this))
    , pageList(new QListWidget)
{
    // Docks find the main window by its kind; workspace paths name it by this.
    setObjectName(QStringLiteral("MainWindow"));
    setWindowTitle(tr("Marlix Studio"));

    pageList->setAccessibleName(tr("Pages"));
    for (const Page& page : pages) {
        pageList->addItem(page.title);
        auto* dock = new Dock(page.screenshotName);
        dock->setWindowTitle(page.title);
        dock->installEventFilter(this);
        pageDocks.push_back(dock);
        pageWidgets.push_back(nullptr);
        pageStacks.push_back(nullptr);
    }
    pagesDock = new Dock(QStringLiteral("page-list"));
    pagesDock->setWindowTitle(tr("Pages"));
    pagesDock->setWidget(pageList);
    auto* history = new QUndoView(undoGroup);
    history->setEmptyLabel(tr("<empty>"));
    history->setAccessibleName(tr("Undo history"));
    undoDock = new Dock(QStringLiteral("undo-history"));
    undoDock->setWindowTitle(tr("Undo history"));
    undoDock->setWidget(history);
    connect(pageList, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row >= 0 && row != current)
            showPage(row);
    });
    // The Edit menu acts on the page the user works in.
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        for (std::size_t i = 0; now && i < pageDocks.size(); ++i)
            if (pageDocks[i]->isAncestorOf(now))
                makeCurrent(int(i));
    });

    QMenu* fileMenu = menuBar()->addMenu(tr("&File"));
    QAction* quit = fileMenu->addAction(tr("&Quit"));
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, &QWidget::close);
    QMenu* editMenu = menuBar()->addMenu(tr("&Edit"));
    QAction* undo = undoGroup->createUndoAction(editMenu, tr("&Undo"));
    undo->setShortcut(QKeySequence::Undo);
    QAction* redo = undoGroup->createRedoAction(editMenu, tr("&Redo"));
    redo->setShortcut(QKeySequence::Redo);
    editMenu->addAction(undo);
    editMenu->addAction(redo);
    // Every dock stays reachable from here, whatever the user closed.
    QMenu* viewMenu = menuBar()->addMenu(tr("&View"));
    viewMenu->addAction(pagesDock->toggleViewAction());
    viewMenu->addAction(undoDock->toggleViewAction());
    viewMenu->addSeparator();
    for (Dock* dock : pageDocks)
        viewMenu->addAction(dock->toggleViewAction());
    auto* layoutMenu = new QMenu(tr("&Layout"), this);
    connect(layoutMenu->addAction(tr("&Reset layout")), &QAction::triggered, this, &StudioWindow::resetLayout);
    addToInternalMenu(layoutMenu);
    statusBar()->showMessage(tr("Ready"));

    buildDefaultLayout();
    showPage(0);
}

StudioWindow::~StudioWindow() = default;

void StudioWindow::buildDefaultLayout()
{
    Dock& first = *pageDocks.front();
    Dock::setCentralWidget(*this, first);
    QTabWidget* tabs = Dock::tabify(first);
    for (std::size_t i = 1; i < pageDocks.size(); ++i)
        Dock::insertToParent(tabs, int(i), pageDocks[i]);
    QSplitter* row = Dock::split(*tabs, Qt::Horizontal);
    Dock::insertToParent(row, 0, pagesDock);
    Dock::insertToParent(row, row->count(), undoDock);
    row->setStretchFactor(row->indexOf(tabs), 1);
    row->setSizes({ Marlix::getDeviceIndependentPixels(PAGE_LIST_WIDTH, this),
        Marlix::getDeviceIndependentPixels(PAGES_WIDTH, this),
        Marlix::getDeviceIndependentPixels(UNDO_HISTORY_WIDTH, this) });
    // Kept as records, so that a reset moves the docks back from wherever the user put them, floating ones too.
    for (Dock::Data& record : Dock::saveWorkspace()) {
        // The window's own size and place are the user's, not the layout's.
        if (record.path != "MainWindow")
            defaultLayout.push_back(std::move(record));
    }
}

void StudioWindow::resetLayout()
{
    Dock::restoreWorkspace(defaultLayout);
    for (Dock* dock : Dock::allDocks())
        dock->toggleViewAction()->setChecked(true);
    showPage(std::max(current, 0));
}

int StudioWindow::pageCount() const
{
    return static_cast<int>(pages.size());
}

QWidget* StudioWindow::pageWidget(int index)
{
    if (index < 0 || index >= pageCount())
        return nullptr;
    const auto i = std::size_t(index);
    if (!pageWidgets[i]) {
        QWidget* content = pages[i].create(pageDocks[i]);
        pageDocks[i]->setWidget(content);
        pageWidgets[i] = content;
        // A page with a document of its own (a scene with undo) owns its QUndoStack.
        if (QUndoStack* stack = content->findChild<QUndoStack*>()) {
            undoGroup->addStack(stack);
            pageStacks[i] = stack;
            if (index == current)
                undoGroup->setActiveStack(stack);
        }
    }
    return pageWidgets[i];
}

void StudioWindow::showPage(int index)
{
    if (index < 0 || index >= pageCount())
        return;
    Dock* dock = pageDocks[std::size_t(index)];
    pageWidget(index);
    dock->toggleViewAction()->setChecked(true);
    const auto around = tabsAround(dock);
    for (const auto& [tabs, tab] : around)
        tabs->setCurrentIndex(tab);
    if (dock->window() != this) {
        dock->window()->raise();
        dock->window()->activateWindow();
    }
    makeCurrent(index);
}

void StudioWindow::makeCurrent(int index)
{
    current = index;
    const QSignalBlocker blocker(pageList);
    pageList->setCurrentRow(index);
    undoGroup->setActiveStack(pageStacks[std::size_t(index)]);
}

QWidget* StudioWindow::currentPageWidget() const
{
    return current >= 0 ? pageWidgets[std::size_t(current)] : nullptr;
}

void StudioWindow::closeEvent(QCloseEvent* event)
{
    if (workspaceFile) {
        // Written while every window still shows, so the records say what the user saw.
        const auto saved = Marlix::Widgets::saveWorkspaceFile(*workspaceFile, Dock::saveWorkspace());
        if (!saved)
            qWarning("marlix-studio: the workspace was not saved: %s", saved.error().c_str());
    }
    event->accept();
    // Floating docks are windows too; closing the main window ends the studio all the same.
    QCoreApplication::quit();
}

bool StudioWindow::eventFilter(QObject* watched, QEvent* event)
{
    // A page is made when its dock first shows: a tab the user raises, a dock the View menu brings back.
    if (event->type() == QEvent::Show) {
        const auto found = std::find(pageDocks.begin(), pageDocks.end(), watched);
        if (found != pageDocks.end())
            pageWidget(int(found - pageDocks.begin()));
    }
    return MainWindow::eventFilter(watched, event);
}

} // namespace Studio
