#pragma once

#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>

#include <QImage>
#include <QRectF>

class QPainter;

namespace Marlix::Widgets {

class ConnectionItem;

/// The canvas under the nodes (background, grid and wires) drawn into one image that the frames after copy: a large
/// graph's wires are millions of pixels to draw, antialiased near and as hairlines far away, and they change far less
/// often than the view repaints (panning, selecting, hovering). The image reaches past the screen, so a pan copies a
/// shifted part of it. Wires that move with dragged nodes are left out and drawn by their items.
class WireLayer
{
public:
    /// Draws what lies under the wires (background and grid) over a rectangle in scene units.
    using Underlay = Function<void(QPainter&, const QRectF&)>;

    /// At this zoom and below so many wire items are in view that even walking them costs: they say they have no
    /// contents then.
    static constexpr double ITEMLESS_ZOOM = 0.15;

    /// The wires or what lies under them changed: the next paint draws them again.
    void invalidate() { valid = false; }
    bool isValid() const { return valid; } ///< False until the next paint once invalidate() was called.

    /// Covers `visible` (a rectangle in scene units, as seen through the painter's world transform, a scale and a
    /// translation) with the underlay and the `wires` that are not live.
    void paint(
        QPainter& painter, ArrayView<ConnectionItem* const> wires, const QRectF& visible, const Underlay& underlay);

private:
    void rebuild(ArrayView<ConnectionItem* const> wires, const Underlay& underlay, double scale, double pixelRatio);
    void scroll(ArrayView<ConnectionItem* const> wires, const Underlay& underlay, const QRectF& wanted);
    /// Draws the part of the area that `pixelRect` of the image shows.
    void draw(ArrayView<ConnectionItem* const> wires, const Underlay& underlay, const QRect& pixelRect);
    QSize pixelSize(const QRectF& rect, double pixelRatio) const;

    QImage image;
    QRectF area;
    double zoom = 0.0;
    bool valid = false;
};

} // namespace Marlix::Widgets
