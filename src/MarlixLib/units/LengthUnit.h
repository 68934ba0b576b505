#pragma once

#include <MarlixLib/units/UnitInfo.h>

#include <cstdint>

namespace Marlix {

/// Display units of lengths; the base unit is the metre.
enum class LengthUnit : std::uint8_t
{
    Micrometer, ///< "µm", also typed as "um".
    Millimeter, ///< "mm".
    Centimeter, ///< "cm".
    Meter, ///< "m", the base unit.
    Kilometer, ///< "km".
    Inch, ///< "in" (25.4 mm), also typed as a double quote.
    Foot, ///< "ft" (0.3048 m), also typed as an apostrophe.
    Yard, ///< "yd" (0.9144 m).
    Mile, ///< "mi" (1609.344 m).
};

/// Every length unit in menu order, with its factor to the base unit, suffix, menu name and typed alternative.
inline constexpr std::array<UnitInfo<LengthUnit>, 9> LENGTH_UNITS { {
    { LengthUnit::Micrometer, 1e-6, "µm", "Micrometers", "um" },
    { LengthUnit::Millimeter, 1e-3, "mm", "Millimeters", {} },
    { LengthUnit::Centimeter, 1e-2, "cm", "Centimeters", {} },
    { LengthUnit::Meter, 1.0, "m", "Meters", {} },
    { LengthUnit::Kilometer, 1e3, "km", "Kilometers", {} },
    { LengthUnit::Inch, 0.0254, "in", "Inches", "\"" },
    { LengthUnit::Foot, 0.3048, "ft", "Feet", "'" },
    { LengthUnit::Yard, 0.9144, "yd", "Yards", {} },
    { LengthUnit::Mile, 1609.344, "mi", "Miles", {} },
} };

/// LENGTH_UNITS, found by argument-dependent lookup by the unit templates (getUnitFactor() and the others).
constexpr const auto& unitTable(LengthUnit)
{
    return LENGTH_UNITS;
}

} // namespace Marlix
