#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/ModifierKeys.h>

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLoggingCategory>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#endif

#include <cstring>

namespace Marlix::LibQt {

namespace {

Q_LOGGING_CATEGORY(modifierKeysLog, "marlix.libqt")

constexpr Qt::KeyboardModifiers MODIFIER_KEYS
    = Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier | Qt::GroupSwitchModifier;

CallbackList<QFlags<Qt::KeyboardModifier>>& modifierObservers()
{
    static CallbackList<QFlags<Qt::KeyboardModifier>> observers;
    return observers;
}

// Only touched on the GUI thread, where the modifier events arrive.
Qt::KeyboardModifiers lastModifiers;

void publishModifiers(Qt::KeyboardModifiers modifiers)
{
    modifiers &= MODIFIER_KEYS;
    if (modifiers == lastModifiers)
        return;
    lastModifiers = modifiers;
    // An exception must not unwind through Qt's event delivery or the system's message dispatch.
    try {
        modifierObservers().call(modifiers);
    } catch (const std::exception& error) {
        qCWarning(modifierKeysLog, "A modifier keys observer failed: %s", error.what());
    } catch (...) {
        qCWarning(modifierKeysLog, "A modifier keys observer failed");
    }
}

#ifdef Q_OS_WIN
HHOOK messageHook = nullptr;

Qt::KeyboardModifiers queryWindowsModifiers()
{
    Qt::KeyboardModifiers modifiers;
    if (GetKeyState(VK_SHIFT) < 0)
        modifiers |= Qt::ShiftModifier;
    if (GetKeyState(VK_CONTROL) < 0)
        modifiers |= Qt::ControlModifier;
    if (GetKeyState(VK_MENU) < 0)
        modifiers |= Qt::AltModifier;
    if (GetKeyState(VK_LWIN) < 0 || GetKeyState(VK_RWIN) < 0)
        modifiers |= Qt::MetaModifier;
    return modifiers;
}

// Sees every message the GUI thread takes from its queue, also those a native child window or a modal system dialog
// handles without Qt.
LRESULT CALLBACK getMessageHook(int code, WPARAM wParam, LPARAM lParam)
{
    if (code == HC_ACTION && wParam == PM_REMOVE) {
        switch (reinterpret_cast<const MSG*>(lParam)->message) {
        case WM_KEYDOWN:
        case WM_KEYUP:
        case WM_SYSKEYDOWN:
        case WM_SYSKEYUP:
        case WM_ACTIVATEAPP:
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            publishModifiers(queryWindowsModifiers());
            break;
        default:
            break;
        }
    }
    return CallNextHookEx(messageHook, code, wParam, lParam);
}
#else
/// Feeds the modifier observers from the application's own input: key events tell which modifier went down or up;
/// focus and activation changes ask the platform, since keys may have changed while another application had them.
class ModifierKeysFilter final : public QObject
{
public:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            publishModifiers(modifiersAfter(*static_cast<const QKeyEvent*>(event)));
            break;
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::Wheel:
            publishModifiers(static_cast<const QInputEvent*>(event)->modifiers());
            break;
        case QEvent::ApplicationStateChange:
        case QEvent::WindowActivate:
        case QEvent::WindowDeactivate:
        case QEvent::FocusIn:
            publishModifiers(QGuiApplication::queryKeyboardModifiers());
            break;
        default:
            break;
        }
        return QObject::eventFilter(watched, event);
    }

private:
    // Platforms differ in whether the event of a modifier key carries the state before or after it: the key decides.
    static Qt::KeyboardModifiers modifiersAfter(const QKeyEvent& event)
    {
        Qt::KeyboardModifiers modifiers = event.modifiers();
        Qt::KeyboardModifier own = Qt::NoModifier;
        switch (event.key()) {
        case Qt::Key_Shift:
            own = Qt::ShiftModifier;
            break;
        case Qt::Key_Control:
            own = Qt::ControlModifier;
            break;
        case Qt::Key_Alt:
            own = Qt::AltModifier;
            break;
        case Qt::Key_Meta:
            own = Qt::MetaModifier;
            break;
        case Qt::Key_AltGr:
            own = Qt::GroupSwitchModifier;
            break;
        default:
            return modifiers;
        }
        modifiers.setFlag(own, event.type() == QEvent::KeyPress);
        return modifiers;
    }
};
#endif

