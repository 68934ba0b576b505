#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QPersistentModelIndex>
#include <QSet>
#include <QTreeView>

class QMenu;

namespace Marlix::Widgets {

class IPropertySheetHost;
class ListerHeader;
class ListerModel;
class ListerViewDelegate;

/// A table of entities whose cells are real property editors, open only on the rows the user can see.
///
/// The view keeps persistent editors exactly on the editor cells of the visible rows inside its display rectangle:
/// it follows its own viewport (scrolling, resizing, expanding, hiding rows or columns) and closes the editors of
/// rows that left it, so a lister of ten thousand rows holds a page of editors. The view may show the
/// `ListerModel` directly or through proxies over it (sorting, filtering): indexes are mapped to the model's.
///
/// Rows: a top-level row is hidden while one of its entity's bool properties flagged with ROW_SWITCH_ATTRIBUTE is
/// false; a top-level row with exactly one sub-entity shows no sub-row (it reads as a plain row).
class MARLIXLIBQT_EXPORT ListerView : public QTreeView
{
    Q_OBJECT

public:
    /// Open (or refresh) the editors of the rows in view, or close them.
    enum class EditorState : int
    {
        Open = 0, ///< Open the editors, refreshing those that always rebuild.
        Close = 1, ///< Close the editors.
    };

    /// The longest an editors pass spends opening editors before it lets a frame be painted and goes on later.
    static constexpr int OPEN_BUDGET_MS = 5;

    /// User data key of a bool property definition (stored as `bool` true) whose value switches its entity's row:
    /// the row is hidden while the property is false. Entities without such a property are always listed.
    static constexpr StringView ROW_SWITCH_ATTRIBUTE = "Zorva.Ui.ListerRowSwitch";

    /// `selectionChanged` is told whether any row is selected, `visibleRowsChanged` the number of visible top-level
    /// rows; either may be empty. A null model or host is a programming error.
    ListerView(ListerModel* model, SharedPtr<Model<Stack<bool>>> columnVisibility, SharedPtr<IPropertySheetHost> host,
        Function<void(bool)> selectionChanged, Function<void(int)> visibleRowsChanged, QWidget* parent = nullptr);
    ~ListerView() override;

    /// Shows `model`, which must be the lister's model or a chain of proxies over it.
    void setModel(QAbstractItemModel* model) override;

    /// The lister model at the end of the proxy chain; never null.
    ListerModel* getListerModel() const { return listerModel; }
    /// The header, which hides and shows columns through the column-visibility model.
    ListerHeader* getHeader() const { return listerHeader; }
    ListerViewDelegate* getDelegate() const { return delegate; } ///< The delegate that makes the cell editors.
    /// One flag per column, shared with the header; a missing flag means shown.
    const SharedPtr<Model<Stack<bool>>>& getColumnVisibility() const { return columnVisibility; }
    /// The host the cell editors are made with; never null.
    const SharedPtr<IPropertySheetHost>& getPropertySheetHost() const { return host; }

    /// The part of the viewport the user sees. With `update`, editors open on the rows in it and close elsewhere.
    void displayRectChanged(QRect rect, bool update);
    QRect getDisplayRect() const { return displayRect; } ///< The display rectangle, in viewport coordinates.
    /// Whether an editors pass waits for the event loop: the editors of the rows in view are then not all open yet.
    bool isEditorsPassPending() const { return passScheduled; }

    /// Opens or closes the editors of every row, sub-rows included; with Open, rows hidden or outside the display
    /// rectangle are skipped.
    void updateAllEditorsState(EditorState state);
    /// Rebuilds every open editor, for when what the editors address changed (the rows a master row edits).
    void refreshEditors();
    /// Opens (refreshing those that ask for it) or closes the editors of rows `first` to `last` under `parent`, an
    /// index of the shown model; with Open, rows that are hidden or outside the display rectangle are skipped.
    void updateEditorsState(const QModelIndex& parent, int first, int last, EditorState state);

    /// An index of the shown model mapped through the proxies to the lister's model.
    QModelIndex toListerIndex(const QModelIndex& index) const;
    /// Whether `index` (of the shown model) has its editor rebuilt whenever editors are refreshed.
    bool alwaysResetEditor(const QModelIndex& index) const;

