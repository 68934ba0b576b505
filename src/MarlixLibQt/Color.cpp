#include <MarlixLibQt/Color.h>

#include <MarlixLib/base/Exception.h>
#include <MarlixLib/color/Blackbody.h>

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <string>

namespace Marlix {

namespace {

// The source unit named by the stop exceptions of this file, so crash reports point here.
constexpr StringView UNIT = "Color";

constexpr float DECODE_EXPONENT = 2.2f;
// 1/2.2 as the float it has always been stored as; colours made by older sessions round-trip only with this value.
constexpr float ENCODE_EXPONENT = 0.45454544f;
constexpr float BYTE_TO_UNIT = 0.003921569f;

constexpr float MINIMUM_KELVIN = 1700.0f;
constexpr float KELVIN_SPAN = 13300.0f;
constexpr float REFERENCE_KELVIN = 6500.0f;

// The component count in which an index of `spec` wraps around.
int componentCount(QColorExtended::Specification spec, int line)
{
    switch (spec) {
    case QColorExtended::RgbSpec:
    case QColorExtended::RgbaSpec:
    case QColorExtended::CmykSpec:
        return 4;
    case QColorExtended::HsvSpec:
    case QColorExtended::HwbSpec:
        return 3;
    }
    Detail::throwStopException(UNIT, line);
}

// The index reduced into the components of `spec`; a negative index has no component.
int wrapIndex(int index, int count, int line)
{
    const int wrapped = index % count;
    if (wrapped < 0)
        Detail::throwStopException(UNIT, line);
    return wrapped;
}

float hueOrZero(float h)
{
    return h > 1.0f ? 0.0f : h;
}

} // namespace

QColorExtended::QColorExtended(const QColor& color)
    : color(color)
{
}

QColorExtended::QColorExtended(Qt::GlobalColor color)
    : color(color)
{
}

float QColorExtended::componentF(Specification spec, int index) const
{
    // The two RGB colour spaces wrap over four so that alpha (index 3) can be read in both.
    const int i = wrapIndex(index, componentCount(spec, __LINE__), __LINE__);
    switch (spec) {
    case RgbSpec:
    case RgbaSpec:
        switch (i) {
        case 0:
            return color.redF();
        case 1:
            return color.greenF();
        case 2:
            return color.blueF();
        case 3:
            return color.alphaF();
        }
        break;
    case HsvSpec:
        switch (i) {
        case 0:
            return hueF();
        case 1:
            return color.hsvSaturationF();
        case 2:
            return color.valueF();
        }
        break;
    case HwbSpec:
        switch (i) {
        case 0:
            return hueF();
        case 1:
            return whitenessF();
        case 2:
            return blacknessF();
        }
        break;
    case CmykSpec:
        switch (i) {
        case 0:
            return color.cyanF();
        case 1:
            return color.magentaF();
        case 2:
            return color.yellowF();
        case 3:
            return color.blackF();
        }
        break;
    }
    Detail::throwStopException(UNIT, __LINE__);
}

QColorExtended QColorExtended::withComponent(const QColor& base, Specification spec, int index, float value)
{
    // Built from the QColor alone: the base's explicit whiteness and blackness are dropped on purpose, so the
    // components that are not replaced are those the colour really has.
    const QColorExtended plain(base);
    std::array<float, 4> components {};
    for (int i = 0; i < 4; ++i)
        components[static_cast<std::size_t>(i)] = plain.componentF(spec, i);
    const int edited = spec == RgbSpec ? 3 : componentCount(spec, __LINE__);
    components[static_cast<std::size_t>(wrapIndex(index, edited, __LINE__))] = value;
    return fromComponents(spec, components.data(), base.alphaF());
}

QColorExtended QColorExtended::fromComponents(Specification spec, const float components[4], float alpha)
{
    switch (spec) {
    case RgbSpec:
        return QColor::fromRgbF(components[0], components[1], components[2], alpha);
    case RgbaSpec:
        return QColor::fromRgbF(components[0], components[1], components[2], components[3]);
    case HsvSpec:
        return fromHsvF(components[0], components[1], components[2], alpha);
    case HwbSpec:
        return fromHwbF(components[0], components[1], components[2], alpha);
    case CmykSpec:
        return QColor::fromCmykF(components[0], components[1], components[2], components[3], alpha);
    }
    Detail::throwStopException(UNIT, __LINE__);
}

QColorExtended QColorExtended::fromHsvF(float h, float s, float v, float alpha)
{
    return QColor::fromHsvF(hueOrZero(h), s, v, alpha);
}

QColorExtended QColorExtended::fromHwbF(float h, float w, float b, float alpha)
{
    float whitenessPart = w;
    float blacknessPart = b;
    if (whitenessPart + blacknessPart > 1.0f) {
        const float scale = 1.0f / (whitenessPart + blacknessPart);
        whitenessPart *= scale;
        blacknessPart *= scale;
    }
    // At blackness 1 the colour is black whatever the whiteness; the saturation formula would divide by zero.
    const float saturation
        = blacknessPart == 1.0f ? 0.0f : std::clamp(1.0f - whitenessPart / (1.0f - blacknessPart), 0.0f, 1.0f);
    QColorExtended result(QColor::fromHsvF(hueOrZero(h), saturation, 1.0f - blacknessPart, alpha));
    // The pair as entered, so that a user who types w 0.8 and b 0.6 reads them back instead of the normalised pair.
    result.explicitWhiteness = w;
    result.explicitBlackness = b;
    return result;
}

float QColorExtended::hueF() const
{
    // Qt reports -1 for achromatic colours.
    return std::clamp(color.hsvHueF(), 0.0f, 1.0f);
}

float QColorExtended::whitenessF() const
{
    if (explicitWhiteness >= 0.0f)
        return explicitWhiteness;
    return color.valueF() * (1.0f - color.hsvSaturationF());
}

float QColorExtended::blacknessF() const
{
    if (explicitBlackness >= 0.0f)
        return explicitBlackness;
    return 1.0f - color.valueF();
}

int QColorExtended::whiteness() const
{
    if (explicitWhiteness >= 0.0f)
        return static_cast<int>(explicitWhiteness * 255.0f);
    return (255 - color.hsvSaturation()) * color.value() / 255;
}

QColorExtended QColorExtended::inverted(int alpha) const
{
    return QColor::fromRgb(255 - color.red(), 255 - color.green(), 255 - color.blue(),
        alpha == -1 ? color.alpha() : alpha);
}

float temperatureToOriginalRange(float t)
{
    return std::round(t * KELVIN_SPAN) + MINIMUM_KELVIN;
}

QColor temperatureToColor(float t)
{
    // Pickers and thumbnails may ask from several threads; the local static is initialised once under the
    // compiler's guard.
    static const Rgb referenceWhite = blackbodyColorRgb(REFERENCE_KELVIN);
    const Rgb rgb = blackbodyColorRgb(temperatureToOriginalRange(t));
    const auto encode = [](float channel, float reference) {
        return std::pow(std::clamp(channel / reference, 0.0f, 1.0f), ENCODE_EXPONENT);
    };
    return QColor::fromRgbF(encode(rgb.r, referenceWhite.r), encode(rgb.g, referenceWhite.g),
        encode(rgb.b, referenceWhite.b), 1.0f);
}

QColor albedoToColor(float albedo)
{
    const float grey = std::pow(albedo, ENCODE_EXPONENT);
    return QColor::fromRgbF(grey, grey, grey, 1.0f);
}

float colorToAlbedo(const QColor& color)
{
    return (std::pow(color.redF(), DECODE_EXPONENT) + std::pow(color.greenF(), DECODE_EXPONENT)
               + std::pow(color.blueF(), DECODE_EXPONENT))
        * 0.33333334f;
}

Rgb toRgb(const QColor& color, bool withAlpha)
{
    // Through the 8-bit channels on purpose: what leaves the dialog has 256 levels per channel, as it always had.
    const auto decode = [](int channel) { return std::pow(static_cast<float>(channel) * BYTE_TO_UNIT, DECODE_EXPONENT); };
    const int alpha = withAlpha ? color.alpha() : 255;
    return { decode(color.red()), decode(color.green()), decode(color.blue()),
        static_cast<float>(alpha) * BYTE_TO_UNIT };
}

QColorExtended fromRgb(const Rgb& rgb, bool withAlpha)
{
    // Painting asks for this with colours read from files and properties: a bad component is shown as a defined
    // colour, never as an error out of a paint event. Qt makes a colour with alpha outside [0, 1] invalid.
    const Rgb finite = rgb.toFinite();
    // A negative linear component lies outside what a display can show; it is shown as none of that primary.
    const auto encode = [](float channel) { return std::pow(std::max(channel, 0.0f), ENCODE_EXPONENT); };
    return QColor::fromRgbF(encode(finite.r), encode(finite.g), encode(finite.b),
        withAlpha ? std::clamp(finite.a, 0.0f, 1.0f) : 1.0f);
}

} // namespace Marlix

