#pragma once

#include <MarlixLib/units/UnitInfo.h>

#include <cstdint>
#include <numbers>

namespace Marlix {

/// Display units of angles; the base unit is the radian.
enum class AngleUnit : std::uint8_t
{
    Radian, ///< "rad", the base unit.
    Degree, ///< "°", also typed as "deg".
};

/// Every angle unit in menu order, with its factor to the base unit, suffix, menu name and typed alternative.
inline constexpr std::array<UnitInfo<AngleUnit>, 2> ANGLE_UNITS { {
    { AngleUnit::Radian, 1.0, "rad", "Radians", {} },
    { AngleUnit::Degree, std::numbers::pi / 180.0, "°", "Degrees", "deg" },
} };

/// ANGLE_UNITS, found by argument-dependent lookup by the unit templates (getUnitFactor() and the others).
constexpr const auto& unitTable(AngleUnit)
{
    return ANGLE_UNITS;
}

} // namespace Marlix
