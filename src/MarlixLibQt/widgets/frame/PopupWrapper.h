#pragma once

#include <MarlixLib/base/Flags.h>
#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QDialog>
#include <QPointer>

namespace Marlix::Widgets {

/// Shows a content widget as a bubble beside an anchor, its pin pointing at the anchor, kept inside the screen.
class MARLIXLIBQT_EXPORT PopupWrapper : public QDialog
{
    Q_OBJECT

public:
    /// Options of popupWidget(); combine them in a Flags<Flag>.
    enum class Flag
    {
        /// Keep the bubble inside the anchor's window instead of the screen's available area.
        ConfineToAnchorWindow = 1,
    };

    /// Depth of the pin: the margin on the pinned edge, in pixels.
    static constexpr int PIN_MARGIN = 10;
    /// Distance of an aligned pin from the start or end of its edge.
    static constexpr int PIN_INSET = 20;
    /// Gap kept between the bubble and the left and top of the available area.
    static constexpr int SCREEN_MARGIN_START = 10;
    static constexpr int SCREEN_MARGIN_END = 9; ///< Gap kept between the bubble and the right and bottom of the area.

    /// Wraps `content`, shows it beside `anchor` with its pin on `edge`, and deletes the wrapper once it finishes.
    static PopupWrapper* popupWidget(
        QWidget* content, const QWidget* anchor, Qt::Edge edge, Qt::AlignmentFlag alignment, Flags<Flag> flags = {});

    /// The placement of a bubble of `size` beside `anchor` inside `available` (global pixels); flips `edge` to
    /// the opposite side when there is no room and writes the edge used back.
    static QRect computePopupGeometry(
        const QRect& anchor, const QRect& available, const QSize& size, Qt::Edge& edge, Qt::AlignmentFlag alignment);
    /// Where the pin sits along `edge` of a bubble of `size`: x for top and bottom edges, y for left and right.
    static int computePinPosition(const QSize& size, Qt::Edge edge, Qt::AlignmentFlag alignment);
    /// The bubble's margins with its pin on \p edge: PIN_MARGIN on that edge, none elsewhere.
    static QMargins getContentsMarginsFor(Qt::Edge edge);

    /// computePopupGeometry() for this bubble's anchor, size and area; the current geometry once the anchor is gone.
    QRect getGeometryFor(Qt::Edge& edge, Qt::AlignmentFlag alignment) const;
    /// computePinPosition() for this bubble's current size.
    int getPinPositionFor(Qt::Edge edge, Qt::AlignmentFlag alignment) const;
    /// Moves the bubble beside its anchor for its current size, flipping the pin's edge when needed.
    void updatePlacement();

    QWidget* content() const { return contentWidget; } ///< The wrapped widget; null once it was deleted.
    /// The edge the pin is on now, which may be the opposite of the one asked for.
    Qt::Edge edge() const { return currentEdge; }

public Q_SLOTS:
    /// Accepts a dialog content, which finishes the bubble with it; otherwise closes the bubble as accepted.
    void accept() override;
    /// Rejects a dialog content, which finishes the bubble with it; otherwise closes the bubble as rejected (Esc).
    void reject() override;

protected:
    /// Draws the rounded bubble with its pin; a failure is logged, never thrown.
    void paintEvent(QPaintEvent* event) override;
    /// Places the bubble again so its pin keeps pointing at the anchor; a failure is logged, never thrown.
    void resizeEvent(QResizeEvent* event) override;

private:
    PopupWrapper(
        QWidget* content, const QWidget* anchor, Qt::Edge edge, Qt::AlignmentFlag alignment, Flags<Flag> flags);
    QRect availableArea() const;

    QPointer<QWidget> contentWidget;
    QPointer<const QWidget> anchorWidget;
    Qt::Edge requestedEdge;
    Qt::Edge currentEdge;
    Qt::AlignmentFlag alignment;
    Flags<Flag> flags;
    bool placing = false;
};

} // namespace Marlix::Widgets