namespace Marlix::Widgets {

namespace {
constexpr double DISPLAY_DECODE_EXPONENT = 2.2;
// The float 1/2.2 widened to double: numbers typed in earlier sessions convert back to the same component.
constexpr double DISPLAY_ENCODE_EXPONENT = 0.45454543828964233;

constexpr std::array<ColorValueRange, COLOR_VALUE_TYPE_COUNT> DISPLAY_RANGES {
    ColorValueRange { 0.0f, 255.0f },
    ColorValueRange { 0.0f, 1.0f },
    ColorValueRange { 0.0f, 100.0f },
    ColorValueRange { 0.0f, 255.0f },
    ColorValueRange { 0.0f, 1.0f },
    ColorValueRange { 0.0f, 100.0f },
};

std::size_t checkedIndex(ColorValueType type, int line)
{
    const auto value = static_cast<std::int32_t>(type);
    if (value < 0 || value >= COLOR_VALUE_TYPE_COUNT)
        Detail::throwStopException(UNIT, line);
    return static_cast<std::size_t>(value);
}

double span(double low, double high, int line)
{
    // An empty range has no numbers to show; a row is always made with a real one.
    if (!(high != low))
        Detail::throwStopException(UNIT, line);
    return high - low;
}
} // namespace

bool isLinear(ColorValueType type)
{
    return checkedIndex(type, __LINE__) >= static_cast<std::size_t>(ColorValueType::LinearByte);
}

ColorValueRange getDisplayRange(ColorValueType type)
{
    return DISPLAY_RANGES[checkedIndex(type, __LINE__)];
}

QString getDisplayText(ColorValueType type)
{
    return QCoreApplication::translate("Marlix::Color", COLOR_VALUE_TYPE_TEXTS[checkedIndex(type, __LINE__)]);
}

ColorValueType toColorValueType(long long value)
{
    if (value < 0 || value >= COLOR_VALUE_TYPE_COUNT)
        Detail::throwStopException(UNIT, __LINE__);
    return static_cast<ColorValueType>(value);
}

double componentToDisplay(ColorValueType type, double value, double low, double high)
{
    const double range = span(low, high, __LINE__);
    if (isLinear(type))
        return std::pow(std::max(value, 0.0), DISPLAY_DECODE_EXPONENT) * range + low;
    return low + range * value;
}

double displayToComponent(ColorValueType type, double shown, double low, double high)
{
    const double fraction = (shown - low) / span(low, high, __LINE__);
    if (isLinear(type))
        return std::pow(std::max(fraction, 0.0), DISPLAY_ENCODE_EXPONENT);
    return fraction;
}

} // namespace Marlix::Widgets
