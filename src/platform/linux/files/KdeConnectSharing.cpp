#include "platform/linux/files/KdeConnectSharing.h"

#include "platform/linux/dbus/BusCall.h"

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
    callBus(m_bus.connection(), call, this, [this, files](const QDBusMessage &answer) {
        const QStringList devices = answer.arguments().value(0).toStringList();
        if (!isReply(answer)) {
            qCInfo(lcSharing) << "There is nobody to send files with:" << answer.errorName();
        } else if (devices.isEmpty() || !isDeviceId(devices.first())) {
            qCInfo(lcSharing) << "There is no device to send files to";
        } else {
            sendTo(devices.first(), files);
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
