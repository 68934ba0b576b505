#include <MarlixLibQt/widgets/editors/TimeEdit.h>

#include <MarlixLibQt/widgets/editors/Number.h>

#include <MarlixLib/base/Exception.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace Marlix::Widgets {

namespace {
constexpr double MS_PER_HOUR = 3600000.0;
constexpr double MS_PER_MINUTE = 60000.0;
constexpr double MS_PER_SECOND = 1000.0;

void checkBounds(double minimum, double maximum)
{
    if (std::isnan(minimum) || std::isnan(maximum) || minimum > maximum)
        Marlix::Detail::throwStopException("widgets/TimeEdit", __LINE__);
}
} // namespace

double TimeEdit::toTime(const Array<double>& hms)
{
    if (hms.size() != 3)
        Marlix::Detail::throwStopException("widgets/TimeEdit", __LINE__);
    return hms[0] * MS_PER_HOUR + hms[1] * MS_PER_MINUTE + hms[2] * MS_PER_SECOND;
}

Array<double> TimeEdit::toTimeArray(double milliseconds)
{
    // Clamped first: converting a double outside the 32-bit range would be undefined.
    constexpr auto low = static_cast<double>(std::numeric_limits<std::int32_t>::min());
    constexpr auto high = static_cast<double>(std::numeric_limits<std::int32_t>::max());
    const double seconds = std::isnan(milliseconds) ? 0.0 : std::clamp(milliseconds * 0.001, low, high);
    const auto s = static_cast<std::int32_t>(seconds);
    return { static_cast<double>(s / 3600), static_cast<double>((s / 60) % 60), static_cast<double>(s % 60) };
}

SharedPtr<LambdaModel<Array<double>>> TimeEdit::makeAdapter(const SharedPtr<Model<double>>& model,
                                                            const SharedPtr<Bounds>& bounds)
{
    if (!model)
        Marlix::Detail::throwStopException("widgets/TimeEdit", __LINE__);
    checkBounds(bounds->minimum, bounds->maximum);
    Model<double>* source = model.get();
    return makeSharedPtr<LambdaModel<Array<double>>>(
        model, [source] { return toTimeArray(source->get()); },
        [source, bounds](Array<double> hms) {
            source->set(std::clamp(toTime(hms), bounds->minimum, bounds->maximum));
        });
}

TimeEdit::TimeEdit(SharedPtr<Model<double>> model, double minimum, double maximum, QWidget* parent)
    : TimeEdit(model, makeSharedPtr<Bounds>(Bounds { minimum, maximum }), parent)
{
}

TimeEdit::TimeEdit(const SharedPtr<Model<double>>& model, const SharedPtr<Bounds>& newBounds, QWidget* parent)
    : TimeEdit(model, newBounds, makeAdapter(model, newBounds), parent)
{
}

TimeEdit::TimeEdit(SharedPtr<Model<double>> model, SharedPtr<Bounds> newBounds,
                   SharedPtr<LambdaModel<Array<double>>> newAdapter, QWidget* parent)
    : Vector(newAdapter, { 0.0, 0.0, 0.0 }, false, {}, {}, LabelPosition::Left, parent)
    , timeModel(std::move(model))
    , bounds(std::move(newBounds))
    , adapter(std::move(newAdapter))
{
    setStepType(SpinBox::StepType::Fixed);
    setSuffix({ QStringLiteral(" h"), QStringLiteral(" min"), QStringLiteral(" s") });
    applyHourRange();
}

TimeEdit::~TimeEdit() = default;

void TimeEdit::applyHourRange()
{
    const double lowHours = std::min(0.0, toTimeArray(bounds->minimum)[0]);
    const double highHours = std::max(0.0, toTimeArray(bounds->maximum)[0]);
    getComponent(0)->setRange(lowHours, highHours, 1.0, 0);
    // Negative durations need negative minutes and seconds.
    const double lowPart = bounds->minimum < 0.0 ? -59.0 : 0.0;
    getComponent(1)->setRange(lowPart, 59.0, 1.0, 0);
    getComponent(2)->setRange(lowPart, 59.0, 1.0, 0);
}

void TimeEdit::setRange(double minimum, double maximum)
{
    checkBounds(minimum, maximum);
    bounds->minimum = minimum;
    bounds->maximum = maximum;
    applyHourRange();
    adapter->notifyCallbacks();
}

double TimeEdit::getMinimum() const
{
    return bounds->minimum;
}

double TimeEdit::getMaximum() const
{
    return bounds->maximum;
}

} // namespace Marlix::Widgets
