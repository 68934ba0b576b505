#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/units/Quantity.h>

namespace Marlix::Widgets {

template <class T> struct ModelValueConverter;

/// How a number editor shows a model value: the value in display units and the unit suffix written after it.
template <> struct ModelValueConverter<double>
{
    Function<double(double)> toDisplay = &identity; ///< Model value to the number shown.
    Function<double(double)> fromDisplay = &identity; ///< Number typed to model value.
    /// Written after the number, without a leading space ("cm", "°").
    String suffix;

    /// The value as it is, without a suffix.
    static ModelValueConverter identityConverter() { return {}; }

    /// Shows a value stored in the quantity's base unit (metres, radians, seconds ...) in the given display units.
    static ModelValueConverter fromQuantity(Quantity quantity, const DisplayUnits& units)
    {
        const QuantityConversion conversion = getQuantityConversion(quantity, units);
        const double factor = conversion.factor;
        if (factor == 1.0)
            return { &identity, &identity, String(conversion.suffix) };
        return { [factor](double value) { return value / factor; }, [factor](double value) { return value * factor; },
            String(conversion.suffix) };
    }

    static double identity(double value) { return value; } ///< Returns \p value unchanged; the default conversion.
};

} // namespace Marlix::Widgets
