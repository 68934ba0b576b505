#pragma once

#include <MarlixLib/units/UnitInfo.h>

#include <cstdint>

namespace Marlix {

/// Display units of durations and times; the base unit is the second.
enum class TimeUnit : std::uint8_t
{
    Millisecond, ///< "ms".
    Second, ///< "s", the base unit; also typed as "sec".
    Minute, ///< "min".
    Hour, ///< "h".
};

/// Every time unit in menu order, with its factor to the base unit, suffix, menu name and typed alternative.
inline constexpr std::array<UnitInfo<TimeUnit>, 4> TIME_UNITS { {
    { TimeUnit::Millisecond, 1e-3, "ms", "Milliseconds", {} },
    { TimeUnit::Second, 1.0, "s", "Seconds", "sec" },
    { TimeUnit::Minute, 60.0, "min", "Minutes", {} },
    { TimeUnit::Hour, 3600.0, "h", "Hours", {} },
} };

/// TIME_UNITS, found by argument-dependent lookup by the unit templates (getUnitFactor() and the others).
constexpr const auto& unitTable(TimeUnit)
{
    return TIME_UNITS;
}

} // namespace Marlix
