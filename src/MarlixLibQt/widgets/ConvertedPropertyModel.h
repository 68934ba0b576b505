#pragma once

#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/GenericPropertyAccessor.h>
#include <MarlixLib/undo/IUndoManager.h>
#include <MarlixLibQt/widgets/Model.h>

namespace Marlix::Widgets {

/// A model over one property whose value is converted on the way in and out: the property's integer value, its text
/// form. Edits follow the rules of PropertyModel (one undo action "Update of <name>" per edit or per gesture, a
/// refused edit changes nothing), and a refused edit is reported, so that the editor can say why.
template <class T> class ConvertedPropertyModel : public AbstractModel<T>
{
public:
    static constexpr StringView ACTION_LABEL_PREFIX = "Update of ";
    using RejectionHandler = Function<void(const String& message)>;

    ConvertedPropertyModel(GenericPropertyAccessor accessor, SharedPtr<IUndoManager> undoManager,
        Optional<String> displayName = std::nullopt)
        : accessor(std::move(accessor))
        , displayName(std::move(displayName))
        , undoManager(std::move(undoManager))
    {
        for (const auto& object : this->accessor.getObjects())
            if (isResolved(object->checkPropertyPath(this->accessor.getPath())))
                observation.add(
                    object->getProperty(this->accessor.getPath()).addObserver([this](const ObservedProperty&) {
                        this->notifyCallbacks();
                    }));
    }

    ~ConvertedPropertyModel() override
    {
        observation.clear();
        action = ActionHolder();
    }

    T get() const override
    {
        if (accessor.isEmpty() || !isResolved(accessor.checkProperty()))
            return T {};
        return readValue();
    }

    void set(T value) override
    {
        if (setDepth.load(std::memory_order_acquire) >= 1)
            return;
        const Detail::DepthGuard guard(setDepth);
        if (accessor.isEmpty() || !isResolved(accessor.checkProperty()))
            return;
        const bool gestureOpen = action.isOpen();
        try {
            if (!gestureOpen)
                beginChange();
            writeValue(value);
            if (!gestureOpen)
                commitChange();
            else
                action.publish();
        } catch (const Exception& error) {
            revertChange();
            if (rejectionHandler)
                rejectionHandler(error.getMessage());
            // The editor still shows what was refused; it reads the value that stayed.
            this->notifyCallbacks();
            return;
        }
        this->notifyCallbacks();
    }

    void beginChange() override
    {
        if (undoManager && !action.isOpen())
            action = undoManager->createAction(String(ACTION_LABEL_PREFIX) + getUndoName(), ActionFlag::UserEdit);
    }

    void commitChange() override
    {
        if (action.isOpen())
            action.commit();
        action = ActionHolder();
    }

    void revertChange() override
    {
        if (action.isOpen())
            action.revert();
        action = ActionHolder();
    }

    /// Called with the reason whenever an edit is refused.
    void setRejectionHandler(RejectionHandler handler) { rejectionHandler = std::move(handler); }

    const GenericPropertyAccessor& getAccessor() const { return accessor; }
    const SharedPtr<IUndoManager>& getUndoManager() const { return undoManager; }

protected:
    /// Called only while the path resolves on every object.
    virtual T readValue() const = 0;
    /// Writes `value` to every object, or throws an Exception before changing any of them.
    virtual void writeValue(const T& value) = 0;

private:
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
