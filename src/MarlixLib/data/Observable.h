#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/FlatSet.h>

namespace Marlix {

class PropertyDefinition;

/// Collects the properties a computation reads on this thread while it is open, so that the computation can be run
/// again when one of them changes. Scopes nest; a read is recorded in the innermost one only.
class MARLIXLIB_EXPORT ObservationScope
{
public:
    ObservationScope();
    ~ObservationScope();
    ObservationScope(const ObservationScope&) = delete;
    ObservationScope& operator=(const ObservationScope&) = delete;

    const FlatSet<const PropertyDefinition*>& getAccessedProperties() const { return accessed; }
    bool hasAccessed(const PropertyDefinition& definition) const { return accessed.contains(&definition); }

private:
    friend class Observable;
    FlatSet<const PropertyDefinition*> accessed;
    ObservationScope* outer;
};

class MARLIXLIB_EXPORT Observable
{
public:
    /// Records a read of `definition` in the innermost scope of this thread; while no scope is open on any thread it
    /// only tests one shared counter.
    static void accessProperty(const PropertyDefinition& definition);
    static ObservationScope* getCurrentScope();
};

} // namespace Marlix
