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

    ActionHolder createAction(StringView label, Flags<ActionFlag> flags = {}) override;
    bool canUndo() const override { return !undoSteps.empty(); }
    bool canRedo() const override { return !redoSteps.empty(); }
    /// An Exception while an action is open on this thread or when there is nothing to undo.
    void undo() override;
    void redo() override;
    String getUndoLabel() const override;
    String getRedoLabel() const override;
    CallbackLifetime addObserver(Function<void(UndoEvent)> observer) override;

    std::size_t getUndoCount() const { return undoSteps.size(); }
    std::size_t getRedoCount() const { return redoSteps.size(); }
    /// Labels from the next undo step back to the oldest.
    Array<String> getUndoLabels() const;
    Array<String> getRedoLabels() const;
    std::size_t getLimit() const { return limit; }
    void setLimit(std::size_t limit);
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
