#include "platform/linux/media/ArtworkDecoder.h"

#include "imaging/CoverImage.h"
#include "platform/linux/UniqueFd.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

namespace velmora::artwork
{

Decoded decodeFile(const QString &path, const QSet<QString> &knownKeys)
{
    // A player may name anything: without O_NONBLOCK, opening a pipe would wait for its other end.
    const UniqueFd descriptor(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    struct stat status = {};
    if (!descriptor.isOpen() || ::fstat(descriptor.get(), &status) != 0 ||
        !S_ISREG(status.st_mode) || status.st_size > maximumBytes)
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
    QFile file;
    file.open(descriptor.get(), QIODevice::ReadOnly | QIODevice::Unbuffered);
    return {key, decodeCover(file.read(status.st_size))};
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
