#include "platform/linux/dbus/BusConnection.h"

#include "support/BusDaemon.h"

#include <QDBusConnectionInterface>
#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace std::chrono_literals;
using velmora::test::BusDaemon;

class BusConnectionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsTheSessionBus();
    void waitsForNobody();
    void comesWithTheBus();
    void doesNotWaitForOneThatHangs();
};

void BusConnectionTest::findsTheSessionBus()
{
    qputenv("XDG_RUNTIME_DIR", "/run/user/a b");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "tcp:host=x");
    QCOMPARE(BusConnection::sessionAddress(), QByteArray("tcp:host=x"));
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    QCOMPARE(BusConnection::sessionAddress(), QByteArray("unix:path=/run/user/a%20b/bus"));
    qunsetenv("XDG_RUNTIME_DIR");
    QCOMPARE(BusConnection::sessionAddress(), QByteArray());
}

void BusConnectionTest::waitsForNobody()
{
    BusDaemon daemon;
    for (const QByteArray &address : {QByteArray(), QByteArray("nonsense"), daemon.address()}) {
        BusConnection bus(address);
        QVERIFY(bus.waitForAnswer(20s)); // at once: nobody is there to answer
        QVERIFY(!bus.isConnected());
        QVERIFY(!bus.connection().isConnected());
    }
}

void BusConnectionTest::comesWithTheBus()
{
    BusDaemon daemon;
    BusConnection bus(daemon.address());
    QVERIFY(bus.waitForAnswer(20s));
    int starts = 0;
    bus.whenConnected(this, [&starts] { ++starts; });
    const QSignalSpy disconnected(&bus, &BusConnection::disconnected);
    for (int i = 1; i <= 2; ++i) {
        QCOMPARE(starts, i - 1);
        daemon.start();
        QTRY_COMPARE(starts, i);
        QVERIFY(bus.connection().interface()->isServiceRegistered(bus.connection().baseService()));
        daemon.kill();
        QTRY_COMPARE(disconnected.size(), i);
        QVERIFY(!bus.isConnected());
    }
}

void BusConnectionTest::doesNotWaitForOneThatHangs()
{
    BusDaemon daemon;
    daemon.hang();
    BusConnection bus(daemon.address());
    QVERIFY(!bus.waitForAnswer(50ms));
    daemon.start();
    QTRY_VERIFY(bus.isConnected());
    int starts = 0;
    bus.whenConnected(this, [&starts] { ++starts; });
    QCOMPARE(starts, 1);
}

QTEST_GUILESS_MAIN(BusConnectionTest)
#include "BusConnectionTest.moc"
