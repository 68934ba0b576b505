#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/GroupLayout.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/lister/ListerHeader.h>
#include <MarlixLibQt/lister/ListerModel.h>
#include <MarlixLibQt/lister/ListerView.h>
#include <MarlixLibQt/lister/ListerViewDelegate.h>
#include <MarlixLibQt/widgets/entities/EntityWidget.h>

#include <QAbstractProxyModel>
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace Marlix::Widgets {

namespace {

constexpr const char* UNIT = "lister/ListerView";

/// The first column whose section is shown; 0 when every column is hidden.
int firstShownColumn(const QHeaderView& header)
{
    for (int visual = 0; visual < header.count(); ++visual) {
        const int logical = header.logicalIndex(visual);
        if (!header.isSectionHidden(logical))
            return logical;
    }
    return 0;
}

struct PersistentIndexHash
{
    std::size_t operator()(const QPersistentModelIndex& index) const { return qHash(index); }
};

} // namespace

ListerView::ListerView(ListerModel* model, SharedPtr<Model<Stack<bool>>> columnVisibility,
    SharedPtr<IPropertySheetHost> host, Function<void(bool)> selectionChanged, Function<void(int)> visibleRowsChanged,
    QWidget* parent)
    : QTreeView(parent)
    , listerModel(model)
    , columnVisibility(std::move(columnVisibility))
    , host(std::move(host))
    , onSelectionChanged(std::move(selectionChanged))
    , onVisibleRowsChanged(std::move(visibleRowsChanged))
{
    if (!listerModel || !this->columnVisibility || !this->host)
        Marlix::Detail::throwStopException(UNIT, __LINE__);
    listerHeader = new ListerHeader(this->columnVisibility, this);
    setHeader(listerHeader);
    delegate = new ListerViewDelegate(listerModel, this, this->host);
    setItemDelegate(delegate);
    setUniformRowHeights(true);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(DoubleClicked | EditKeyPressed);
    setAllColumnsShowFocus(true);
    setSortingEnabled(false);

    connect(listerHeader, &ListerHeader::columnVisibilityApplied, this, &ListerView::scheduleEditorsPass);
    connect(listerHeader, &QHeaderView::sectionResized, this, &ListerView::scheduleEditorsPass);
    connect(listerHeader, &QHeaderView::sectionMoved, this, &ListerView::scheduleEditorsPass);
    connect(this, &QTreeView::expanded, this, &ListerView::scheduleEditorsPass);
    connect(this, &QTreeView::collapsed, this, &ListerView::scheduleEditorsPass);
    connect(listerModel, &ListerModel::updateTopLevelRowVisiblity, this, &ListerView::updateTopLevelRowVisibility);
    setModel(listerModel);
}

ListerView::~ListerView() = default;

void ListerView::setModel(QAbstractItemModel* shown)
{
    for (const QMetaObject::Connection& connection : modelConnections)
        disconnect(connection);
    modelConnections.clear();
    rowsWithEditors.clear();
    QTreeView::setModel(shown);
    if (!shown)
        return;
    // Model changes that move rows under the display rectangle, and the master row, which edits every row listed.
    const auto rowsChanged = [this] {
        closeMasterRowEditors();
        scheduleEditorsPass();
    };
    modelConnections.push_back(
        connect(shown, &QAbstractItemModel::rowsRemoved, this, [this, rowsChanged](const QModelIndex& parent) {
            if (parent.isValid())
                updateSubRowVisibility(parent);
            else
                reportVisibleRows();
            rowsChanged();
        }));
    modelConnections.push_back(connect(shown, &QAbstractItemModel::rowsMoved, this, rowsChanged));
    modelConnections.push_back(connect(shown, &QAbstractItemModel::layoutChanged, this, rowsChanged));
    modelConnections.push_back(connect(shown, &QAbstractItemModel::modelReset, this, [this] {
        rowsWithEditors.clear();
        updateTopLevelRowVisibility();
        scheduleEditorsPass();
    }));
    // Columns start at the widths their definitions ask for; proxies keep the lister's columns.
    for (int column = 0, columns = std::min(shown->columnCount(), listerModel->columnCount()); column < columns;
         ++column)
        if (const int width = listerModel->getColumnDefinition(column).initialWidth; width > 0)
            header()->resizeSection(column, getDeviceIndependentPixels(width, this));
    updateTopLevelRowVisibility();
    scheduleEditorsPass();
}

QModelIndex ListerView::toListerIndex(const QModelIndex& index) const
{
    QModelIndex mapped = index;
    while (mapped.isValid() && mapped.model() != listerModel) {
        const auto* proxy = qobject_cast<const QAbstractProxyModel*>(mapped.model());
        if (!proxy)
            return {};
        mapped = proxy->mapToSource(mapped);
    }
    return mapped;
}

void ListerView::displayRectChanged(QRect rect, bool update)
{
    displayRect = rect;
    if (update) {
        // The host asks for the rows in view as they are now: a fresh sweep from the top, not the rest of one that
        // ran out of time, so flagged editors of the first rows are rebuilt however slow the last pass was.
        sweepContinues = false;
        syncEditors();
    }
}

void ListerView::updateAllEditorsState(EditorState state)
{
    const QAbstractItemModel* shown = model();
    if (!shown)
        return;
    for (int row = 0, rows = shown->rowCount(); row < rows; ++row) {
        updateEditorsState({}, row, row, state);
        const QModelIndex parent = shown->index(row, 0);
        const int children = shown->rowCount(parent);
        if (children > 0)
            updateEditorsState(parent, 0, children - 1, state);
    }
    if (state != EditorState::Open) {
        rowsWithEditors.clear();
        sweptRows.clear();
    }
}

void ListerView::refreshEditors()
{
    updateAllEditorsState(EditorState::Close);
    scheduleEditorsPass();
}

void ListerView::updateEditorsState(const QModelIndex& parent, int first, int last, EditorState state)
{
    QAbstractItemModel* shown = model();
    if (!shown)
        return;
    const int c0 = firstShownColumn(*header());
    const int columns = shown->columnCount(parent);
    for (int row = first; row <= last; ++row) {
        if (state == EditorState::Open) {
            if (displayRect.isEmpty() || isRowHidden(row, parent))
                continue;
            const QRect rect = visualRect(shown->index(row, c0, parent));
            if (!rect.isValid() || rect.bottom() < displayRect.top() || rect.top() > displayRect.bottom())
                continue;
        }
        bool opened = false;
        for (int column = 0; column < columns; ++column) {
            const QModelIndex cell = shown->index(row, column, parent);
            const QModelIndex listerCell = toListerIndex(cell);
            if (!cell.isValid() || !listerCell.isValid()
                || listerModel->getColumnDefinition(listerCell.column()).presentation == ListerValuePresentation::Text)
                continue;
            if (state != EditorState::Open || header()->isSectionHidden(column)) {
                closePersistentEditor(cell);
                continue;
            }
            if (alwaysResetEditor(cell))
                closePersistentEditor(cell);
            const bool fresh = !isPersistentEditorOpen(cell);
            openPersistentEditor(cell);
            opened = true;
            // Opening selects the editor's text as for typing, which a page of idle editors must not show.
            if (QWidget* editor = fresh ? indexWidget(cell) : nullptr) {
                if (auto* field = qobject_cast<QLineEdit*>(editor))
                    field->deselect();
                for (QLineEdit* field : editor->findChildren<QLineEdit*>())
                    field->deselect();
            }
        }
        if (opened)
            rowsWithEditors.push_back(QPersistentModelIndex(shown->index(row, 0, parent)));
    }
}

bool ListerView::alwaysResetEditor(const QModelIndex& index) const
{
    const Optional<GenericPropertyAccessor> accessor = listerModel->getPropertyAccessor(toListerIndex(index));
    if (!accessor || accessor->checkProperty() >= PropertyPathStatus::DoesNotResolve)
        return false;
    return accessor->getDefinition().getFlags().has(PropertyFlag::AlwaysRebuildEditor);
}

void ListerView::syncEditors()
{
    if (inPass || !model())
        return;
    inPass = true;
    if (!std::exchange(sweepContinues, false))
        sweptRows.clear();
    // Geometry must be current: rows inserted or expanded a moment ago are laid out only on demand.
    executeDelayedItemsLayout();
    // A page of real editors takes longer to build than a frame lasts: rows are opened from the top for at most
    // OPEN_BUDGET_MS, and the next pass, one event-loop turn later, goes on. Meanwhile the cells paint their values.
    QElapsedTimer clock;
    clock.start();
    bool unfinished = false;
    std::unordered_set<QPersistentModelIndex, PersistentIndexHash> inView;
    const int c0 = firstShownColumn(*header());
    if (!displayRect.isEmpty()) {
        const int top = std::max(displayRect.top(), 0);
        QModelIndex row = indexAt(QPoint(columnViewportPosition(c0), top));
        for (; row.isValid(); row = indexBelow(row)) {
            const QModelIndex first = row.siblingAtColumn(0);
            const QRect rect = visualRect(first.siblingAtColumn(c0));
            if (rect.top() > displayRect.bottom())
                break;
            const QPersistentModelIndex persistent(first);
            inView.insert(persistent);
            if (unfinished || sweptRows.contains(persistent))
                continue;
            updateEditorsState(first.parent(), first.row(), first.row(), EditorState::Open);
            sweptRows.insert(persistent);
            unfinished = clock.elapsed() >= OPEN_BUDGET_MS;
        }
    }
    Array<QPersistentModelIndex> kept;
    std::unordered_set<QPersistentModelIndex, PersistentIndexHash> seen;
    for (const QPersistentModelIndex& row : std::exchange(rowsWithEditors, {})) {
        if (!row.isValid() || !seen.insert(row).second)
            continue;
        if (inView.contains(row)) {
            kept.push_back(row);
        } else {
            updateEditorsState(row.parent(), row.row(), row.row(), EditorState::Close);
            sweptRows.remove(row);
        }
    }
    rowsWithEditors = std::move(kept);
    inPass = false;
    if (unfinished) {
        sweepContinues = true;
        scheduleEditorsPass();
    } else {
        sweptRows.clear();
        Q_EMIT editorsComplete();
    }
}

void ListerView::scheduleEditorsPass()
{
    if (passScheduled)
        return;
    passScheduled = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            passScheduled = false;
            followViewport();
        },
        Qt::QueuedConnection);
}

