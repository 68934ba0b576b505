#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/color/Rgb.h>

namespace Marlix {

/// The linear Rec.709 colour of a black body at `kelvin`: Planck's law integrated against the CIE 1931 2° observer.
///
/// The colour of the light, not its brightness: it is scaled so that its largest component is 1. It is not
/// normalised to any white, so callers that want a display colour divide by a reference such as the black body of
/// 6500 K. Cool bodies leave the Rec.709 gamut in blue, which shows as a slightly negative component. Throws Exception
/// when `kelvin` is not a finite positive number.
MARLIXLIB_EXPORT Rgb blackbodyColorRgb(float kelvin);

} // namespace Marlix
