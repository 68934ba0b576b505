#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/curves/Curve.h>

#include <cstddef>

namespace Marlix {

class ISerializer;
class IDeserializer;
template <class T> struct ValueTraits;

/// The tone curves of an image, one per channel (for example a master curve, then red, green and blue).
class MARLIXLIB_EXPORT Curves
{
public:
    /// No channel.
    Curves() = default;
    /// \p channelCount channels, each the two points of \p type.
    Curves(std::size_t channelCount, DefaultCurveType type,
        CurveInterpolation interpolation = CurveInterpolation::CubicSpline);
    /// The given curves, channel 0 first.
    explicit Curves(Array<Curve> channels)
        : channels(std::move(channels))
    {
    }

    std::size_t getChannelCount() const noexcept { return channels.size(); } ///< The number of curves.
    bool isEmpty() const noexcept { return channels.empty(); } ///< Whether there is no channel.
    const Array<Curve>& getChannels() const& noexcept { return channels; } ///< The curves, channel 0 first.
    /// \overload
    /// Curves returned by value hand their channels over, so a loop over them never dangles.
    Array<Curve> getChannels() && noexcept { return std::move(channels); }

    /// An index past the last channel stops the program (a programming error), here and in setChannel.
    const Curve& getChannel(std::size_t index) const;
    Curve& getChannel(std::size_t index); ///< \overload
    const Curve& operator[](std::size_t index) const { return getChannel(index); } ///< getChannel().
    void setChannel(std::size_t index, Curve curve); ///< Replaces the curve of channel \p index.

    friend bool operator==(const Curves&, const Curves&) = default; ///< Same curves in the same order.

private:
    Array<Curve> channels;
};

/// Text form: the channels separated by "; ", each its interpolation's name, a colon and its points separated by
/// ", ", each point "x y" followed by "[lx ly rx ry]" when its handles are not the default ones:
/// "cubic: 0 0, 0.5 0.6, 1 1; linear: 0 0, 1 1". Serialized as an array of records with the keys "interpolation"
/// and "points" (records "position", "left", "right"). Reading refuses whatever a Curve refuses, with its reason.
template <> struct MARLIXLIB_EXPORT ValueTraits<Curves>
{
    static String toString(const Curves& value); ///< The text form above.
    /// The curves of the text form, or an error naming the channel and the reason.
    static Expected<Curves, String> fromString(StringView text);
    /// Writes the channels as an array under \p key.
    static void serialize(ISerializer& out, StringView key, const Curves& value);
    /// Reads what serialize() wrote; anything missing or refused is an error and no curves.
    static Expected<Curves, String> deserialize(IDeserializer& in, StringView key);
};

} // namespace Marlix
