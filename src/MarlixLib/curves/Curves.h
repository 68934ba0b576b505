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
    Curves(std::size_t channelCount, DefaultCurveType type,
        CurveInterpolation interpolation = CurveInterpolation::CubicSpline);
    explicit Curves(Array<Curve> channels)
        : channels(std::move(channels))
    {
    }

    std::size_t getChannelCount() const noexcept { return channels.size(); }
    bool isEmpty() const noexcept { return channels.empty(); }
    const Array<Curve>& getChannels() const& noexcept { return channels; }
    Array<Curve> getChannels() && noexcept { return std::move(channels); }

    /// An index past the last channel stops the program (a programming error), here and in setChannel.
    const Curve& getChannel(std::size_t index) const;
    Curve& getChannel(std::size_t index);
    const Curve& operator[](std::size_t index) const { return getChannel(index); }
    void setChannel(std::size_t index, Curve curve);

    friend bool operator==(const Curves&, const Curves&) = default;

private:
    Array<Curve> channels;
};

/// Text form: the channels separated by "; ", each its interpolation's name, a colon and its points separated by
/// ", ", each point "x y" followed by "[lx ly rx ry]" when its handles are not the default ones:
/// "cubic: 0 0, 0.5 0.6, 1 1; linear: 0 0, 1 1". Serialized as an array of records with the keys "interpolation"
/// and "points" (records "position", "left", "right"). Reading refuses whatever a Curve refuses, with its reason.
template <> struct MARLIXLIB_EXPORT ValueTraits<Curves>
{
    static String toString(const Curves& value);
    static Expected<Curves, String> fromString(StringView text);
    static void serialize(ISerializer& out, StringView key, const Curves& value);
    static Expected<Curves, String> deserialize(IDeserializer& in, StringView key);
};

} // namespace Marlix