void ListerView::followViewport()
{
    // What the user sees of the viewport: nothing while hidden, and only the unclipped part inside a scroll area.
    // A sweep that ran out of time goes on from where it stopped.
    displayRect = isVisible() ? viewport()->visibleRegion().boundingRect() : QRect();
    syncEditors();
}

void ListerView::closeMasterRowEditors()
{
    const EntityHolder<Entity> master = listerModel->getMasterEntity();
    if (!master || !model())
        return;
    for (const QPersistentModelIndex& row : rowsWithEditors)
        if (row.isValid() && listerModel->getEntity(toListerIndex(row)) == master)
            updateEditorsState(row.parent(), row.row(), row.row(), EditorState::Close);
}

bool ListerView::isEntityListed(const Entity& entity)
{
    for (std::uint32_t index = 0, count = entity.getPropertyCount(); index < count; ++index) {
        const PropertyDefinition& definition = entity.getPropertyDefinition(index);
        const bool* isSwitch = definition.getUserData().get<bool>(ROW_SWITCH_ATTRIBUTE);
        if (isSwitch && *isSwitch) {
            const GenericProperty property = entity.getProperty(index);
            if (property.getTypeDefinition().isNative<bool>() && !property.get<bool>())
                return false;
        }
    }
    return true;
}

