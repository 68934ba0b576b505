#include <MarlixLib/base/Exception.h>
#include <MarlixLib/color/Blackbody.h>
#include <MarlixLib/color/CieObserver.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace Marlix {

namespace {

// Planck's second radiation constant hc/k, in metre kelvins.
constexpr double SECOND_RADIATION_CONSTANT = 1.438776877e-2;

// The logarithm of the spectral radiance, leaving out the constant factor 2hc² that the scaling of the colour cancels.
// Taken as a logarithm so that neither the cold end (where the exponential overflows) nor the hot end loses the
// spectrum's shape.
double logPlanck(double lambdaNm, double kelvin)
{
    const double lambda = lambdaNm * 1e-9;
    const double exponent = SECOND_RADIATION_CONSTANT / (lambda * kelvin);
    // ln(e^x - 1) = x + ln(1 - e^-x), which stays finite where e^x does not.
    const double logDenominator
        = exponent > 30.0 ? exponent + std::log1p(-std::exp(-exponent)) : std::log(std::expm1(exponent));
    return -5.0 * std::log(lambda) - logDenominator;
}

} // namespace

Rgb blackbodyColorRgb(float kelvin)
{
    if (!std::isfinite(kelvin) || kelvin <= 0.0f)
        throw Exception("A black body needs a finite temperature above 0 K, not " + std::to_string(kelvin) + " K");
    // The sum over the observer's own samples is the integral the locus is defined by; interpolating the table to a
    // finer step would move the result by less than its last published digit.
    using namespace CieObserver;
    std::array<double, SAMPLE_COUNT> logRadiance {};
    for (std::size_t i = 0; i < SAMPLE_COUNT; ++i)
        logRadiance[i] = logPlanck(FIRST_WAVELENGTH + static_cast<double>(i * WAVELENGTH_STEP), kelvin);
    // Relative to the strongest sample, so that the sums stay in range at any temperature.
    const double peak = *std::max_element(logRadiance.begin(), logRadiance.end());
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    for (std::size_t i = 0; i < SAMPLE_COUNT; ++i) {
        const double radiance = std::exp(logRadiance[i] - peak);
        const Sample& match = getSamples()[i];
        x += radiance * match.x;
        y += radiance * match.y;
        z += radiance * match.z;
    }
    // XYZ to linear Rec.709 / sRGB primaries with the D65 white.
    const double r = 3.2404542 * x - 1.5371385 * y - 0.4985314 * z;
    const double g = -0.9692660 * x + 1.8760108 * y + 0.0415560 * z;
    const double b = 0.0556434 * x - 0.2040259 * y + 1.0572252 * z;
    // The brightest primary at full intensity, as colour charts of black bodies show them: scaled to a fixed
    // luminance instead, hot bodies would push green as well as blue past 1 and lose their tint when clamped.
    const double scale = 1.0 / std::max({ r, g, b });
    return { static_cast<float>(r * scale), static_cast<float>(g * scale), static_cast<float>(b * scale), 1.0f };
}

} // namespace Marlix
