#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/data/Entity.h>
#include <MarlixLib/data/GenericPropertyAccessor.h>

namespace Marlix {

/// The class an entity-reference property (or a list of references) accepts; empty for other properties.
MARLIXLIB_EXPORT Optional<EntityClassInfo> getEntityClassAcceptedByProperty(const GenericProperty& property);
/// Like the overload for a property; empty as well when the accessor's path does not resolve.
MARLIXLIB_EXPORT Optional<EntityClassInfo> getEntityClassAcceptedByProperty(const GenericPropertyAccessor& accessor);

/// The entity a reference property holds; empty for an empty reference and for other properties.
MARLIXLIB_EXPORT EntityHolder<Entity> getEntityFromProperty(const GenericProperty& property);

/// Every entity `entity` references directly, through single references and lists, nested data objects included.
MARLIXLIB_EXPORT Array<EntityHolder<Entity>> getReferencedEntities(const Entity& entity);
/// The same appended to `out` as plain pointers, for walks over whole scenes that need no references of their own.
MARLIXLIB_EXPORT void appendReferencedEntities(const Entity& entity, Array<const Entity*>& out);

/// False when `parent` is `child` or can be reached from `child` through references: making `parent` reference
/// `child` would then close a cycle.
MARLIXLIB_EXPORT bool canAddChildrenWithoutCycles(const Entity& parent, const Entity& child);
/// True when no entity of \p children would close a cycle; empty holders are skipped.
MARLIXLIB_EXPORT bool canAddChildrenWithoutCycles(const Entity& parent, ArrayView<const EntityHolder<Entity>> children);

} // namespace Marlix
