#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/widgets/properties/ForwardingPropertySheetHost.h>

namespace Marlix::Widgets {

ForwardingPropertySheetHost::ForwardingPropertySheetHost(SharedPtr<IPropertySheetHost> target)
    : target(std::move(target))
{
    if (!this->target)
        Marlix::Detail::throwStopException("widgets/ForwardingPropertySheetHost", __LINE__);
}

SharedPtr<Model<DisplayUnits>> ForwardingPropertySheetHost::getDisplayUnitsModel() const
{
    return target->getDisplayUnitsModel();
}

SharedPtr<Model<Stack<String>>> ForwardingPropertySheetHost::getCollapsiblesModel() const
{
    return target->getCollapsiblesModel();
}

SharedPtr<Model<Stack<EntityHolder<Entity>>>> ForwardingPropertySheetHost::getRecentEntitiesModel() const
{
    return target->getRecentEntitiesModel();
}

SharedPtr<EntityGraphTracker> ForwardingPropertySheetHost::getEntityGraphTracker(
    const EntityClassInfo* entityClass) const
{
    return target->getEntityGraphTracker(entityClass);
}

SharedPtr<ThumbnailManager> ForwardingPropertySheetHost::getThumbnailManager() const
{
    return target->getThumbnailManager();
}

SharedPtr<IUndoManager> ForwardingPropertySheetHost::getUndoManager() const
{
    return target->getUndoManager();
}

IPropertyController& ForwardingPropertySheetHost::getPropertyController()
{
    return target->getPropertyController();
}

IEntityHandleContext& ForwardingPropertySheetHost::getEntityHandleContext()
{
    return target->getEntityHandleContext();
}

IViewportHost* ForwardingPropertySheetHost::getViewportHost()
{
    return target->getViewportHost();
}

Optional<Io::Path> ForwardingPropertySheetHost::pickFile(const UiPathFlags& flags, Optional<Io::Path> current) const
{
    return target->pickFile(flags, std::move(current));
}

} // namespace Marlix::Widgets
