#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>

#include <exception>

namespace Marlix {

/// Called with the origin ("task", "thread Foo") and the exception of a failure that nobody collected.
using UnhandledFailureHandler = Function<void(StringView origin, std::exception_ptr failure)>;

/// Replaces the process-wide handler of failures that no caller collected (a failed task destroyed before anyone read
/// its failure, a standby thread whose body threw) and returns the previous one. An empty handler restores the
/// default, which writes the failure to the standard error stream. Safe from any thread.
MARLIXLIB_EXPORT UnhandledFailureHandler setUnhandledFailureHandler(UnhandledFailureHandler handler);

/// Hands the failure to the current handler; a handler that throws is ignored so that reporting never fails.
MARLIXLIB_EXPORT void reportUnhandledFailure(StringView origin, std::exception_ptr failure) noexcept;

/// The message of a captured exception: Exception and std::exception give their text, anything else a generic one.
MARLIXLIB_EXPORT String describeFailure(std::exception_ptr failure);

} // namespace Marlix
