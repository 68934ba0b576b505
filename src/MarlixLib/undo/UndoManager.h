#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/undo/IUndoManager.h>

#include <deque>
#include <memory>

namespace Marlix {

/// The undo and redo stacks of one document. Belongs to the thread that owns the document.
class MARLIXLIB_EXPORT UndoManager : public IUndoManager
{
public:
    /// `limit` is the most steps kept (0: no limit); the oldest go first.
    explicit UndoManager(std::size_t limit = 0);
    ~UndoManager() override;
    UndoManager(const UndoManager&) = delete;
    UndoManager& operator=(const UndoManager&) = delete;

    /// Opens an action; committed after the manager is gone it is dropped.
    ActionHolder createAction(StringView label, Flags<ActionFlag> flags = {}) override;
    bool canUndo() const override { return !undoSteps.empty(); } ///< Whether there is a step to undo.
    bool canRedo() const override { return !redoSteps.empty(); } ///< Whether there is a step to redo.
    /// An Exception while an action is open on this thread or when there is nothing to undo.
    void undo() override;
    /// An Exception while an action is open on this thread or when there is nothing to redo.
    void redo() override;
    String getUndoLabel() const override; ///< Label of the newest undo step; empty when there is none.
    String getRedoLabel() const override; ///< Label of the next redo step; empty when there is none.
    /// Calls \p observer after every change of the stacks, until the lifetime ends.
    CallbackLifetime addObserver(Function<void(UndoEvent)> observer) override;

    std::size_t getUndoCount() const { return undoSteps.size(); } ///< The number of steps undo() can reverse.
    std::size_t getRedoCount() const { return redoSteps.size(); } ///< The number of steps redo() can replay.
    /// Labels from the next undo step back to the oldest.
    Array<String> getUndoLabels() const;
    Array<String> getRedoLabels() const; ///< Labels from the next redo step on to the last undone one.
    std::size_t getLimit() const { return limit; } ///< The most steps kept, undo and redo together; 0 for no limit.
    /// A new limit; the oldest undo steps, then the furthest redo steps, are dropped to meet it (StepsDropped).
    void setLimit(std::size_t limit);
    /// Drops every undo and redo step and tells the observers (UndoEvent::Cleared); the document stays as it is.
    void clear();

private:
    void push(SharedPtr<UndoStep> step);
    void trim();

    std::deque<SharedPtr<UndoStep>> undoSteps;
    std::deque<SharedPtr<UndoStep>> redoSteps;
    std::size_t limit;
    CallbackList<UndoEvent> observers;
    // Actions reach the manager through this, so an action that outlives its manager commits into nothing.
    SharedPtr<UndoManager*> self;
};

} // namespace Marlix
