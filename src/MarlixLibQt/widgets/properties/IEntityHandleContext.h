#pragma once

#include <MarlixLib/base/Callbacks.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/base/Polymorphic.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLib/data/EntityClassInfo.h>
#include <MarlixLibQt/MarlixLibQtExport.h>

namespace Marlix::Widgets {

/// How the entity references shown in a property sheet are validated, observed and filtered.
// The core has no entity-handle scope to derive from, so the context is its own root.
class MARLIXLIBQT_EXPORT IEntityHandleContext : public Polymorphic
{
public:
    /// Accepts the entities a list offers; an empty function accepts all.
    using EntityFilter = Function<bool(const EntityHolder<Entity>&)>;

    /// Whether `reference` is a valid entity of the scene the sheet edits; entity pickers offer only valid ones.
    virtual bool isEntityReferenceValid(const EntityHolder<Entity>& reference) const = 0;
    /// `onExpired` is called when references of `entityClass` (of every class when null) may have expired.
    [[nodiscard]] virtual CallbackLifetime addExpirationObserver(
        Function<void()> onExpired, const EntityClassInfo* entityClass)
        = 0;
    /// The class entity pickers offer when a property names none.
    virtual EntityClassInfo getDefaultEntityClass() const = 0;
    /// The filter of entity lists when a property names none; an empty function accepts every entity.
    virtual EntityFilter getDefaultEntityFilter() const = 0;
};

/// The permissive context: every reference is valid, none expires, every entity is offered.
class MARLIXLIBQT_EXPORT DefaultEntityHandleContext : public IEntityHandleContext
{
public:
    bool isEntityReferenceValid(const EntityHolder<Entity>& reference) const override; ///< Always true.
    CallbackLifetime addExpirationObserver(Function<void()> onExpired, const EntityClassInfo* entityClass) override;
    EntityClassInfo getDefaultEntityClass() const override;
    EntityFilter getDefaultEntityFilter() const override;
};

} // namespace Marlix::Widgets
