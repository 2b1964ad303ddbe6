#pragma once

#include <QBuffer>
#include <QImage>
#include <QImageWriter>
#include <QtEndian>

namespace velmora
{

inline QByteArray encoded(const QImage &image, const char *format)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setQuality(95);
    return writer.write(image) ? buffer.data() : QByteArray();
}

inline QByteArray encoded(const QSize &size, const char *format)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::red);
    return encoded(image, format);
}

/// A JPEG whose EXIF block tells how its camera was held (1 to 8).
inline QByteArray turnedJpeg(const QImage &image, char orientation)
{
    static const char exif[] =
        "\xff\xe1\x00\x22"
        "Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0";
    QByteArray segment(exif, sizeof exif - 1);
    segment[29] = orientation;
    return encoded(image, "jpg").insert(2, segment);
}

/// A bitmap that claims to be of this size.
inline QByteArray claiming(qint32 width, qint32 height)
{
    QByteArray bytes = encoded(QSize(1, 1), "bmp");
    qToLittleEndian(width, bytes.data() + 18);
    qToLittleEndian(height, bytes.data() + 22);
    return bytes;
}

} // namespace velmora
