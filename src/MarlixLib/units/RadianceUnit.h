#pragma once

#include <MarlixLib/units/UnitInfo.h>

#include <cstdint>

namespace Marlix {

/// Display units of radiance; the base unit is the watt per square metre and steradian.
enum class RadianceUnit : std::uint8_t
{
    WattPerSquareMeterSteradian, ///< "W/(m²·sr)", the base unit; also typed as "W/m2/sr".
    WattPerSquareCentimeterSteradian, ///< "W/(cm²·sr)", 10 000 base units; also typed as "W/cm2/sr".
    /// Candela per square metre, converted with the luminous efficacy of 683 lm/W (monochromatic light at 555 nm),
    /// the convention renderers use for a single radiance number.
    Nit,
};

/// Every radiance unit in menu order, with its factor to the base unit, suffix, menu name and typed alternative.
inline constexpr std::array<UnitInfo<RadianceUnit>, 3> RADIANCE_UNITS { {
    { RadianceUnit::WattPerSquareMeterSteradian, 1.0, "W/(m²·sr)", "Watts per square meter and steradian", "W/m2/sr" },
    { RadianceUnit::WattPerSquareCentimeterSteradian, 1e4, "W/(cm²·sr)", "Watts per square centimeter and steradian",
        "W/cm2/sr" },
    { RadianceUnit::Nit, 1.0 / 683.0, "cd/m²", "Nits", "nt" },
} };

/// RADIANCE_UNITS, found by argument-dependent lookup by the unit templates (getUnitFactor() and the others).
constexpr const auto& unitTable(RadianceUnit)
{
    return RADIANCE_UNITS;
}

} // namespace Marlix
