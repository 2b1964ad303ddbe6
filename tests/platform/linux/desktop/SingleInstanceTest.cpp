#include "platform/linux/desktop/SingleInstance.h"

#include "support/BusPeer.h"

#include <QDBusContext>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace velmora;
using velmora::test::BusPeer;
using Role = velmora::SingleInstance::Role;
using namespace std::chrono_literals;

namespace
{

const auto service = QStringLiteral("com.velmora.app");
const auto path = QStringLiteral("/com/velmora/app");
const auto interface = QStringLiteral("org.freedesktop.Application");

/// An instance that ends when it is called, without an answer.
class LeavingInstance : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit LeavingInstance(QString connectionName)
        : m_name(std::move(connectionName))
    {
        QDBusConnection bus =
            QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), m_name);
        bus.registerObject(path, this, QDBusConnection::ExportScriptableSlots);
        bus.registerService(service);
    }

public Q_SLOTS:
    Q_SCRIPTABLE void Activate(const QVariantMap & /*platformData*/)
    {
        setDelayedReply(true);
        QTimer::singleShot(0, this, [this] { QDBusConnection::disconnectFromBus(m_name); });
    }

private:
    QString m_name;
};

/// And one that never answers.
class HangingInstance : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public Q_SLOTS:
    Q_SCRIPTABLE void Activate(const QVariantMap & /*platformData*/) { setDelayedReply(true); }
};

} // namespace

class SingleInstanceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(QStringLiteral("QDBus|QObject|No answer")));
    }

    void secondWakesTheFirst();
    void secondDoesNotWaitForAHungFirst();
    void nextTakesOverFromOneThatLeaves();
    void takesRequestsOfTheDesktop();
    void runsWithoutABus();
};

void SingleInstanceTest::secondWakesTheFirst()
{
    BusPeer one(QStringLiteral("one"));
    BusPeer two(QStringLiteral("two"));
    SingleInstance first(one.bus());
    QTRY_COMPARE(first.role(), Role::First);
    const QSignalSpy activated(&first, &SingleInstance::activated);
    {
        SingleInstance second(two.bus(), 10s);
        QTRY_COMPARE(second.role(), Role::Second);
        QCOMPARE(activated.size(), 1);
    }
    SingleInstance third(two.bus(), 10s); // the second took nothing away from the first
    QTRY_COMPARE(third.role(), Role::Second);
    QCOMPARE(activated.size(), 2);
}

void SingleInstanceTest::secondDoesNotWaitForAHungFirst()
{
    BusPeer one(QStringLiteral("one"));
    BusPeer two(QStringLiteral("two"));
    one.connection().registerService(service);
    HangingInstance hanging;
    one.connection().registerObject(path, &hanging, QDBusConnection::ExportScriptableSlots);
    SingleInstance second(two.bus(), 200ms);
    QTRY_COMPARE(second.role(), Role::Second);
}

void SingleInstanceTest::nextTakesOverFromOneThatLeaves()
{
    BusPeer two(QStringLiteral("two"));
    const LeavingInstance leaving(QStringLiteral("leaving"));
    SingleInstance next(two.bus(), 10s);
    QTRY_COMPARE(next.role(), Role::First);
}

void SingleInstanceTest::takesRequestsOfTheDesktop()
{
    BusPeer one(QStringLiteral("one"));
    BusPeer desktop(QStringLiteral("desktop"));
    SingleInstance first(one.bus());
    QTRY_COMPARE(first.role(), Role::First);
    QSignalSpy activated(&first, &SingleInstance::activated);
    const auto call = [&](const char *method, const QVariantList &arguments) {
        return desktop.call(service, path, interface, QLatin1String(method), arguments).type();
    };
    const QVariantMap noData;
    const QVariantList noParameter;
    const auto actionArguments = [&](const QString &name) {
        return QVariantList{name, QVariant::fromValue(noParameter), noData};
    };
    QCOMPARE(call("Activate", {noData}), QDBusMessage::ReplyMessage);
    QCOMPARE(activated.size(), 1);
    QCOMPARE(call("ActivateAction", actionArguments(QStringLiteral("preferences"))),
             QDBusMessage::ReplyMessage);
    QCOMPARE(activated.size(), 2);
    QCOMPARE(call("Open", {QStringList{QStringLiteral("file:///x")}, noData}),
             QDBusMessage::ReplyMessage);
    QCOMPARE(call("ActivateAction", actionArguments(QStringLiteral("explode"))),
             QDBusMessage::ErrorMessage);
    QCOMPARE(call("Activate", {42}), QDBusMessage::ErrorMessage);
    QCOMPARE(activated.size(), 2);
}

void SingleInstanceTest::runsWithoutABus()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
    BusConnection nowhere{QByteArray()};
    const SingleInstance instance(nowhere);
    QCOMPARE(instance.role(), Role::NoBus);
}

QTEST_GUILESS_MAIN(SingleInstanceTest)
#include "SingleInstanceTest.moc"
