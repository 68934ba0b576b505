#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Polymorphic.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/properties/IEntityHandleContext.h>
#include <MarlixLibQt/widgets/properties/IPropertyController.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/properties/UiPathFlags.h>

namespace Marlix {
class EntityGraphTracker;
class IUndoManager;
class ThumbnailManager;
} // namespace Marlix

namespace Marlix::Widgets {

class IViewportHost;

/// Everything a property sheet needs from the application that embeds it.
class MARLIXLIBQT_EXPORT IPropertySheetHost : public Polymorphic
{
public:
    /// Length, angle, radiance and time units in which quantities are shown and typed.
    virtual SharedPtr<Model<DisplayUnits>> getDisplayUnitsModel() const = 0;
    /// Names of the collapsible groups whose state the host remembers, shared by all its sheets.
    virtual SharedPtr<Model<Stack<String>>> getCollapsiblesModel() const = 0;
    /// Recently picked entities, offered first by entity pickers.
    virtual SharedPtr<Model<Stack<EntityHolder<Entity>>>> getRecentEntitiesModel() const = 0;
    /// The tracker of the scene that entity pickers list, for entities of `entityClass` (any class when null); null
    /// when the host has no scene.
    virtual SharedPtr<EntityGraphTracker> getEntityGraphTracker(const EntityClassInfo* entityClass) const = 0;
    /// Renders the thumbnails of pickers and previews; null shows none.
    virtual SharedPtr<ThumbnailManager> getThumbnailManager() const = 0;
    /// Empty when edits are applied without undo.
    virtual SharedPtr<IUndoManager> getUndoManager() const = 0;
    /// Asked whether a property may be edited and told of edits; see IPropertyController.
    virtual IPropertyController& getPropertyController() = 0;
    /// Validates, observes and filters the entity references the sheet shows.
    virtual IEntityHandleContext& getEntityHandleContext() = 0;
    /// Null when the application has no viewport.
    virtual IViewportHost* getViewportHost() = 0;
    /// Lets the user choose a file or directory; empty when cancelled.
    virtual Optional<Io::Path> pickFile(const UiPathFlags& flags, Optional<Io::Path> current) const = 0;
};

} // namespace Marlix::Widgets
