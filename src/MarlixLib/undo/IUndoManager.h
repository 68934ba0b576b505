#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/base/Polymorphic.h>
#include <MarlixLib/undo/ActionHolder.h>

namespace Marlix {

enum class UndoEvent : std::uint8_t
{
    StepAdded,
    Undone,
    Redone,
    Published,
    Cleared,
    StepsDropped,
};

/// Opens undo actions and replays the steps they leave.
class MARLIXLIB_EXPORT IUndoManager : public Polymorphic
{
public:
    virtual ActionHolder createAction(StringView label, Flags<ActionFlag> flags = {}) = 0;
    virtual bool canUndo() const = 0;
    virtual bool canRedo() const = 0;
    virtual void undo() = 0;
    virtual void redo() = 0;
    /// Label of the step the next undo() reverses; empty when there is none.
    virtual String getUndoLabel() const = 0;
    virtual String getRedoLabel() const = 0;
    virtual CallbackLifetime addObserver(Function<void(UndoEvent)> observer) = 0;
};

} // namespace Marlix
