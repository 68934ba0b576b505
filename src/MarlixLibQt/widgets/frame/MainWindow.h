#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QMainWindow>

class QAction;
class QMenu;
class QMenuBar;

namespace Marlix::Widgets {

/// The application's main window, the one that docks attach to, with a second small menu bar at the right end of its
/// menu bar for the application's own (internal) menus.
class MARLIXLIBQT_EXPORT MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// An empty main window; the internal menu bar appears with its first menu.
    explicit MainWindow(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~MainWindow() override; ///< Destroys the window with its docks and menus.

    /// Adds `menu` to the internal menu bar, made on first use as the top-right corner widget of the menu bar.
    /// Returns the menu's action; null when the menu is null or the corner holds some other widget.
    QAction* addToInternalMenu(QMenu* menu);
    /// The internal menu bar; null until the first menu is added (or when the corner holds some other widget).
    QMenuBar* internalMenuBar() const;
};

} // namespace Marlix::Widgets
