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
    /// Takes \p content into the strip along \p edge of \p parent; an Exception for a null content or parent.
    OverlayWrapper(QWidget* content, Qt::Edge edge, QWidget* parent);

    /// Raises, places and shows the strip, or hides it.
    void show(bool visible = true);
    /// Fits the strip to the parent's edge again: the parent's full length, the content's size hint across.
    void updatePlacement();

    QWidget* content() const { return contentWidget; } ///< The widget shown in the strip; null once it was deleted.
    Qt::Edge edge() const { return overlayEdge; } ///< The edge of the parent the strip lies along.

    /// Follows the parent's moves and resizes while shown; never consumes an event.
    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    /// Swallows wheel events so the parent does not scroll under the strip.
    void wheelEvent(QWheelEvent* event) override;

private:
    QPointer<QWidget> contentWidget;
    Qt::Edge overlayEdge;
};

} // namespace Marlix::Widgets
