#include <MarlixLibQt/LibQt.h>
#include <MarlixLibQt/widgets/frame/OpenGlWidget.h>

#include <QEvent>
#include <QLoggingCategory>
#include <QPainter>
#include <QtWidgets/private/qwidget_p.h>

#include <exception>

namespace Marlix::Widgets {

namespace {

Q_LOGGING_CATEGORY(openGlLog, "marlix.libqt.opengl")

} // namespace

OpenGlWidget::OpenGlWidget()
    : OpenGlWidget(nullptr)
{
}

OpenGlWidget::OpenGlWidget(QWidget* parent, Qt::WindowFlags flags)
    : QOpenGLWidget(parent, flags)
    , openGl(LibQt::hasOpenGl())
{
    if (!openGl)
        keepWindowOffOpenGl();
}

OpenGlWidget::~OpenGlWidget() = default;

bool OpenGlWidget::event(QEvent* event)
{
    if (event->type() == QEvent::WindowChangeInternal) {
        // The surface is composed into the new window from the next frame on; without a repaint it would show
        // nothing until something else asks for one.
        QMetaObject::invokeMethod(this, qOverload<>(&QWidget::update), Qt::QueuedConnection);
    }
    if (openGl)
        return QOpenGLWidget::event(event);
    switch (event->type()) {
    case QEvent::ParentChange:
    case QEvent::Show:
        keepWindowOffOpenGl();
        return QWidget::event(event);
    // QOpenGLWidget would try (and fail, with a warning each time) to make its context on these.
    case QEvent::WindowChangeInternal:
    case QEvent::ScreenChangeInternal:
        return QWidget::event(event);
    default:
        return QOpenGLWidget::event(event);
    }
}

bool OpenGlWidget::eventFilter(QObject* watched, QEvent* event)
{
    // A window decides how it is composed when its native window is made, from the widgets it holds then.
    if (watched == watchedWindow && (event->type() == QEvent::WinIdChange || event->type() == QEvent::Show))
        keepWindowOffOpenGl();
    return QOpenGLWidget::eventFilter(watched, event);
}

void OpenGlWidget::keepWindowOffOpenGl()
{
    // Qt composes a window that holds a GL widget through OpenGL even where no context can be made, and then
    // crashes on the first flush; without OpenGL this widget paints like any other, so the window can stay raster.
    QWidget* top = window();
    QWidgetPrivate::get(top)->usesRhiFlush = false;
    if (watchedWindow != top) {
        if (watchedWindow)
            watchedWindow->removeEventFilter(this);
        watchedWindow = top;
        if (top != this)
            top->installEventFilter(this);
    }
}

void OpenGlWidget::paintEvent(QPaintEvent* event)
{
    if (openGl) {
        QOpenGLWidget::paintEvent(event);
        return;
    }
    try {
        QPainter painter(this);
        paintWithoutOpenGl(painter);
    } catch (const std::exception& error) {
        qCWarning(openGlLog, "Painting a viewport without OpenGL failed: %s", error.what());
    } catch (...) {
        qCWarning(openGlLog, "Painting a viewport without OpenGL failed.");
    }
}

void OpenGlWidget::resizeEvent(QResizeEvent* event)
{
    if (openGl)
        QOpenGLWidget::resizeEvent(event);
    else
        QWidget::resizeEvent(event);
}

QPaintDevice* OpenGlWidget::redirected(QPoint* offset) const
{
    // Without a context QOpenGLWidget has no device of its own to paint on; the window's backing store serves.
    return openGl ? QOpenGLWidget::redirected(offset) : QWidget::redirected(offset);
}

QPaintEngine* OpenGlWidget::paintEngine() const
{
    return openGl ? QOpenGLWidget::paintEngine() : QWidget::paintEngine();
}

void OpenGlWidget::paintWithoutOpenGl(QPainter& painter)
{
    painter.fillRect(rect(), palette().window());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::WindowText));
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, tr("OpenGL is not available"));
}

} // namespace Marlix::Widgets
