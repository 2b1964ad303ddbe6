#include "platform/LocalPath.h"

#include <QRandomGenerator>

#include <algorithm>

namespace velmora
{

std::optional<QByteArray> localPath(const QUrl &url)
{
    const QString host = url.host();
    if (url.scheme() != QLatin1String("file") ||
        (!host.isEmpty() && host != QLatin1String("localhost"))) {
        return std::nullopt;
    }
    const QByteArray encoded = url.path(QUrl::FullyEncoded).toLatin1();
    // An escaped slash would turn one name into two, and a zero byte would cut the path short.
    if (!encoded.startsWith('/') || encoded.toUpper().contains("%2F")) {
        return std::nullopt;
    }
    QByteArray path = QByteArray::fromPercentEncoding(encoded);
    if (path.contains('\0')) {
        return std::nullopt;
    }
    while (path.size() > 1 && path.endsWith('/')) {
        path.chop(1);
    }
    return path;
}

QUrl fileUrl(const QByteArray &path)
{
    return QUrl::fromEncoded("file://" + path.toPercentEncoding("/"));
}

QByteArray fileName(const QByteArray &path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

QByteArray parentFolder(const QByteArray &path)
{
    return path.left(std::max<qsizetype>(path.lastIndexOf('/'), 1));
}

QByteArray hiddenName()
{
    return ".velmora-" + QByteArray::number(QRandomGenerator::system()->generate64(), 36);
}

QString readableName(const QByteArray &path)
{
    QString name = QString::fromUtf8(fileName(path));
    const auto isControl = [](QChar character) {
        return character.category() == QChar::Other_Control;
    };
    std::replace_if(name.begin(), name.end(), isControl, QChar(QChar::ReplacementCharacter));
    return name;
}

} // namespace velmora
