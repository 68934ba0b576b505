#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/lister/ListerModel.h>
#include <MarlixLibQt/lister/ListerProxy.h>

#include <cmath>

namespace Marlix::Widgets {

namespace {
/// How a cell sorts: by number where the property is one, else by its text; a cell without a property sorts last.
struct SortKey
{
    enum class Kind
    {
        Number,
        Text,
        None,
    };
    Kind kind = Kind::None;
    double number = 0.0;
    QString text;
};

SortKey sortKeyOf(const ListerModel& model, const QModelIndex& index)
{
    SortKey key;
    try {
        const Optional<GenericPropertyAccessor> accessor = model.getPropertyAccessor(index);
        if (!accessor)
            return key;
        const GenericProperty property = accessor->getProperty();
        if (property.getTypeDefinition().isNumber()) {
            key.kind = SortKey::Kind::Number;
            key.number = property.read<double>();
        } else {
            key.kind = SortKey::Kind::Text;
            key.text = toQt(accessor->toString());
        }
    } catch (const std::exception&) {
        key.kind = SortKey::Kind::None; // a value that cannot be read sorts with the cells that have none
    }
    return key;
}
} // namespace

ListerProxy::ListerProxy(QObject* parent)
    : QSortFilterProxyModel(parent)
{
    // A changed name can bring back the top-level row of a sub-entity that was filtered out with its row.
    connect(this, &QSortFilterProxyModel::sourceModelChanged, this, [this] {
        if (!sourceModel())
            return;
        connect(sourceModel(), &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex& topLeft, const QModelIndex& bottomRight) {
                const int column = nameColumn();
                if (!nameFilter.isEmpty() && topLeft.parent().isValid() && topLeft.column() <= column
                    && column <= bottomRight.column())
                    invalidateRowsFilter();
            });
    });
}

ListerProxy::~ListerProxy() = default;

void ListerProxy::setListerModel(ListerModel* model)
{
    setSourceModel(model);
}

ListerModel* ListerProxy::getListerModel() const
{
    return qobject_cast<ListerModel*>(sourceModel());
}

void ListerProxy::setNameFilter(const QString& text)
{
    if (text == nameFilter)
        return;
    nameFilter = text;
    invalidateRowsFilter();
}

EntityHolder<Entity> ListerProxy::getEntity(const QModelIndex& index) const
{
    const ListerModel* model = getListerModel();
    return model ? model->getEntity(mapToLister(index)) : nullptr;
}

Optional<GenericPropertyAccessor> ListerProxy::getPropertyAccessor(const QModelIndex& index) const
{
    const ListerModel* model = getListerModel();
    return model ? model->getPropertyAccessor(mapToLister(index)) : Optional<GenericPropertyAccessor>();
}

QModelIndex ListerProxy::mapToLister(const QModelIndex& index) const
{
    return index.model() == this ? mapToSource(index) : QModelIndex();
}

QModelIndex ListerProxy::mapFromLister(const QModelIndex& index) const
{
    return index.model() == sourceModel() && sourceModel() ? mapFromSource(index) : QModelIndex();
}

bool ListerProxy::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const ListerModel* model = getListerModel();
    if (!model)
        return false;
    const SortKey a = sortKeyOf(*model, left);
    const SortKey b = sortKeyOf(*model, right);
    if (a.kind != b.kind)
        return a.kind < b.kind;
    switch (a.kind) {
    case SortKey::Kind::Number:
        // Not-a-number sorts after every number, so that the order stays strict.
        if (std::isnan(a.number) || std::isnan(b.number))
            return !std::isnan(a.number) && std::isnan(b.number);
        return a.number < b.number;
    case SortKey::Kind::Text:
        return QString::localeAwareCompare(a.text, b.text) < 0;
    case SortKey::Kind::None:
        return false;
    }
    return false;
}

bool ListerProxy::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    const ListerModel* model = getListerModel();
    if (nameFilter.isEmpty() || !model)
        return true;
    const QModelIndex index = model->index(sourceRow, 0, sourceParent);
    const EntityHolder<Entity> master = model->getMasterEntity();
    if (master && !sourceParent.isValid() && model->getEntity(index) == master)
        return true;
    if (nameMatches(index))
        return true;
    if (sourceParent.isValid())
        return nameMatches(sourceParent);
    for (int row = 0, rows = model->rowCount(index); row < rows; ++row)
        if (nameMatches(model->index(row, 0, index)))
            return true;
    return false;
}

bool ListerProxy::nameMatches(const QModelIndex& sourceIndex) const
{
    const ListerModel* model = getListerModel();
    if (const int column = nameColumn(); column >= 0)
        return model->data(sourceIndex.siblingAtColumn(column)).toString().contains(nameFilter, Qt::CaseInsensitive);
    const EntityHolder<Entity> entity = model->getEntity(sourceIndex);
    if (!entity || !isResolved(entity->checkPropertyPath(NAME_PROPERTY)))
        return false;
    try {
        const String name
            = entity->visitProperty(NAME_PROPERTY, [](const GenericProperty& property) { return property.toString(); });
        return toQt(name).contains(nameFilter, Qt::CaseInsensitive);
    } catch (const std::exception&) {
        return false;
    }
}

int ListerProxy::nameColumn() const
{
    const ListerModel* model = getListerModel();
    for (int column = 0, columns = model ? model->columnCount() : 0; column < columns; ++column)
        if (model->getColumnDefinition(column).presentation == ListerValuePresentation::Name)
            return column;
    return -1;
}

} // namespace Marlix::Widgets
