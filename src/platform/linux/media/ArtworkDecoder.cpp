#include "platform/linux/media/ArtworkDecoder.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QScopeGuard>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velmora::artwork
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

QByteArray readAll(int descriptor)
{
    QByteArray bytes;
    QByteArray chunk(262'144, Qt::Uninitialized);
    while (bytes.size() <= maximumBytes) {
        const ssize_t count = ::read(descriptor, chunk.data(), static_cast<size_t>(chunk.size()));
        if (count == 0)
            return bytes;
        if (count < 0 && errno != EINTR)
            break;
        bytes.append(chunk.constData(), std::max<ssize_t>(count, 0));
    }
    return {};
}

} // namespace

QImage decode(const QByteArray &bytes)
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
    if (size.width() > side || size.height() > side)
        reader.setScaledSize(size.scaled(side, side, Qt::KeepAspectRatio).expandedTo({1, 1}));
    QImage image = reader.read();
    if (!image.isNull())
        image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                : QImage::Format_RGB32);
    return image;
}

Decoded decodeFile(const QString &path, const QSet<QString> &knownKeys)
{
    // A player may name anything: without O_NONBLOCK, opening a pipe would wait for its other end.
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0)
        return {};
    const auto closing = qScopeGuard([descriptor] { ::close(descriptor); });
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > maximumBytes)
        return {};
    // Players use one temporary file for one cover after another.
    const auto key = QStringLiteral("%1:%2:%3.%4:%5")
                         .arg(status.st_ino)
                         .arg(status.st_size)
                         .arg(status.st_mtim.tv_sec)
                         .arg(status.st_mtim.tv_nsec)
                         .arg(path);
    if (knownKeys.contains(key))
        return {key, QImage()};
    return {key, decode(readAll(descriptor))};
}

QImage decodeInline(const QString &address)
{
    const qsizetype comma = address.indexOf(u',');
    if (comma < 0)
        return {};
    const QStringView head = QStringView(address).left(comma);
    const QByteArray body =
        QByteArray::fromPercentEncoding(QStringView(address).mid(comma + 1).toLatin1());
    return decode(head.endsWith(QLatin1String(";base64"), Qt::CaseInsensitive)
                      ? QByteArray::fromBase64(body)
                      : body);
}

} // namespace velmora::artwork
