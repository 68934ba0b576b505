#pragma once

#include <MarlixLib/data/Entity.h>
#include <MarlixLib/data/EntityClassInfo.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/BaseWithModel.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/entities/EntityHandleModel.h>

#include <QToolButton>

#include <memory>

class QMenu;

namespace Marlix {
class ThumbnailClient;
}

namespace Marlix::Widgets {

class IPropertySheetHost;

/// A reference to one entity: the entity's thumbnail and name on a button whose menu offers the entities it may
/// reference instead (recently picked ones first), or none. Each pick is one edit of the model.
class MARLIXLIBQT_EXPORT EntityWidget : public QToolButton, public BaseWithModel
{
    Q_OBJECT

public:
    /// Source text of the empty reference, on the button and in the menu.
    static constexpr const char* NONE_TEXT = QT_TR_NOOP("None");
    /// Source text of the title of the menu's section of recently picked entities.
    static constexpr const char* RECENT_SECTION_TEXT = QT_TR_NOOP("Recent");
    /// Source text of the title of the menu's section of the scene's entities.
    static constexpr const char* SCENE_SECTION_TEXT = QT_TR_NOOP("Scene");
    /// Entities kept in the host's recent list.
    static constexpr std::size_t MAX_RECENT = 8;
    /// Entities listed in the menu; a larger scene lists the first ones and says how many are left out.
    static constexpr std::size_t MAX_MENU_ENTRIES = 200;
    /// The side of the thumbnails on the button and in the menu, in logical pixels.
    static constexpr int THUMBNAIL_SIZE = 16;

    /// Offers entities of `acceptedClass` (and derived classes) from the host's scene, through the host's default
    /// entity filter.
    EntityWidget(SharedPtr<Model<EntityHolder<Entity>>> model, EntityClassInfo acceptedClass,
        SharedPtr<IPropertySheetHost> host, QWidget* parent = nullptr);
    ~EntityWidget() override; ///< Ends the model and thumbnail subscriptions; the model lives on with its other owners.

    /// The entities that hold the reference: an entity that would close a reference cycle with one of them is not
    /// offered.
    void setReferencingEntities(Array<EntityHolder<Entity>> entities);
    /// Entities `filter` refuses are not offered, on top of the host's default filter; an empty filter offers all.
    void setEntityFilter(Function<bool(const EntityHolder<Entity>&)> filter);
    /// Whether "None" is offered (it is by default).
    void setNoneAllowed(bool allowed);
    bool isNoneAllowed() const { return noneAllowed; } ///< True when the menu offers "None".
    /// While `mixed` answers true, the button shows the mixed-values text instead of the model's entity.
    void setMixedValuesFunction(Function<bool()> mixed);

    /// The model of the referenced entity, written once per pick.
    const SharedPtr<Model<EntityHolder<Entity>>>& getModel() const { return model; }
    /// The class whose entities (and derived ones) are offered.
    const EntityClassInfo& getAcceptedClass() const { return acceptedClass; }
    /// The menu of candidates, rebuilt each time it opens; owned by the widget.
    QMenu* getPickMenu() const { return pickMenu; }

    /// The entities that may be picked, in scene order.
    Array<EntityHolder<Entity>> getCandidates() const;
    /// Writes `entity` (empty for none) and remembers it as recently picked; false, and nothing written, when
    /// `entity` is not offered.
    bool pick(const EntityHolder<Entity>& entity);

    /// The entity's "name" when it has a non-empty one, else its class name and identity; NONE_TEXT for no entity.
    static QString getEntityText(const EntityHolder<Entity>& entity);

    void notify() override; ///< Shows the model's entity (or the mixed-values text) with its thumbnail and name.

private:
    void rebuildMenu();
    void addEntityAction(const EntityHolder<Entity>& entity, const EntityHolder<Entity>& current);
    void rememberRecent(const EntityHolder<Entity>& entity);
    void observeName(const EntityHolder<Entity>& entity);
    QIcon thumbnailOf(const EntityHolder<Entity>& entity) const;

    SharedPtr<Model<EntityHolder<Entity>>> model;
    EntityClassInfo acceptedClass;
    SharedPtr<IPropertySheetHost> host;
    std::unique_ptr<ThumbnailClient> thumbnails;
    Array<EntityHolder<Entity>> referencing;
    Function<bool()> mixedValues;
    Function<bool(const EntityHolder<Entity>&)> entityFilter;
    bool noneAllowed = true;
    QMenu* pickMenu = nullptr;
    /// The entity on display, held weakly: it reads as none once the entity is gone, and says so.
    SharedPtr<EntityHandleModel<EntityHolder<Entity>>> shownEntity;
    CallbackLifetime nameObservation;
};

} // namespace Marlix::Widgets
