#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/data/UserData.h>

#include <cstdint>

namespace Marlix::Widgets {

/// How a slider spreads values over its track.
enum class SliderScale : std::uint32_t
{
    /// Equal distances on the track are equal differences of value.
    Linear = 0,
    /// The track is dense at the low end: the upper values get most of the track.
    Exponential = 1,
    /// The track is dense at the high end: small values get most of the track, the usual choice for gains and radii.
    Logarithmic = 2,
};

/// The attribute under which a property carries its UiSliderOptions.
inline constexpr const char* SLIDER_OPTIONS_KEY = "Zorva.Ui.SliderOptions";

/// The slider options of a property: the values at both ends of the track and the scale between them.
struct UiSliderOptions
{
    double minimum = 0.0; ///< The value at the left end of the track.
    double maximum = 1.0; ///< The value at the right end of the track.
    std::uint32_t scale = static_cast<std::uint32_t>(SliderScale::Linear); ///< A SliderScale, stored as its number.
};

/// Maps model values to a slider position fraction (0 at the left end, 1 at the right end) and back.
struct MARLIXLIBQT_EXPORT SliderConverter
{
    /// A linear converter over 0..1.
    SliderConverter();
    /// `scale` is kept as a number: a value outside SliderScale is a programming error reported when the converter is
    /// first used, so that converters built from stored options fail where the value is mapped.
    SliderConverter(double minimum, double maximum, std::uint32_t scale, String suffix = {});
    SliderConverter(double minimum, double maximum, SliderScale scale, String suffix = {}); ///< \overload
    /// Takes the ends and the scale from \p options.
    explicit SliderConverter(const UiSliderOptions& options, String suffix = {});
    /// From the UiSliderOptions under SLIDER_OPTIONS_KEY; a linear 0..1 converter when the property has none.
    explicit SliderConverter(const UserData& userData);

    /// Model value to track fraction; values beyond the ends are not clamped.
    Function<double(double)> toSlider;
    Function<double(double)> fromSlider; ///< Track fraction to model value.
    String suffix; ///< The unit written after the value (without a leading space).
    double minimum = 0.0; ///< The value at the left end.
    double maximum = 1.0; ///< The value at the right end.
    std::uint32_t scale = static_cast<std::uint32_t>(SliderScale::Linear); ///< The SliderScale, stored as its number.
};

/// Model value to track fraction under the given scale; raises the stop exception for an unknown scale.
MARLIXLIBQT_EXPORT double sliderValueToFraction(double value, double minimum, double maximum, std::uint32_t scale);
/// Track fraction to model value under the given scale; raises the stop exception for an unknown scale.
MARLIXLIBQT_EXPORT double sliderFractionToValue(double fraction, double minimum, double maximum, std::uint32_t scale);

} // namespace Marlix::Widgets
