#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/undo/Action.h>

namespace Marlix {

/// Owns an open undo action. Move-only; destroyed while open, it reverts (transaction semantics).
class MARLIXLIB_EXPORT ActionHolder
{
public:
    ActionHolder() = default; ///< Holds no action; isOpen() is false.
    /// Made by IUndoManager::createAction, which is how hosts get one.
    explicit ActionHolder(SharedPtr<Detail::Action> action);
    ActionHolder(ActionHolder&& other) noexcept = default; ///< Takes over the action; \p other holds none.
    /// Reverts the action held so far if it is open, then takes over the action of \p other.
    ActionHolder& operator=(ActionHolder&& other) noexcept;
    ActionHolder(const ActionHolder&) = delete;
    ActionHolder& operator=(const ActionHolder&) = delete;
    ~ActionHolder(); ///< Reverts the action if it is still open.

    bool isOpen() const { return action && action->isOpen(); } ///< Whether an action is held and still recording.
    explicit operator bool() const { return isOpen(); } ///< isOpen().
    String getLabel() const { return action ? action->getLabel() : String(); } ///< Empty when no action is held.

    /// Closes the action: if it changed something it becomes one undo step (a nested one joins its outer action).
    /// Committing, reverting or publishing a holder that is not open is a stop error.
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
