#include "platform/linux/dbus/BusObjects.h"
#include "platform/linux/dbus/BusProperties.h"
#include "platform/linux/dbus/BusValue.h"
#include "support/BusPeer.h"
#include "support/VirtualClock.h"

#include <QDBusMetaType>
#include <QDBusVirtualObject>
#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace std::chrono_literals;
using velmora::test::BusPeer;

using Interfaces = BusObjects::Interfaces;
using Objects = QMap<QDBusObjectPath, Interfaces>;
Q_DECLARE_METATYPE(Interfaces)
Q_DECLARE_METATYPE(Objects)

namespace
{

const auto serviceName = QStringLiteral("com.example.Things");
const auto thingInterface = QStringLiteral("com.example.Thing");

Interfaces thing(int size)
{
    return {{thingInterface, {{QStringLiteral("Size"), size}}}};
}

/// A program with things that it lists, on a connection of its own.
class Service : public QDBusVirtualObject
{
public:
    Objects objects;
    bool isBroken = false; ///< refuses all questions
    int questions = 0;

    explicit Service(const QString &connectionName)
        : m_peer(connectionName)
    {
        m_peer.connection().registerVirtualObject(u"/"_qs, this, QDBusConnection::SubPath);
        m_peer.connection().registerService(serviceName);
    }

    void send(const QString &path, const QString &interface, const QString &name,
              const QVariantList &arguments)
    {
        QDBusMessage signal = QDBusMessage::createSignal(path, interface, name);
        signal.setArguments(arguments);
        m_peer.connection().send(signal);
    }
    void change(const QString &path, const QVariantMap &changed, const QStringList &invalid = {})
    {
        send(path, u"org.freedesktop.DBus.Properties"_qs, u"PropertiesChanged"_qs,
             {thingInterface, changed, invalid});
    }
    void tellOfObjects(const QString &signal, const QVariantList &arguments)
    {
        send(u"/"_qs, u"org.freedesktop.DBus.ObjectManager"_qs, signal, arguments);
    }

    [[nodiscard]] QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override
    {
        ++questions;
        const auto interfaces = objects.value(QDBusObjectPath(message.path()));
        if (isBroken)
            bus.send(message.createErrorReply(QDBusError::UnknownObject, QString()));
        else if (message.member() == u"GetManagedObjects")
            bus.send(message.createReply(QVariant::fromValue(objects)));
        else
            bus.send(message.createReply(interfaces.value(thingInterface)));
        return true;
    }

private:
    BusPeer m_peer;
};

} // namespace

class BusTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void callsTellOfEveryOutcome();
    void followsProperties();
    void followsObjects();
    void worksWithoutABus();

private:
    VirtualClock m_clock;
    BusPeer m_peer{QStringLiteral("ours")};
};

void BusTest::initTestCase()
{
    qDBusRegisterMetaType<Interfaces>();
    qDBusRegisterMetaType<Objects>();
}

void BusTest::callsTellOfEveryOutcome()
{
    QStringList outcomes;
    const auto tell = [&](const QDBusMessage &answer) {
        outcomes << (isReply(answer) ? toText(answer.arguments().value(0)) : answer.errorName());
    };
    auto context = std::make_unique<QObject>();
    const auto ask = busMethod(u"GetNameOwner"_qs, {u"org.freedesktop.DBus"_qs});
    callBus(m_peer.connection(), ask, context.get(), tell);
    callBus(m_peer.connection(), busMethod(u"GetNameOwner"_qs, {u"com.example.None"_qs}),
            context.get(), tell);
    callBus(QDBusConnection(u"none"_qs), ask, context.get(), tell);
    QVERIFY(outcomes.isEmpty());
    QTRY_COMPARE(outcomes.size(), 3);
    QVERIFY(outcomes.contains(u"org.freedesktop.DBus"_qs));
    QVERIFY(outcomes.contains(u"org.freedesktop.DBus.Error.NameHasNoOwner"_qs));
    QVERIFY(outcomes.contains(u"org.freedesktop.DBus.Error.Disconnected"_qs));
    callBus(m_peer.connection(), ask, context.get(), [&](const QDBusMessage &) {
        context.reset(); // may go inside of its own answer
    });
    callBus(m_peer.connection(), ask, context.get(), [](const QDBusMessage &) { QFAIL("told"); });
    QTRY_VERIFY(!context);
}

