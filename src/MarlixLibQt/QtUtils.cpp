#include <MarlixLibQt/QtUtils.h>

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <cmath>

namespace Marlix {

QScreen* screenOf(const QWidget* widget)
{
    if (widget) {
        if (const QWidget* window = widget->window()) {
            if (const QWindow* handle = window->windowHandle(); handle && handle->screen())
                return handle->screen();
            // A window that was never shown has no handle yet, but Qt already knows where it will appear.
            if (QScreen* screen = window->screen())
                return screen;
        }
    }
    return QGuiApplication::primaryScreen();
}

int scaleToDpi(double value, double logicalDpi, Flags<DipValueHandling> flags)
{
    const double factor = logicalDpi * (1.0 / STANDARD_DPI);
    if (flags.has(DipValueHandling::ZeroAtStandardDpi) && factor == 1.0)
        return 0;
    const double scaled = std::round(factor * value); // std::round rounds half away from zero
    if (flags.has(DipValueHandling::KeepNonZero) && scaled == 0.0 && value != 0.0)
        return value > 0.0 ? 1 : -1;
    return static_cast<int>(scaled);
}

int getDeviceIndependentPixels(double value, const QWidget* widget, Flags<DipValueHandling> flags)
{
    const QScreen* screen = screenOf(widget);
    const double dpi = screen ? screen->logicalDotsPerInch() : STANDARD_DPI;
    return scaleToDpi(value, dpi, flags);
}

QPoint scaleByDpi(const QPoint& point, const QWidget* widget)
{
    return { getDeviceIndependentPixels(point.x(), widget), getDeviceIndependentPixels(point.y(), widget) };
}

QSize scaleByDpi(const QSize& size, const QWidget* widget)
{
    return { getDeviceIndependentPixels(size.width(), widget), getDeviceIndependentPixels(size.height(), widget) };
}

} // namespace Marlix
