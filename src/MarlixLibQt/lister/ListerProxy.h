#pragma once

#include <MarlixLib/data/GenericPropertyAccessor.h>
#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QSortFilterProxyModel>

namespace Marlix::Widgets {

class ListerModel;

/// Sorts a lister by one of its columns and filters it by entity name, keeping its rows and sub-rows apart: sub-rows
/// sort among themselves, and a row stays when its own name or the name of one of its sub-entities matches.
class MARLIXLIBQT_EXPORT ListerProxy : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    /// The property read as an entity's name when the lister has no name column.
    static constexpr const char* NAME_PROPERTY = "name";

    explicit ListerProxy(QObject* parent = nullptr); ///< A proxy without a source; set one with setListerModel().
    ~ListerProxy() override;

    void setListerModel(ListerModel* model); ///< Shows `model`; null detaches the proxy.
    /// The source as a lister model; null when the source is none or another model.
    ListerModel* getListerModel() const;

    /// Rows whose entity name holds `text`, in any case; an empty text shows every row. The master row always shows.
    void setNameFilter(const QString& text);
    QString getNameFilter() const { return nameFilter; } ///< The text rows are filtered by; empty when none.

    /// The entity of a row of this proxy; empty for an index that is not this proxy's.
    EntityHolder<Entity> getEntity(const QModelIndex& index) const;
    /// The accessor of the cell under `index` of this proxy; empty where the lister model gives none.
    Optional<GenericPropertyAccessor> getPropertyAccessor(const QModelIndex& index) const;
    /// The lister model's index of `index`; invalid for an index that is not this proxy's.
    QModelIndex mapToLister(const QModelIndex& index) const;
    /// This proxy's index of `index` of the lister model; invalid for an index of another model or a row filtered out.
    QModelIndex mapFromLister(const QModelIndex& index) const;

    void setSourceModel(QAbstractItemModel* model) override; ///< Forgets cached sort keys, then shows `model`.
    /// Sorts by `column` with sort keys read afresh.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

protected:
    /// Compares the cells' values: numbers numerically and before texts, texts in natural, case-insensitive order,
    /// cells without a readable value last. The master row leads in either order.
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;
    /// Accepts rows whose own name, parent's name or one of whose sub-entities' names holds the filter text.
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private:
    struct SortKeys;

    bool nameMatches(const QModelIndex& sourceIndex) const;
    int nameColumn() const;

    QString nameFilter;
    UniquePtr<SortKeys> sortKeys;
    QList<QMetaObject::Connection> sourceConnections;
};

} // namespace Marlix::Widgets
