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
    void init() { m_daemon.emplace(); }

    void findsTheSessionBus();
    void waitsForNobody();
    void comesWithTheBus_data();
    void comesWithTheBus();
    void endsWhileTheBusHangs();

private:
    std::optional<BusDaemon> m_daemon;
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
    for (const QByteArray &address : {QByteArray(), QByteArray("nonsense"), m_daemon->address()}) {
        BusConnection bus(address);
        QVERIFY(bus.waitForAnswer(20s)); // at once: nobody is there to answer
        QVERIFY(!bus.isConnected());
        QVERIFY(!bus.connection().isConnected());
    }
}

void BusConnectionTest::comesWithTheBus_data()
{
    QTest::addColumn<bool>("hangsBefore");
    QTest::newRow("none at first") << false;
    QTest::newRow("hangs at first") << true;
}

void BusConnectionTest::comesWithTheBus()
{
    QFETCH(const bool, hangsBefore);
    if (hangsBefore)
        m_daemon->hang();
    BusConnection bus(m_daemon->address());
    int starts = 0;
    bus.whenConnected(this, [&starts] { ++starts; });
    QCOMPARE(bus.waitForAnswer(50ms), !hangsBefore);
    QCOMPARE(starts, 0);
    m_daemon->start();
    QTRY_COMPARE(starts, 1);
    QVERIFY(bus.connection().interface()->isServiceRegistered(bus.connection().baseService()));
    bus.whenConnected(this, [&starts] { ++starts; });
    QCOMPARE(starts, 2);

    const QSignalSpy disconnected(&bus, &BusConnection::disconnected);
    for (int i = 1; i <= 2; ++i) {
        m_daemon->kill();
        QTRY_COMPARE(disconnected.size(), i);
        QVERIFY(!bus.isConnected());
        m_daemon->start();
        QTRY_COMPARE(starts, 2 + 2 * i);
        QVERIFY(bus.isConnected());
    }
}

void BusConnectionTest::endsWhileTheBusHangs()
{
    m_daemon->hang();
    BusConnection bus(m_daemon->address());
    QVERIFY(!bus.waitForAnswer(50ms));
    // Its end, here, waits for nothing.
}

QTEST_GUILESS_MAIN(BusConnectionTest)
#include "BusConnectionTest.moc"
