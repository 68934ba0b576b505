#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Flags.h>
#include <MarlixLib/base/FlatSet.h>
#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QByteArray>
#include <QFrame>
#include <QList>
#include <QPointer>
#include <QString>

#include <utility>

class QAction;
class QLabel;
class QMainWindow;
class QSplitter;
class QTabWidget;
class QToolButton;

namespace Marlix::Widgets {

class DockHeader;

/// A panel the user docks beside another, stacks with it as tabs, makes the main window's central widget or tears
/// off into a window of its own. The layout is the widget tree itself: splitters and `Tabber`s under the main window
/// or under floating windows, addressed by paths such as "MainWindow/H0/T1/Scene".
class MARLIXLIBQT_EXPORT Dock : public QFrame
{
    Q_OBJECT

public:
    /// The saved place of one dock: a registered data group ("DockData"), so a workspace is written with the
    /// framework's serialisation.
    struct Data
    {
        /// Tokens separated by "/": a top-level widget's name, then "H", "V" or "T" with the index of the child in
        /// that container for each level, then the dock's name.
        String path;
        /// The dock, or its tab, is hidden.
        bool hidden = false;
        /// `QWidget::saveGeometry` of a top-level window, or the sizes of the splitter the path reaches written with
        /// `QDataStream`.
        QByteArray geometry;

        friend bool operator==(const Data&, const Data&) = default; ///< Equal when path, visibility and geometry are.
    };

    /// Where `dock(target, area)` puts a dock relative to the target.
    enum class Area
    {
        None = 0, ///< Nowhere: the drop is refused.
        Left = 1, ///< Beside the target, on its left, in a horizontal splitter.
        Right = 2, ///< Beside the target, on its right, in a horizontal splitter.
        Top = 3, ///< Above the target, in a vertical splitter.
        Bottom = 4, ///< Below the target, in a vertical splitter.
        Tab = 5, ///< Stacked with the target as a tab.
    };

    /// How traverse() follows a path.
    enum class TraverseFlag
    {
        /// Create the splitters and tab widgets a path names but that do not exist.
        Create = 2,
    };

    /// An empty name gets "Dock#" and a number no other dock uses.
    explicit Dock(const QString& name = {});
    ~Dock() override; ///< Destroys the dock and its content; a container it leaves empty is tidied away afterwards.

    /// Shows \p widget under the header and owns it; the previous content is deleted. Null only removes it.
    void setWidget(QWidget* widget);
    QWidget* widget() const; ///< The content under the header; null when there is none.
    DockHeader* header() const { return dockHeader; } ///< The title row; owned by the dock.
    /// Shows and hides the dock; titled with the dock's window title.
    QAction* toggleViewAction() const { return toggleAction; }

    /// One record per dock of the layout, in the order of the trees ("MainWindow/H0/T1/Scene", or "Scene" alone with
    /// its window geometry when it floats), then one per level whose path ends with its window's name: a splitter
    /// with its sizes ("MainWindow/H0/MainWindow"), a tab widget with its current index, a window with its geometry
    /// ("MainWindow", "Floating#1.MainWindow"). Docks a host put into widgets of its own are not part of the layout.
    static Stack<Data> saveWorkspace();
    /// Puts every dock a record names where the record says. Returns the paths whose docks do not exist, so the host
    /// can create them and restore again. Malformed records are refused, each with a message added to `problems`;
    /// every dock stays reachable whatever the records say.
    static FlatSet<String> restoreWorkspace(ArrayView<const Data> records, Stack<String>* problems = nullptr);

    /// Makes getDockWithFocus() follow the application's focus; once per application object, later calls do nothing.
    static void connectOnFocusChangedSignal();
    /// The dock that last held the focus; null when the focus last went outside every dock.
    static Dock* getDockWithFocus();
    static const FlatSet<Dock*>& allDocks(); ///< Every dock that exists, floating, docked or hidden.
    /// Shows where a drop will land while a dock is dragged.
    static QWidget* overlay();

