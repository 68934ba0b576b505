#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/lister/ListerModel.h>

#include <QFont>

#include <algorithm>
#include <mutex>
#include <unordered_map>
#include <unordered_set>

namespace Marlix::Widgets {

namespace {
static_assert(sizeof(quintptr) >= sizeof(std::uint64_t), "an index's internal id holds an entity identity");

constexpr std::uint64_t FNV_OFFSET_BASIS = 0xcbf29ce484222325ULL;
constexpr std::uint64_t FNV_PRIME = 0x100000001b3ULL;
constexpr std::size_t INITIAL_BUCKETS = 64;
// An entity shown a second time (a sub-entity under two parents, or a sub-entity that has a top-level row too) cannot
// be keyed by its identity again, since an index must name one place: such rows get keys with this bit set, which
// identities, counted up from one, never reach.
constexpr std::uint64_t EXTRA_ROW_KEY = 1ULL << 63;

constexpr int ALIGN_NUMBER = Qt::AlignRight | Qt::AlignVCenter;
constexpr int ALIGN_CENTERED = Qt::AlignHCenter | Qt::AlignVCenter;
constexpr int ALIGN_TEXT = Qt::AlignLeft | Qt::AlignVCenter;

std::uint64_t hashKey(std::uint64_t key)
{
    std::uint64_t hash = FNV_OFFSET_BASIS;
    for (int byte = 0; byte < 8; ++byte) {
        hash ^= (key >> (8 * byte)) & 0xffU;
        hash *= FNV_PRIME;
    }
    return hash;
}

bool hasText(ListerValuePresentation presentation)
{
    return presentation == ListerValuePresentation::Text || presentation == ListerValuePresentation::Name;
}
} // namespace

struct TopLevelStruct;

struct ListerNode
{
    std::uint64_t key = 0;
    EntityHolder<Entity> entity;
    bool topLevel = false;
    int row = 0; // of a sub-entity in its parent's list; top-level rows are counted in their record
    TopLevelStruct* parent = nullptr; // of a sub-entity
    SharedPtr<TopLevelStruct> record; // of a top-level node
    CallbackLifetime observation;
    UniquePtr<ListerNode> next; // in the bucket's chain
};

struct TopLevelStruct
{
    ListerNode* node = nullptr;
    int row = 0;
    Array<ListerNode*> children;
};

struct ListerModel::Impl
{
    struct Change
    {
        std::uint64_t key;
        std::uint32_t rootIndex;
    };

    ListerModel* model;
    Stack<ListerColumnDefinition> columns;
    Stack<ListerActionMenuItem> actionMenuItems;
    EntityHolder<Entity> master;

    // Declared before the nodes: an observer of a node may still report while the nodes go.
    Mutex changesMutex;
    Array<Change> pendingChanges;
    bool flushPosted = false;
    std::unordered_map<const Detail::ObjectLayout*,
        std::pair<SharedPtr<const Detail::ObjectLayout>, Array<std::int64_t>>>
        rootIndexes;

    Array<SharedPtr<TopLevelStruct>> topLevels;
    Array<UniquePtr<ListerNode>> buckets = Array<UniquePtr<ListerNode>>(INITIAL_BUCKETS);
    std::size_t nodeCount = 0;
    std::uint64_t extraKeys = 0;

    ~Impl()
    {
        // Chains are freed iteratively: a long chain freed through nested destructors could exhaust the stack.
        for (auto& bucket : buckets)
            while (bucket)
                bucket = std::move(bucket->next);
    }

    ListerNode* find(std::uint64_t key) const
    {
        for (ListerNode* node = buckets[hashKey(key) & (buckets.size() - 1)].get(); node; node = node->next.get())
            if (node->key == key)
                return node;
        return nullptr;
    }

    ListerNode* find(const QModelIndex& index) const
    {
        if (!index.isValid() || index.model() != model)
            return nullptr;
        return find(static_cast<std::uint64_t>(index.internalId()));
    }

    ListerNode* insertNode(EntityHolder<Entity> entity, bool topLevel)
    {
        if (nodeCount >= buckets.size())
            rehash(buckets.size() * 2);
        auto node = std::make_unique<ListerNode>();
        const std::uint64_t id = entity->getId();
        node->key = find(id) ? (EXTRA_ROW_KEY | ++extraKeys) : id;
        node->entity = std::move(entity);
        node->topLevel = topLevel;
        auto& bucket = buckets[hashKey(node->key) & (buckets.size() - 1)];
        node->next = std::move(bucket);
        bucket = std::move(node);
        ++nodeCount;
        return bucket.get();
    }

