#include <MarlixLibQt/widgets/frame/WheelScrollPhaseSynthesizer.h>

#include <QApplication>
#include <QLoggingCategory>
#include <QPointingDevice>
#include <QTimer>
#include <QWheelEvent>
#include <QWidget>
#include <QWindow>

#include <exception>
#include <utility>

namespace Marlix {

namespace {

Q_LOGGING_CATEGORY(wheelLog, "marlix.libqt.wheel")

/// The widget that a window of the widget layer shows.
QWidget* widgetOfWindow(const QObject* window)
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* widget : windows)
        if (widget->windowHandle() == window)
            return widget;
    return nullptr;
}

/// The widgets that a wheel event at `widget` would reach as Qt propagates it: up through the parents, passing over
/// the ones transparent for the mouse, up to one that keeps mouse events to itself or to `top`.
template <typename Visit> void walkUp(QWidget* widget, const QWidget* top, Visit&& visit)
{
    for (QWidget* w = widget; w; w = w->parentWidget()) {
        if (!w->testAttribute(Qt::WA_TransparentForMouseEvents) && visit(w))
            return;
        if (w == top || w->isWindow() || w->testAttribute(Qt::WA_NoMousePropagation))
            return;
    }
}

/// Sends `widget` a wheel event of `phase` with what `source` carries, mapped to the widget; true when accepted.
bool sendPhase(QWidget* widget, const QWheelEvent& source, Qt::ScrollPhase phase)
{
    const QPointingDevice* device = source.pointingDevice();
    QWheelEvent copy(widget->mapFromGlobal(source.globalPosition()), source.globalPosition(), source.pixelDelta(),
        source.angleDelta(), source.buttons(), source.modifiers(), phase, source.inverted(), source.source(),
        device ? device : QPointingDevice::primaryPointingDevice());
    copy.setTimestamp(source.timestamp());
    // A widget that is disabled leaves the event accepted but returns false, as Qt's own propagation reads it.
    const bool delivered = QApplication::sendEvent(widget, &copy);
    return delivered && copy.isAccepted();
}

} // namespace

WheelScrollPhaseSynthesizer::WheelScrollPhaseSynthesizer(QObject* parent)
    : QObject(parent)
{
}

WheelScrollPhaseSynthesizer::~WheelScrollPhaseSynthesizer()
{
    // A widget that opened an edit on "begin" (one undo step per gesture) closes it on "end".
    endGesture();
}

bool WheelScrollPhaseSynthesizer::eventFilter(QObject* watched, QEvent* event)
{
    // Only what the window system hands to a widget window; the copies sent below go to widgets and pass through.
    if (event->type() != QEvent::Wheel || delivering || !watched || !watched->isWindowType()
        || !QByteArray(watched->metaObject()->className()).endsWith("QWidgetWindow"))
        return QObject::eventFilter(watched, event);
    delivering = true;
    bool filtered = false;
    try {
        filtered = filterWheel(watched, *static_cast<QWheelEvent*>(event));
    } catch (const std::exception& error) {
        qCWarning(wheelLog, "A wheel gesture stopped: %s", error.what());
        target = nullptr;
    } catch (...) {
        qCWarning(wheelLog, "A wheel gesture stopped on an unknown error.");
        target = nullptr;
    }
    delivering = false;
    return filtered;
}

bool WheelScrollPhaseSynthesizer::filterWheel(QObject* window, QWheelEvent& wheel)
{
    QWidget* top = widgetOfWindow(window);
    // Qt hands the wheel to an open popup or modal dialog rather than to the window under the pointer.
    QWidget* blocking = QApplication::activePopupWidget();
    if (!blocking)
        blocking = QApplication::activeModalWidget();
    if (blocking && blocking->window() != top)
        top = blocking;
    if (!top)
        return false;

    QWidget* under = top->childAt(top->mapFromGlobal(wheel.globalPosition()).toPoint());
    if (!under)
        under = top;

    if (target) {
        bool onTarget = false;
        walkUp(under, top, [&](QWidget* w) { return onTarget = (w == target); });
        if (onTarget)
            sendPhase(target, wheel, Qt::ScrollUpdate);
        else
            endGesture();
    }
    if (!target) {
        walkUp(under, top, [&](QWidget* w) {
            if (sendPhase(w, wheel, Qt::ScrollBegin))
                target = w;
            return bool(target);
        });
    }
    if (!target)
        return false;

    last = { wheel.globalPosition(), wheel.buttons(), wheel.modifiers(), wheel.inverted(), wheel.source(),
        wheel.pointingDevice() };
    if (wheel.phase() == Qt::ScrollEnd)
        endGesture();
    else
        restartEndTimer();
    wheel.accept();
    return true;
}

void WheelScrollPhaseSynthesizer::restartEndTimer()
{
    if (!endTimer) {
        endTimer = new QTimer(this);
        endTimer->setSingleShot(true);
        endTimer->setInterval(GESTURE_END_DELAY_MS);
        connect(endTimer, &QTimer::timeout, this, &WheelScrollPhaseSynthesizer::endGesture);
    }
    endTimer->start();
}

void WheelScrollPhaseSynthesizer::endGesture()
{
    if (endTimer)
        endTimer->stop();
    QWidget* widget = std::exchange(target, nullptr);
    if (!widget || !QCoreApplication::instance())
        return;
    const QPointingDevice* device = last.device ? last.device.data() : QPointingDevice::primaryPointingDevice();
    QWheelEvent end(widget->mapFromGlobal(last.globalPosition), last.globalPosition, QPoint(), QPoint(), last.buttons,
        last.modifiers, Qt::ScrollEnd, last.inverted, last.source, device);
    // Also reached from the timer's slot, which no exception may leave.
    try {
        QApplication::sendEvent(widget, &end);
    } catch (const std::exception& error) {
        qCWarning(wheelLog, "Ending a wheel gesture failed: %s", error.what());
    } catch (...) {
        qCWarning(wheelLog, "Ending a wheel gesture failed on an unknown error.");
    }
}

} // namespace Marlix
