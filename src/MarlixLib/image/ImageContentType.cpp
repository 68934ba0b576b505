#include <MarlixLib/base/Exception.h>
#include <MarlixLib/image/ImageContentType.h>

#include <array>
#include <utility>

namespace Marlix {

namespace {

constexpr std::array<std::pair<StringView, ImageContentType>, 16> EXTENSIONS { {
    { "png", ImageContentType::Png },
    { "jpg", ImageContentType::Jpeg },
    { "jpeg", ImageContentType::Jpeg },
    { "jpe", ImageContentType::Jpeg },
    { "bmp", ImageContentType::Bmp },
    { "dib", ImageContentType::Bmp },
    { "tga", ImageContentType::Tga },
    { "tif", ImageContentType::Tiff },
    { "tiff", ImageContentType::Tiff },
    { "gif", ImageContentType::Gif },
    { "webp", ImageContentType::WebP },
    { "exr", ImageContentType::OpenExr },
    { "hdr", ImageContentType::RadianceHdr },
    { "pic", ImageContentType::RadianceHdr },
    { "rgbe", ImageContentType::RadianceHdr },
    { "dds", ImageContentType::Dds },
} };

} // namespace

Optional<ImageContentType> getImageContentType(const Io::Path& fileName)
{
    const String extension = fileName.extension().string();
    if (extension.size() < 2)
        return {};
    String lower;
    for (char c : StringView(extension).substr(1))
        lower += (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c;
    for (const auto& [name, type] : EXTENSIONS)
        if (name == lower)
            return type;
    return {};
}

StringView getMimeType(ImageContentType type)
{
    switch (type) {
    case ImageContentType::Png:
        return "image/png";
    case ImageContentType::Jpeg:
        return "image/jpeg";
    case ImageContentType::Bmp:
        return "image/bmp";
    case ImageContentType::Tga:
        return "image/x-tga";
    case ImageContentType::Tiff:
        return "image/tiff";
    case ImageContentType::Gif:
        return "image/gif";
    case ImageContentType::WebP:
        return "image/webp";
    case ImageContentType::OpenExr:
        return "image/x-exr";
    case ImageContentType::RadianceHdr:
        return "image/vnd.radiance";
    case ImageContentType::Dds:
        return "image/vnd-ms.dds";
    }
    Detail::throwStopException("image/ImageContentType", __LINE__);
}

bool isHighDynamicRange(ImageContentType type)
{
    return type == ImageContentType::OpenExr || type == ImageContentType::RadianceHdr;
}

} // namespace Marlix
