#pragma once

#include <MarlixLibQt/widgets/docking/Dock.h>

#include <QStringList>
#include <QWidget>

class QTabWidget;

// Helpers shared by the files of the docking layout; not part of the library's interface.

namespace Marlix::Widgets {

class Tabber;

/// A floating window that holds a group of docks: the root splitter or tab widget made when something is docked onto
/// a floating dock. Its name ends with "MainWindow", so workspace records of its own level read like the main
/// window's.
class DockWindow : public QWidget
{
    Q_OBJECT

public:
    explicit DockWindow(const QString& name);
    ~DockWindow() override;

    QWidget* root() const { return rootWidget; }
    /// Puts `widget` in the window; the previous root, if any, is handed back unparented.
    QWidget* setRoot(QWidget* widget);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QPointer<QWidget> rootWidget;
};

namespace DockDetail {

inline constexpr const char* UNIT = "widgets/Dock";
/// The token of the main window in paths, and the suffix that marks a record of a window's or container's own level.
inline const QString MAIN_WINDOW_TOKEN = QStringLiteral("MainWindow");

Qt::WindowFlags floatingFlags();
/// The splitter, tab widget, main window or dock window whose slot holds `widget`; null for windows and widgets
/// placed by other means.
QWidget* containerOf(const QWidget* widget);
bool isSplitterOrTabs(const QWidget* widget);
/// The main window or a dock window: a top-level with one slot for its root.
bool isFrame(const QWidget* widget);
int childCount(const QWidget* container);
QWidget* childAt(const QWidget* container, int index);
int indexIn(const QWidget* container, const QWidget* child);
/// "H", "V" or "T"; empty for anything else.
QString kindToken(const QWidget* container);
/// A level token split into its kind letter and index; false when `token` is not one.
bool parseLevelToken(const QString& token, QChar* kind, int* index);
QSplitter* makeSplitter(Qt::Orientation orientation);

/// Takes `widget` out of its container, leaving it without a parent; the container is not tidied.
void takeOut(QWidget& widget);
/// Puts `replacement` in the slot of `widget`, which is left without a parent.
void replaceInContainer(QWidget* container, QWidget& widget, QWidget& replacement);
/// Removes empty containers from `container` upwards, folds containers of one child into their parent, and turns a
/// dock window that holds a single dock back into that floating dock.
void tidy(QWidget* container);
/// Takes `widget` out of its place and tidies what it leaves behind.
void detach(QWidget& widget);

/// The empty widget that stands in for a central widget taken away, or for a missing dock while a workspace is read.
QWidget* makePlaceholder();
bool isPlaceholder(const QWidget* widget);

/// The path tokens of `widget`: its top-level's name, the level tokens of its containers, its own name.
QStringList pathOf(const QWidget& widget);
/// The token that names the top-level `frame` in paths.
QString frameToken(const QWidget& frame);
DockWindow* makeDockWindow(const QString& name, const QRect& geometry);
/// Every dock window that exists, in the order they were made.
const QList<DockWindow*>& dockWindows();
QString nextDockWindowName();

void setTabTitle(QTabWidget& tabs, int index, const QString& title);
/// Retitles the tabs and the dock window that show `widget`'s title, from it up to its window.
void updateTitles(QWidget* widget);
/// While a workspace is restored the roots of the windows stay hidden, so that no tab bar or splitter lays itself
/// out for each dock that comes or goes; they show once the trees are whole.
extern int restoring;
/// Remembers a tab widget whose new tabs wait for their undock buttons until the restore ends.
void deferUndockButtons(Tabber& tabs);
/// Gives the waiting tab widgets their buttons; the restore calls it as it ends.
void addDeferredUndockButtons();
/// The drop overlay when it exists, without making it.
QWidget* currentOverlay();
/// Whether `dock` shows where it sits: not hidden, its tab visible, its window not closed.
bool isShown(const Dock& dock);
/// Shows the containers of `widget` that hold something visible and hides those that do not, up to its window.
void updateContainerVisibility(QWidget* widget);

} // namespace DockDetail

} // namespace Marlix::Widgets