void ListerView::updateIthTopLevelRowVisiblity(int row)
{
    const QAbstractItemModel* shown = model();
    if (!shown || row < 0 || row >= shown->rowCount())
        return;
    const EntityHolder<Entity> entity = listerModel->getEntity(toListerIndex(shown->index(row, 0)));
    const bool hidden = entity && !isEntityListed(*entity);
    if (hidden != isRowHidden(row, {}))
        setRowHidden(row, {}, hidden);
}

void ListerView::updateSubRowVisibility(const QModelIndex& parent)
{
    const QAbstractItemModel* shown = model();
    if (!shown || !parent.isValid())
        return;
    const QModelIndex first = parent.siblingAtColumn(0);
    const int rows = shown->rowCount(first);
    for (int row = 0; row < rows; ++row) {
        const bool hidden = rows == 1;
        if (hidden != isRowHidden(row, first))
            setRowHidden(row, first, hidden);
    }
}

int ListerView::countVisibleTopLevelRows() const
{
    const QAbstractItemModel* shown = model();
    int visible = 0;
    for (int row = 0, rows = shown ? shown->rowCount() : 0; row < rows; ++row)
        visible += isRowHidden(row, {}) ? 0 : 1;
    return visible;
}

void ListerView::updateTopLevelRowVisibility()
{
    const QAbstractItemModel* shown = model();
    if (!shown)
        return;
    for (int row = 0, rows = shown->rowCount(); row < rows; ++row) {
        updateIthTopLevelRowVisiblity(row);
        updateSubRowVisibility(shown->index(row, 0));
    }
    reportVisibleRows();
    scheduleEditorsPass();
}

