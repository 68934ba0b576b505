#include <MarlixLib/undo/ActionHolder.h>

#include <MarlixLib/base/Exception.h>

namespace Marlix {

ActionHolder::ActionHolder(SharedPtr<Detail::Action> action)
    : action(std::move(action))
{
}

ActionHolder& ActionHolder::operator=(ActionHolder&& other) noexcept
{
    if (this != &other) {
        if (isOpen())
            action->revert();
        action = std::move(other.action);
    }
    return *this;
}

ActionHolder::~ActionHolder()
{
    if (isOpen()) {
        try {
            action->revert();
        } catch (...) {
            // A destructor must not throw; the action is closed either way.
        }
    }
}

void ActionHolder::commit()
{
    if (!isOpen())
        Detail::throwStopException("undo/ActionHolder", __LINE__);
    auto keep = std::move(action);
    keep->commit();
}

void ActionHolder::revert()
{
    if (!isOpen())
        Detail::throwStopException("undo/ActionHolder", __LINE__);
    auto keep = std::move(action);
    keep->revert();
}

void ActionHolder::publish()
{
    if (!isOpen())
        Detail::throwStopException("undo/ActionHolder", __LINE__);
    action->publish();
}

} // namespace Marlix
