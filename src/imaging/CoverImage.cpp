#include "imaging/CoverImage.h"

#include <QBuffer>
#include <QImageReader>

namespace velmora
{

namespace
{

constexpr qint64 pixelsAtMost = 50'000'000;

/// Pictures only: a drawing could name other files, or take for ever.
bool isPicture(const QByteArray &format)
{
    static const QList<QByteArray> formats{"jpeg", "png", "webp", "gif", "bmp"};
    return formats.contains(format);
}

} // namespace

QImage decodeCover(const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    const QSize size = reader.size();
    if (!isPicture(reader.format()) || !size.isValid() ||
        qint64(size.width()) * size.height() > pixelsAtMost) {
        return {};
    }
    reader.setAutoTransform(true);
    if (size.width() > coverSide || size.height() > coverSide) {
        reader.setScaledSize(size.scaled(coverSide, coverSide, Qt::KeepAspectRatio));
    }
    return reader.read();
}

} // namespace velmora
