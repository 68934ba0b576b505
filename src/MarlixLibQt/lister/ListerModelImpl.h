#pragma once

#include <MarlixLibQt/lister/ListerModel.h>
#include <MarlixLibQt/lister/ListerRows.h>

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

// The state of ListerModel and the row changes that keep its notifications; private to the lister.
namespace Marlix::Widgets {

struct ListerModel::Impl
{
    static constexpr int MOVES_BEFORE_LAYOUT_CHANGE = 16;

    ListerModel* model;
    Stack<ListerColumnDefinition> columns;
    Stack<ListerActionMenuItem> actionMenuItems;
    EntityHolder<Entity> master;
    // Declared before the nodes: an observer of a node may still report while the nodes go.
    ListerChangeQueue changes;
    ListerColumnRoots columnRoots;
    Array<SharedPtr<TopLevelStruct>> topLevels;
    ListerRowIndex nodes;

    ListerNode* find(std::uint64_t key) const { return nodes.find(key); }

    ListerNode* find(const QModelIndex& index) const
    {
        if (!index.isValid() || index.model() != model)
            return nullptr;
        return nodes.find(static_cast<std::uint64_t>(index.internalId()));
    }

    TopLevelStruct* findTopLevel(const Entity& entity) const { return nodes.findTopLevel(entity); }

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
                ListerNode* node = nodes.insert(entity, false);
                node->parent = parent;
                added.push_back(node);
            }
            parent->children.insert(parent->children.begin() + row, added.begin(), added.end());
        } else {
            Array<SharedPtr<TopLevelStruct>> added;
            for (const auto& entity : entities) {
                auto record = makeSharedPtr<TopLevelStruct>();
                record->node = nodes.insert(entity, true);
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
                nodes.erase(parent->children[static_cast<std::size_t>(row)]->key);
                continue;
            }
            const SharedPtr<TopLevelStruct>& record = topLevels[static_cast<std::size_t>(row)];
            for (const ListerNode* child : record->children)
                nodes.erase(child->key);
            if (master && record->node->entity == master)
                master.reset();
            nodes.erase(record->node->key);
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
        reorderIfManyMove(parent, entities);
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

    // One move per displaced row tells a view most precisely what happened, but a reordered scene can displace every
    // row, and n moves cost a view (and a proxy, which turns each into a layout change) n times the rows: past a few
    // displaced rows, the new order is one layout change.
    void reorderIfManyMove(TopLevelStruct* parent, const Array<EntityHolder<Entity>>& entities)
    {
        Array<int> order; // the current row of each row in its new place
        for (const auto& entity : entities)
            if (const int row = findRow(parent, *entity); row >= 0)
                order.push_back(row);
        int displaced = 0;
        for (std::size_t i = 0; i < order.size(); ++i)
            displaced += order[i] != static_cast<int>(i);
        if (displaced <= MOVES_BEFORE_LAYOUT_CHANGE)
            return;
        const QList<QPersistentModelIndex> parents
            = parent ? QList { QPersistentModelIndex(parentIndex(parent)) } : QList<QPersistentModelIndex>();
        Q_EMIT model->layoutAboutToBeChanged(parents, QAbstractItemModel::VerticalSortHint);
        const auto permute = [&](auto& rows) {
            auto reordered = rows;
            for (std::size_t i = 0; i < order.size(); ++i)
                reordered[i] = rows[static_cast<std::size_t>(order[i])];
            rows = std::move(reordered);
        };
        if (parent)
            permute(parent->children);
        else
            permute(topLevels);
        renumber(parent, 0, rowCount(parent) - 1);
        const QModelIndexList before = model->persistentIndexList();
        QModelIndexList after;
        after.reserve(before.size());
        for (const QModelIndex& index : before) {
            const ListerNode* node = find(index);
            after.push_back(node ? indexOf(*node, index.column()) : QModelIndex());
        }
        model->changePersistentIndexList(before, after);
        Q_EMIT model->layoutChanged(parents, QAbstractItemModel::VerticalSortHint);
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
        if (changes.push({ key, rootIndex }))
            QMetaObject::invokeMethod(
                model, [this] { flushChanges(); }, Qt::QueuedConnection);
    }

    void flushChanges()
    {
        const Array<ListerChangeQueue::Change> changed = changes.take();
        std::unordered_map<std::uint64_t, std::pair<int, int>> changedColumns;
        bool topLevelChanged = false;
        for (const ListerChangeQueue::Change& change : changed) {
            const ListerNode* node = find(change.key);
            if (!node)
                continue; // the row went before its change was shown
            topLevelChanged |= node->topLevel;
            const Array<std::int64_t>& roots = columnRoots.get(*node->entity, columns);
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

} // namespace Marlix::Widgets
