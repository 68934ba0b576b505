#pragma once

#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QObject>
#include <QPointer>

#include <unordered_map>

namespace Marlix {

class EntityGraphTracker;

namespace Widgets {

class ListerModel;

/// Keeps a lister's rows in step with the entities of one class in a scene: rows come and go with the entities,
/// follow the scene's order, and hold the sub-entities that a function or a reference property gives.
class MARLIXLIBQT_EXPORT ListerSceneBinding : public QObject
{
    Q_OBJECT

public:
    /// The sub-entities of a top-level entity, in row order.
    using SubEntitiesFunction = Function<Array<EntityHolder<Entity>>(const Entity&)>;

    /// Fills `model` with the scene's entities of `entityClass` (and of the classes derived from it) at once.
    ListerSceneBinding(ListerModel& model, SharedPtr<EntityGraphTracker> scene, const EntityClassInfo& entityClass,
        QObject* parent = nullptr);
    ~ListerSceneBinding() override;

    /// Sub-entities from the host; call `refreshSubEntities` when what the function returns may have changed.
    void setSubEntitiesFunction(SubEntitiesFunction function);
    /// Sub-entities from a reference or a list of references of each top-level entity, followed as it changes.
    void setSubEntitiesPropertyPath(String path);
    /// Reads the sub-entities of `entity`'s row again; a function that throws leaves the rows as they were.
    void refreshSubEntities(const Entity& entity);
    void refreshAll(); ///< Brings the rows to the scene again and reads every row's sub-entities.

    ListerModel* getModel() const; ///< The model filled; null once it is gone.
    const SharedPtr<EntityGraphTracker>& getScene() const { return scene; } ///< The scene whose entities are listed.
    const EntityClassInfo& getEntityClass() const { return entityClass; } ///< The class listed, subclasses included.

private:
    struct Tracked
    {
        EntityHolder<Entity> entity;
        CallbackLifetime subEntitiesObservation;
    };

    void onSceneChanged(ArrayView<const EntityHolder<Entity>> added, ArrayView<const EntityHolder<Entity>> removed);
    void synchronizeRows();
    void observeSubEntities(Tracked& tracked);
    Array<EntityHolder<Entity>> readSubEntities(const Entity& entity) const;

    QPointer<ListerModel> model;
    SharedPtr<EntityGraphTracker> scene;
    EntityClassInfo entityClass;
    SubEntitiesFunction subEntitiesFunction;
    String subEntitiesPath;
    std::unordered_map<std::uint64_t, Tracked> tracked;
    CallbackLifetime sceneObservation;
};

} // namespace Widgets
} // namespace Marlix
