#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/undo/Action.h>

namespace Marlix {

/// Owns an open undo action. Move-only; destroyed while open, it reverts (transaction semantics).
class MARLIXLIB_EXPORT ActionHolder
{
public:
    ActionHolder() = default;
    explicit ActionHolder(SharedPtr<Detail::Action> action);
    ActionHolder(ActionHolder&& other) noexcept = default;
    ActionHolder& operator=(ActionHolder&& other) noexcept;
    ActionHolder(const ActionHolder&) = delete;
    ActionHolder& operator=(const ActionHolder&) = delete;
    ~ActionHolder();

    bool isOpen() const { return action && action->isOpen(); }
    explicit operator bool() const { return isOpen(); }
    String getLabel() const { return action ? action->getLabel() : String(); }

    /// Closes the action: if it changed something it becomes one undo step (a nested one joins its outer action).
    void commit();
    /// Restores every value recorded by the action, tells the observers and leaves no trace.
    void revert();
    /// Keeps the action open and lets the manager's observers show the intermediate state.
    void publish();

private:
    SharedPtr<Detail::Action> action;
};

namespace Detail {
using ActionHolder = Marlix::ActionHolder;
}

} // namespace Marlix