void BusTest::followsProperties()
{
    const auto path = u"/thing"_qs;
    BusProperties properties(m_peer.connection(), m_clock, {serviceName, path, thingInterface});
    QVariantMap all;
    int loads = 0;
    connect(&properties, &BusProperties::loaded, this, [&](const QVariantMap &loaded) {
        all = loaded;
        ++loads;
    });
    connect(&properties, &BusProperties::changed, this,
            [&](const QVariantMap &changed) { all.insert(changed); });
    const auto size = [&] { return m_clock.advance(30ms), all.value(u"Size"_qs).toInt(); };
    // It comes later, and is not ready yet.
    auto service = std::make_unique<Service>(u"first"_qs);
    service->isBroken = true;
    QTRY_COMPARE(service->questions, 1);
    service->isBroken = false;
    service->objects[QDBusObjectPath(path)] = thing(1);
    QTRY_COMPARE((m_clock.advance(250ms), size()), 1);
    service->change(path, {{u"Size"_qs, 2}});
    QTRY_COMPARE(size(), 2);
    QCOMPARE(loads, 1);
    // What is only said to have changed is asked for, once for all that is said at a time.
    service->objects[QDBusObjectPath(path)] = thing(3);
    const int questions = service->questions;
    for (int i = 0; i < 50; ++i)
        service->change(path, {}, {u"Size"_qs});
    QTRY_COMPARE(size(), 3);
    QVERIFY(service->questions <= questions + 3);
    // Nothing that makes no sense.
    service->send(path, u"org.freedesktop.DBus.Properties"_qs, u"PropertiesChanged"_qs,
                  {thingInterface, 7, u"x"_qs});
    service->change(u"/other"_qs, {{u"Size"_qs, 9}});
    service.reset();
    QTRY_VERIFY(all.isEmpty());
    service = std::make_unique<Service>(u"second"_qs);
    service->objects[QDBusObjectPath(path)] = thing(4);
    QTRY_COMPARE(size(), 4);
}

void BusTest::followsObjects()
{
    auto service = std::make_unique<Service>(u"third"_qs);
    service->objects = {{QDBusObjectPath(u"/a"_qs), thing(1)},
                        {QDBusObjectPath(u"/b"_qs), thing(2)}};
    BusObjects things(m_peer.connection(), m_clock, serviceName, u"/"_qs);
    const auto size = [&](const char *path) {
        m_clock.advance(30ms);
        return things.all().value(QLatin1String(path)).value(thingInterface).value(u"Size"_qs);
    };
    QTRY_COMPARE(size("/b"), QVariant(2));
    service->change(u"/b"_qs, {{u"Size"_qs, 3}});
    QTRY_COMPARE(size("/b"), QVariant(3));
    service->change(u"/b"_qs, {}, {u"Size"_qs});
    QTRY_COMPARE(size("/b"), QVariant());
    service->objects[QDBusObjectPath(u"/c"_qs)] = thing(5);
    service->tellOfObjects(u"InterfacesAdded"_qs, {QVariant::fromValue(QDBusObjectPath(u"/c"_qs)),
                                                   QVariant::fromValue(thing(5))});
    QTRY_COMPARE(size("/c"), QVariant(5));
    service->objects.remove(QDBusObjectPath(u"/a"_qs));
    service->tellOfObjects(u"InterfacesRemoved"_qs, {QVariant::fromValue(QDBusObjectPath(u"/a"_qs)),
                                                     QStringList{thingInterface}});
    QTRY_VERIFY((m_clock.advance(30ms), !things.all().contains(u"/a"_qs)));

    // Nothing that makes no sense, nor what another program says.
    for (const auto *signal : {"InterfacesAdded", "InterfacesRemoved"}) {
        service->tellOfObjects(QLatin1String(signal), {u"/d"_qs, 7});
        service->tellOfObjects(QLatin1String(signal), {});
    }
    service->change(u"/nowhere"_qs, {{u"Size"_qs, 9}});
    Service(u"stranger"_qs).change(u"/c"_qs, {{u"Size"_qs, 9}});
    service->objects[QDBusObjectPath(u"/b"_qs)] = thing(6);
    service->change(u"/b"_qs, {{u"Size"_qs, 6}});
    QTRY_COMPARE(size("/b"), QVariant(6));
    QCOMPARE(things.all().keys(), (QStringList{u"/b"_qs, u"/c"_qs}));
    QCOMPARE(size("/c"), QVariant(5));

    service.reset();
    QTRY_VERIFY(things.all().isEmpty());
    service = std::make_unique<Service>(u"fourth"_qs);
    service->objects = {{QDBusObjectPath(u"/e"_qs), thing(7)}};
    QTRY_COMPARE(size("/e"), QVariant(7));
}

void BusTest::worksWithoutABus()
{
    const QDBusConnection none(u"none"_qs);
    BusProperties properties(none, m_clock, {serviceName, u"/thing"_qs, thingInterface});
    BusObjects things(none, m_clock, serviceName, u"/"_qs);
    QSignalSpy loads(&properties, &BusProperties::loaded);
    QSignalSpy changes(&things, &BusObjects::changed);
    m_clock.advance(10s);
    QCoreApplication::processEvents();
    QVERIFY(loads.isEmpty() && changes.isEmpty());
}

QTEST_GUILESS_MAIN(BusTest)
#include "BusTest.moc"
