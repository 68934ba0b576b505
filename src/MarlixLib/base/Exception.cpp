#include <MarlixLib/base/Exception.h>

namespace Marlix {

Exception::Exception(String message)
    : message(std::move(message))
{
}

const char* Exception::what() const noexcept
{
    return message.c_str();
}

StopException::StopException(String unit, int line)
    : unit(std::move(unit))
    , line(line)
    , message("Stopped at " + this->unit + ":" + std::to_string(line))
{
}

const char* StopException::what() const noexcept
{
    return message.c_str();
}

void Detail::throwStopException(StringView unit, int line)
{
    throw StopException(String(unit), line);
}

} // namespace Marlix
