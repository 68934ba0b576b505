#include <MarlixLibQt/widgets/BaseWithModel.h>

namespace Marlix::Widgets {

BaseWithModel::BaseWithModel(BaseWithModel&& other) noexcept
    : Base(other)
    , Polymorphic(std::move(other))
    , callbacksOwner(std::move(other.callbacksOwner))
{
}

BaseWithModel& BaseWithModel::operator=(BaseWithModel&& other) noexcept
{
    callbacksOwner = std::move(other.callbacksOwner);
    return *this;
}

// Defined here so that the vtable and typeinfo live in the library only.
BaseWithModel::~BaseWithModel() = default;

void BaseWithModel::registerCallback(CallbackLifetime&& lifetime)
{
    callbacksOwner.add(std::move(lifetime));
}

} // namespace Marlix::Widgets
