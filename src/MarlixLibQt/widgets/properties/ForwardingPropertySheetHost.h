#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/properties/IPropertySheetHost.h>

namespace Marlix::Widgets {

/// A host that hands every request to another host: the base of a host that changes only a few answers.
class MARLIXLIBQT_EXPORT ForwardingPropertySheetHost : public IPropertySheetHost
{
public:
    /// A null target is a programming error and raises the stop exception.
    explicit ForwardingPropertySheetHost(SharedPtr<IPropertySheetHost> target);

    SharedPtr<Model<DisplayUnits>> getDisplayUnitsModel() const override;
    SharedPtr<Model<Stack<String>>> getCollapsiblesModel() const override;
    SharedPtr<Model<Stack<EntityHolder<Entity>>>> getRecentEntitiesModel() const override;
    SharedPtr<EntityGraphTracker> getEntityGraphTracker(const EntityClassInfo* entityClass) const override;
    SharedPtr<ThumbnailManager> getThumbnailManager() const override;
    SharedPtr<IUndoManager> getUndoManager() const override;
    IPropertyController& getPropertyController() override;
    IEntityHandleContext& getEntityHandleContext() override;
    IViewportHost* getViewportHost() override;
    Optional<Io::Path> pickFile(const UiPathFlags& flags, Optional<Io::Path> current) const override;

    const SharedPtr<IPropertySheetHost>& getTarget() const { return target; } ///< The host that answers; never null.

private:
    SharedPtr<IPropertySheetHost> target;
};

} // namespace Marlix::Widgets
