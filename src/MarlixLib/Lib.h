#pragma once

#include <MarlixLib/MarlixLibExport.h>

/// Start-up of the core framework. Reference-counted: every startup() is matched by one shutdown(), and only the
/// first start and the last stop do any work.
namespace Marlix::Lib {

MARLIXLIB_EXPORT void startup();
MARLIXLIB_EXPORT void shutdown();
MARLIXLIB_EXPORT bool isStarted();
MARLIXLIB_EXPORT int getStartCount();

} // namespace Marlix::Lib

namespace Marlix {
/// True when MARLIX_DEVELOPMENT is set to anything but "0": hosts show extra diagnostics then.
MARLIXLIB_EXPORT bool isDevelopmentEnviro();
} // namespace Marlix
