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

    explicit ListerProxy(QObject* parent = nullptr);
    ~ListerProxy() override;

    void setListerModel(ListerModel* model);
    ListerModel* getListerModel() const;

    /// Rows whose entity name holds `text`, in any case; an empty text shows every row. The master row always shows.
    void setNameFilter(const QString& text);
    QString getNameFilter() const { return nameFilter; }

    /// The entity of a row of this proxy; empty for an index that is not this proxy's.
    EntityHolder<Entity> getEntity(const QModelIndex& index) const;
    Optional<GenericPropertyAccessor> getPropertyAccessor(const QModelIndex& index) const;
    QModelIndex mapToLister(const QModelIndex& index) const;
    QModelIndex mapFromLister(const QModelIndex& index) const;

    void setSourceModel(QAbstractItemModel* model) override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;
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
