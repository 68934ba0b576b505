#pragma once

#include <MarlixLib/units/UnitInfo.h>

#include <cstdint>
#include <numbers>

namespace Marlix {

/// Display units of angles; the base unit is the radian.
enum class AngleUnit : std::uint8_t
{
    Radian,
    Degree,
};

inline constexpr std::array<UnitInfo<AngleUnit>, 2> ANGLE_UNITS { {
    { AngleUnit::Radian, 1.0, "rad", "Radians", {} },
    { AngleUnit::Degree, std::numbers::pi / 180.0, "°", "Degrees", "deg" },
} };

constexpr const auto& unitTable(AngleUnit)
{
    return ANGLE_UNITS;
}

} // namespace Marlix