    /// Follows \p path (the tokens after the top-level widget's name) down from \p root: the widget reached and its
    /// index in its container, or (null, -1) when the path leads nowhere.
    static std::pair<QWidget*, int> traverse(QWidget* root, QList<QString> path, Flags<TraverseFlag> flags = {});
    static Dock* findDock(const QString& name); ///< The dock whose object name is \p name; null when there is none.
    /// The application's top-level main window, the one docks attach to; null when there is none.
    static QMainWindow* findMainWindow();
    /// The main window or floating window called \p name (the first token of a path); null when there is none.
    static QWidget* findTopLevelWidget(const QString& name);
    /// The widget a whole path names, top-level widget first; null when it leads nowhere.
    static QWidget* findWidget(const QList<QString>& path);
    /// The widget under a global position, in the window on top there; `exclude` and its children are ignored.
    static QWidget* widgetAt(const QPoint& globalPosition, QWidget* exclude);
    /// The dock or main window under a global position that a dock can be dropped on.
    static QWidget* dockableWidgetAt(const QPoint& globalPosition, QWidget* exclude);
    static QRect globalGeometry(QWidget& widget); ///< The widget's rectangle in global screen coordinates.
    /// Puts `widget` at `index` in a splitter, a tab widget, the main window (its central widget) or a plain parent.
    static void insertToParent(QWidget* parent, int index, QWidget* widget);
    /// Gives `widget` a new parent (none makes it a window) and keeps its window flags fit for where it lands.
    static void reparent(QWidget* widget, QWidget* parent);
    /// Wraps `widget` in a new splitter of `orientation` at its place, or returns its parent splitter of that
    /// orientation.
    static QSplitter* split(QWidget& widget, Qt::Orientation orientation);
    /// The tab widget of `dock`, made around it when it has none.
    static QTabWidget* tabify(Dock& dock);
    /// Takes a widget out of its container into a window of its own at the same place on screen.
    static void undock(QWidget& widget);
    /// The title of a container: the titles of its docks joined.
    static QString compositeTitle(QWidget* widget);
    /// Makes \p widget the central widget of \p window, taking it out of its container; the previous one floats.
    static void setCentralWidget(QMainWindow& window, QWidget& widget);
    /// The number of children of \p splitter not hidden; 0 for null.
    static int visibleChildrenCount(const QSplitter* splitter);
    static int visibleTabsCount(const QTabWidget* tabs); ///< The number of tabs of \p tabs not hidden; 0 for null.
    /// Records the dock that holds \p now; focus leaving the application changes nothing.
    static void onFocusChanged(QWidget* old, QWidget* now);

protected:
    /// Keeps the toggle action in step when a floating dock is shown or closed by its window.
    bool event(QEvent* event) override;
    /// Drags the dock by its header; Esc cancels a running drag wherever the focus is.
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// Carries title changes to the header, the action, the accessible name and the tab.
    void changeEvent(QEvent* event) override;
    void moveEvent(QMoveEvent* event) override; ///< Keeps the drop target under a floating dock that is being dragged.

private:
    friend class DockHeader;
    friend class Tabber;

    bool dock(QWidget* target, Area area);
    bool dock(const QList<QString>& path);
    void finishDocking();

    /// Shows or hides the dock where it sits (its tab in a tab widget) and keeps its containers and action in step.
    void applyVisibility(bool visible);
    void updateDrag(const QPoint& globalPosition);
    void endDrag(bool cancelled);

    DockHeader* dockHeader = nullptr;
    QPointer<QWidget> content;
    QAction* toggleAction = nullptr;

    // A drag starts on a press on the header and becomes one once the pointer passed the start-drag distance.
    bool pressed = false;
    bool dragging = false;
    QPoint pressPosition;
    QPoint lastPosition;
    // Where the pointer holds the dock, from its top-left corner, and where a floating dock was when the drag began.
    QPoint grabOffset;
    QPoint windowStart;
    QPointer<QWidget> dropTarget;
    Area dropArea = Area::None;
};

/// The title row of a `Dock`: its title and the undock button. Dragging it moves the dock.
class MARLIXLIBQT_EXPORT DockHeader : public QFrame
{
    Q_OBJECT

public:
    explicit DockHeader(Dock* dock); ///< The title row of \p dock, which owns it.

    QLabel* label() const { return titleLabel; } ///< The label showing the dock's title.
    QToolButton* button() const { return undockButton; } ///< The undock button; hidden while the dock floats.
    QSize minimumSizeHint() const override; ///< Room for the undock button: the title may shrink to nothing.

protected:
    void paintEvent(QPaintEvent* event) override; ///< Draws the row as the style draws a dock widget's title.

private:
    QLabel* titleLabel = nullptr;
    QToolButton* undockButton = nullptr;
};

} // namespace Marlix::Widgets
