#include <MarlixLib/base/Exception.h>
#include <MarlixLib/color/ColorGradient.h>
#include <MarlixLib/data/MathValueTraits.h>
#include <MarlixLib/data/ValueTraits.h>

#include <algorithm>
#include <cmath>

namespace Marlix {

namespace {
bool isValidPosition(float position)
{
    return position >= 0.0f && position <= 1.0f; // false for NaN as well
}

String describeBadPosition(float position)
{
    return "A gradient stop position must lie between 0 and 1, not " + ValueTraits<float>::toString(position);
}

void checkPositions(const Array<ColorGradient::Stop>& stops)
{
    for (const ColorGradient::Stop& stop : stops)
        if (!isValidPosition(stop.position))
            throw Exception(describeBadPosition(stop.position));
}

// Stops are read from files; a colour that is not a finite number would poison every mix around it.
void makeColorsFinite(Array<ColorGradient::Stop>& stops)
{
    for (ColorGradient::Stop& stop : stops)
        stop.color = stop.color.toFinite();
}

bool isFinite(const Rgb& color)
{
    return color.toFinite() == color; // a NaN compares unequal to itself
}

String describeBadColor(StringView item)
{
    return "Gradient stop \"" + String(item) + "\": every colour component must be a finite number";
}

bool byPosition(const ColorGradient::Stop& a, const ColorGradient::Stop& b)
{
    return a.position < b.position;
}

StringView trim(StringView text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    return text;
}

constexpr StringView STOP_SEPARATOR = "; ";
} // namespace

ColorGradient::ColorGradient(Array<Stop> initialStops)
{
    setStops(std::move(initialStops));
}

void ColorGradient::setStops(Array<Stop> newStops)
{
    checkPositions(newStops);
    makeColorsFinite(newStops);
    // Stable, so that stops at one position keep their order and a hard edge stays the way it was drawn.
    if (!std::is_sorted(newStops.begin(), newStops.end(), byPosition))
        std::stable_sort(newStops.begin(), newStops.end(), byPosition);
    stops = std::move(newStops);
}

std::size_t ColorGradient::addStop(const Stop& stop)
{
    if (!isValidPosition(stop.position))
        throw Exception(describeBadPosition(stop.position));
    const Stop finite { stop.color.toFinite(), stop.position };
    const auto at = std::upper_bound(stops.begin(), stops.end(), finite, byPosition);
    const auto inserted = stops.insert(at, finite);
    return static_cast<std::size_t>(inserted - stops.begin());
}

void ColorGradient::removeStop(std::size_t index)
{
    if (index >= stops.size())
        throw Exception(
            "The gradient has no stop " + std::to_string(index) + "; it has " + std::to_string(stops.size()));
    stops.erase(stops.begin() + static_cast<std::ptrdiff_t>(index));
}

Rgb ColorGradient::getRgbAt(float position) const noexcept
{
    if (stops.empty())
        return Rgb { 0.0f, 0.0f, 0.0f, 1.0f };
    const float t = std::isnan(position) ? 0.0f : std::clamp(position, 0.0f, 1.0f);
    // The first stop beyond t: its predecessor lies at or before t, so the span between them is never zero and a
    // hard edge (two stops at one position) switches to the later colour exactly at that position.
    const auto after = std::upper_bound(
        stops.begin(), stops.end(), t, [](float value, const Stop& stop) { return value < stop.position; });
    if (after == stops.begin())
        return stops.front().color;
    if (after == stops.end())
        return stops.back().color;
    const Stop& a = *(after - 1);
    const Stop& b = *after;
    const float f = (t - a.position) / (b.position - a.position);
    const auto mix = [f](float x, float y) { return x + (y - x) * f; };
    return Rgb { mix(a.color.r, b.color.r), mix(a.color.g, b.color.g), mix(a.color.b, b.color.b),
        mix(a.color.a, b.color.a) };
}

String ValueTraits<ColorGradient>::toString(const ColorGradient& value)
{
    String text;
    for (const ColorGradient::Stop& stop : value.getStops()) {
        if (!text.empty())
            text += STOP_SEPARATOR;
        text += ValueTraits<float>::toString(stop.position) + " " + ValueTraits<Rgb>::toString(stop.color);
    }
    return text;
}

Expected<ColorGradient, String> ValueTraits<ColorGradient>::fromString(StringView text)
{
    Array<ColorGradient::Stop> stops;
    text = trim(text);
    while (!text.empty()) {
        const std::size_t end = text.find(';');
        const StringView item = trim(text.substr(0, end));
        text = end == StringView::npos ? StringView {} : trim(text.substr(end + 1));
        const std::size_t open = item.find('(');
        if (open == StringView::npos)
            return Unexpected<String>(
                "\"" + String(item) + "\" is not a gradient stop: expected position (r, g, b, a)");
        const auto position = ValueTraits<float>::fromString(item.substr(0, open));
        if (!position)
            return Unexpected<String>("Gradient stop \"" + String(item) + "\": " + position.error());
        if (!isValidPosition(*position))
            return Unexpected<String>(describeBadPosition(*position));
        const auto color = ValueTraits<Rgb>::fromString(item.substr(open));
        if (!color)
            return Unexpected<String>("Gradient stop \"" + String(item) + "\": " + color.error());
        if (!isFinite(*color))
            return Unexpected<String>(describeBadColor(item));
        stops.push_back({ *color, *position });
    }
    return ColorGradient(std::move(stops));
}

void ValueTraits<ColorGradient>::serialize(ISerializer& out, StringView key, const ColorGradient& value)
{
    out.beginArray(key, value.getStopCount());
    for (const ColorGradient::Stop& stop : value.getStops()) {
        out.beginRecord("stop");
        out.writeFloat("position", static_cast<double>(stop.position));
        ValueTraits<Rgb>::serialize(out, "color", stop.color);
        out.endRecord();
    }
    out.endArray();
}

Expected<ColorGradient, String> ValueTraits<ColorGradient>::deserialize(IDeserializer& in, StringView key)
{
    const auto count = in.enterArray(key);
    if (!count)
        return Unexpected<String>(count.error());
    const auto fail = [&in](String message) {
        in.leaveArray();
        return Unexpected<String>(std::move(message));
    };
    Array<ColorGradient::Stop> stops;
    // The count only sizes the room for what the stream holds; a damaged one must not ask for much.
    stops.reserve(std::min<std::size_t>(*count, 256));
    for (std::size_t i = 0; i < *count; ++i) {
        if (auto entered = in.enterRecord("stop"); !entered)
            return fail(entered.error());
        const auto position = ValueTraits<float>::deserialize(in, "position");
        const auto color = ValueTraits<Rgb>::deserialize(in, "color");
        in.leaveRecord();
        if (!position)
            return fail(position.error());
        if (!isValidPosition(*position))
            return fail("Gradient \"" + String(key) + "\": " + describeBadPosition(*position));
        if (!color)
            return fail(color.error());
        if (!isFinite(*color))
            return fail(describeBadColor(key));
        stops.push_back({ *color, *position });
    }
    in.leaveArray();
    return ColorGradient(std::move(stops));
}

} // namespace Marlix
