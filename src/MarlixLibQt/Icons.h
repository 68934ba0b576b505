#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>

#include <QBrush>
#include <QColor>
#include <QIcon>
#include <QImage>
#include <QSize>

namespace Marlix {

/// A patch of `color` with a thin border; a translucent colour shows the checkerboard through it, an invalid one is
/// shown as "no colour" (white, crossed by a red diagonal).
MARLIXLIBQT_EXPORT QIcon getColorPatchIcon(const QColor& color, const QSize& size);

/// The icon of the framework's applications, drawn once per process.
MARLIXLIBQT_EXPORT const QIcon& getVelkinIcon();
/// The icon of the widget library itself (about boxes, the studio), drawn once per process.
MARLIXLIBQT_EXPORT const QIcon& getMarlixIcon();

/// Two greys in 4x4-pixel squares, painted behind colours that are not opaque.
MARLIXLIBQT_EXPORT QBrush checkerboardBrush4X4();

/// The image in shades of grey by luminance (BT.709 weights); alpha is kept.
MARLIXLIBQT_EXPORT QImage convertToGrayscale(const QImage& image);

} // namespace Marlix
