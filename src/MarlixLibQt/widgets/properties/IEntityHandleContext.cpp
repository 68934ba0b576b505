#include <MarlixLibQt/widgets/properties/IEntityHandleContext.h>

namespace Marlix::Widgets {

bool DefaultEntityHandleContext::isEntityReferenceValid(const EntityHolder<Entity>&) const
{
    return true;
}

CallbackLifetime DefaultEntityHandleContext::addExpirationObserver(Function<void()> onExpired, const EntityClassInfo*)
{
    // Nothing expires here, so the callback is released at once instead of being kept forever.
    onExpired = {};
    return {};
}

EntityClassInfo DefaultEntityHandleContext::getDefaultEntityClass() const
{
    return EntityClassInfo::entityClass();
}

IEntityHandleContext::EntityFilter DefaultEntityHandleContext::getDefaultEntityFilter() const
{
    return {};
}

} // namespace Marlix::Widgets
