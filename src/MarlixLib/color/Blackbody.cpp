#include <MarlixLib/color/Blackbody.h>

#include <MarlixLib/base/Exception.h>

#include <cmath>
#include <string>

namespace Marlix {

namespace {

// Planck's second radiation constant hc/k in metre kelvins and the first, 2hc², in W m² / sr.
constexpr double SECOND_RADIATION_CONSTANT = 1.438776877e-2;
constexpr double FIRST_RADIATION_CONSTANT = 1.191042972e-16;
// Lumens per watt at the peak of the photopic curve: turns radiance weighted by ȳ into luminance.
constexpr double LUMINOUS_EFFICACY = 683.002;

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
// analytic approximations to the CIE XYZ color matching functions", 2013). Their error against the tabulated curves is
// below what the chromaticity of a smooth spectrum such as Planck's can show.
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

// Spectral radiance in W / (m² sr nm).
double planck(double lambdaNm, double kelvin)
{
    const double lambda = lambdaNm * 1e-9;
    const double exponent = SECOND_RADIATION_CONSTANT / (lambda * kelvin);
    // Beyond this the exponential overflows a double and the radiance is zero for every practical purpose.
    if (exponent > 700.0)
        return 0.0;
    const double lambda5 = lambda * lambda * lambda * lambda * lambda;
    return FIRST_RADIATION_CONSTANT / (lambda5 * std::expm1(exponent)) * 1e-9;
}

} // namespace

BlackbodyXyz blackbodyColorXyz(double kelvin)
{
    if (!std::isfinite(kelvin) || kelvin <= 0.0)
        throw Exception("A black body needs a finite temperature above 0 K, not " + std::to_string(kelvin) + " K");
    BlackbodyXyz xyz;
    for (int nm = FIRST_WAVELENGTH; nm <= LAST_WAVELENGTH; ++nm) {
        const double lambda = nm;
        const double radiance = planck(lambda, kelvin);
        xyz.x += radiance * matchX(lambda);
        xyz.y += radiance * matchY(lambda);
        xyz.z += radiance * matchZ(lambda);
    }
    xyz.x *= LUMINOUS_EFFICACY;
    xyz.y *= LUMINOUS_EFFICACY;
    xyz.z *= LUMINOUS_EFFICACY;
    return xyz;
}

Rgb blackbodyColorRgb(float kelvin)
{
    const BlackbodyXyz c = blackbodyColorXyz(kelvin);
    // XYZ to linear Rec.709 / sRGB primaries with the D65 white.
    const double r = 3.2404542 * c.x - 1.5371385 * c.y - 0.4985314 * c.z;
    const double g = -0.9692660 * c.x + 1.8760108 * c.y + 0.0415560 * c.z;
    const double b = 0.0556434 * c.x - 0.2040259 * c.y + 1.0572252 * c.z;
    return { static_cast<float>(r), static_cast<float>(g), static_cast<float>(b), 1.0f };
}

} // namespace Marlix
