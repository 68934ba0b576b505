#include <MarlixLib/color/Blackbody.h>

#include <MarlixLib/base/Exception.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace Marlix {

namespace {

// Planck's second radiation constant hc/k, in metre kelvins.
constexpr double SECOND_RADIATION_CONSTANT = 1.438776877e-2;

// The visible range of the observer and the step of the integration, in nanometres. One nanometre is the spacing of
// the observer's own tables; the curves are smooth enough that a finer step changes nothing in the fourth decimal.
constexpr int FIRST_WAVELENGTH = 360;
constexpr int LAST_WAVELENGTH = 830;

// A Gaussian with different widths left and right of its peak.
double lobe(double lambda, double mean, double leftWidth, double rightWidth)
{
    const double t = (lambda - mean) / (lambda < mean ? leftWidth : rightWidth);
    return std::exp(-0.5 * t * t);
}

// The CIE 1931 2° colour matching functions as sums of asymmetric Gaussians (Wyman, Sloan and Shirley, "Simple
// analytic approximations to the CIE XYZ color matching functions", 2013). With them the Planckian locus stays within
// 0.003 in x and y of the tabulated observer's from 2000 K up, a shift nobody sees in a colour swatch.
double matchX(double lambda)
{
    return 1.056 * lobe(lambda, 599.8, 37.9, 31.0) + 0.362 * lobe(lambda, 442.0, 16.0, 26.7)
        - 0.065 * lobe(lambda, 501.1, 20.4, 26.2);
}

double matchY(double lambda)
{
    return 0.821 * lobe(lambda, 568.8, 46.9, 40.5) + 0.286 * lobe(lambda, 530.9, 16.3, 31.1);
}

double matchZ(double lambda)
{
    return 1.217 * lobe(lambda, 437.0, 11.8, 36.0) + 0.681 * lobe(lambda, 459.0, 26.0, 13.8);
}

// The logarithm of the spectral radiance, leaving out the constant factor 2hc² that the scaling of the colour cancels. Taken as a logarithm so that neither the cold end (where the exponential overflows) nor the hot end loses
// the spectrum's shape.
double logPlanck(double lambdaNm, double kelvin)
{
    const double lambda = lambdaNm * 1e-9;
    const double exponent = SECOND_RADIATION_CONSTANT / (lambda * kelvin);
    // ln(e^x - 1) = x + ln(1 - e^-x), which stays finite where e^x does not.
    const double logDenominator
        = exponent > 30.0 ? exponent + std::log1p(-std::exp(-exponent)) : std::log(std::expm1(exponent));
    return -5.0 * std::log(lambda) - logDenominator;
}

constexpr std::size_t SAMPLE_COUNT = LAST_WAVELENGTH - FIRST_WAVELENGTH + 1;

struct Observer
{
    std::array<double, SAMPLE_COUNT> x {};
    std::array<double, SAMPLE_COUNT> y {};
    std::array<double, SAMPLE_COUNT> z {};
};

// The observer's curves at every sample, made once: a temperature slider asks for a colour per column.
const Observer& getObserver()
{
    static const Observer observer = [] {
        Observer result;
        for (std::size_t i = 0; i < SAMPLE_COUNT; ++i) {
            const double lambda = FIRST_WAVELENGTH + static_cast<double>(i);
            result.x[i] = matchX(lambda);
            result.y[i] = matchY(lambda);
            result.z[i] = matchZ(lambda);
        }
        return result;
    }();
    return observer;
}

} // namespace

Rgb blackbodyColorRgb(float kelvin)
{
    if (!std::isfinite(kelvin) || kelvin <= 0.0f)
        throw Exception("A black body needs a finite temperature above 0 K, not " + std::to_string(kelvin) + " K");
    std::array<double, SAMPLE_COUNT> logRadiance {};
    for (std::size_t i = 0; i < SAMPLE_COUNT; ++i)
        logRadiance[i] = logPlanck(FIRST_WAVELENGTH + static_cast<double>(i), kelvin);
    // Relative to the strongest sample, so that the sums stay in range at any temperature.
    const double peak = *std::max_element(logRadiance.begin(), logRadiance.end());
    const Observer& observer = getObserver();
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    for (std::size_t i = 0; i < SAMPLE_COUNT; ++i) {
        const double radiance = std::exp(logRadiance[i] - peak);
        x += radiance * observer.x[i];
        y += radiance * observer.y[i];
        z += radiance * observer.z[i];
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
