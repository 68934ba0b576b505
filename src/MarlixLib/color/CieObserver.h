#pragma once

#include <MarlixLib/MarlixLibExport.h>

#include <array>
#include <cstddef>

namespace Marlix {

/// The CIE 1931 2° standard colour observer: its colour matching functions x̄, ȳ and z̄ tabulated every 5 nm.
namespace CieObserver {

/// The three colour matching functions at one wavelength.
struct Sample
{
    double x; ///< x̄, the response that makes X.
    double y; ///< ȳ, the response that makes Y: the photopic luminous efficiency.
    double z; ///< z̄, the response that makes Z.
};

constexpr int FIRST_WAVELENGTH = 360; ///< The wavelength of the first sample, in nanometres.
constexpr int LAST_WAVELENGTH = 830; ///< The wavelength of the last sample, in nanometres.
constexpr int WAVELENGTH_STEP = 5; ///< Nanometres between samples.
/// The number of samples in the table, 95.
constexpr std::size_t SAMPLE_COUNT = (LAST_WAVELENGTH - FIRST_WAVELENGTH) / WAVELENGTH_STEP + 1;

/// Sample i belongs to the wavelength FIRST_WAVELENGTH + i × WAVELENGTH_STEP nanometres.
MARLIXLIB_EXPORT const std::array<Sample, SAMPLE_COUNT>& getSamples() noexcept;

} // namespace CieObserver

} // namespace Marlix
