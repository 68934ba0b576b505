#pragma once

#include <MarlixLib/MarlixLibExport.h>

/// Start-up of the core framework. Reference-counted: every startup() is matched by one shutdown(), and only the
/// first start and the last stop do any work.
namespace Marlix::Lib {

/// Registers the core's value types with the TypeDatabase on the first call; safe from any thread.
MARLIXLIB_EXPORT void startup();
/// Matches one startup(); the last one unregisters the core types. Without a matching startup() it raises the stop
/// exception.
MARLIXLIB_EXPORT void shutdown();
MARLIXLIB_EXPORT bool isStarted(); ///< Whether more startup() than shutdown() calls were made.
MARLIXLIB_EXPORT int getStartCount(); ///< The number of startup() calls not matched by a shutdown() yet.

} // namespace Marlix::Lib

namespace Marlix {
/// True when the environment variable MARLIX_DEVELOPMENT is set to anything but "" or "0": hosts show extra
/// diagnostics then.
MARLIXLIB_EXPORT bool isDevelopmentEnviro();
} // namespace Marlix
