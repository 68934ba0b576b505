#include <MarlixLib/base/Exception.h>
#include <MarlixLib/units/Quantity.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace Marlix {

namespace {

StringView trimmed(StringView text)
{
    const auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

template <class Unit> Optional<double> factorOfSuffix(StringView suffix)
{
    if (const auto unit = unitFromSuffix<Unit>(suffix))
        return getUnitFactor(*unit);
    return {};
}

Optional<double> factorOfSuffix(Quantity quantity, StringView suffix)
{
    switch (quantity) {
    case Quantity::Length:
        return factorOfSuffix<LengthUnit>(suffix);
    case Quantity::Angle:
        return factorOfSuffix<AngleUnit>(suffix);
    case Quantity::Radiance:
        return factorOfSuffix<RadianceUnit>(suffix);
    case Quantity::Time:
        return factorOfSuffix<TimeUnit>(suffix);
    case Quantity::None:
        break;
    }
    return {};
}

} // namespace

StringView getQuantityName(Quantity quantity)
{
    switch (quantity) {
    case Quantity::None:
        return "Number";
    case Quantity::Length:
        return "Length";
    case Quantity::Angle:
        return "Angle";
    case Quantity::Radiance:
        return "Radiance";
    case Quantity::Time:
        return "Time";
    }
    Detail::throwStopException("units/Quantity", __LINE__);
}

Expected<double, String> parseQuantity(StringView text, Quantity quantity, const DisplayUnits& units)
{
    text = trimmed(text);
    if (text.empty())
        return Unexpected<String>("No number was given.");
    // from_chars rejects a leading '+', which people do type.
    const bool plus = text.front() == '+';
    const char* begin = text.data() + (plus ? 1 : 0);
    const char* end = text.data() + text.size();
    double value = 0.0;
    const auto [rest, error] = std::from_chars(begin, end, value);
    if (error != std::errc() || (plus && begin < end && *begin == '-'))
        return Unexpected<String>("\"" + String(text) + "\" does not start with a number.");
    if (!std::isfinite(value))
        return Unexpected<String>("\"" + String(text) + "\" is not a finite number.");
    const StringView suffix = trimmed(StringView(rest, std::size_t(end - rest)));
    if (suffix.empty())
        return getQuantityConversion(quantity, units).fromDisplay(value);
    if (quantity == Quantity::None)
        return Unexpected<String>("A plain number takes no unit, but \"" + String(suffix) + "\" was given.");
    const auto factor = factorOfSuffix(quantity, suffix);
    if (!factor)
        return Unexpected<String>(
            "\"" + String(suffix) + "\" is not a unit of " + String(getQuantityName(quantity)) + ".");
    return value * *factor;
}

String formatQuantity(double baseValue, Quantity quantity, const DisplayUnits& units, int decimals)
{
    const QuantityConversion conversion = getQuantityConversion(quantity, units);
    char buffer[64];
    const int length
        = std::snprintf(buffer, sizeof buffer, "%.*f", std::clamp(decimals, 0, 17), conversion.toDisplay(baseValue));
    String text(buffer, std::size_t(std::clamp(length, 0, int(sizeof buffer) - 1)));
    if (conversion.suffix.empty())
        return text;
    // Degrees are written against the number, every other symbol after a space.
    if (conversion.suffix != "°")
        text += ' ';
    text += conversion.suffix;
    return text;
}

} // namespace Marlix
