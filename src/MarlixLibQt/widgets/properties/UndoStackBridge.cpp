#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/widgets/properties/UndoStackBridge.h>

#include <QMetaObject>
#include <QUndoCommand>
#include <QUndoStack>

#include <utility>

namespace Marlix::Widgets {

/// One step of the manager: undoing or redoing it on the stack undoes or redoes it in the manager.
class UndoStackBridge::StepCommand : public QUndoCommand
{
public:
    StepCommand(UndoStackBridge& bridge, const String& label)
        : QUndoCommand(QString::fromStdString(label))
        , bridge(bridge)
    {
    }

    void undo() override { bridge.replayFromStack(true); }
    void redo() override { bridge.replayFromStack(false); }

private:
    UndoStackBridge& bridge;
};

namespace {

/// Marks the stack as following the manager, so that its own undo() and redo() are not sent back.
class FollowGuard
{
public:
    explicit FollowGuard(bool& following)
        : following(following)
        , previous(std::exchange(following, true))
    {
    }
    ~FollowGuard() { following = previous; }
    FollowGuard(const FollowGuard&) = delete;
    FollowGuard& operator=(const FollowGuard&) = delete;

private:
    bool& following;
    bool previous;
};

} // namespace

UndoStackBridge::UndoStackBridge(SharedPtr<UndoManager> manager, QObject* parent)
    : QObject(parent)
    , manager(std::move(manager))
    , stack(new QUndoStack(this))
{
    if (!this->manager)
        Marlix::Detail::throwStopException("widgets/UndoStackBridge", __LINE__);
    rebuild();
    subscription = this->manager->addObserver([this](UndoEvent event) { onUndoEvent(event); });
}

UndoStackBridge::~UndoStackBridge()
{
    subscription.reset();
}

void UndoStackBridge::onUndoEvent(UndoEvent event)
{
    // The stack is replaying one of its own commands on the manager and moves its index itself afterwards.
    if (following)
        return;
    {
        const FollowGuard guard(following);
        switch (event) {
        case UndoEvent::StepAdded:
            // Pushing drops the stack's redo commands, as a new step drops the manager's redo steps.
            stack->push(new StepCommand(*this, manager->getUndoLabel()));
            break;
        case UndoEvent::Undone:
            stack->undo();
            break;
        case UndoEvent::Redone:
            stack->redo();
            break;
        case UndoEvent::Published:
            return;
        case UndoEvent::Cleared:
        case UndoEvent::StepsDropped:
            break;
        }
    }
    if (!isInStep())
        rebuild();
}

void UndoStackBridge::replayFromStack(bool undo)
{
    if (following)
        return;
    const FollowGuard guard(following);
    try {
        if (undo)
            manager->undo();
        else
            manager->redo();
    } catch (const Exception&) {
        // The manager refused (an action is open): the stack has already moved, and it cannot be rebuilt from inside
        // one of its own commands, so it is put back from the event loop.
        QMetaObject::invokeMethod(
            this, [this] { rebuild(); }, Qt::QueuedConnection);
    }
}

bool UndoStackBridge::isInStep() const
{
    return static_cast<std::size_t>(stack->index()) == manager->getUndoCount()
        && static_cast<std::size_t>(stack->count()) == manager->getUndoCount() + manager->getRedoCount();
}

void UndoStackBridge::rebuild()
{
    const FollowGuard guard(following);
    stack->clear();
    const Array<String> undoLabels = manager->getUndoLabels();
    for (auto it = undoLabels.rbegin(); it != undoLabels.rend(); ++it)
        stack->push(new StepCommand(*this, *it));
    const Array<String> redoLabels = manager->getRedoLabels();
    for (auto it = redoLabels.begin(); it != redoLabels.end(); ++it)
        stack->push(new StepCommand(*this, *it));
    stack->setIndex(static_cast<int>(undoLabels.size()));
}

} // namespace Marlix::Widgets
