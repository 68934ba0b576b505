#include <MarlixLibQt/widgets/frame/MainWindow.h>

#include <QLoggingCategory>
#include <QMenu>
#include <QMenuBar>

namespace Marlix::Widgets {

namespace {

Q_LOGGING_CATEGORY(mainWindowLog, "marlix.libqt.mainwindow")

} // namespace

MainWindow::MainWindow(QWidget* parent, Qt::WindowFlags flags)
    : QMainWindow(parent, flags)
{
}

MainWindow::~MainWindow() = default;

QAction* MainWindow::addToInternalMenu(QMenu* menu)
{
    if (!menu) {
        qCWarning(mainWindowLog, "No menu to add to the internal menu bar.");
        return nullptr;
    }
    QMenuBar* bar = menuBar();
    if (!bar->cornerWidget(Qt::TopRightCorner)) {
        auto* internal = new QMenuBar(bar);
        // It lives inside the window's menu bar; a native (global) menu bar would take it out of the corner.
        internal->setNativeMenuBar(false);
        internal->setAccessibleName(tr("Internal menu"));
        bar->setCornerWidget(internal, Qt::TopRightCorner);
    }
    QMenuBar* internal = internalMenuBar();
    return internal ? internal->addMenu(menu) : nullptr;
}

QMenuBar* MainWindow::internalMenuBar() const
{
    // menuBar() would make a menu bar just to look into it.
    auto* bar = qobject_cast<QMenuBar*>(menuWidget());
    return bar ? qobject_cast<QMenuBar*>(bar->cornerWidget(Qt::TopRightCorner)) : nullptr;
}

} // namespace Marlix::Widgets
