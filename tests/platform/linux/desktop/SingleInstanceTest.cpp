#include "platform/linux/desktop/SingleInstance.h"

#include "support/BusPeer.h"

#include <QDBusContext>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTest>
#include <QThread>
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

/// Something that lives beside the main loop, as the other process would.
class Aside
{
public:
    explicit Aside(QObject *object)
        : m_object(object)
    {
        m_thread.start();
        m_object->moveToThread(&m_thread);
    }
    Aside(const Aside &) = delete;
    Aside &operator=(const Aside &) = delete;
    ~Aside()
    {
        QThread *const mainThread = QThread::currentThread();
        QMetaObject::invokeMethod(
            m_object, [this, mainThread] { m_object->moveToThread(mainThread); },
            Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
    }

private:
    QObject *m_object;
    QThread m_thread;
};

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
    SingleInstance first(one.connection());
    QCOMPARE(first.claim(), Role::First);
    int activations = 0;
    connect(&first, &SingleInstance::activated, this, [&activations] { ++activations; });
    {
        const Aside otherProcess(&first);
        SingleInstance second(two.connection());
        QCOMPARE(second.claim(10s), Role::Second);
    }
    QTRY_COMPARE(activations, 1);
}

void SingleInstanceTest::secondDoesNotWaitForAHungFirst()
{
    BusPeer one(QStringLiteral("one"));
    BusPeer two(QStringLiteral("two"));
    SingleInstance first(one.connection());
    QCOMPARE(first.claim(), Role::First);
    // Nobody runs the first one's loop here: it is busy starting.
    SingleInstance second(two.connection());
    QElapsedTimer elapsed;
    elapsed.start();
    QCOMPARE(second.claim(200ms), Role::Second);
    QVERIFY2(elapsed.elapsed() < 5000, qPrintable(QString::number(elapsed.elapsed())));

    // What was asked of it before its loop ran is not lost.
    QSignalSpy activated(&first, &SingleInstance::activated);
    QVERIFY(activated.wait());
}

void SingleInstanceTest::nextTakesOverFromOneThatLeaves()
{
    BusPeer two(QStringLiteral("two"));
    LeavingInstance leaving(QStringLiteral("leaving"));
    const Aside otherProcess(&leaving);
    SingleInstance next(two.connection());
    QCOMPARE(next.claim(10s), Role::First);
}

void SingleInstanceTest::takesRequestsOfTheDesktop()
{
    BusPeer one(QStringLiteral("one"));
    BusPeer desktop(QStringLiteral("desktop"));
    SingleInstance first(one.connection());
    QCOMPARE(first.claim(), Role::First);
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
    const auto name = QStringLiteral("nowhere");
    SingleInstance instance(
        QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent"), name));
    QCOMPARE(instance.claim(), Role::NoBus);
    QDBusConnection::disconnectFromBus(name);
}

QTEST_GUILESS_MAIN(SingleInstanceTest)
#include "SingleInstanceTest.moc"
