#include <MarlixLibQt/lister/ListerModelImpl.h>

namespace Marlix::Widgets {

static_assert(sizeof(quintptr) >= sizeof(std::uint64_t), "an index's internal id holds an entity identity");

ListerModel::ListerModel(
    Stack<ListerColumnDefinition>&& columns, Stack<ListerActionMenuItem>&& actionMenuItems, QObject* parent)
    : QAbstractItemModel(parent)
    , impl(std::make_unique<Impl>())
{
    impl->model = this;
    impl->columns = std::move(columns);
    impl->actionMenuItems = std::move(actionMenuItems);
    connect(this, &ListerModel::sceneUnitsChanged, this, [this] { impl->refreshAllCells(); });
}

ListerModel::~ListerModel() = default;

void ListerModel::addTopLevelEntity(EntityHolder<Entity> entity)
{
    insertTopLevelEntity(std::move(entity), static_cast<int>(impl->topLevels.size()));
}

void ListerModel::insertTopLevelEntity(EntityHolder<Entity> entity, int row)
{
    if (!entity || impl->findTopLevel(*entity))
        return;
    row = std::clamp(row, 0, static_cast<int>(impl->topLevels.size()));
    const EntityHolder<Entity> entities[] = { std::move(entity) };
    impl->insertRows(nullptr, row, entities);
}

void ListerModel::addSubEntities(ArrayView<const EntityHolder<Entity>> entities, EntityHolder<Entity> parent)
{
    TopLevelStruct* record = parent ? impl->findTopLevel(*parent) : nullptr;
    if (!record)
        return;
    Array<EntityHolder<Entity>> added;
    std::unordered_set<const Entity*> seen;
    for (const auto& entity : entities)
        if (entity && impl->findRow(record, *entity) < 0 && seen.insert(entity.get()).second)
            added.push_back(entity);
    impl->insertRows(record, static_cast<int>(record->children.size()), added);
}

void ListerModel::removeTopLevelEntity(EntityHolder<Entity> entity)
{
    const TopLevelStruct* record = entity ? impl->findTopLevel(*entity) : nullptr;
    if (!record)
        return;
    impl->removeRows(nullptr, record->row, record->row);
    Q_EMIT rowsRemovingFinished({});
}

void ListerModel::removeSubEntities(ArrayView<const EntityHolder<Entity>> entities, EntityHolder<Entity> parent)
{
    TopLevelStruct* record = parent ? impl->findTopLevel(*parent) : nullptr;
    if (!record)
        return;
    Array<bool> marked(record->children.size());
    bool removing = false;
    for (const auto& entity : entities)
        if (const int row = entity ? impl->findRow(record, *entity) : -1; row >= 0)
            removing = marked[static_cast<std::size_t>(row)] = true;
    if (!removing)
        return;
    impl->removeMarkedRows(record, marked);
    Q_EMIT rowsRemovingFinished(impl->parentIndex(record));
}

bool ListerModel::moveTopLevelEntity(const Entity& entity, int row)
{
    const TopLevelStruct* record = impl->findTopLevel(entity);
    if (!record || row < 0 || row >= static_cast<int>(impl->topLevels.size()))
        return false;
    if (record->row != row)
        impl->moveRow(nullptr, record->row, row);
    return true;
}

void ListerModel::setTopLevelEntities(ArrayView<const EntityHolder<Entity>> entities)
{
    impl->setRows(nullptr, entities);
}

void ListerModel::setSubEntities(ArrayView<const EntityHolder<Entity>> entities, EntityHolder<Entity> parent)
{
    if (TopLevelStruct* record = parent ? impl->findTopLevel(*parent) : nullptr)
        impl->setRows(record, entities);
}

void ListerModel::setMasterEntity(EntityHolder<Entity> entity)
{
    // The master's row belongs to it: a new master takes the place of the old one.
    if (impl->master && impl->master != entity)
        removeTopLevelEntity(impl->master);
    addTopLevelEntity(entity);
    impl->master = entity && impl->findTopLevel(*entity) ? std::move(entity) : nullptr;
}

EntityHolder<Entity> ListerModel::getMasterEntity() const
{
    return impl->master;
}

EntityHolder<Entity> ListerModel::getEntity(const QModelIndex& index) const
{
    const ListerNode* node = impl->find(index);
    return node && index.column() < columnCount() ? node->entity : nullptr;
}

int ListerModel::getChildrenCount(const Entity& entity) const
{
    const TopLevelStruct* record = impl->findTopLevel(entity);
    return record ? static_cast<int>(record->children.size()) : 0;
}

bool ListerModel::isTopLevel(const Entity& entity) const
{
    return impl->findTopLevel(entity) != nullptr;
}

QModelIndex ListerModel::getTopLevelIndex(const Entity& entity, int column) const
{
    const TopLevelStruct* record = impl->findTopLevel(entity);
    if (!record || column < 0 || column >= columnCount())
        return {};
    return impl->indexOf(*record->node, column);
}

Array<EntityHolder<Entity>> ListerModel::getTopLevelEntities() const
{
    Array<EntityHolder<Entity>> entities;
    entities.reserve(impl->topLevels.size());
    for (const auto& record : impl->topLevels)
        entities.push_back(record->node->entity);
    return entities;
}

Array<EntityHolder<Entity>> ListerModel::getSubEntities(const Entity& entity) const
{
    Array<EntityHolder<Entity>> entities;
    if (const TopLevelStruct* record = impl->findTopLevel(entity))
        for (const ListerNode* child : record->children)
            entities.push_back(child->entity);
    return entities;
}

int ListerModel::columnCount(const QModelIndex&) const
{
    return static_cast<int>(impl->columns.size());
}

int ListerModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return static_cast<int>(impl->topLevels.size());
    // Sub-rows hang below the first column only, as in every tree a QTreeView shows.
    if (parent.column() != 0)
        return 0;
    const ListerNode* node = impl->find(parent);
    return node && node->topLevel ? static_cast<int>(node->record->children.size()) : 0;
}

QModelIndex ListerModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column < 0 || column >= columnCount())
        return {};
    if (!parent.isValid()) {
        if (row >= static_cast<int>(impl->topLevels.size()))
            return {};
        return impl->indexOf(*impl->topLevels[static_cast<std::size_t>(row)]->node, column);
    }
    const ListerNode* node = parent.column() == 0 ? impl->find(parent) : nullptr;
    if (!node || !node->topLevel || row >= static_cast<int>(node->record->children.size()))
        return {};
    return impl->indexOf(*node->record->children[static_cast<std::size_t>(row)], column);
}

QModelIndex ListerModel::parent(const QModelIndex& index) const
{
    const ListerNode* node = impl->find(index);
    if (!node || node->topLevel)
        return {};
    return impl->indexOf(*node->parent->node, 0);
}

QModelIndex ListerModel::sibling(int row, int column, const QModelIndex& index) const
{
    if (index.isValid() && row == index.row()) {
        if (column < 0 || column >= columnCount())
            return {};
        return createIndex(row, column, index.internalId());
    }
    return QAbstractItemModel::sibling(row, column, index);
}

} // namespace Marlix::Widgets
