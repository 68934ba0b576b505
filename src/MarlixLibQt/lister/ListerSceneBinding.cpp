#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/EntityGraphTracker.h>
#include <MarlixLib/data/EntityReferences.h>
#include <MarlixLibQt/lister/ListerModel.h>
#include <MarlixLibQt/lister/ListerSceneBinding.h>

#include <QLoggingCategory>

#include <unordered_set>

namespace Marlix::Widgets {

namespace {
Q_LOGGING_CATEGORY(listerLog, "marlix.libqt.lister")
} // namespace

ListerSceneBinding::ListerSceneBinding(
    ListerModel& model, SharedPtr<EntityGraphTracker> scene, const EntityClassInfo& entityClass, QObject* parent)
    : QObject(parent)
    , model(&model)
    , scene(std::move(scene))
    , entityClass(entityClass)
{
    if (!this->scene)
        throw Exception("A lister cannot follow a scene that does not exist");
    sceneObservation = this->scene->addObserver(
        [this](ArrayView<const EntityHolder<Entity>> added, ArrayView<const EntityHolder<Entity>> removed) {
            onSceneChanged(added, removed);
        });
    synchronizeRows();
}

ListerSceneBinding::~ListerSceneBinding() = default;

ListerModel* ListerSceneBinding::getModel() const
{
    return model;
}

void ListerSceneBinding::setSubEntitiesFunction(SubEntitiesFunction function)
{
    subEntitiesFunction = std::move(function);
    subEntitiesPath.clear();
    for (auto& [id, entry] : tracked)
        entry.subEntitiesObservation.reset();
    refreshAll();
}

void ListerSceneBinding::setSubEntitiesPropertyPath(String path)
{
    subEntitiesFunction = {};
    subEntitiesPath = std::move(path);
    for (auto& [id, entry] : tracked)
        observeSubEntities(entry);
    refreshAll();
}

void ListerSceneBinding::refreshSubEntities(const Entity& entity)
{
    const auto found = tracked.find(entity.getId());
    if (!model || found == tracked.end() || (!subEntitiesFunction && subEntitiesPath.empty()))
        return;
    Array<EntityHolder<Entity>> subEntities;
    try {
        subEntities = readSubEntities(entity);
    } catch (const std::exception& error) {
        // This runs inside the scene's notifications, which must reach every observer: the rows stay as they were.
        qCWarning(listerLog, "The sub-entities of a lister row could not be read: %s", error.what());
        return;
    }
    model->setSubEntities(subEntities, found->second.entity);
}

void ListerSceneBinding::refreshAll()
{
    synchronizeRows();
    for (const auto& [id, entry] : tracked)
        refreshSubEntities(*entry.entity);
}

void ListerSceneBinding::onSceneChanged(
    ArrayView<const EntityHolder<Entity>> added, ArrayView<const EntityHolder<Entity>> removed)
{
    if (!model)
        return;
    const auto ofClass = [this](const EntityHolder<Entity>& entity) { return entity->isInstanceOf(entityClass); };
    const bool addsRows = std::any_of(added.begin(), added.end(), ofClass);
    const bool removesRows = std::any_of(removed.begin(), removed.end(), ofClass);
    if (!addsRows && !removesRows)
        return;
    // A scene built one entity at a time appends and removes single entities: those need no walk over the scene.
    if (added.empty() && removed.size() == 1) {
        tracked.erase(removed.front()->getId());
        model->removeTopLevelEntity(removed.front());
        return;
    }
    if (removed.empty() && added.size() == 1 && scene->getEntities().back() == added.front()) {
        const EntityHolder<Entity>& entity = added.front();
        const EntityHolder<Entity> master = model->getMasterEntity();
        const int rows = model->rowCount();
        const bool masterLast = master && model->getTopLevelIndex(*master).row() == rows - 1;
        model->insertTopLevelEntity(entity, masterLast ? rows - 1 : rows);
        if (!tracked.contains(entity->getId())) {
            Tracked& entry = tracked[entity->getId()];
            entry.entity = entity;
            observeSubEntities(entry);
            refreshSubEntities(*entity);
        }
        return;
    }
    synchronizeRows();
}

void ListerSceneBinding::synchronizeRows()
{
    if (!model)
        return;
    Array<EntityHolder<Entity>> rows = scene->getEntitiesOfClass(entityClass);
    std::unordered_set<std::uint64_t> inScene;
    for (const auto& entity : rows)
        inScene.insert(entity->getId());
    // The master entity is no part of the scene: its row stays where it is.
    if (const EntityHolder<Entity> master = model->getMasterEntity(); master && !inScene.contains(master->getId())) {
        const int row = std::min(model->getTopLevelIndex(*master).row(), static_cast<int>(rows.size()));
        rows.insert(rows.begin() + std::max(row, 0), master);
    }
    std::erase_if(tracked, [&](const auto& entry) { return !inScene.contains(entry.first); });
    model->setTopLevelEntities(rows);
    for (const auto& entity : rows) {
        if (!inScene.contains(entity->getId()) || tracked.contains(entity->getId()))
            continue;
        Tracked& entry = tracked[entity->getId()];
        entry.entity = entity;
        observeSubEntities(entry);
        refreshSubEntities(*entity);
    }
}

void ListerSceneBinding::observeSubEntities(Tracked& entry)
{
    entry.subEntitiesObservation.reset();
    if (subEntitiesPath.empty())
        return;
    const GenericPropertyHandle handle = entry.entity->resolveHandle(subEntitiesPath);
    if (!handle.isResolved())
        return;
    entry.subEntitiesObservation = entry.entity->addPropertyObserver(handle.getRootIndex(),
        [this, entity = entry.entity.get()](const ObservedProperty&) { refreshSubEntities(*entity); });
}

Array<EntityHolder<Entity>> ListerSceneBinding::readSubEntities(const Entity& entity) const
{
    if (subEntitiesFunction)
        return subEntitiesFunction(entity);
    if (!isResolved(entity.checkPropertyPath(subEntitiesPath)))
        return {};
    return entity.visitProperty(subEntitiesPath, [](const GenericProperty& property) -> Array<EntityHolder<Entity>> {
        const TypeDefinition& type = property.getTypeDefinition();
        if (type.getKind() == TypeKind::List && type.getElementType()->getKind() == TypeKind::EntityReference)
            return property.get<Array<EntityHolder<Entity>>>();
        if (EntityHolder<Entity> referenced = getEntityFromProperty(property))
            return { std::move(referenced) };
        return {};
    });
}

} // namespace Marlix::Widgets
