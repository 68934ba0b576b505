#pragma once

#include <MarlixLib/curves/ColorCurves.h>
#include <MarlixLib/curves/CurveInterpolation.h>
#include <MarlixLib/curves/Curves.h>
#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/Model.h>

#include <cstdint>

namespace Marlix::Widgets {

/// How a histogram's counts are drawn: in proportion, on a logarithmic scale (faint tones stay visible next to a
/// peak), or as the share of the pixels at or below each tone.
enum class HistogramType : std::uint8_t
{
    Linear = 0, ///< Bar heights in proportion to the counts.
    Logarithmic = 1, ///< Bar heights on a logarithmic scale of the counts.
    Cumulative = 2, ///< The share of the pixels at or below each tone, 0 to 1.
};

} // namespace Marlix::Widgets

// The models of the curve editors, instantiated once in the library (widgets/curves/CurveModels.cpp).
#define MARLIX_FOR_EACH_CURVE_MODEL_TYPE(X)                                                                            \
    X(Marlix::Curves)                                                                                                  \
    X(Marlix::CurveInterpolation)                                                                                      \
    X(Marlix::Widgets::HistogramType)                                                                                  \
    X(Marlix::Optional<Marlix::ColorCurveChannel>)

MARLIX_FOR_EACH_CURVE_MODEL_TYPE(MARLIX_EXTERN_MODEL_TYPES)
