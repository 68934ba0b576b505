#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>

#include <exception>

namespace Marlix {

/// A recoverable failure with a message for the user or the log.
class MARLIXLIB_EXPORT Exception : public std::exception
{
public:
    explicit Exception(String message); ///< \p message says what failed, in words fit for the user.
    const char* what() const noexcept override; ///< The message, UTF-8.
    const String& getMessage() const noexcept { return message; } ///< The message given at construction.

private:
    String message;
};

/// A broken invariant: a programming error that stops the current operation. It names the source unit (the file's
/// folder and name, "widgets/Slider") and the line, so a crash report points at the check that failed.
class MARLIXLIB_EXPORT StopException : public std::exception
{
public:
    StopException(String unit, int line); ///< The check at \p line of \p unit failed.
    const char* what() const noexcept override; ///< "Stopped at widgets/Slider:42".
    const String& getUnit() const noexcept { return unit; } ///< The source unit, such as "widgets/Slider".
    int getLine() const noexcept { return line; } ///< The line of the failed check in that unit.

private:
    String unit;
    int line;
    String message;
};

namespace Detail {
[[noreturn]] MARLIXLIB_EXPORT void throwStopException(StringView unit, int line);
} // namespace Detail

} // namespace Marlix
