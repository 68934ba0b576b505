#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <MarlixLib/color/Rgb.h>

#include <QColor>
#include <QString>

#include <array>
#include <cstdint>

namespace Marlix {

/// A QColor that also keeps the HWB whiteness and blackness exactly as the user typed them.
///
/// The HSV form inside a QColor loses both: a whiteness and blackness that add up to more than 1 are normalised, and
/// at value 0 neither hue nor whiteness survives. Only colours built from HWB components carry the explicit pair;
/// every other construction leaves it unset (negative), and the pair is then derived from the colour.
class MARLIXLIBQT_EXPORT QColorExtended
{
public:
    /// The colour space (RGB, HSV, HWB, CMYK) that a component index refers to.
    enum class Specification : std::int32_t {
        /// Red, green, blue; alpha (index 3) can be read but is not one of the edited components.
        RgbSpec = 0,
        RgbaSpec = 1, ///< Red, green, blue and alpha; index 3 is an edited component.
        HsvSpec = 2, ///< Hue, saturation, value.
        /// Hue, whiteness, blackness.
        HwbSpec = 3,
        /// Cyan, magenta, yellow, key.
        CmykSpec = 4,
    };
    using enum Specification;

    /// Component indices of RgbSpec.
    enum class RgbComponent : std::int32_t { Red = 0, Green = 1, Blue = 2 };
    /// Component indices of RgbaSpec.
    enum class RgbaComponent : std::int32_t { Red = 0, Green = 1, Blue = 2, Alpha = 3 };
    /// Component indices of HsvSpec.
    enum class HsvComponent : std::int32_t { Hue = 0, Saturation = 1, Value = 2 };
    /// Component indices of CmykSpec.
    enum class CmykComponent : std::int32_t { Cyan = 0, Magenta = 1, Yellow = 2, Key = 3 };

    /// Whiteness or blackness that is not set and is derived from the colour.
    static constexpr float UNSET = -1.0f;

    /// An invalid colour.
    QColorExtended() = default;
    /// The colour as it is, with the whiteness and blackness derived from it.
    QColorExtended(const QColor& color); // NOLINT(google-explicit-constructor): a QColor is a colour without HWB
    /// The Qt named colour, without explicit whiteness and blackness.
    QColorExtended(Qt::GlobalColor color); // NOLINT(google-explicit-constructor)

    /// The plain colour, so that a QColorExtended goes wherever a QColor is asked for.
    operator const QColor&() const { return color; } // NOLINT(google-explicit-constructor)
    /// The plain colour; the explicit whiteness and blackness are not part of it.
    const QColor& getColor() const { return color; }

    /// The whiteness as entered, or a negative value when it is derived from the colour.
    float getExplicitWhiteness() const { return explicitWhiteness; }
    /// The blackness as entered, or a negative value when it is derived from the colour.
    float getExplicitBlackness() const { return explicitBlackness; }
    /// Whether the colour was built from HWB components that are kept as entered.
    bool hasExplicitHwb() const { return explicitWhiteness >= 0.0f || explicitBlackness >= 0.0f; }

    /// Component `index` of this colour in `spec`, normalised to [0, 1]. The index wraps around the component count;
    /// a negative index or an unknown colour space stops the program.
    float componentF(Specification spec, int index) const;

    /// `base` with one component replaced. The explicit whiteness and blackness of `base` are not carried over: the
    /// other components are read from its colour.
    static QColorExtended withComponent(const QColor& base, Specification spec, int index, float value);
    /// The colour of four components in `spec`. `alpha` is used by every colour space but RgbaSpec, which takes its
    /// alpha from components[3].
    static QColorExtended fromComponents(Specification spec, const float components[4], float alpha);
    /// \overload
    static QColorExtended fromComponents(Specification spec, const std::array<float, 4>& components, float alpha)
    {
        return fromComponents(spec, components.data(), alpha);
    }
    /// QColor::fromHsvF, with a hue above 1 taken as 0.
    static QColorExtended fromHsvF(float h, float s, float v, float alpha = 1.0f);
    /// The colour of hue, whiteness and blackness; w and b are kept as given even when they had to be normalised.
    static QColorExtended fromHwbF(float h, float w, float b, float alpha = 1.0f);

    /// The HSV hue in [0, 1]; 0 for achromatic colours.
    float hueF() const;
    /// The HWB whiteness in [0, 1]: the one entered when there is one, else derived from the colour.
    float whitenessF() const;
    /// The HWB blackness in [0, 1]: the one entered when there is one, else derived from the colour.
    float blacknessF() const;
    /// Whiteness from 0 to 255.
    int whiteness() const;
    /// The RGB inverse; `alpha` -1 keeps this colour's alpha.
    QColorExtended inverted(int alpha = -1) const;

    // The channel reads used everywhere, so that callers need not spell out the QColor.
    bool isValid() const { return color.isValid(); } ///< False for a default-constructed colour.
    int red() const { return color.red(); } ///< Red from 0 to 255.
    int green() const { return color.green(); } ///< Green from 0 to 255.
    int blue() const { return color.blue(); } ///< Blue from 0 to 255.
    int alpha() const { return color.alpha(); } ///< Alpha from 0 (transparent) to 255.
    float redF() const { return color.redF(); } ///< Red in [0, 1].
    float greenF() const { return color.greenF(); } ///< Green in [0, 1].
    float blueF() const { return color.blueF(); } ///< Blue in [0, 1].
    float alphaF() const { return color.alphaF(); } ///< Alpha in [0, 1].

