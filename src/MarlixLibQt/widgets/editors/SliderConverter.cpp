#include <MarlixLibQt/widgets/editors/SliderConverter.h>

#include <MarlixLib/base/Exception.h>

#include <cmath>
#include <utility>

namespace Marlix::Widgets {

namespace {
// Single-precision constants: the mapping of stored slider positions must not drift between versions.
constexpr float ONE_NINTH = 0.11111111f;
constexpr float LOG10_E = 0.43429446f;
} // namespace

double sliderValueToFraction(double value, double minimum, double maximum, std::uint32_t scale)
{
    const double range = maximum - minimum;
    const double t = range != 0.0 ? (value - minimum) / range : 0.0;
    switch (static_cast<SliderScale>(scale)) {
    case SliderScale::Linear:
        return t;
    case SliderScale::Exponential:
        return static_cast<double>((std::pow(10.0f, static_cast<float>(t)) - 1.0f) * ONE_NINTH);
    case SliderScale::Logarithmic:
        return static_cast<double>(std::log(9.0f * static_cast<float>(t) + 1.0f) * LOG10_E);
    }
    Marlix::Detail::throwStopException("widgets/Slider", __LINE__);
}

double sliderFractionToValue(double fraction, double minimum, double maximum, std::uint32_t scale)
{
    const double range = maximum - minimum;
    const auto f = static_cast<float>(fraction);
    switch (static_cast<SliderScale>(scale)) {
    case SliderScale::Linear:
        return minimum + range * fraction;
    case SliderScale::Exponential:
        return minimum + range * static_cast<double>(std::log(9.0f * f + 1.0f) * LOG10_E);
    case SliderScale::Logarithmic:
        return minimum + range * static_cast<double>((std::pow(10.0f, f) - 1.0f) * ONE_NINTH);
    }
    Marlix::Detail::throwStopException("widgets/Slider", __LINE__);
}

SliderConverter::SliderConverter()
    : SliderConverter(0.0, 1.0, SliderScale::Linear)
{
}

SliderConverter::SliderConverter(double minimum, double maximum, std::uint32_t scale, String suffix)
    : toSlider([minimum, maximum, scale](double value) {
        return sliderValueToFraction(value, minimum, maximum, scale);
    })
    , fromSlider([minimum, maximum, scale](double fraction) {
        return sliderFractionToValue(fraction, minimum, maximum, scale);
    })
    , suffix(std::move(suffix))
    , minimum(minimum)
    , maximum(maximum)
    , scale(scale)
{
}

SliderConverter::SliderConverter(double minimum, double maximum, SliderScale scale, String suffix)
    : SliderConverter(minimum, maximum, static_cast<std::uint32_t>(scale), std::move(suffix))
{
}

SliderConverter::SliderConverter(const UiSliderOptions& options, String suffix)
    : SliderConverter(options.minimum, options.maximum, options.scale, std::move(suffix))
{
}

SliderConverter::SliderConverter(const UserData& userData)
    : SliderConverter(userData.get<UiSliderOptions>(SLIDER_OPTIONS_KEY) ? *userData.get<UiSliderOptions>(SLIDER_OPTIONS_KEY)
                                                                         : UiSliderOptions {})
{
}

} // namespace Marlix::Widgets
