#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLib/data/GenericPropertyAccessor.h>
#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QAbstractItemModel>

#include <cstdint>

namespace Marlix {

/// How a lister column shows its property. Only text cells are painted by the model; the others show editors.
enum class ListerValuePresentation : std::int32_t
{
    /// Plain text, left aligned; edited by a property editor on demand.
    Text = 0,
    /// A number, right aligned, with an editor in every cell.
    Number = 1,
    /// A centred editor (a check box, a colour swatch).
    Centered = 2,
    /// A centred value the user reads but does not edit.
    ReadOnly = 3,
    /// An editor that fills its cell (enumerations, references, vectors).
    Editor = 4,
    /// A column without a property: the row's action buttons.
    Actions = 5,
    /// The entity's name, left aligned, edited as text.
    Name = 8,
};

/// One column of a lister: its header, and the property path it shows.
struct ListerColumnDefinition
{
    String headerText; ///< Header label, already translated.
    String headerToolTip; ///< Header tooltip; empty shows none.
    ListerValuePresentation presentation = ListerValuePresentation::Text; ///< How the cells show and edit the property.
    /// The property shown, "." between the names of nested data objects; unused by `Actions` columns.
    String propertyPath;
    /// Width the column starts with, in device-independent pixels; 0 lets the view choose.
    int initialWidth = 0;
};

/// An entry of the per-row action menu of a lister.
struct ListerActionMenuItem
{
    String text; ///< Menu text, already translated.
    String toolTip; ///< Status-bar text of the entry; empty shows none.
    /// Runs the action on the row's entity.
    Function<void(const EntityHolder<Entity>&)> action;
    /// Whether the action applies to an entity; none means always.
    Function<bool(const Entity&)> isEnabled;
};

namespace Widgets {

/// A table of entities and their sub-entities, one column per property path. Cells hold no values: each is the
/// property of the row's entity at the column's path, read and written through a `GenericPropertyAccessor`, so an
/// edit in a cell is the same undoable action as in a property sheet. A row whose cells were read (data or accessor)
/// watches its entity from then on and reports changed cells by `dataChanged`, once per pass of the event loop.
class MARLIXLIBQT_EXPORT ListerModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    /// A model with `columns`, in that order, and `actionMenuItems` for the rows' action menu; it starts without rows.
    ListerModel(Stack<ListerColumnDefinition>&& columns, Stack<ListerActionMenuItem>&& actionMenuItems,
        QObject* parent = nullptr);
    ~ListerModel() override;

    /// Appends a top-level row; an empty holder or an entity that has a top-level row already changes nothing.
    void addTopLevelEntity(EntityHolder<Entity> entity);
    /// Inserts a top-level row before `row` (clamped to the row count), so that a row can come back where it was.
    void insertTopLevelEntity(EntityHolder<Entity> entity, int row);
    /// Appends sub-rows for `entities` under `parent`'s top-level row; empty holders, duplicates and entities already
    /// there are skipped, and nothing happens when `parent` has no top-level row.
    void addSubEntities(ArrayView<const EntityHolder<Entity>> entities, EntityHolder<Entity> parent);
    /// Removes `entity`'s top-level row with its sub-rows; nothing happens when it has none.
    void removeTopLevelEntity(EntityHolder<Entity> entity);
    /// Removes the sub-rows of `entities` under `parent`'s top-level row; unknown entities are skipped.
    void removeSubEntities(ArrayView<const EntityHolder<Entity>> entities, EntityHolder<Entity> parent);
    /// Moves a top-level row so that it ends at `row`; false (and nothing moved) for an unknown entity or row.
    bool moveTopLevelEntity(const Entity& entity, int row);
    /// Brings the top-level rows to exactly `entities`, in that order, with the fewest removals, insertions and moves;
    /// rows that stay keep their sub-entities.
    void setTopLevelEntities(ArrayView<const EntityHolder<Entity>> entities);
    /// The same for the sub-rows of `parent`'s top-level row.
    void setSubEntities(ArrayView<const EntityHolder<Entity>> entities, EntityHolder<Entity> parent);
    /// The entity whose edits the lister's master controls apply to all rows; it is shown as a row too.
    void setMasterEntity(EntityHolder<Entity> entity);
    EntityHolder<Entity> getMasterEntity() const; ///< The master entity; empty when none is set.

    /// Empty for an index that is not this model's or whose row is gone.
    EntityHolder<Entity> getEntity(const QModelIndex& index) const;
    /// Empty for an invalid index, an `Actions` column, or a row whose entity lacks the column's property.
    Optional<GenericPropertyAccessor> getPropertyAccessor(const QModelIndex& index) const;
    /// The definition of `column`; a column out of range is a programming error and raises the stop exception.
    const ListerColumnDefinition& getColumnDefinition(int column) const;
    /// The entries of every row's action menu, in menu order.
    const Stack<ListerActionMenuItem>& getActionMenuItems() const;
    /// Number of sub-rows under `entity`'s top-level row; 0 when it has none.
    int getChildrenCount(const Entity& entity) const;
    bool isTopLevel(const Entity& entity) const; ///< Whether `entity` has a top-level row.
    /// The index of the top-level row of `entity`, invalid when it has none.
    QModelIndex getTopLevelIndex(const Entity& entity, int column = 0) const;
    /// The entities of the top-level rows, in row order.
    Array<EntityHolder<Entity>> getTopLevelEntities() const;
    /// The sub-entities of `entity`'s top-level row, in row order.
    Array<EntityHolder<Entity>> getSubEntities(const Entity& entity) const;

    /// Number of column definitions, whatever `parent`.
    int columnCount(const QModelIndex& parent = {}) const override;
    /// Top-level rows at the root, sub-rows under a top-level row's first column, none elsewhere.
    int rowCount(const QModelIndex& parent = {}) const override;
    /// The cell at `row` and `column` under `parent`; invalid when there is none.
    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    /// The first-column index of a sub-row's top-level row; invalid for top-level rows.
    QModelIndex parent(const QModelIndex& index) const override;
    /// The cell of another column in the same row, without a lookup.
    QModelIndex sibling(int row, int column, const QModelIndex& index) const override;
    /// Selectable, enabled and editable, except cells of `ReadOnly` columns, which are not editable.
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// Text of Text and Name cells for display and tooltip (empty when it cannot be read), and the column's alignment.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    /// Header text, tooltip, bold font and centred alignment of horizontal sections.
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    /// The scene's units changed: cells that show units reformat.
    void sceneUnitsChanged();
    /// Rows under `parent` (the root when invalid) were removed and the model is consistent again.
    void rowsRemovingFinished(const QModelIndex& parent);
    /// A row's visibility may have changed; the view re-tests its rows. (The name is kept as hosts connect to it.)
    void updateTopLevelRowVisiblity();

private:
    QVariant getDisplayData(const QModelIndex& index) const;

    struct Impl;
    UniquePtr<Impl> impl;
};

} // namespace Widgets
} // namespace Marlix
