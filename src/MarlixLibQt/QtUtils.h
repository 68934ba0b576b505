#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <MarlixLib/base/Flags.h>

#include <QPoint>
#include <QSize>

#include <cstdint>

class QScreen;
class QWidget;

namespace Marlix {

/// How getDeviceIndependentPixels treats values that scaling would make vanish or that only matter on scaled screens.
enum class DipValueHandling : std::uint8_t {
    /// A non-zero length never scales to 0: hairlines and one-pixel gaps stay visible on any screen.
    KeepNonZero = 1 << 0,
    /// The length is an addition that only scaled screens need: at exactly 96 DPI it is 0.
    ZeroAtStandardDpi = 1 << 1,
};

/// The logical DPI every length of the library is written for.
inline constexpr double STANDARD_DPI = 96.0;

/// The screen that shows `widget`'s window; the primary screen when there is no widget, window or window handle.
MARLIXLIBQT_EXPORT QScreen* screenOf(const QWidget* widget);

/// Scales a length written for a 96-DPI screen to the given logical DPI, rounded half away from zero.
MARLIXLIBQT_EXPORT int scaleToDpi(double value, double logicalDpi, Flags<DipValueHandling> flags = {});

/// Scales a length written for a 96-DPI screen to the screen of `widget`, rounded half away from zero.
MARLIXLIBQT_EXPORT int getDeviceIndependentPixels(double value, const QWidget* widget,
                                                  Flags<DipValueHandling> flags = {});

/// Both coordinates through getDeviceIndependentPixels.
MARLIXLIBQT_EXPORT QPoint scaleByDpi(const QPoint& point, const QWidget* widget);
MARLIXLIBQT_EXPORT QSize scaleByDpi(const QSize& size, const QWidget* widget);

} // namespace Marlix
