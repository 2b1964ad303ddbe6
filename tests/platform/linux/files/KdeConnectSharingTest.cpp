#include "platform/linux/files/KdeConnectSharing.h"

#include "support/BusPeer.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QTest>

using namespace velmora;

/// Plays the daemon and its devices.
class FakeKdeConnect : public QDBusVirtualObject
{
public:
    QVariant devices;
    int asked = 0;
    QStringList shared;

    [[nodiscard]] QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        const QString call = message.interface() + u'.' + message.member();
        if (call == u"org.kde.kdeconnect.device.share.shareUrl"_qs &&
            message.path() == u"/modules/kdeconnect/devices/abc_1/share"_qs)
            shared << message.arguments().value(0).toString();
        // Only those that can be reached and are paired.
        if (call != u"org.kde.kdeconnect.daemon.devices"_qs ||
            message.arguments() != QVariantList{true, true})
            return false;
        ++asked;
        return connection.send(message.createReply(devices));
    }
};

class KdeConnectSharingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void filesGoToTheFirstDevice();
};

void KdeConnectSharingTest::filesGoToTheFirstDevice()
{
    test::BusPeer peer(u"daemon"_qs);
    FakeKdeConnect daemon;
    QDBusConnection daemonBus = peer.connection();
    daemonBus.registerVirtualObject(u"/modules/kdeconnect"_qs, &daemon, QDBusConnection::SubPath);
    BusConnection bus(QDBusConnection::sessionBus());
    KdeConnectSharing sharing(bus);
    // A daemon that does not run is not started.
    sharing.send({QUrl(u"file:///lost"_qs)});
    QVERIFY(daemonBus.registerService(u"org.kde.kdeconnect"_qs));
    // No device, no identifier, and another type.
    for (const QVariant &devices :
         {QVariant(QStringList()), QVariant(QStringList{u"../abc_1"_qs}), QVariant(7)}) {
        daemon.devices = devices;
        const int asked = daemon.asked;
        sharing.send({QUrl(u"file:///lost"_qs)});
        QTRY_VERIFY(daemon.asked > asked);
    }
    daemon.devices = QStringList{u"abc_1"_qs, u"other"_qs};
    sharing.send({QUrl::fromEncoded("file:///a%FF%20b"), QUrl(u"file:///c"_qs)});
    QVERIFY(daemon.shared.isEmpty());
    QTRY_COMPARE(daemon.shared, QStringList({u"file:///a%FF%20b"_qs, u"file:///c"_qs}));
}

QTEST_GUILESS_MAIN(KdeConnectSharingTest)
#include "KdeConnectSharingTest.moc"
