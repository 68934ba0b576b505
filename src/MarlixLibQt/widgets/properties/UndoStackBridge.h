#pragma once

#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/undo/UndoManager.h>
#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QObject>

class QUndoStack;

namespace Marlix::Widgets {

/// Mirrors a core undo manager into a QUndoStack, so that a host can show a QUndoView and use the stack's undo and
/// redo actions. Undo and redo on either side are done on the other, and the labels are the steps' labels.
class MARLIXLIBQT_EXPORT UndoStackBridge : public QObject
{
    Q_OBJECT

public:
    /// A null manager is a programming error and raises the stop exception.
    explicit UndoStackBridge(SharedPtr<UndoManager> manager, QObject* parent = nullptr);
    ~UndoStackBridge() override;

    /// Owned by the bridge; its commands stand for the manager's steps.
    QUndoStack* undoStack() const { return stack; }
    const SharedPtr<UndoManager>& getUndoManager() const { return manager; } ///< The manager mirrored; never null.

private:
    class StepCommand;
    friend class StepCommand;

    void onUndoEvent(UndoEvent event);
    /// Undo or redo asked for by the stack: done on the manager unless the stack only follows the manager.
    void replayFromStack(bool undo);
    /// Makes the stack again from the manager's labels, for changes the stack has no operation for.
    void rebuild();
    bool isInStep() const;

    SharedPtr<UndoManager> manager;
    QUndoStack* stack = nullptr;
    CallbackLifetime subscription;
    bool following = false;
};

} // namespace Marlix::Widgets
