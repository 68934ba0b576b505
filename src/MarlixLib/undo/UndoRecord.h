#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Polymorphic.h>

namespace Marlix {

/// One reversible change inside an undo step. Property changes are recorded by the data objects themselves; other
/// changes (entities added to or removed from a scene) bring their own record.
class MARLIXLIB_EXPORT UndoRecord : public Polymorphic
{
public:
    virtual void undo() = 0; ///< Puts back the state from before the change.
    virtual void redo() = 0; ///< Puts back the state captured when the action closed.
    /// Called when the action closes: a record keeps the newest state it needs for redo.
    virtual void captureFinalState() { }
    /// True when undoing would change nothing (a property written back to its old value).
    virtual bool isNoOp() const { return false; }
};

} // namespace Marlix
