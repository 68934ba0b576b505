#pragma once

#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/GenericPropertyAccessor.h>
#include <MarlixLib/undo/IUndoManager.h>
#include <MarlixLibQt/QtUtils.h>
#include <MarlixLibQt/widgets/Model.h>

#include <QCoreApplication>

namespace Marlix::Widgets {

/// What every model over one property shares, whatever it reads the property as (its value, its integer value, its
/// text form): one undo action "Update of <name>" per edit or per gesture, a refused edit changes nothing and is
/// reported, so that the editor can say why, and every change of the property reaches the observers.
template <class T> class PropertyModelBase : public AbstractModel<T>
{
public:
    /// Source text of the start of every undo label, before the property's name; translated when the step is made.
    static constexpr StringView ACTION_LABEL_PREFIX
        = QT_TRANSLATE_NOOP("Marlix::Widgets::PropertyModelBase", "Update of ");
    /// Receives the reason of a refused edit, as the Exception's message.
    using RejectionHandler = Function<void(const String& message)>;

    /// Without an undo manager edits are applied without actions. `displayName` replaces the property's name in
    /// undo labels.
    PropertyModelBase(GenericPropertyAccessor accessor, SharedPtr<IUndoManager> undoManager,
        Optional<String> displayName = std::nullopt)
        : accessor(std::move(accessor))
        , displayName(std::move(displayName))
        , undoManager(std::move(undoManager))
    {
        // Objects on which the path does not resolve have nothing to observe; they read as the default value.
        const auto& objects = this->accessor.getObjects();
        for (std::size_t i = 0; i < objects.size(); ++i)
            if (const GenericPropertyHandle& handle = this->accessor.getHandle(i); handle.isResolved())
                observation.add(objects[i]->getProperty(handle).addObserver(
                    [this](const ObservedProperty&) { this->notifyCallbacks(); }));
    }

    /// Reverts an open gesture and stops observing.
    ~PropertyModelBase() override
    {
        // An open gesture reverts with its holder; the observers must be gone before that tells them.
        observation.clear();
        action = ActionHolder();
    }

    /// The value on the objects; the default value of T while the accessor is empty or its path does not resolve.
    T get() const override
    {
        if (accessor.isEmpty() || !isResolved(accessor.checkProperty()))
            return T {};
        return readValue();
    }

    /// Not copyable: observers and an open gesture belong to one model.
    PropertyModelBase(const PropertyModelBase&) = delete;
    PropertyModelBase& operator=(const PropertyModelBase&) = delete; ///< Not copyable.

    /// Writes `value` to every object as one undo action, joined to the open gesture if there is one. A refused write
    /// changes nothing and goes to the rejection handler; a write made by a notification of this very write is ignored.
    void set(T value) override
    {
        if (setDepth.load(std::memory_order_acquire) >= 1)
            return; // a notification of this very set() writing back
        const Detail::DepthGuard guard(setDepth);
        if (accessor.isEmpty() || !isResolved(accessor.checkProperty()))
            return;
        const bool gestureOpen = action.isOpen();
        // Each write has an action of its own; inside a gesture it joins the gesture's action when committed. A
        // refused write takes back only itself (also a selection written halfway), so the gesture stays open, keeps
        // its earlier values and remains one undo step.
        ActionHolder step;
        if (undoManager)
            step = undoManager->createAction(undoLabel(), ActionFlag::UserEdit);
        try {
            writeValue(value);
            if (step.isOpen())
                step.commit();
            if (gestureOpen)
                action.publish();
        } catch (const Exception& error) {
            if (step.isOpen())
                step.revert();
            if (rejectionHandler) {
                rejectionHandler(error.getMessage());
                // The editor that asked to hear of refusals still shows what was refused; it reads the value that
                // stayed.
                this->notifyCallbacks();
            }
            return;
        }
        this->notifyCallbacks();
    }

    /// Opens a gesture: the writes until commitChange() become one undo step. Does nothing without an undo manager or
    /// while a gesture is open.
    void beginChange() override
    {
        if (undoManager && !action.isOpen())
            action = undoManager->createAction(undoLabel(), ActionFlag::UserEdit);
    }

    /// Closes the gesture, keeping its writes as one undo step.
    void commitChange() override
    {
        if (action.isOpen())
            action.commit();
        action = ActionHolder();
    }

    /// Closes the gesture and takes back its writes.
    void revertChange() override
    {
        if (action.isOpen())
            action.revert();
        action = ActionHolder();
    }

    /// Called with the reason whenever an edit is refused.
    void setRejectionHandler(RejectionHandler handler) { rejectionHandler = std::move(handler); }

    /// The property on every object the model reads and writes.
    const GenericPropertyAccessor& getAccessor() const { return accessor; }
    /// Null when edits are applied without undo.
    const SharedPtr<IUndoManager>& getUndoManager() const { return undoManager; }
    /// Replaces the property's name in undo labels; none uses the definition's name.
    const Optional<String>& getDisplayName() const { return displayName; }
    /// Applies to undo actions created from now on.
    void setDisplayName(Optional<String> name) { displayName = std::move(name); }
    /// True between beginChange() and commitChange() or revertChange() when there is an undo manager.
    bool isChangeOpen() const { return action.isOpen(); }

protected:
    /// Called only while the path resolves on every object.
    virtual T readValue() const = 0;
    /// Writes `value` to every object, or throws an Exception before changing any of them.
    virtual void writeValue(const T& value) = 0;

private:
    /// Named in the language of the moment: the undo history shows it as it was made.
    String undoLabel() const
    {
        return fromQt(QCoreApplication::translate("Marlix::Widgets::PropertyModelBase", ACTION_LABEL_PREFIX.data()))
            + getUndoName();
    }
    String getUndoName() const
    {
        if (displayName)
            return *displayName;
        return isResolved(accessor.checkProperty()) ? accessor.getDefinition().getName() : accessor.getPath();
    }

    GenericPropertyAccessor accessor;
    Optional<String> displayName;
    SharedPtr<IUndoManager> undoManager;
    RejectionHandler rejectionHandler;
    CallbacksOwner observation;
    ActionHolder action;
    std::atomic<std::int32_t> setDepth { 0 };
};

} // namespace Marlix::Widgets
