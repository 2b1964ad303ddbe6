#include "platform/linux/files/KdeConnectSharing.h"

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
    QVariant answer = QStringList{QStringLiteral("abc_1"), QStringLiteral("other")};
    int asked = 0;

public Q_SLOTS:
    Q_SCRIPTABLE QStringList devices(bool onlyReachable, bool onlyPaired)
    {
        asked += onlyReachable && onlyPaired ? 1 : 1000;
        if (answer.userType() != QMetaType::QStringList) {
            setDelayedReply(true);
            connection().send(message().createReply(answer));
            return {};
        }
        return answer.toStringList();
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
    void init();
    void cleanup();

    void filesGoToTheFirstDeviceInOrder();
    void nobodyToSendTo_data();
    void nobodyToSendTo();
    void aDaemonThatDoesNotRunIsNotStarted();

private:
    QDBusConnection m_daemonBus = QDBusConnection(QString());
    FakeKdeConnect m_daemon;
    FakeShare m_device;
};

void KdeConnectSharingTest::init()
{
    m_daemonBus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, text("daemon"));
    QVERIFY(m_daemonBus.isConnected());
    m_daemonBus.registerObject(text("/modules/kdeconnect"), &m_daemon,
                               QDBusConnection::ExportScriptableSlots);
    m_daemonBus.registerObject(text("/modules/kdeconnect/devices/abc_1/share"), &m_device,
                               QDBusConnection::ExportScriptableSlots);
    m_daemon.asked = 0;
    m_device.shared.clear();
}

void KdeConnectSharingTest::cleanup()
{
    m_daemonBus.unregisterService(text("org.kde.kdeconnect"));
    QDBusConnection::disconnectFromBus(text("daemon"));
}

void KdeConnectSharingTest::filesGoToTheFirstDeviceInOrder()
{
    QVERIFY(m_daemonBus.registerService(text("org.kde.kdeconnect")));
    m_daemon.answer = QStringList{text("abc_1"), text("other")};
    BusConnection bus(QDBusConnection::sessionBus());
    KdeConnectSharing sharing(bus);
    sharing.send({QUrl::fromEncoded("file:///a%FF%20b"), QUrl(text("file:///c"))});
    QVERIFY(m_device.shared.isEmpty());
    QTRY_COMPARE(m_device.shared, QStringList({text("file:///a%FF%20b"), text("file:///c")}));
    QCOMPARE(m_daemon.asked, 1);
}

void KdeConnectSharingTest::nobodyToSendTo_data()
{
    QTest::addColumn<QVariant>("answer");
    QTest::newRow("no device") << QVariant(QStringList());
    QTest::newRow("no identifier") << QVariant(QStringList{text("../abc_1")});
    QTest::newRow("another type") << QVariant(7);
}

void KdeConnectSharingTest::nobodyToSendTo()
{
    QFETCH(const QVariant, answer);
    QVERIFY(m_daemonBus.registerService(text("org.kde.kdeconnect")));
    BusConnection bus(QDBusConnection::sessionBus());
    KdeConnectSharing sharing(bus);
    m_daemon.answer = answer;
    sharing.send({QUrl(text("file:///lost"))});
    QTRY_COMPARE(m_daemon.asked, 1);
    m_daemon.answer = QStringList{text("abc_1")};
    sharing.send({QUrl(text("file:///b"))}); // and it goes on working
    QTRY_COMPARE(m_device.shared, QStringList(text("file:///b")));
}

void KdeConnectSharingTest::aDaemonThatDoesNotRunIsNotStarted()
{
    BusConnection bus(QDBusConnection::sessionBus());
    KdeConnectSharing sharing(bus);
    sharing.send({QUrl(text("file:///lost"))});
    QVERIFY(m_daemonBus.registerService(text("org.kde.kdeconnect")));
    m_daemon.answer = QStringList{text("abc_1")};
    sharing.send({QUrl(text("file:///b"))});
    QTRY_VERIFY(!m_device.shared.isEmpty());
    QCOMPARE(m_device.shared.last(), text("file:///b"));
}

QTEST_GUILESS_MAIN(KdeConnectSharingTest)
#include "KdeConnectSharingTest.moc"
