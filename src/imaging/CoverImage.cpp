#include "imaging/CoverImage.h"

#include <QBuffer>
#include <QImageReader>

namespace velmora
{

namespace
{

constexpr qint64 maximumPixels = 50'000'000;

/// The format by the first bytes. Qt would try every plugin there is, those for drawings too.
QByteArray formatOf(const QByteArray &bytes)
{
    if (bytes.startsWith("\xff\xd8\xff"))
        return "jpeg";
    if (bytes.startsWith("\x89PNG\r\n\x1a\n"))
        return "png";
    if (bytes.startsWith("RIFF") && bytes.mid(8, 4) == "WEBP")
        return "webp";
    if (bytes.startsWith("GIF8"))
        return "gif";
    return bytes.startsWith("BM") ? QByteArray("bmp") : QByteArray();
}

} // namespace

QImage decodeCover(const QByteArray &bytes)
{
    const QByteArray format = formatOf(bytes);
    if (format.isEmpty())
        return {};
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, format);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true); // photographs that were taken with the camera turned
    const QSize size = reader.size();
    if (size.isEmpty() || qint64{size.width()} * size.height() > maximumPixels)
        return {};
    if (size.width() > coverSide || size.height() > coverSide)
        reader.setScaledSize(
            size.scaled(coverSide, coverSide, Qt::KeepAspectRatio).expandedTo({1, 1}));
    QImage image = reader.read();
    if (!image.isNull())
        image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                : QImage::Format_RGB32);
    return image;
}

} // namespace velmora