    void eraseNode(std::uint64_t key)
    {
        UniquePtr<ListerNode>* link = &buckets[hashKey(key) & (buckets.size() - 1)];
        while (*link && (*link)->key != key)
            link = &(*link)->next;
        if (!*link)
            return;
        UniquePtr<ListerNode> erased = std::move(*link);
        *link = std::move(erased->next);
        --nodeCount;
    }

    void rehash(std::size_t size)
    {
        Array<UniquePtr<ListerNode>> old = std::exchange(buckets, Array<UniquePtr<ListerNode>>(size));
        for (auto& chain : old)
            while (chain) {
                UniquePtr<ListerNode> node = std::move(chain);
                chain = std::move(node->next);
                auto& bucket = buckets[hashKey(node->key) & (size - 1)];
                node->next = std::move(bucket);
                bucket = std::move(node);
            }
    }

    TopLevelStruct* findTopLevel(const Entity& entity) const
    {
        const ListerNode* node = find(entity.getId());
        if (!node)
            return nullptr; // the entity is nowhere in the model
        if (node->topLevel)
            return node->record.get();
        // Shown as a sub-entity first: a top-level row of it, if any, has an extra key.
        for (const auto& record : topLevels)
            if (record->node->entity.get() == &entity)
                return record.get();
        return nullptr;
    }

    int rowOf(const ListerNode& node) const { return node.topLevel ? node.record->row : node.row; }

    QModelIndex indexOf(const ListerNode& node, int column) const
    {
        return model->createIndex(rowOf(node), column, static_cast<quintptr>(node.key));
    }

    QModelIndex parentIndex(const TopLevelStruct* parent) const
    {
        return parent ? indexOf(*parent->node, 0) : QModelIndex();
    }

    int rowCount(const TopLevelStruct* parent) const
    {
        return static_cast<int>(parent ? parent->children.size() : topLevels.size());
    }

    const Entity* entityAt(const TopLevelStruct* parent, int row) const
    {
        const auto at = static_cast<std::size_t>(row);
        return (parent ? parent->children[at] : topLevels[at]->node)->entity.get();
    }

    int findRow(const TopLevelStruct* parent, const Entity& entity) const
    {
        if (!parent) {
            const TopLevelStruct* record = findTopLevel(entity);
            return record ? record->row : -1;
        }
        for (const ListerNode* child : parent->children)
            if (child->entity.get() == &entity)
                return child->row;
        return -1;
    }

    void renumber(TopLevelStruct* parent, int first, int last)
    {
        for (int row = std::max(first, 0); row <= last; ++row) {
            if (parent)
                parent->children[static_cast<std::size_t>(row)]->row = row;
            else
                topLevels[static_cast<std::size_t>(row)]->row = row;
        }
    }

    // Inserts rows for `entities` (none of them there yet) before `row`.
    void insertRows(TopLevelStruct* parent, int row, ArrayView<const EntityHolder<Entity>> entities)
    {
        if (entities.empty())
            return;
        const int count = static_cast<int>(entities.size());
        model->beginInsertRows(parentIndex(parent), row, row + count - 1);
        if (parent) {
            Array<ListerNode*> added;
            for (const auto& entity : entities) {
                ListerNode* node = insertNode(entity, false);
                node->parent = parent;
                added.push_back(node);
            }
            parent->children.insert(parent->children.begin() + row, added.begin(), added.end());
        } else {
            Array<SharedPtr<TopLevelStruct>> added;
            for (const auto& entity : entities) {
                auto record = makeSharedPtr<TopLevelStruct>();
                record->node = insertNode(entity, true);
                record->node->record = record;
                added.push_back(std::move(record));
            }
            topLevels.insert(topLevels.begin() + row, added.begin(), added.end());
        }
        renumber(parent, row, rowCount(parent) - 1);
        model->endInsertRows();
    }

    void removeRows(TopLevelStruct* parent, int first, int last)
    {
        model->beginRemoveRows(parentIndex(parent), first, last);
        for (int row = first; row <= last; ++row) {
            if (parent) {
                eraseNode(parent->children[static_cast<std::size_t>(row)]->key);
                continue;
            }
            const SharedPtr<TopLevelStruct>& record = topLevels[static_cast<std::size_t>(row)];
            for (const ListerNode* child : record->children)
                eraseNode(child->key);
            if (master && record->node->entity == master)
                master.reset();
            eraseNode(record->node->key);
        }
        if (parent)
            parent->children.erase(parent->children.begin() + first, parent->children.begin() + last + 1);
        else
            topLevels.erase(topLevels.begin() + first, topLevels.begin() + last + 1);
        renumber(parent, first, rowCount(parent) - 1);
        model->endRemoveRows();
    }

