#include <MarlixLibQt/widgets/editors/SpinBox.h>

#include <QRect>

#include <algorithm>
#include <cmath>

namespace Marlix::Widgets {

namespace {
constexpr double PROPORTIONAL_FACTOR = 0.004;
constexpr double MINIMUM_ADAPTIVE_STEP = 0.001;
} // namespace

double SpinBox::getProportionalStep(double value)
{
    return std::max(std::abs(value), 1.0) * PROPORTIONAL_FACTOR;
}

double SpinBox::getAdaptiveDragStep(double value, int delta)
{
    double v = std::abs(value);
    if (v < MINIMUM_ADAPTIVE_STEP)
        return MINIMUM_ADAPTIVE_STEP;
    const bool towardsZero = (value < 0.0) != (delta < 0);
    if (towardsZero)
        v *= 0.9900990099009901;
    const double e = std::floor(std::log10(v));
    const double p = std::pow(10.0, 1.0 - e);
    const double r = std::round(p * v) / p;
    return std::max(std::pow(10.0, std::floor(std::log10(r)) - 1.0), MINIMUM_ADAPTIVE_STEP);
}

double SpinBox::getSpeedFactor(Qt::KeyboardModifiers modifiers, ScrollSpeedAdjustmentType type)
{
    switch (type) {
    case ScrollSpeedAdjustmentType::ShiftFasterCtrlSlower:
        if (modifiers & Qt::ShiftModifier)
            return 10.0;
        return (modifiers & Qt::ControlModifier) ? 0.1 : 1.0;
    case ScrollSpeedAdjustmentType::CtrlFasterAltSlower:
        if (modifiers & Qt::ControlModifier)
            return 10.0;
        return (modifiers & Qt::AltModifier) ? 0.1 : 1.0;
    case ScrollSpeedAdjustmentType::NoAdjustment:
        break;
    }
    return 1.0;
}

std::optional<int> SpinBox::getWrappedCursorY(int y, int lastY, const QRect& screenGeometry)
{
    if (y >= screenGeometry.bottom() && y > lastY)
        return screenGeometry.top();
    if (y <= screenGeometry.top() && y < lastY)
        return screenGeometry.bottom();
    return std::nullopt;
}

} // namespace Marlix::Widgets
