#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/color/Rgb.h>

namespace Marlix {

/// The linear Rec.709 colour of a black body at `kelvin`: Planck's law integrated against the CIE 1931 2° observer.
///
/// The result is scaled so that its luminance (the Y of XYZ) is the body's luminance in candelas per square metre; it
/// is not normalised, so callers that want a colour divide by a reference such as the white of 6500 K. Hot bodies can
/// leave the Rec.709 gamut, and very cool ones give components at or near zero. Throws Exception when `kelvin` is not
/// a finite positive number.
MARLIXLIB_EXPORT Rgb blackbodyColorRgb(float kelvin);

/// The CIE 1931 XYZ tristimulus of the same black body, in the same scale (Y in candelas per square metre).
struct BlackbodyXyz
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};
MARLIXLIB_EXPORT BlackbodyXyz blackbodyColorXyz(double kelvin);

} // namespace Marlix
