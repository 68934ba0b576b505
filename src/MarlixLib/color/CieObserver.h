#pragma once

#include <array>
#include <cstddef>

namespace Marlix {

/// The CIE 1931 2° standard colour observer: its colour matching functions x̄, ȳ and z̄ tabulated every 5 nm.
namespace CieObserver {

struct Sample
{
    double x;
    double y;
    double z;
};

constexpr int FIRST_WAVELENGTH = 360;
constexpr int LAST_WAVELENGTH = 830;
constexpr int WAVELENGTH_STEP = 5;
constexpr std::size_t SAMPLE_COUNT = (LAST_WAVELENGTH - FIRST_WAVELENGTH) / WAVELENGTH_STEP + 1;

/// Sample i belongs to the wavelength FIRST_WAVELENGTH + i × WAVELENGTH_STEP nanometres.
const std::array<Sample, SAMPLE_COUNT>& getSamples() noexcept;

} // namespace CieObserver

} // namespace Marlix
