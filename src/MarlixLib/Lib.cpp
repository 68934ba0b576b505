#include <MarlixLib/Lib.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Exception.h>
#include <MarlixLib/data/CoreTypes.h>
#include <MarlixLib/data/TypeDatabase.h>

#include <cstdlib>
#include <string_view>

namespace Marlix {

namespace {
Mutex startMutex;
int startCount = 0;
} // namespace

void Lib::startup()
{
    std::lock_guard lock(startMutex);
    if (startCount == 0)
        TypeDatabase::instance().registerModuleTypes(getCoreTypesRecord());
    ++startCount;
}

void Lib::shutdown()
{
    std::lock_guard lock(startMutex);
    if (startCount == 0)
        Detail::throwStopException("Lib", __LINE__);
    if (--startCount == 0)
        TypeDatabase::instance().unregisterModuleTypes(getCoreTypesRecord());
}

bool Lib::isStarted()
{
    std::lock_guard lock(startMutex);
    return startCount > 0;
}

int Lib::getStartCount()
{
    std::lock_guard lock(startMutex);
    return startCount;
}

bool isDevelopmentEnviro()
{
    const char* value = std::getenv("MARLIX_DEVELOPMENT");
    return value && std::string_view(value) != "0" && std::string_view(value) != "";
}

} // namespace Marlix