void ListerView::reportVisibleRows()
{
    const int visible = countVisibleTopLevelRows();
    if (visible == lastReportedRows)
        return;
    lastReportedRows = visible;
    if (onVisibleRowsChanged)
        onVisibleRowsChanged(visible);
}

void ListerView::rowsInserted(const QModelIndex& parent, int start, int end)
{
    QTreeView::rowsInserted(parent, start, end);
    if (parent.isValid()) {
        updateSubRowVisibility(parent);
    } else {
        for (int row = start; row <= end; ++row) {
            updateIthTopLevelRowVisiblity(row);
            updateSubRowVisibility(model()->index(row, 0));
        }
        reportVisibleRows();
    }
    closeMasterRowEditors();
    scheduleEditorsPass();
}

void ListerView::rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end)
{
    // The removed rows' editors go with them (the base releases them); their entries are dropped by the next pass.
    QTreeView::rowsAboutToBeRemoved(parent, start, end);
}

void ListerView::scrollContentsBy(int dx, int dy)
{
    QTreeView::scrollContentsBy(dx, dy);
    if (dy != 0 || dx != 0)
        followViewport();
}

void ListerView::resizeEvent(QResizeEvent* event)
{
    QTreeView::resizeEvent(event);
    scheduleEditorsPass();
}

void ListerView::updateGeometries()
{
    QTreeView::updateGeometries();
    // Called after every layout of the rows (expanding, hiding rows, resizing): the rows in view may have changed.
    scheduleEditorsPass();
}

void ListerView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    if (onSelectionChanged)
        onSelectionChanged(selectionModel() && selectionModel()->hasSelection());
}

QSize ListerView::minimumSizeHint() const
{
    // Room for the header and a few rows: a lister squeezed smaller shows no editor the user could use.
    const int row = std::max(sizeHintForRow(0), fontMetrics().height());
    return { getDeviceIndependentPixels(120, this), header()->sizeHint().height() + 3 * row + 2 * frameWidth() };
}

void ListerView::mousePressEvent(QMouseEvent* event)
{
    QTreeView::mousePressEvent(event);
    if (event->button() != Qt::RightButton)
        return;
    const QModelIndex index = indexAt(event->position().toPoint());
    const QPoint global = event->globalPosition().toPoint();
    const QWidget* under = QApplication::widgetAt(global);
    if (index.isValid() && (under == this || (under && under->parentWidget() == this)))
        openEntityMenu(index, global);
}

void ListerView::openEntityMenu(const QModelIndex& index, const QPoint& globalPosition)
{
    const EntityHolder<Entity> entity = listerModel->getEntity(toListerIndex(index));
    if (!entity)
        return;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addSection(EntityWidget::getEntityText(entity));
    for (const ListerActionMenuItem& item : listerModel->getActionMenuItems()) {
        QAction* action = menu->addAction(toQt(item.text));
        action->setStatusTip(toQt(item.toolTip));
        action->setEnabled(!item.isEnabled || item.isEnabled(*entity));
        connect(action, &QAction::triggered, this, [run = item.action, entity] {
            if (run)
                run(entity);
        });
    }
    const QModelIndex first = index.siblingAtColumn(0);
    if (model()->rowCount(first) > 1) {
        menu->addSeparator();
        QAction* toggle = menu->addAction(isExpanded(first) ? tr("Collapse") : tr("Expand"));
        connect(toggle, &QAction::triggered, this, [this, row = QPersistentModelIndex(first)] {
            if (row.isValid())
                setExpanded(row, !isExpanded(row));
        });
    }
    Q_EMIT entityMenuAboutToShow(menu, index);
    menu->popup(globalPosition);
}

bool ListerView::event(QEvent* event)
{
    const bool handled = QTreeView::event(event);
    switch (event->type()) {
    case QEvent::Show:
    case QEvent::Move:
    case QEvent::StyleChange:
    case QEvent::FontChange:
        // Row heights follow the style's row metric and the font, and inside a scroll area a move changes the part
        // the user sees: the rows in view change with them.
        scheduleEditorsPass();
        break;
    default:
        break;
    }
    return handled;
}

} // namespace Marlix::Widgets
