#include "StudioWindow.h"

#include <QAction>
#include <QHBoxLayout>
#include <QListWidget>
#include <QMenuBar>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QUndoGroup>
#include <QUndoStack>

namespace Studio {

namespace {
constexpr int PAGE_LIST_WIDTH = 150;
}

StudioWindow::StudioWindow(QWidget* parent)
    : QMainWindow(parent)
    , pages(allPages())
    , pageList(new QListWidget)
    , stack(new QStackedWidget)
    , undoGroup(new QUndoGroup(this))
{
    setWindowTitle(tr("Marlix Studio"));

    auto* splitter = new QSplitter(this);
    splitter->addWidget(pageList);
    splitter->addWidget(stack);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({ PAGE_LIST_WIDTH, 1000 });
    setCentralWidget(splitter);

    for (const Page& page : pages) {
        pageList->addItem(page.title);
        QWidget* content = page.create(stack);
        stack->addWidget(content);
        // A page with a document of its own (a scene with undo) owns its QUndoStack.
        QUndoStack* pageStack = content->findChild<QUndoStack*>();
        if (pageStack)
            undoGroup->addStack(pageStack);
        pageStacks.push_back(pageStack);
    }
    connect(pageList, &QListWidget::currentRowChanged, this, [this](int row) {
        stack->setCurrentIndex(row);
        undoGroup->setActiveStack(row >= 0 ? pageStacks[std::size_t(row)] : nullptr);
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
    statusBar()->showMessage(tr("Ready"));

    showPage(0);
}

int StudioWindow::pageCount() const
{
    return static_cast<int>(pages.size());
}

void StudioWindow::showPage(int index)
{
    pageList->setCurrentRow(index);
}

QWidget* StudioWindow::currentPageWidget() const
{
    return stack->currentWidget();
}

} // namespace Studio
