#include <MarlixLib/data/Entity.h>

#include <atomic>

namespace Marlix {

namespace {
std::atomic<std::uint64_t> lastEntityId { 0 };
}

Entity::Entity(const EntityClassInfo& classInfo)
    : GenericDataObject(classInfo.getObjectLayout())
    , id(++lastEntityId)
    , classInfo(classInfo)
{
}

EntityHolder<Entity> Entity::clone() const
{
    auto copy = classInfo.create();
    copy->copyValuesFrom(*this);
    return copy;
}

} // namespace Marlix
