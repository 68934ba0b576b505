#pragma once

#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLibQt/widgets/Model.h>
#include <MarlixLibQt/widgets/properties/IEntityHandleContext.h>

#include <atomic>
#include <type_traits>

namespace Marlix::Widgets {

/// A model over one entity handle, read as an EntityHandle or as the entity itself (EntityHolder<Entity>). It never
/// keeps the entity alive: once the entity has expired, or the host's context no longer accepts it, the model reads
/// as empty, and its observers hear of it when the context reports expirations.
template <class T> class EntityHandleModel : public AbstractModel<T>
{
    static_assert(std::is_same_v<T, EntityHandle> || std::is_same_v<T, EntityHolder<Entity>>,
        "an entity handle model reads a handle or the entity");

public:
    /// `entityClass` narrows the expirations listened to; null listens to every class. The context must outlive the
    /// model, as the host's context outlives every widget of the host.
    explicit EntityHandleModel(
        IEntityHandleContext& context, EntityHandle handle = {}, const EntityClassInfo* entityClass = nullptr)
        : context(context)
        , handle(std::move(handle))
    {
        expiration = context.addExpirationObserver(
            [this] {
                // Only a handle that just went empty is news; an expiration of some other entity is not.
                const bool empty = readEntity() == nullptr;
                if (empty != reportedEmpty) {
                    reportedEmpty = empty;
                    this->notifyCallbacks();
                }
            },
            entityClass);
        reportedEmpty = readEntity() == nullptr;
    }

    /// Not copyable: the context's observer refers to this model.
    EntityHandleModel(const EntityHandleModel&) = delete;
    EntityHandleModel& operator=(const EntityHandleModel&) = delete; ///< Not assignable.

    /// The handle or entity while the entity lives and the context accepts it; empty otherwise.
    T get() const override
    {
        const EntityHolder<Entity> entity = readEntity();
        if constexpr (std::is_same_v<T, EntityHandle>)
            return entity ? handle : EntityHandle {};
        else
            return entity;
    }

    /// Refers to \p value's entity from now on and tells the observers; writes from those observers are ignored.
    void set(T value) override
    {
        if (setDepth.load(std::memory_order_acquire) >= 1)
            return; // an observer writing back what it was just told
        const Detail::DepthGuard guard(setDepth);
        handle = EntityHandle(toHolder(value));
        reportedEmpty = readEntity() == nullptr;
        this->notifyCallbacks();
    }

    /// The handle as it was set, also after its entity has expired (it keeps the identity).
    const EntityHandle& getHandle() const { return handle; }

private:
    static EntityHolder<Entity> toHolder(const T& value)
    {
        if constexpr (std::is_same_v<T, EntityHandle>)
            return value.lock();
        else
            return value;
    }

    EntityHolder<Entity> readEntity() const
    {
        EntityHolder<Entity> entity = handle.lock();
        return entity && context.isEntityReferenceValid(entity) ? entity : nullptr;
    }

    IEntityHandleContext& context;
    EntityHandle handle;
    CallbackLifetime expiration;
    bool reportedEmpty = true;
    std::atomic<std::int32_t> setDepth { 0 };
};

} // namespace Marlix::Widgets
