#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/color/RgbBytes.h>
#include <MarlixLib/curves/Curves.h>

#include <array>
#include <cstdint>

namespace Marlix {

/// The channels of colour curves and of histograms, in this order: the master curve first (luminance, in a
/// histogram), then red, green and blue, then alpha, so that a curve channel and its histogram share an index.
enum class ColorCurveChannel : std::uint8_t
{
    Master = 0, ///< The curve applied to red, green and blue alike; luminance in a histogram.
    Red = 1, ///< The red channel's own curve.
    Green = 2, ///< The green channel's own curve.
    Blue = 3, ///< The blue channel's own curve.
    Alpha = 4, ///< Opacity; colour curves pass it unchanged.
};

/// Lookup tables of 8-bit tones for red, green and blue: the master curve first, then the colour's own curve (each
/// evaluated once per tone, rounded once). Channels that `curves` lacks, and alpha, pass unchanged.
MARLIXLIB_EXPORT std::array<std::array<std::uint8_t, 256>, 3> makeColorCurveTables(const Curves& curves);

/// Applies makeColorCurveTables to pixels in place; alpha is kept.
MARLIXLIB_EXPORT void applyColorCurves(const Curves& curves, ArrayView<RgbaBytes> pixels);

} // namespace Marlix
