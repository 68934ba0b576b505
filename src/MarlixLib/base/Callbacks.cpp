#include <MarlixLib/base/Callbacks.h>

namespace Marlix {

CallbackLifetime::CallbackLifetime(WeakPtr<Detail::CallbackRemover> list, std::uint64_t id)
    : list(std::move(list))
    , id(id)
{
}

CallbackLifetime::CallbackLifetime(CallbackLifetime&& other) noexcept
    : list(std::move(other.list))
    , id(std::exchange(other.id, 0))
{
}

CallbackLifetime& CallbackLifetime::operator=(CallbackLifetime&& other) noexcept
{
    if (this != &other) {
        reset();
        list = std::move(other.list);
        id = std::exchange(other.id, 0);
    }
    return *this;
}

CallbackLifetime::~CallbackLifetime()
{
    reset();
}

void CallbackLifetime::reset()
{
    if (const auto locked = list.lock())
        locked->removeCallback(id);
    list.reset();
    id = 0;
}

bool CallbackLifetime::isActive() const
{
    return id != 0 && !list.expired();
}

CallbacksOwner& CallbacksOwner::operator=(CallbacksOwner&& other) noexcept
{
    if (this != &other) {
        clear();
        lifetimes = std::move(other.lifetimes);
    }
    return *this;
}

CallbacksOwner::~CallbacksOwner()
{
    clear();
}

void CallbacksOwner::add(CallbackLifetime&& lifetime)
{
    lifetimes.push_back(std::move(lifetime));
}

void CallbacksOwner::clear()
{
    // Ended in reverse order of registration, so later registrations (which may depend on earlier ones) go first.
    while (!lifetimes.empty())
        lifetimes.pop_back();
}

} // namespace Marlix
