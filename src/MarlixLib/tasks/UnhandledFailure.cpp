#include <MarlixLib/base/Exception.h>
#include <MarlixLib/tasks/UnhandledFailure.h>

#include <cstdio>

namespace Marlix {

namespace {

Mutex handlerMutex;

UnhandledFailureHandler& currentHandler()
{
    static UnhandledFailureHandler handler;
    return handler;
}

void writeToStandardError(StringView origin, std::exception_ptr failure)
{
    const String message = describeFailure(failure);
    std::fprintf(stderr, "Marlix: unhandled failure in %.*s: %s\n", int(origin.size()), origin.data(), message.c_str());
}

} // namespace

UnhandledFailureHandler setUnhandledFailureHandler(UnhandledFailureHandler handler)
{
    std::lock_guard lock(handlerMutex);
    return std::exchange(currentHandler(), std::move(handler));
}

void reportUnhandledFailure(StringView origin, std::exception_ptr failure) noexcept
{
    try {
        UnhandledFailureHandler handler;
        {
            std::lock_guard lock(handlerMutex);
            handler = currentHandler();
        }
        if (handler)
            handler(origin, failure);
        else
            writeToStandardError(origin, failure);
    } catch (...) {
        // The report itself failed; there is nobody left to tell.
    }
}

String describeFailure(std::exception_ptr failure)
{
    if (!failure)
        return {};
    try {
        std::rethrow_exception(failure);
    } catch (const Exception& e) {
        return e.getMessage();
    } catch (const std::exception& e) {
        return e.what();
    } catch (...) {
        return "an exception that is not a std::exception";
    }
}

} // namespace Marlix