    // Removes the rows whose flag is set, one notification per run of neighbouring rows, from the last run up.
    void removeMarkedRows(TopLevelStruct* parent, const Array<bool>& marked)
    {
        for (int last = static_cast<int>(marked.size()) - 1; last >= 0; --last) {
            if (!marked[static_cast<std::size_t>(last)])
                continue;
            int first = last;
            while (first > 0 && marked[static_cast<std::size_t>(first - 1)])
                --first;
            removeRows(parent, first, last);
            last = first;
        }
    }

    void moveRow(TopLevelStruct* parent, int from, int to)
    {
        const QModelIndex parentAt = parentIndex(parent);
        model->beginMoveRows(parentAt, from, from, parentAt, to > from ? to + 1 : to);
        const auto rotate = [&](auto& rows) {
            if (from < to)
                std::rotate(rows.begin() + from, rows.begin() + from + 1, rows.begin() + to + 1);
            else
                std::rotate(rows.begin() + to, rows.begin() + from, rows.begin() + from + 1);
        };
        if (parent)
            rotate(parent->children);
        else
            rotate(topLevels);
        renumber(parent, std::min(from, to), std::max(from, to));
        model->endMoveRows();
    }

    void setRows(TopLevelStruct* parent, ArrayView<const EntityHolder<Entity>> wanted)
    {
        Array<EntityHolder<Entity>> entities;
        std::unordered_set<const Entity*> kept;
        for (const auto& entity : wanted)
            if (entity && kept.insert(entity.get()).second)
                entities.push_back(entity);
        Array<bool> marked(static_cast<std::size_t>(rowCount(parent)));
        bool removing = false;
        for (std::size_t row = 0; row < marked.size(); ++row)
            removing |= marked[row] = !kept.contains(entityAt(parent, static_cast<int>(row)));
        removeMarkedRows(parent, marked);
        for (std::size_t i = 0; i < entities.size();) {
            const int row = static_cast<int>(i);
            if (row < rowCount(parent) && entityAt(parent, row) == entities[i].get()) {
                ++i;
            } else if (const int from = findRow(parent, *entities[i]); from >= 0) {
                moveRow(parent, from, row);
                ++i;
            } else {
                // Entities new to the model that follow each other arrive in one insertion.
                std::size_t end = i + 1;
                while (end < entities.size() && findRow(parent, *entities[end]) < 0)
                    ++end;
                insertRows(parent, row, ArrayView<const EntityHolder<Entity>>(entities).subspan(i, end - i));
                i = end;
            }
        }
        if (removing)
            Q_EMIT model->rowsRemovingFinished(parentIndex(parent));
    }

    // Cells are observed once they were read: a lister of many rows pays only for the rows somebody looked at.
    void observe(ListerNode& node)
    {
        if (node.observation.isActive())
            return;
        node.observation = node.entity->addObserver([this, key = node.key](const ObservedProperty& changed) {
            onPropertyChanged(key, changed.getPropertyIndex());
        });
    }

    // May run on any thread: the cells are told on the model's thread, once per pass of its event loop.
    void onPropertyChanged(std::uint64_t key, std::uint32_t rootIndex)
    {
        const std::lock_guard lock(changesMutex);
        pendingChanges.push_back({ key, rootIndex });
        if (std::exchange(flushPosted, true))
            return;
        QMetaObject::invokeMethod(
            model, [this] { flushChanges(); }, Qt::QueuedConnection);
    }

    const Array<std::int64_t>& getRootIndexes(const Entity& entity)
    {
        const auto& layout = entity.getObjectLayout();
        auto found = rootIndexes.find(layout.get());
        if (found == rootIndexes.end()) {
            Array<std::int64_t> indexes;
            for (const auto& column : columns) {
                const bool shown = column.presentation != ListerValuePresentation::Actions;
                const GenericPropertyHandle handle
                    = shown ? entity.resolveHandle(column.propertyPath) : GenericPropertyHandle();
                indexes.push_back(handle.isResolved() ? std::int64_t(handle.getRootIndex()) : -1);
            }
            found = rootIndexes.emplace(layout.get(), std::pair(layout, std::move(indexes))).first;
        }
        return found->second.second;
    }

