#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/lister/ListerModel.h>
#include <MarlixLibQt/lister/ListerProxy.h>

#include <QCollator>

#include <cmath>
#include <unordered_map>

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
    Optional<QCollatorSortKey> text;
};
/// Case folded, and digit runs padded to one width, so that plain collation orders "object 9" before "Object 10". The
/// collator's own numeric and case-insensitive modes would do it, but not in every locale (the C locale has neither).
QString withPaddedNumbers(const QString& text)
{
    constexpr qsizetype WIDTH = 20;
    QString result;
    result.reserve(text.size() + 2 * WIDTH);
    for (qsizetype i = 0; i < text.size();) {
        if (!text[i].isDigit()) {
            result += text[i++];
            continue;
        }
        qsizetype end = i;
        while (end < text.size() && text[end].isDigit())
            ++end;
        while (i + 1 < end && text[i] == QLatin1Char('0')) // "09" and "9" are the same number
            ++i;
        if (end - i < WIDTH)
            result += QString(WIDTH - (end - i), QLatin1Char('0'));
        result += QStringView(text).mid(i, end - i);
        i = end;
    }
    return result.toCaseFolded();
}
} // namespace

/// The sort keys of the cells of one column, made once per cell: a sort compares each cell many times, and reading a
/// property and collating its text is the costly part. A key goes when its cell reports a change.
struct ListerProxy::SortKeys
{
    QCollator collator;
    int column = -1;
    std::unordered_map<quintptr, SortKey> keys;

    SortKeys()
    {
        collator.setCaseSensitivity(Qt::CaseInsensitive);
    }

    const SortKey& get(const ListerModel& model, const QModelIndex& index)
    {
        if (index.column() != column) {
            keys.clear();
            column = index.column();
        }
        auto [found, added] = keys.try_emplace(index.internalId());
        if (added)
            found->second = make(model, index);
        return found->second;
    }

    SortKey make(const ListerModel& model, const QModelIndex& index) const
    {
        SortKey key;
        try {
            const Optional<GenericPropertyAccessor> accessor = model.getPropertyAccessor(index);
            if (!accessor)
                return key;
            const GenericProperty property = accessor->getProperty();
            if (property.getTypeDefinition().isNumber()) {
                key.number = property.read<double>();
                key.kind = SortKey::Kind::Number;
            } else {
                key.text = collator.sortKey(withPaddedNumbers(toQt(accessor->toString())));
                key.kind = SortKey::Kind::Text;
            }
        } catch (const std::exception&) {
            key.kind = SortKey::Kind::None; // a value that cannot be read sorts with the cells that have none
        }
        return key;
    }
};

ListerProxy::ListerProxy(QObject* parent)
    : QSortFilterProxyModel(parent)
    , sortKeys(std::make_unique<SortKeys>())
{
}

ListerProxy::~ListerProxy() = default;

void ListerProxy::setSourceModel(QAbstractItemModel* model)
{
    for (const auto& connection : std::as_const(sourceConnections))
        disconnect(connection);
    sourceConnections.clear();
    sortKeys->keys.clear();
    // Connected before the base class connects its own handlers, so that a changed cell has lost its sort key, and a
    // changed name its filter result, by the time the base class sorts and filters the row again.
    if (model) {
        sourceConnections << connect(model, &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex& topLeft, const QModelIndex& bottomRight) {
                for (int row = topLeft.row(); row <= bottomRight.row(); ++row)
                    sortKeys->keys.erase(topLeft.siblingAtRow(row).internalId());
                // A changed sub-entity name can bring back the top-level row that was filtered out with its sub-rows.
                const int column = nameColumn();
                if (!nameFilter.isEmpty() && topLeft.parent().isValid() && topLeft.column() <= column
                    && column <= bottomRight.column())
                    invalidateRowsFilter();
            });
        const auto forget = [this] { sortKeys->keys.clear(); };
        sourceConnections << connect(model, &QAbstractItemModel::rowsRemoved, this, forget);
        sourceConnections << connect(model, &QAbstractItemModel::modelReset, this, forget);
    }
    QSortFilterProxyModel::setSourceModel(model);
}

void ListerProxy::sort(int column, Qt::SortOrder order)
{
    sortKeys->keys.clear();
    QSortFilterProxyModel::sort(column, order);
}

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
    // The master row leads in either order: its controls apply to the rows below it.
    if (const EntityHolder<Entity> master = model->getMasterEntity(); master && !left.parent().isValid()) {
        if (model->getEntity(left) == master)
            return sortOrder() == Qt::AscendingOrder;
        if (model->getEntity(right) == master)
            return sortOrder() == Qt::DescendingOrder;
    }
    const SortKey& a = sortKeys->get(*model, left);
    const SortKey& b = sortKeys->get(*model, right);
    if (a.kind != b.kind)
        return a.kind < b.kind;
    switch (a.kind) {
    case SortKey::Kind::Number:
        // Not-a-number sorts after every number, so that the order stays strict.
        if (std::isnan(a.number) || std::isnan(b.number))
            return !std::isnan(a.number) && std::isnan(b.number);
        return a.number < b.number;
    case SortKey::Kind::Text:
        return a.text->compare(*b.text) < 0;
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
