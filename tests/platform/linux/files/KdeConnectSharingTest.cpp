#include "platform/linux/files/KdeConnectSharing.h"

#include "support/BusPeer.h"

#include <QDBusContext>
#include <QDBusMessage>
#include <QTest>

using namespace velmora;

namespace
{

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

/// Plays the daemon and one device.
class FakeKdeConnect : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.kdeconnect.daemon")

public:
    QVariant answer;
    int asked = 0;

public Q_SLOTS:
    Q_SCRIPTABLE void devices(bool onlyReachable, bool onlyPaired)
    {
        asked += onlyReachable && onlyPaired ? 1 : 1000;
        setDelayedReply(true);
        connection().send(message().createReply(answer));
    }
};

class FakeShare : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.kdeconnect.device.share")

public:
    QStringList shared;

public Q_SLOTS:
    Q_SCRIPTABLE void shareUrl(const QString &url) { shared << url; }
};

class KdeConnectSharingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void filesGoToTheFirstDevice();
};

void KdeConnectSharingTest::filesGoToTheFirstDevice()
{
    test::BusPeer peer(text("daemon"));
    FakeKdeConnect daemon;
    FakeShare device;
    QDBusConnection daemonBus = peer.connection();
    daemonBus.registerObject(text("/modules/kdeconnect"), &daemon,
                             QDBusConnection::ExportScriptableSlots);
    daemonBus.registerObject(text("/modules/kdeconnect/devices/abc_1/share"), &device,
                             QDBusConnection::ExportScriptableSlots);
    BusConnection bus(QDBusConnection::sessionBus());
    KdeConnectSharing sharing(bus);
    // A daemon that does not run is not started.
    sharing.send({QUrl(text("file:///lost"))});
    QVERIFY(daemonBus.registerService(text("org.kde.kdeconnect")));
    // No device, no identifier, and another type.
    for (const QVariant &answer :
         {QVariant(QStringList()), QVariant(QStringList{text("../abc_1")}), QVariant(7)}) {
        daemon.answer = answer;
        const int asked = daemon.asked;
        sharing.send({QUrl(text("file:///lost"))});
        QTRY_VERIFY(daemon.asked > asked);
    }
    daemon.answer = QStringList{text("abc_1"), text("other")};
    sharing.send({QUrl::fromEncoded("file:///a%FF%20b"), QUrl(text("file:///c"))});
    QVERIFY(device.shared.isEmpty());
    QTRY_COMPARE(device.shared, QStringList({text("file:///a%FF%20b"), text("file:///c")}));
    QVERIFY(daemon.asked < 1000);
}

QTEST_GUILESS_MAIN(KdeConnectSharingTest)
#include "KdeConnectSharingTest.moc"
