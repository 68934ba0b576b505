#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/color/Hsv.h>
#include <MarlixLib/color/Rgb.h>

#include <cstddef>
#include <utility>

namespace Marlix {

class ISerializer;
class IDeserializer;
template <class T> struct ValueTraits;

/// A colour ramp over [0, 1] given by stops: each stop a linear RGBA colour at a position. The stops are always kept
/// sorted by position; stops at equal positions keep the order in which they came and make a hard edge.
class MARLIXLIB_EXPORT ColorGradient
{
public:
    /// One colour of the ramp and where it sits.
    struct Stop
    {
        Rgb color; ///< Linear RGBA, straight alpha.
        float position = 0.0f; ///< In [0, 1].

        friend constexpr bool operator==(const Stop&, const Stop&) = default; ///< Same colour at the same position.
    };

    /// An empty gradient: no stops, and black wherever it is read.
    ColorGradient() = default;
    /// Throws Exception when a position is not a number or lies outside [0, 1]. Colour components that are not finite
    /// numbers are made finite (Rgb::toFinite), here and wherever stops are added.
    explicit ColorGradient(Array<Stop> stops);

    const Array<Stop>& getStops() const& noexcept { return stops; } ///< The stops, sorted by position.
    /// \overload
    /// A gradient returned by value (a model's get()) hands its stops over, so a loop over them never dangles.
    Array<Stop> getStops() && noexcept { return std::move(stops); }
    std::size_t getStopCount() const noexcept { return stops.size(); } ///< The number of stops.
    bool isEmpty() const noexcept { return stops.empty(); } ///< Whether there is no stop (black everywhere).

    /// Replaces all stops, sorting them; on a bad position throws Exception and keeps the old stops.
    void setStops(Array<Stop> newStops);
    /// Inserts a stop after those at the same position and returns its index; a bad position throws Exception.
    std::size_t addStop(const Stop& stop);
    /// Throws Exception when there is no stop at `index`.
    void removeStop(std::size_t index);

    /// The colour at `position`, mixed linearly in linear RGBA between the two stops around it. Before the first stop
    /// and after the last one the end colours hold; positions outside [0, 1] are clamped, a NaN reads as 0.
    Rgb getRgbAt(float position) const noexcept;
    /// getRgbAt as hue, saturation and value.
    Hsv getColorAt(float position) const noexcept { return Hsv::fromRgb(getRgbAt(position)); }

    friend bool operator==(const ColorGradient&, const ColorGradient&) = default; ///< Same stops in the same order.

private:
    Array<Stop> stops;
};

/// Text form "position (r, g, b, a)" per stop, stops separated by "; ", the empty text for no stops; serialized as an
/// array of records with the keys "position" and "color". Reading refuses a colour component that is not a finite
/// number, as it refuses a bad position.
template <> struct MARLIXLIB_EXPORT ValueTraits<ColorGradient>
{
    static String toString(const ColorGradient& value); ///< "0 (1, 0, 0, 1); 1 (0, 0, 1, 1)".
    /// The gradient the text form describes, or an error naming the stop that is wrong.
    static Expected<ColorGradient, String> fromString(StringView text);
    /// Writes the stops as an array under \p key.
    static void serialize(ISerializer& out, StringView key, const ColorGradient& value);
    /// Reads what serialize() wrote; a missing key, a bad position or colour is an error and no gradient.
    static Expected<ColorGradient, String> deserialize(IDeserializer& in, StringView key);
};

} // namespace Marlix
