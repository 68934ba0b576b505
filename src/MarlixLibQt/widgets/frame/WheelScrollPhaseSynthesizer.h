#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QObject>
#include <QPointF>
#include <QPointer>

class QPointingDevice;
class QTimer;
class QWheelEvent;
class QWidget;

namespace Marlix {

/// An application-wide event filter that gives plain wheel events begin / update / end phases, so that one turn of
/// the wheel keeps scrolling the widget it started on while the pointer passes over other scrollable widgets.
class MARLIXLIBQT_EXPORT WheelScrollPhaseSynthesizer : public QObject
{
    Q_OBJECT

public:
    /// A gesture ends this long after its last wheel event.
    static constexpr int GESTURE_END_DELAY_MS = 1000;

    /// An idle filter; install it on the application with QCoreApplication::installEventFilter().
    explicit WheelScrollPhaseSynthesizer(QObject* parent = nullptr);
    /// Ends the running gesture, so that its widget hears "end".
    ~WheelScrollPhaseSynthesizer() override;

    /// Watches the wheel events that the window system hands to widget windows; install on the application.
    bool eventFilter(QObject* watched, QEvent* event) override;

    /// The widget that the running gesture scrolls; null when no gesture runs.
    QWidget* gestureWidget() const { return target; }
    /// Ends the running gesture now, as the end timer does on time-out: the widget gets its "end" event.
    void endGesture();
    /// The single-shot timer that ends a gesture, made with the first gesture (null before). Exposed so that a host
    /// that drives time itself (a test, an input replay) can fire it instead of waiting.
    QTimer* gestureEndTimer() const { return endTimer; }

private:
    /// What the "end" event repeats of the gesture's last wheel event.
    struct LastWheel
    {
        QPointF globalPosition;
        Qt::MouseButtons buttons;
        Qt::KeyboardModifiers modifiers;
        bool inverted = false;
        Qt::MouseEventSource source = Qt::MouseEventNotSynthesized;
        QPointer<const QPointingDevice> device;
    };

    bool filterWheel(QObject* window, QWheelEvent& wheel);
    void restartEndTimer();

    QPointer<QWidget> target;
    QTimer* endTimer = nullptr;
    LastWheel last;
    bool delivering = false;
};

} // namespace Marlix
