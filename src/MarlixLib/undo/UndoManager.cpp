#include <MarlixLib/undo/UndoManager.h>

#include <MarlixLib/base/Exception.h>

namespace Marlix {

UndoManager::UndoManager(std::size_t limit)
    : limit(limit)
    , self(makeSharedPtr<UndoManager*>(this))
{
}

UndoManager::~UndoManager()
{
    *self = nullptr;
}

ActionHolder UndoManager::createAction(StringView label, Flags<ActionFlag> flags)
{
    const WeakPtr<UndoManager*> weak = self;
    auto onCommit = [weak](SharedPtr<UndoStep> step) {
        if (const auto manager = weak.lock(); manager && *manager)
            (*manager)->push(std::move(step));
    };
    auto onPublish = [weak] {
        if (const auto manager = weak.lock(); manager && *manager)
            (*manager)->observers.call(UndoEvent::Published);
    };
    return ActionHolder(makeSharedPtr<Detail::Action>(String(label), flags, onCommit, onPublish));
}

void UndoManager::push(SharedPtr<UndoStep> step)
{
    undoSteps.push_back(std::move(step));
    redoSteps.clear();
    trim();
    observers.call(UndoEvent::StepAdded);
}

void UndoManager::trim()
{
    bool dropped = false;
    while (limit > 0 && undoSteps.size() > limit) {
        undoSteps.pop_front();
        dropped = true;
    }
    while (limit > 0 && undoSteps.size() + redoSteps.size() > limit && !redoSteps.empty()) {
        redoSteps.pop_front();
        dropped = true;
    }
    if (dropped)
        observers.call(UndoEvent::StepsDropped);
}

void UndoManager::undo()
{
    if (Detail::Action::current())
        throw Exception("Nothing can be undone while an action is open");
    if (undoSteps.empty())
        throw Exception("There is nothing to undo");
    auto step = std::move(undoSteps.back());
    undoSteps.pop_back();
    step->undo();
    redoSteps.push_back(std::move(step));
    observers.call(UndoEvent::Undone);
}

void UndoManager::redo()
{
    if (Detail::Action::current())
        throw Exception("Nothing can be redone while an action is open");
    if (redoSteps.empty())
        throw Exception("There is nothing to redo");
    auto step = std::move(redoSteps.back());
    redoSteps.pop_back();
    step->redo();
    undoSteps.push_back(std::move(step));
    observers.call(UndoEvent::Redone);
}

String UndoManager::getUndoLabel() const
{
    return undoSteps.empty() ? String() : undoSteps.back()->getLabel();
}

String UndoManager::getRedoLabel() const
{
    return redoSteps.empty() ? String() : redoSteps.back()->getLabel();
}

CallbackLifetime UndoManager::addObserver(Function<void(UndoEvent)> observer)
{
    return observers.add(std::move(observer));
}

Array<String> UndoManager::getUndoLabels() const
{
    Array<String> labels;
    for (auto it = undoSteps.rbegin(); it != undoSteps.rend(); ++it)
        labels.push_back((*it)->getLabel());
    return labels;
}

Array<String> UndoManager::getRedoLabels() const
{
    Array<String> labels;
    for (auto it = redoSteps.rbegin(); it != redoSteps.rend(); ++it)
        labels.push_back((*it)->getLabel());
    return labels;
}

void UndoManager::setLimit(std::size_t newLimit)
{
    limit = newLimit;
    trim();
}

void UndoManager::clear()
{
    undoSteps.clear();
    redoSteps.clear();
    observers.call(UndoEvent::Cleared);
}

} // namespace Marlix