    void flushChanges()
    {
        Array<Change> changes;
        {
            const std::lock_guard lock(changesMutex);
            changes.swap(pendingChanges);
            flushPosted = false;
        }
        std::unordered_map<std::uint64_t, std::pair<int, int>> changedColumns;
        bool topLevelChanged = false;
        for (const Change& change : changes) {
            const ListerNode* node = find(change.key);
            if (!node)
                continue; // the row went before its change was shown
            topLevelChanged |= node->topLevel;
            const Array<std::int64_t>& roots = getRootIndexes(*node->entity);
            for (int column = 0; column < static_cast<int>(roots.size()); ++column) {
                if (roots[static_cast<std::size_t>(column)] != std::int64_t(change.rootIndex))
                    continue;
                auto [range, added] = changedColumns.try_emplace(change.key, column, column);
                range->second.first = std::min(range->second.first, column);
                range->second.second = std::max(range->second.second, column);
            }
        }
        for (const auto& [key, range] : changedColumns)
            if (const ListerNode* node = find(key))
                Q_EMIT model->dataChanged(indexOf(*node, range.first), indexOf(*node, range.second));
        if (topLevelChanged)
            Q_EMIT model->updateTopLevelRowVisiblity();
    }

    void refreshAllCells()
    {
        const int last = static_cast<int>(columns.size()) - 1;
        if (topLevels.empty() || last < 0)
            return;
        Q_EMIT model->dataChanged(indexOf(*topLevels.front()->node, 0), indexOf(*topLevels.back()->node, last));
        for (const auto& record : topLevels)
            if (!record->children.empty())
                Q_EMIT model->dataChanged(
                    indexOf(*record->children.front(), 0), indexOf(*record->children.back(), last));
    }
};

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

Optional<GenericPropertyAccessor> ListerModel::getPropertyAccessor(const QModelIndex& index) const
{
    ListerNode* node = impl->find(index);
    if (!node || index.column() >= columnCount())
        return {};
    const ListerColumnDefinition& column = impl->columns[static_cast<std::size_t>(index.column())];
    if (column.presentation == ListerValuePresentation::Actions)
        return {};
    if (!isResolved(node->entity->checkPropertyPath(column.propertyPath)))
        return {};
    impl->observe(*node);
    return GenericPropertyAccessor(node->entity, column.propertyPath);
}

const ListerColumnDefinition& ListerModel::getColumnDefinition(int column) const
{
    if (column < 0 || column >= columnCount())
        Detail::throwStopException("lister/ListerModel", __LINE__);
    return impl->columns[static_cast<std::size_t>(column)];
}

const Stack<ListerActionMenuItem>& ListerModel::getActionMenuItems() const
{
    return impl->actionMenuItems;
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

Qt::ItemFlags ListerModel::flags(const QModelIndex& index) const
{
    if (!index.isValid() || index.column() >= columnCount())
        return Qt::NoItemFlags;
    if (impl->columns[static_cast<std::size_t>(index.column())].presentation == ListerValuePresentation::ReadOnly)
        return Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    return Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsEnabled;
}

QVariant ListerModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.column() >= columnCount())
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return getDisplayData(index);
    case Qt::TextAlignmentRole:
        switch (impl->columns[static_cast<std::size_t>(index.column())].presentation) {
        case ListerValuePresentation::Number:
            return ALIGN_NUMBER;
        case ListerValuePresentation::Centered:
        case ListerValuePresentation::ReadOnly:
            return ALIGN_CENTERED;
        default:
            return ALIGN_TEXT;
        }
    default:
        return {};
    }
}

QVariant ListerModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount())
        return {};
    const ListerColumnDefinition& column = impl->columns[static_cast<std::size_t>(section)];
    switch (role) {
    case Qt::DisplayRole:
        return toQt(column.headerText);
    case Qt::ToolTipRole:
        return toQt(column.headerToolTip);
    case Qt::FontRole: {
        QFont font;
        font.setWeight(QFont::Bold);
        return font;
    }
    case Qt::TextAlignmentRole:
        return ALIGN_CENTERED;
    default:
        return {};
    }
}

QVariant ListerModel::getDisplayData(const QModelIndex& index) const
{
    if (!hasText(impl->columns[static_cast<std::size_t>(index.column())].presentation))
        return {};
    try {
        const Optional<GenericPropertyAccessor> accessor = getPropertyAccessor(index);
        if (!accessor)
            return {};
        if (accessor->isRootProperty())
            return toQt(accessor->toString());
        const String text = accessor->getProperty().getParentObject().visitProperty(
            accessor->getPath(), [](const GenericProperty& property) { return property.toString(); });
        return toQt(text);
    } catch (const std::exception&) {
        // A value that cannot be shown leaves its cell empty; a view's paint must not end in an exception.
        return {};
    }
}

} // namespace Marlix::Widgets
