#pragma once

#include <QtGlobal>

#include <exception>

namespace Marlix::Widgets::Detail {

/// Runs an action of a curve widget's event handler: Qt cannot carry an exception out of one, so a failure is reported
/// under the unit's name and the widget stays usable.
template <class F> void guardedCurves(const char* where, F&& action) noexcept
{
    try {
        action();
    } catch (const std::exception& error) {
        qWarning("widgets/Curves: %s: %s", where, error.what());
    } catch (...) {
        qWarning("widgets/Curves: %s failed", where);
    }
}

} // namespace Marlix::Widgets::Detail
