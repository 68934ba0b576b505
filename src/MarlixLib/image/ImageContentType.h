#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>

namespace Marlix {

/// The image file formats that the framework recognises by name.
enum class ImageContentType
{
    Png, ///< ".png".
    Jpeg, ///< ".jpg", ".jpeg", ".jpe".
    Bmp, ///< ".bmp", ".dib".
    Tga, ///< ".tga".
    Tiff, ///< ".tif", ".tiff".
    Gif, ///< ".gif".
    WebP, ///< ".webp".
    OpenExr, ///< ".exr", floating-point.
    RadianceHdr, ///< ".hdr", ".pic", ".rgbe", floating-point (shared-exponent RGB).
    Dds, ///< ".dds", GPU texture containers.
};

/// The content type a file name announces by its extension (case-insensitive); empty for names of no known image
/// format. The file itself is not opened.
MARLIXLIB_EXPORT Optional<ImageContentType> getImageContentType(const Io::Path& fileName);
/// The registered media type, for example "image/png".
MARLIXLIB_EXPORT StringView getMimeType(ImageContentType type);
/// True for formats that store floating-point (high dynamic range) pixels.
MARLIXLIB_EXPORT bool isHighDynamicRange(ImageContentType type);

} // namespace Marlix
