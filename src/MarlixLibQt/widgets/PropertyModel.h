#pragma once

#include <MarlixLib/base/Exception.h>
#include <MarlixLib/base/FlatSet.h>
#include <MarlixLib/data/GenericDataObject.h>
#include <MarlixLib/data/GenericPropertyAccessor.h>
#include <MarlixLib/data/Observable.h>
#include <MarlixLib/data/TypeDatabase.h>
#include <MarlixLib/undo/IUndoManager.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/Model.h>

#include <typeindex>

namespace Marlix::Widgets {

/// A model bound to one property of one or more entities: every edit, or every gesture between beginChange() and
/// commitChange(), becomes one undoable action, and every change of the property reaches the observers.
template <class T> class PropertyModel : public AbstractModel<T>
{
public:
    static constexpr StringView ACTION_LABEL_PREFIX = "Update of ";

    /// Without an undo manager edits are applied without actions. `displayName` replaces the property's name in
    /// undo labels.
    PropertyModel(GenericPropertyAccessor accessor, SharedPtr<IUndoManager> undoManager,
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

    ~PropertyModel() override
    {
        // An open gesture reverts with its holder; the observers must be gone before that tells them.
        observation.clear();
        action = ActionHolder();
    }

    PropertyModel(const PropertyModel&) = delete;
    PropertyModel& operator=(const PropertyModel&) = delete;

    T get() const override
    {
        if (accessor.isEmpty() || !isResolved(accessor.checkProperty()))
            return T {};
        // The accessor's property is the addressed one, a field of a nested data object included.
        return readProperty(accessor.getProperty());
    }

    void set(T value) override
    {
        if (setDepth.load(std::memory_order_acquire) >= 1)
            return; // a notification of this very set() writing back
        const Detail::DepthGuard guard(setDepth);
        if (accessor.isEmpty() || !isResolved(accessor.checkProperty()))
            return;
        const bool gestureOpen = action.isOpen();
        try {
            if (!gestureOpen)
                beginChange();
            store(value);
            if (!gestureOpen)
                commitChange();
            else
                action.publish();
        } catch (const Exception&) {
            // A bad edit leaves the data and the undo stack as they were.
            revertChange();
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

    /// Reads `property` as a T, converting between numbers; the read is recorded in the observing scope.
    virtual T readProperty(const GenericProperty& property) const
    {
        property.checkIsOfType(std::type_index(typeid(T)), nativeDefinition().get(), TypeKind::Plain, true);
        Observable::accessProperty(property.getDefinition());
        if (!property.getData())
            return T {};
        if constexpr (std::is_arithmetic_v<T>)
            return property.template read<T>();
        else
            return *static_cast<const T*>(property.getData());
    }

    /// Stores `value`; an Exception unless the property holds exactly a T.
    virtual void writeProperty(GenericProperty& property, T value) const
    {
        property.checkIsOfType(std::type_index(typeid(T)), nativeDefinition().get(), TypeKind::Plain, false);
        property.set(value);
    }

    const GenericPropertyAccessor& getAccessor() const { return accessor; }
    const SharedPtr<IUndoManager>& getUndoManager() const { return undoManager; }
    const Optional<String>& getDisplayName() const { return displayName; }
    void setDisplayName(Optional<String> name) { displayName = std::move(name); }
    /// True between beginChange() and commitChange() or revertChange() when there is an undo manager.
    bool isChangeOpen() const { return action.isOpen(); }

private:
    static SharedPtr<TypeDefinition> nativeDefinition()
    {
        return TypeDatabase::instance().lookupNativeTypeDefinition<T>();
    }

    String getUndoName() const
    {
        if (displayName)
            return *displayName;
        return isResolved(accessor.checkProperty()) ? accessor.getDefinition().getName() : accessor.getPath();
    }

    void store(const T& value)
    {
        // Every object is checked before the first is written, so a mismatch on one of them changes none, with or
        // without an action to revert.
        const auto& objects = accessor.getObjects();
        for (std::size_t i = 0; i < objects.size(); ++i) {
            const GenericProperty property = objects[i]->getProperty(accessor.getHandle(i));
            property.checkIsOfType(std::type_index(typeid(T)), nativeDefinition().get(), TypeKind::Plain, false);
        }
        // One object of the selection after the other, each through the handle resolved when the model was made.
        accessor.mutate([this, &value](GenericProperty& property) { writeProperty(property, value); });
    }

    GenericPropertyAccessor accessor;
    Optional<String> displayName;
    SharedPtr<IUndoManager> undoManager;
    CallbacksOwner observation;
    ActionHolder action;
    std::atomic<std::int32_t> setDepth { 0 };
};

/// The entities of a multi-entity reference list, searchable by identity.
using EntityHandleSet = FlatSet<EntityHandle, HeteroOperatorLess<EntityHandle>>;

} // namespace Marlix::Widgets

// Instantiated once in the library (widgets/PropertyModel.cpp).
#define MARLIX_FOR_EACH_PROPERTY_MODEL_TYPE(X)                                                                         \
    X(bool)                                                                                                            \
    X(std::int8_t)                                                                                                     \
    X(std::uint8_t)                                                                                                    \
    X(std::int16_t)                                                                                                    \
    X(std::uint16_t)                                                                                                   \
    X(std::int32_t)                                                                                                    \
    X(std::uint32_t)                                                                                                   \
    X(std::int64_t)                                                                                                    \
    X(float)                                                                                                           \
    X(double)                                                                                                          \
    X(Marlix::String)                                                                                                  \
    X(Marlix::Io::Path)                                                                                                \
    X(Marlix::Rgb)                                                                                                     \
    X(Marlix::Pixel)                                                                                                   \
    X(Marlix::Pos)                                                                                                     \
    X(Marlix::Dir)                                                                                                     \
    X(Marlix::Vector2)                                                                                                 \
    X(Marlix::PosRotScaleTm)                                                                                           \
    X(Marlix::EntityHandle)                                                                                            \
    X(Marlix::EntityHolder<Marlix::Entity>)                                                                            \
    X(Marlix::Widgets::EntityHandleSet)

extern template class MARLIXLIBQT_EXPORT Marlix::Widgets::Model<Marlix::Widgets::EntityHandleSet>;
extern template class MARLIXLIBQT_EXPORT Marlix::Widgets::AbstractModel<Marlix::Widgets::EntityHandleSet>;

#define MARLIX_EXTERN_PROPERTY_MODEL_TYPES(...)                                                                        \
    extern template class MARLIXLIBQT_EXPORT Marlix::Widgets::PropertyModel<__VA_ARGS__>;

MARLIX_FOR_EACH_PROPERTY_MODEL_TYPE(MARLIX_EXTERN_PROPERTY_MODEL_TYPES)
