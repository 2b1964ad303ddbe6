#include "platform/FileDrags.h"

#include <QByteArrayView>
#include <QSysInfo>

namespace velmora
{

QList<QUrl> localFilesOf(const QByteArray &uriList)
{
    static const QString ownHost = QSysInfo::machineHostName();
    QList<QUrl> files;
    for (qsizetype start = 0; start < uriList.size();) {
        qsizetype end = uriList.indexOf('\n', start);
        if (end < 0)
            end = uriList.size();
        const QByteArray line = uriList.mid(start, end - start).trimmed();
        start = end + 1;
        if (!line.startsWith("file:"))
            continue;
        QUrl url = QUrl::fromEncoded(line);
        const QString host = url.host();
        if (!host.isEmpty() && host != u"localhost" &&
            host.compare(ownHost, Qt::CaseInsensitive) != 0)
            continue;
        if (!host.isEmpty())
            url.setHost(QString());
        if (url.isLocalFile() && !url.path().isEmpty())
            files.append(url);
    }
    return files;
}

} // namespace velmora
