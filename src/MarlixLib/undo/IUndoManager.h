#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/base/Polymorphic.h>
#include <MarlixLib/undo/ActionHolder.h>

namespace Marlix {

/// What an undo manager tells its observers; they re-read labels and counts from the manager.
enum class UndoEvent : std::uint8_t
{
    StepAdded, ///< A committed action became the newest undo step; the redo steps are gone.
    Undone, ///< The newest undo step was undone and became the next redo step.
    Redone, ///< The next redo step was redone and became the newest undo step.
    Published, ///< An open action showed its intermediate state (ActionHolder::publish); no step yet.
    Cleared, ///< Every undo and redo step was dropped.
    StepsDropped, ///< The oldest steps were dropped to keep within the limit.
};

/// Opens undo actions and replays the steps they leave.
class MARLIXLIB_EXPORT IUndoManager : public Polymorphic
{
public:
    /// Opens an action on the calling thread: the property changes made on it until the holder commits become one
    /// step labelled \p label (shown in menus and the history). Inside another open action it joins that one.
    virtual ActionHolder createAction(StringView label, Flags<ActionFlag> flags = {}) = 0;
    virtual bool canUndo() const = 0; ///< Whether there is a step to undo.
    virtual bool canRedo() const = 0; ///< Whether there is an undone step to redo.
    /// Reverses the newest step and tells the observers (UndoEvent::Undone).
    virtual void undo() = 0;
    /// Replays the newest undone step and tells the observers (UndoEvent::Redone).
    virtual void redo() = 0;
    /// Label of the step the next undo() reverses; empty when there is none.
    virtual String getUndoLabel() const = 0;
    virtual String getRedoLabel() const = 0; ///< Label of the step the next redo() replays; empty when there is none.
    /// Calls \p observer on the manager's thread after every change of the stacks, until the lifetime ends.
    virtual CallbackLifetime addObserver(Function<void(UndoEvent)> observer) = 0;
};

} // namespace Marlix
