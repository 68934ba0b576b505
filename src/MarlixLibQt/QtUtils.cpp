#include <MarlixLibQt/QtUtils.h>

#include <MarlixLib/base/Exception.h>

#include <QApplication>
#include <QBackingStore>
#include <QCursor>
#include <QGuiApplication>
#include <QLayout>
#include <QLocale>
#include <QPaintEngine>
#include <QPainter>
#include <QScreen>
#include <QStyle>
#include <QVBoxLayout>
#include <QWidget>
#include <QWindow>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#endif

#include <algorithm>
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

namespace {
// Keeps a rectangle of the given size inside `area`, preferring its top-left corner when it is larger.
QPoint placeInside(QPoint topLeft, const QSize& size, const QRect& area)
{
    topLeft.setX(std::max(area.left(), std::min(topLeft.x(), area.right() + 1 - size.width())));
    topLeft.setY(std::max(area.top(), std::min(topLeft.y(), area.bottom() + 1 - size.height())));
    return topLeft;
}
} // namespace

void centerOnScreen(QWidget& window)
{
    const QScreen* screen = screenOf(&window);
    if (!screen)
        return;
    const QRect area = screen->availableGeometry();
    const QSize frame = window.frameGeometry().size();
    window.move(placeInside(area.center() - QPoint(frame.width() / 2, frame.height() / 2), frame, area));
}

void centerOnMouse(QWidget* window)
{
    if (!window)
        Detail::throwStopException("QtUtils", __LINE__);
    const QPoint cursor = QCursor::pos();
    const QScreen* screen = QGuiApplication::screenAt(cursor);
    if (!screen)
        screen = screenOf(window);
    const QSize frame = window->frameGeometry().size();
    QPoint topLeft = cursor - QPoint(frame.width() / 2, frame.height() / 2);
    if (screen)
        topLeft = placeInside(topLeft, frame, screen->availableGeometry());
    window->move(topLeft);
}

void clearLayout(QLayout* layout)
{
    if (!layout)
        Detail::throwStopException("QtUtils", __LINE__);
    clearLayout(layout, 0, layout->count());
}

void clearLayout(QLayout* layout, int first, int count)
{
    if (!layout || first < 0 || count < 0 || first > layout->count() - count)
        Detail::throwStopException("QtUtils", __LINE__);
    for (int i = 0; i < count; ++i) {
        QLayoutItem* item = layout->takeAt(first);
        if (QLayout* nested = item->layout())
            clearLayout(nested);
        delete item->widget();
        delete item; // deletes a nested layout too: the item is that layout
    }
}

QWidget* addSingleWidget(QWidget* parent, QWidget* child)
{
    if (!parent || !child || parent == child)
        Detail::throwStopException("QtUtils", __LINE__);
    QLayout* layout = parent->layout();
    if (layout) {
        // The child may already be the one item: keep it alive while the rest goes.
        if (const int own = layout->indexOf(child); own >= 0)
            delete layout->takeAt(own);
        clearLayout(layout);
    } else {
        layout = new QVBoxLayout(parent);
    }
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(child);
    return child;
}

void forcePolishStyleRecursive(QWidget* widget, QStyle* style)
{
    if (!widget)
        return;
    QStyle* used = style ? style : widget->style();
    used->unpolish(widget);
    used->polish(widget);
    QEvent changed(QEvent::StyleChange);
    QCoreApplication::sendEvent(widget, &changed);
    widget->update();
    for (QWidget* child : widget->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        forcePolishStyleRecursive(child, style);
}

bool isPainterRedirected(const QPainter& painter)
{
    const QPaintDevice* device = painter.device();
    const QPaintEngine* engine = painter.paintEngine();
    if (!device || !engine || device->devType() != QInternal::Widget)
        return false;
    // A widget painting on screen draws into its window's backing store; anything else is a redirection.
    const auto* widget = static_cast<const QWidget*>(device);
    QBackingStore* store = widget->window()->backingStore();
    return !store || engine->paintDevice() != store->paintDevice();
}

Qt::MouseButtons queryMouseButtons()
{
#ifdef Q_OS_WIN
    // Asked from the system: a press that went to another application is seen too.
    Qt::MouseButtons buttons;
    const bool swapped = GetSystemMetrics(SM_SWAPBUTTON) != 0;
    if (GetAsyncKeyState(swapped ? VK_RBUTTON : VK_LBUTTON) < 0)
        buttons |= Qt::LeftButton;
    if (GetAsyncKeyState(swapped ? VK_LBUTTON : VK_RBUTTON) < 0)
        buttons |= Qt::RightButton;
    if (GetAsyncKeyState(VK_MBUTTON) < 0)
        buttons |= Qt::MiddleButton;
    if (GetAsyncKeyState(VK_XBUTTON1) < 0)
        buttons |= Qt::XButton1;
    if (GetAsyncKeyState(VK_XBUTTON2) < 0)
        buttons |= Qt::XButton2;
    return buttons;
#else
    return QGuiApplication::mouseButtons();
#endif
}

WindowHandle getNativeHandleFromQt(std::uint64_t winId)
{
    return reinterpret_cast<WindowHandle>(static_cast<std::uintptr_t>(winId));
}

void setOwnerFromNativeHandleQt(WindowHandle window, WindowHandle owner)
{
    if (!window)
        throw Exception("There is no window to give an owner to.");
#ifdef Q_OS_WIN
    SetWindowLongPtrW(static_cast<HWND>(window), GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(owner));
#else
    // Elsewhere ownership is Qt's transient parent, so both windows must be windows of this application.
    const auto find = [](WindowHandle handle) -> QWindow* {
        // Only windows that already have a native handle: asking the others for one would create it.
        for (QWindow* candidate : QGuiApplication::allWindows())
            if (candidate->handle() && getNativeHandleFromQt(candidate->winId()) == handle)
                return candidate;
        return nullptr;
    };
    QWindow* child = find(window);
    QWindow* parent = owner ? find(owner) : nullptr;
    if (!child || (owner && !parent))
        throw Exception("The window handle does not belong to a window of this application.");
    child->setTransientParent(parent);
#endif
}

} // namespace Marlix
