#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/data/TypeDatabase.h>

namespace Marlix {

/// The value types of the core itself, registered as one module by the first Lib::startup.
MARLIXLIB_EXPORT const TypeModuleRecord& getCoreTypesRecord();

/// The name under which the core registers the type of a reference to any entity.
inline constexpr StringView ENTITY_REFERENCE_TYPE_NAME = "EntityReference";
/// The name under which the core registers the type of a list of references to any entity.
inline constexpr StringView ENTITY_REFERENCE_LIST_TYPE_NAME = "EntityReferenceList";

} // namespace Marlix
