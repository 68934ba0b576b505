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
    OpenGlWidget();
    explicit OpenGlWidget(QWidget* parent, Qt::WindowFlags flags = {});
    ~OpenGlWidget() override;

    /// False where no OpenGL context can be made: then initializeGL, resizeGL and paintGL are never called.
    bool isOpenGlAvailable() const { return openGl; }

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    QPaintDevice* redirected(QPoint* offset) const override;
    QPaintEngine* paintEngine() const override;
    /// What the widget shows without OpenGL: the palette's window colour with a short notice.
    virtual void paintWithoutOpenGl(QPainter& painter);

private:
    void keepWindowOffOpenGl();

    bool openGl;
    QPointer<QWidget> watchedWindow;
};

} // namespace Marlix::Widgets
