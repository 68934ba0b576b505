#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QOpenGLWidget>
#include <QPointer>

namespace Marlix::Widgets {

/// The OpenGL surface of a viewport. It repaints when it moves to another top-level window (a dock undocked or docked
/// again), and where no OpenGL context can be made it shows a plain notice instead of calling any GL code.
class MARLIXLIBQT_EXPORT OpenGlWidget : public QOpenGLWidget
{
    Q_OBJECT

public:
    OpenGlWidget(); ///< A top-level surface; whether OpenGL is used is settled here, once.
    /// A surface inside \p parent; whether OpenGL is used is settled here, once.
    explicit OpenGlWidget(QWidget* parent, Qt::WindowFlags flags = {});
    ~OpenGlWidget() override; ///< Destroys the surface and, with OpenGL, its context.

    /// False where no OpenGL context can be made: then initializeGL, resizeGL and paintGL are never called.
    bool isOpenGlAvailable() const { return openGl; }

protected:
    /// Repaints after a move to another window; without OpenGL keeps Qt from trying to make a context.
    bool event(QEvent* event) override;
    /// Keeps the top-level window off OpenGL composition when its native window is made; never consumes an event.
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// Paints through OpenGL, or through paintWithoutOpenGl(); an exception from the latter is logged, not thrown.
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override; ///< Resizes the GL framebuffer; without OpenGL only the widget.
    /// Without OpenGL, paints go to the window's backing store like any widget's.
    QPaintDevice* redirected(QPoint* offset) const override;
    QPaintEngine* paintEngine() const override; ///< The GL paint engine, or the raster one without OpenGL.
    /// What the widget shows without OpenGL: the palette's window colour with a short notice.
    virtual void paintWithoutOpenGl(QPainter& painter);

private:
    void keepWindowOffOpenGl();

    bool openGl;
    QPointer<QWidget> watchedWindow;
};

} // namespace Marlix::Widgets