/// Feeds the modifier observers from the platform's own messages, which also reach windows that Qt does not turn
/// into key events (native children, a grab of another toolkit's dialog). Qt applies native filters only to
/// applications of their own, not to plug-in applications; there the Windows hook and the event filter cover it.
class NativeModifierFilter final : public QAbstractNativeEventFilter
{
public:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) override
    {
#ifdef Q_OS_WIN
        // The hook sees the same messages: the filter stands in only where the hook could not be installed.
        if (!messageHook && eventType == "windows_generic_MSG") {
            switch (static_cast<const MSG*>(message)->message) {
            case WM_KEYDOWN:
            case WM_KEYUP:
            case WM_SYSKEYDOWN:
            case WM_SYSKEYUP:
            case WM_ACTIVATEAPP:
                publishModifiers(queryWindowsModifiers());
                break;
            default:
                break;
            }
        }
#else
        if (eventType == "xcb_generic_event_t")
            readXcbEvent(static_cast<const unsigned char*>(message));
#endif
        return false;
    }

private:
#ifndef Q_OS_WIN
    // Wire layout of the X11 protocol's events, fixed by the protocol: the type in the first byte (the top bit marks
    // events sent by other clients), the modifier state of key events at byte 28.
    static constexpr unsigned char XCB_KEY_PRESS = 2;
    static constexpr unsigned char XCB_KEY_RELEASE = 3;
    static constexpr unsigned char XCB_FOCUS_IN = 9;
    static constexpr std::size_t XCB_KEY_STATE_OFFSET = 28;

    static void readXcbEvent(const unsigned char* event)
    {
        switch (event[0] & 0x7f) {
        case XCB_KEY_PRESS:
        case XCB_KEY_RELEASE: {
            // The modifiers held while the key went down or up: exact for every key but the modifier keys themselves,
            // whose own change the event filter reads from Qt's key event right after.
            std::uint16_t state = 0;
            std::memcpy(&state, event + XCB_KEY_STATE_OFFSET, sizeof(state));
            Qt::KeyboardModifiers modifiers;
            modifiers.setFlag(Qt::ShiftModifier, state & 0x01);
            modifiers.setFlag(Qt::ControlModifier, state & 0x04);
            modifiers.setFlag(Qt::AltModifier, state & 0x08); // Mod1
            modifiers.setFlag(Qt::MetaModifier, state & 0x40); // Mod4
            publishModifiers(modifiers);
            break;
        }
        case XCB_FOCUS_IN:
            // Keys may have changed while another application had the keyboard.
            publishModifiers(QGuiApplication::queryKeyboardModifiers());
            break;
        default:
            break;
        }
    }
#endif
};

#ifndef Q_OS_WIN
UniquePtr<ModifierKeysFilter> modifierFilter;
#endif
UniquePtr<NativeModifierFilter> nativeFilter;

} // namespace

void installModifierTracking()
{
    lastModifiers = QGuiApplication::queryKeyboardModifiers() & MODIFIER_KEYS;
#ifdef Q_OS_WIN
    if (!messageHook)
        messageHook = SetWindowsHookExW(WH_GETMESSAGE, getMessageHook, nullptr, GetCurrentThreadId());
    if (!messageHook)
        qCWarning(modifierKeysLog, "The modifier keys hook could not be installed (error %lu)", GetLastError());
#else
    if (!modifierFilter) {
        modifierFilter = std::make_unique<ModifierKeysFilter>();
        QCoreApplication::instance()->installEventFilter(modifierFilter.get());
    }
#endif
    // Qt refuses native filters in plug-in applications, with a warning.
    if (!nativeFilter && !QCoreApplication::testAttribute(Qt::AA_PluginApplication)) {
        nativeFilter = std::make_unique<NativeModifierFilter>();
        QCoreApplication::instance()->installNativeEventFilter(nativeFilter.get());
    }
}

void removeModifierTracking()
{
    if (nativeFilter) {
        if (QCoreApplication* application = QCoreApplication::instance())
            application->removeNativeEventFilter(nativeFilter.get());
        nativeFilter.reset();
    }
#ifdef Q_OS_WIN
    if (messageHook)
        UnhookWindowsHookEx(std::exchange(messageHook, nullptr));
#else
    if (modifierFilter) {
        if (QCoreApplication* application = QCoreApplication::instance())
            application->removeEventFilter(modifierFilter.get());
        modifierFilter.reset();
    }
#endif
    lastModifiers = {};
}

CallbackLifetime addModifierKeysObserver(Function<void(QFlags<Qt::KeyboardModifier>)> observer)
{
    if (!observer)
        Detail::throwStopException("LibQt", __LINE__);
    return modifierObservers().add(std::move(observer));
}

} // namespace Marlix::LibQt
