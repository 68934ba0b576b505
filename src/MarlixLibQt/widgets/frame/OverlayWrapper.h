#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QFrame>
#include <QPointer>

namespace Marlix::Widgets {

/// Lays a content widget as a strip along one edge of its parent, over the parent's contents, following its size.
class MARLIXLIBQT_EXPORT OverlayWrapper : public QFrame
{
    Q_OBJECT

public:
    /// Starts hidden; `parent` is the widget the strip lies over.
    OverlayWrapper(QWidget* content, Qt::Edge edge, QWidget* parent);

    /// Raises, places and shows the strip, or hides it.
    void show(bool visible = true);
    void updatePlacement();

    QWidget* content() const { return contentWidget; }
    Qt::Edge edge() const { return overlayEdge; }

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void wheelEvent(QWheelEvent* event) override;

private:
    QPointer<QWidget> contentWidget;
    Qt::Edge overlayEdge;
};

} // namespace Marlix::Widgets
