#include "platform/linux/dbus/BusObjects.h"
#include "platform/linux/dbus/BusValue.h"
#include "support/BusPeer.h"
#include "support/VirtualClock.h"

#include <QDBusMetaType>
#include <QDBusVirtualObject>
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
    }

    [[nodiscard]] QString owner() { return m_peer.connection().baseService(); }

    void tell(const QString &path, const QString &interface, const QString &signal)
    {
        m_peer.connection().send(QDBusMessage::createSignal(path, interface, signal));
    }
    void tellChange()
    {
        tell(u"/b"_qs, u"org.freedesktop.DBus.Properties"_qs, u"PropertiesChanged"_qs);
    }

    [[nodiscard]] QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override
    {
        ++questions;
        bus.send(isBroken ? message.createErrorReply(QDBusError::UnknownObject, QString())
                          : message.createReply(QVariant::fromValue(objects)));
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
    void followsObjects();

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

void BusTest::followsObjects()
{
    const QDBusObjectPath a(u"/a"_qs);
    const QDBusObjectPath b(u"/b"_qs);
    Service service(u"things"_qs);
    service.objects = {{a, thing(1)}, {b, thing(2)}};
    BusObjects things(m_peer.connection(), m_clock, service.owner(), u"/"_qs);
    const auto sizes = [&] {
        m_clock.advance(30ms);
        QStringList texts;
        for (const auto &[path, interfaces] : things.all().asKeyValueRange())
            texts << path + u' ' + interfaces[thingInterface].value(u"Size"_qs).toString();
        return texts.join(u' ');
    };
    QTRY_COMPARE(sizes(), u"/a 1 /b 2"_qs);
    service.objects[b] = thing(3);
    service.tellChange();
    QTRY_COMPARE(sizes(), u"/a 1 /b 3"_qs);
    service.objects.remove(a);
    service.tell(u"/"_qs, u"org.freedesktop.DBus.ObjectManager"_qs, u"InterfacesRemoved"_qs);
    QTRY_COMPARE(sizes(), u"/b 3"_qs);
    // A refusal is no word about the objects.
    const int questions = service.questions;
    service.isBroken = true;
    service.tellChange();
    QTRY_VERIFY((m_clock.advance(30ms), service.questions > questions));
    QCOMPARE(sizes(), u"/b 3"_qs);
}

QTEST_GUILESS_MAIN(BusTest)
#include "BusTest.moc"
