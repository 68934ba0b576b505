#include "StudioWindow.h"

#include <QAction>
#include <QHBoxLayout>
#include <QListWidget>
#include <QMenuBar>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>

namespace Studio {

namespace {
constexpr int PAGE_LIST_WIDTH = 150;
}

StudioWindow::StudioWindow(QWidget* parent)
    : QMainWindow(parent)
    , pages(allPages())
    , pageList(new QListWidget)
    , stack(new QStackedWidget)
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
        stack->addWidget(page.create(stack));
    }
    connect(pageList, &QListWidget::currentRowChanged, stack, &QStackedWidget::setCurrentIndex);

    QMenu* fileMenu = menuBar()->addMenu(tr("&File"));
    QAction* quit = fileMenu->addAction(tr("&Quit"));
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, &QWidget::close);
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

} // namespace Studio
