#include "platform/linux/media/ArtworkDecoder.h"

#include "imaging/CoverImage.h"

#include <QFile>
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
    return {key, decodeCover(readAll(descriptor))};
}

QImage decodeInline(const QString &address)
{
    const qsizetype comma = address.indexOf(u',');
    if (comma < 0)
        return {};
    const QStringView head = QStringView(address).left(comma);
    const QByteArray body =
        QByteArray::fromPercentEncoding(QStringView(address).mid(comma + 1).toLatin1());
    return decodeCover(head.endsWith(QLatin1String(";base64"), Qt::CaseInsensitive)
                           ? QByteArray::fromBase64(body)
                           : body);
}

} // namespace velmora::artwork
