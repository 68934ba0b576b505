#include <MarlixLibQt/QtUtils.h>

#include <MarlixLib/base/Exception.h>

#include <cmath>
#include <cstring>

namespace Marlix {

QString toQt(StringView text)
{
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

String fromQt(const QString& text)
{
    return text.toStdString();
}

QList<QString> toQt(ArrayView<const StringView> texts)
{
    QList<QString> result;
    result.reserve(qsizetype(texts.size()));
    for (StringView text : texts)
        result.append(toQt(text));
    return result;
}

QList<QString> toQt(ArrayView<const String> texts)
{
    QList<QString> result;
    result.reserve(qsizetype(texts.size()));
    for (const String& text : texts)
        result.append(toQt(text));
    return result;
}

Stack<String> fromQt(const QList<QString>& texts)
{
    Stack<String> result;
    result.reserve(std::size_t(texts.size()));
    for (const QString& text : texts)
        result.push_back(text.toStdString());
    return result;
}

QByteArray toQt(ArrayView<const std::byte> bytes)
{
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size()));
}

Array<std::byte> fromQt(const QByteArray& bytes)
{
    Array<std::byte> result(std::size_t(bytes.size()));
    if (!bytes.isEmpty())
        std::memcpy(result.data(), bytes.constData(), result.size());
    return result;
}

namespace {
std::uint8_t toByte(float value)
{
    if (!(value > 0.0f)) // NaN too
        return 0;
    if (value >= 1.0f)
        return 255;
    return std::uint8_t(std::lround(value * 255.0f));
}

// Every row is copied on its own: QImage pads its scan lines to four bytes, the bitmaps do not.
template <class P, class Convert> QImage convertBitmap(const BitmapImpl<P>& bitmap, QImage::Format format, Convert convert)
{
    if (bitmap.isEmpty())
        return {};
    QImage image(bitmap.getWidth(), bitmap.getHeight(), format);
    if (image.isNull())
        throw Exception("There is not enough memory for an image of this size.");
    for (int y = 0; y < bitmap.getHeight(); ++y) {
        uchar* line = image.scanLine(y);
        for (const P& pixel : bitmap.getRow(y))
            line = convert(pixel, line);
    }
    return image;
}
} // namespace

QImage toQt(const BitmapImpl<float>& bitmap)
{
    return convertBitmap(bitmap, QImage::Format_Grayscale8, [](float v, uchar* out) {
        *out = toByte(v);
        return out + 1;
    });
}

QImage toQt(const BitmapImpl<RgbBytes>& bitmap)
{
    return convertBitmap(bitmap, QImage::Format_RGB888, [](const RgbBytes& p, uchar* out) {
        out[0] = p.r;
        out[1] = p.g;
        out[2] = p.b;
        return out + 3;
    });
}

QImage toQt(const BitmapImpl<RgbaBytes>& bitmap)
{
    return convertBitmap(bitmap, QImage::Format_RGBA8888, [](const RgbaBytes& p, uchar* out) {
        out[0] = p.r;
        out[1] = p.g;
        out[2] = p.b;
        out[3] = p.a;
        return out + 4;
    });
}

QImage toQt(const BitmapImpl<Rgb>& bitmap, bool toDisplay)
{
    constexpr float DISPLAY_EXPONENT = 1.0f / 2.2f;
    const auto encode = [toDisplay, DISPLAY_EXPONENT](float v) {
        return toByte(toDisplay && v > 0.0f ? std::pow(v, DISPLAY_EXPONENT) : v);
    };
    return convertBitmap(bitmap, QImage::Format_RGBA8888, [&](const Rgb& p, uchar* out) {
        out[0] = encode(p.r);
        out[1] = encode(p.g);
        out[2] = encode(p.b);
        out[3] = toByte(p.a);
        return out + 4;
    });
}

} // namespace Marlix
