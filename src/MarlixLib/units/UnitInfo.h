#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Exception.h>

#include <array>

namespace Marlix {

/// One display unit of a unit family: how many base units one display unit is, the suffix shown after numbers, the
/// name shown in menus, and a second spelling accepted when typed (empty when there is none).
template <class Unit> struct UnitInfo
{
    Unit unit; ///< The unit described.
    double factor; ///< How many base units one of this unit is (0.01 for centimetres).
    StringView suffix; ///< Shown after numbers, UTF-8, without a leading space ("cm", "°").
    StringView name; ///< Shown in menus ("Centimeters").
    StringView alternativeSuffix; ///< Also accepted when typed ("deg" for "°"); empty when there is none.
};

namespace Detail {
// Every family declares `constexpr auto unitTable(Unit)` next to its enumeration, found by argument-dependent lookup.
template <class Unit> constexpr const UnitInfo<Unit>& findUnitInfo(Unit unit)
{
    for (const auto& info : unitTable(Unit {}))
        if (info.unit == unit)
            return info;
    // A value outside the enumeration: no constant expression at compile time, a stop at run time.
    Detail::throwStopException("units/UnitInfo", __LINE__);
}
} // namespace Detail

/// All units of the family in menu order.
template <class Unit> constexpr const auto& getAllUnits()
{
    return unitTable(Unit {});
}

/// The size of one display unit in base units (0.01 for centimetres, pi / 180 for degrees).
template <class Unit> constexpr double getUnitFactor(Unit unit)
{
    return Detail::findUnitInfo(unit).factor;
}

/// A value in base units (metres, radians, W/(m²·sr), seconds) expressed in the display unit.
template <class Unit> constexpr double toDisplayUnit(double baseValue, Unit unit)
{
    return baseValue / getUnitFactor(unit);
}

/// A value typed in the display unit, back in base units.
template <class Unit> constexpr double fromDisplayUnit(double displayValue, Unit unit)
{
    return displayValue * getUnitFactor(unit);
}

/// \p value in unit \p from expressed in unit \p to of the same family; exact when the units are the same.
template <class Unit> constexpr double convertUnit(double value, Unit from, Unit to)
{
    return from == to ? value : toDisplayUnit(fromDisplayUnit(value, from), to);
}

/// The symbol shown after a number ("cm", "°"), UTF-8, without a leading space.
template <class Unit> constexpr StringView getUnitSuffix(Unit unit)
{
    return Detail::findUnitInfo(unit).suffix;
}

/// The unit's name as menus show it ("Centimeters"), UTF-8.
template <class Unit> constexpr StringView getUnitName(Unit unit)
{
    return Detail::findUnitInfo(unit).name;
}

/// The unit whose suffix (or alternative spelling) the text is, compared exactly; empty when none matches.
template <class Unit> constexpr Optional<Unit> unitFromSuffix(StringView suffix)
{
    for (const auto& info : unitTable(Unit {}))
        if (info.suffix == suffix || (!info.alternativeSuffix.empty() && info.alternativeSuffix == suffix))
            return info.unit;
    return {};
}

} // namespace Marlix
