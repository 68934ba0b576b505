#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/units/AngleUnit.h>
#include <MarlixLib/units/LengthUnit.h>
#include <MarlixLib/units/RadianceUnit.h>
#include <MarlixLib/units/TimeUnit.h>

#include <cstdint>
#include <tuple>

namespace Marlix {

/// What a number measures, and so in which unit family it is shown. Stored on property definitions so that editors
/// show the value in the user's display units; the value itself is always kept in the family's base unit.
enum class Quantity : std::uint8_t
{
    /// A plain number: shown as it is, without a suffix.
    None,
    Length, ///< Kept in metres.
    Angle, ///< Kept in radians.
    Radiance, ///< Kept in watts per square metre and steradian.
    Time, ///< Kept in seconds.
};

/// The units a scene is shown in: length, angle, radiance and time, in this order.
using DisplayUnits = std::tuple<LengthUnit, AngleUnit, RadianceUnit, TimeUnit>;

/// Metres, degrees, W/(m²·sr) and seconds: what a scene is shown in until the user picks otherwise.
inline constexpr DisplayUnits DEFAULT_DISPLAY_UNITS { LengthUnit::Meter, AngleUnit::Degree,
    RadianceUnit::WattPerSquareMeterSteradian, TimeUnit::Second };

/// How a number of one quantity is shown in given display units: displayed = base / factor.
struct QuantityConversion
{
    double factor = 1.0; ///< Base units per display unit; 1 for a plain number.
    StringView suffix; ///< The unit's symbol ("cm"), empty for a plain number; static text, never dangling.

    constexpr double toDisplay(double baseValue) const { return baseValue / factor; } ///< Base to display unit.
    constexpr double fromDisplay(double displayValue) const { return displayValue * factor; } ///< And back.
    /// Equal when factor and suffix are.
    friend constexpr bool operator==(const QuantityConversion&, const QuantityConversion&) = default;
};

/// The conversion for \p quantity in the display unit that \p units picks for its family; the identity without a
/// suffix for Quantity::None.
constexpr QuantityConversion getQuantityConversion(Quantity quantity, const DisplayUnits& units)
{
    switch (quantity) {
    case Quantity::Length:
        return { getUnitFactor(std::get<LengthUnit>(units)), getUnitSuffix(std::get<LengthUnit>(units)) };
    case Quantity::Angle:
        return { getUnitFactor(std::get<AngleUnit>(units)), getUnitSuffix(std::get<AngleUnit>(units)) };
    case Quantity::Radiance:
        return { getUnitFactor(std::get<RadianceUnit>(units)), getUnitSuffix(std::get<RadianceUnit>(units)) };
    case Quantity::Time:
        return { getUnitFactor(std::get<TimeUnit>(units)), getUnitSuffix(std::get<TimeUnit>(units)) };
    case Quantity::None:
        break;
    }
    return {};
}

/// "Length", "Angle", ...; "Number" for Quantity::None.
MARLIXLIB_EXPORT StringView getQuantityName(Quantity quantity);

/// Reads a number typed by the user, such as "12.5", "12.5 cm" or "-90°", and returns it in base units. A number
/// without a suffix is in the display unit of the quantity; a suffix may name any unit of the quantity's family.
/// Quantity::None accepts no suffix. The error names what is wrong.
MARLIXLIB_EXPORT Expected<double, String> parseQuantity(StringView text, Quantity quantity, const DisplayUnits& units);

/// The value in the display unit with the given number of decimals and the unit's suffix ("12.50 cm", "90°").
MARLIXLIB_EXPORT String formatQuantity(double baseValue, Quantity quantity, const DisplayUnits& units, int decimals);

} // namespace Marlix