    /// Colours compare by their colour alone: the explicit whiteness and blackness are how it was entered, not what
    /// it is.
    friend bool operator==(const QColorExtended& a, const QColorExtended& b) { return a.color == b.color; }
    /// Compares with a plain colour, by the colour alone.
    friend bool operator==(const QColorExtended& a, const QColor& b) { return a.color == b; }

private:
    QColor color;
    float explicitWhiteness = UNSET;
    float explicitBlackness = UNSET;
};

/// The normalised temperature 0..1 in whole kelvins: 1700 K to 15000 K.
MARLIXLIBQT_EXPORT float temperatureToOriginalRange(float t);
/// The display colour of a black body at the normalised temperature `t`, relative to the white of 6500 K.
MARLIXLIBQT_EXPORT QColor temperatureToColor(float t);
/// The display grey whose linear intensity is `albedo`.
MARLIXLIBQT_EXPORT QColor albedoToColor(float albedo);
/// The mean of the linearised red, green and blue channels.
MARLIXLIBQT_EXPORT float colorToAlbedo(const QColor& color);

/// The linear colour handed to the rest of the system. The channels go through 8 bits first, so every value leaving a
/// colour dialog has 256 levels per channel; without `withAlpha` the alpha is opaque.
MARLIXLIBQT_EXPORT Rgb toRgb(const QColor& color, bool withAlpha);
/// The display colour of a linear colour; without `withAlpha` the result is opaque. Never throws: components that are
/// not finite numbers are made finite (Rgb::toFinite) and alpha is clamped to [0, 1].
MARLIXLIBQT_EXPORT QColorExtended fromRgb(const Rgb& rgb, bool withAlpha);

} // namespace Marlix

namespace Marlix::Widgets {

/// How the numeric spinners of a colour show and accept a component: display-encoded as stored ("sRGB") or
/// linearised with a power of 2.2, on one of three scales.
enum class ColorValueType : std::int32_t {
    SrgbByte = 0, ///< sRGB, 0 to 255.
    SrgbUnit = 1, ///< sRGB, 0 to 1.
    SrgbPercent = 2, ///< sRGB, 0 % to 100 %.
    LinearByte = 3, ///< Linear, 0 to 255.
    LinearUnit = 4, ///< Linear, 0 to 1.
    LinearPercent = 5, ///< Linear, 0 % to 100 %.
};

inline constexpr int COLOR_VALUE_TYPE_COUNT = 6; ///< The number of ColorValueType values.

/// The choices as offered to the user, indexed by the value of ColorValueType.
inline constexpr std::array<const char*, COLOR_VALUE_TYPE_COUNT> COLOR_VALUE_TYPE_TEXTS {
    QT_TRANSLATE_NOOP("Marlix::Color", "sRGB (0-255)"),
    QT_TRANSLATE_NOOP("Marlix::Color", "sRGB (0-1)"),
    QT_TRANSLATE_NOOP("Marlix::Color", "sRGB (0-100%)"),
    QT_TRANSLATE_NOOP("Marlix::Color", "Linear (0-255)"),
    QT_TRANSLATE_NOOP("Marlix::Color", "Linear (0-1)"),
    QT_TRANSLATE_NOOP("Marlix::Color", "Linear (0-100%)"),
};

/// The tool tip of the selector of the value type.
inline constexpr const char* COLOR_VALUE_TYPE_TOOL_TIP = QT_TRANSLATE_NOOP("Marlix::Color",
    "Selects whether the color values will be displayed/entered in sRGB or linear color space. This option modifies "
    "only the actual numbers displayed in the spinners, it does not in any way influence internal color "
    "representation or renderer behavior. With linear color space, the color picker dialog behaves the same way as "
    "the default 3ds Max color picker. With sRGB color space you can transfer numerical color values directly from "
    "2D image editing software.");

/// The numbers a spinner shows for components 0 and 1.
struct ColorValueRange
{
    float low = 0.0f; ///< The number shown for component 0.
    float high = 1.0f; ///< The number shown for component 1.

    friend constexpr bool operator==(const ColorValueRange&, const ColorValueRange&) = default; ///< Compares both ends.
};

/// True for a value type that shows linearised components. Stops the program for a value outside the enumeration.
MARLIXLIBQT_EXPORT bool isLinear(ColorValueType type);
/// The numbers shown for components 0 and 1 of the value type; stops the program outside the enumeration.
MARLIXLIBQT_EXPORT ColorValueRange getDisplayRange(ColorValueType type);
/// The label of the value type, as in COLOR_VALUE_TYPE_TEXTS.
MARLIXLIBQT_EXPORT QString getDisplayText(ColorValueType type);
/// The value type stored as the integer of a value-type model; values outside the enumeration stop the program.
MARLIXLIBQT_EXPORT ColorValueType toColorValueType(long long value);

/// The number shown for the normalised component `value` on a row whose display range is [low, high].
MARLIXLIBQT_EXPORT double componentToDisplay(ColorValueType type, double value, double low, double high);
/// The normalised component of a number entered on a row whose display range is [low, high].
MARLIXLIBQT_EXPORT double displayToComponent(ColorValueType type, double shown, double low, double high);

} // namespace Marlix::Widgets
