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
    ObservationScope(); ///< Opens a scope on this thread, inside the current one if any.
    ~ObservationScope(); ///< Closes the scope; the outer one becomes current again. Scopes must close in reverse order.
    /// Not copyable: the thread refers to the open scope by address.
    ObservationScope(const ObservationScope&) = delete;
    ObservationScope& operator=(const ObservationScope&) = delete; ///< Not assignable.

    /// The definitions read while the scope was innermost, each once.
    const FlatSet<const PropertyDefinition*>& getAccessedProperties() const { return accessed; }
    /// True when a property of \p definition was read while the scope was innermost.
    bool hasAccessed(const PropertyDefinition& definition) const { return accessed.contains(&definition); }

private:
    friend class Observable;
    FlatSet<const PropertyDefinition*> accessed;
    ObservationScope* outer;
};

/// Where every typed read reports itself, so that an open ObservationScope learns what a computation depends on.
class MARLIXLIB_EXPORT Observable
{
public:
    /// Records a read of `definition` in the innermost scope of this thread; while no scope is open on any thread it
    /// only tests one shared counter.
    static void accessProperty(const PropertyDefinition& definition);
    static ObservationScope* getCurrentScope(); ///< The innermost scope open on this thread; null when none is.
};

} // namespace Marlix
