#pragma once

#include <MarlixLib/base/Aliases.h>

#include <QImage>
#include <QRectF>

class QPainter;

namespace Marlix::Widgets {

class ConnectionItem;

/// The wires of a graph drawn into one image that the frames after copy: a large graph's wires are millions of
/// pixels to draw, antialiased near and as hairlines far away, and they change far less often than the view repaints
/// (panning, selecting, hovering). The image reaches past the screen, so a pan copies a shifted part of it. Wires
/// that move with dragged nodes are left out and drawn by their items.
class WireLayer
{
public:
    /// At this zoom and below so many wire items are in view that even walking them costs: they say they have no
    /// contents then.
    static constexpr double ITEMLESS_ZOOM = 0.15;

    /// The wires changed: the next paint draws them again.
    void invalidate() { valid = false; }
    bool isValid() const { return valid; }

    /// Draws the `wires` that are not live as seen through the painter's world transform (a scale and a translation)
    /// over `visible`, a rectangle in scene units.
    void paint(QPainter& painter, ArrayView<ConnectionItem* const> wires, const QRectF& visible);

private:
    void rebuild(ArrayView<ConnectionItem* const> wires, const QRectF& region, double scale, double pixelRatio);

    QImage image;
    QRectF area;
    double zoom = 0.0;
    bool valid = false;
};

} // namespace Marlix::Widgets
