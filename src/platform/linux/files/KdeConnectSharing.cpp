#include "platform/linux/files/KdeConnectSharing.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QLoggingCategory>
#include <QRegularExpression>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcSharing, "com.velmora.app.Sharing", QtInfoMsg)

QDBusMessage methodCall(const QString &path, const QString &interface, const QString &method)
{
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.kde.kdeconnect"), path,
                                                       interface, method);
    call.setAutoStartService(false);
    return call;
}

/// The identifier becomes a part of an object path, which takes only these.
bool isDeviceId(const QString &text)
{
    static const QRegularExpression allowed(QStringLiteral("\\A[A-Za-z0-9_]+\\z"));
    return allowed.match(text).hasMatch();
}

} // namespace

KdeConnectSharing::KdeConnectSharing(BusConnection &bus)
    : m_bus(bus)
{
}

void KdeConnectSharing::send(const QList<QUrl> &files)
{
    QDBusMessage call =
        methodCall(QStringLiteral("/modules/kdeconnect"),
                   QStringLiteral("org.kde.kdeconnect.daemon"), QStringLiteral("devices"));
    call << true << true; // reachable and paired only
    auto *const watcher = new QDBusPendingCallWatcher(m_bus.connection().asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, files] {
        watcher->deleteLater();
        const QDBusPendingReply<QStringList> reply(*watcher);
        if (reply.isError()) {
            qCInfo(lcSharing) << "There is nobody to send files with:" << reply.error().name();
        } else if (reply.value().isEmpty() || !isDeviceId(reply.value().first())) {
            qCInfo(lcSharing) << "There is no device to send files to";
        } else {
            sendTo(reply.value().first(), files);
        }
    });
}

void KdeConnectSharing::sendTo(const QString &device, const QList<QUrl> &files)
{
    const QString path = QStringLiteral("/modules/kdeconnect/devices/%1/share").arg(device);
    for (const QUrl &file : files) {
        QDBusMessage call = methodCall(path, QStringLiteral("org.kde.kdeconnect.device.share"),
                                       QStringLiteral("shareUrl"));
        call << QString::fromLatin1(file.toEncoded());
        m_bus.connection().send(call);
    }
}

} // namespace velmora