    /// Hides or shows top-level row `row` (of the shown model) by its row switches; rows out of range are ignored.
    void updateIthTopLevelRowVisiblity(int row);
    /// Hides the sub-row of a top-level row that has exactly one, shows the sub-rows of others.
    void updateSubRowVisibility(const QModelIndex& parent);
    int countVisibleTopLevelRows() const; ///< Number of top-level rows not hidden, the master row included.
    /// Whether the entity passes the row-visibility test (see ROW_SWITCH_ATTRIBUTE).
    static bool isEntityListed(const Entity& entity);

    QSize minimumSizeHint() const override; ///< Room for the header and three rows.

public Q_SLOTS:
    /// Tests every row's visibility again, reports the count and schedules an editors pass.
    void updateTopLevelRowVisibility();

Q_SIGNALS:
    /// An editors pass ended with every editor of the rows in view open.
    void editorsComplete();
    /// The entity menu is about to open on `menu`; owners add their own entries.
    void entityMenuAboutToShow(QMenu* menu, const QModelIndex& index);

protected:
    /// A right click on a row opens the entity menu: the model's actions, expanding and entityMenuAboutToShow().
    void mousePressEvent(QMouseEvent* event) override;
    bool event(QEvent* event) override; ///< Schedules an editors pass when shown, moved, or the style or font changed.
    /// Applies row visibility to the new rows and schedules an editors pass.
    void rowsInserted(const QModelIndex& parent, int start, int end) override;
    /// The base releases the removed rows' editors.
    void rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end) override;
    /// Follows the viewport: editors open on rows scrolled in and close on rows scrolled out.
    void scrollContentsBy(int dx, int dy) override;
    void resizeEvent(QResizeEvent* event) override; ///< Schedules an editors pass.
    void updateGeometries() override; ///< Schedules an editors pass after every layout of the rows.
    /// Reports to the selection function whether any row is selected.
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    /// Left and Right go from cell to cell of the selected row, folding and unfolding it past the first and last.
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    /// Enter or F2 hands the focus to the current cell's editor; Escape in an editor gives it back to the rows.
    void keyPressEvent(QKeyEvent* event) override;
    /// Tab goes along the current row's editors, then leaves the lister; Shift+Tab from the first returns to the rows.
    bool focusNextPrevChild(bool next) override;

private:
    /// Hands the focus to the editor of a cell of the shown model (to its last field with `lastField`); false when it
    /// has none that takes it.
    bool focusEditor(const QModelIndex& index, bool lastField = false);
    /// The cell whose editor holds `widget`.
    QModelIndex editorCellOf(const QWidget* widget) const;
    /// Runs the editors pass once control returns to the event loop; calls before that are merged.
    void scheduleEditorsPass();
    /// Takes the display rectangle from what the viewport shows and brings the editors in line with it.
    void followViewport();
    /// Opens the editors of the rows in view and closes those of every other row that has some.
    void syncEditors();
    void closeMasterRowEditors();
    void reportVisibleRows();
    void openEntityMenu(const QModelIndex& index, const QPoint& globalPosition);

    ListerModel* listerModel = nullptr;
    SharedPtr<Model<Stack<bool>>> columnVisibility;
    SharedPtr<IPropertySheetHost> host;
    Function<void(bool)> onSelectionChanged;
    Function<void(int)> onVisibleRowsChanged;
    QRect displayRect;

    ListerHeader* listerHeader = nullptr;
    ListerViewDelegate* delegate = nullptr;
    /// Rows (column 0 of the shown model) that may hold open editors: what the closing pass walks.
    Array<QPersistentModelIndex> rowsWithEditors;
    /// Rows the passes of one sweep have brought up to date. A pass that runs out of time leaves the rest to the
    /// next, which goes on from there instead of starting over: rebuilding the editors that always rebuild in the
    /// first rows could otherwise take every pass's whole time on a slow machine, and the sweep never end.
    QSet<QPersistentModelIndex> sweptRows;
    bool sweepContinues = false;
    Array<QMetaObject::Connection> modelConnections;
    bool passScheduled = false;
    bool inPass = false;
    int lastReportedRows = -1;
};

} // namespace Marlix::Widgets
