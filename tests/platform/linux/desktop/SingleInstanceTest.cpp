#include "platform/linux/desktop/SingleInstance.h"

#include "support/BusPeer.h"

#include <QDBusContext>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace velmora;
using namespace Qt::StringLiterals;
using velmora::test::BusPeer;
using Role = velmora::SingleInstance::Role;
using namespace std::chrono_literals;

namespace
{

const QString service = u"com.velmora.app"_s;
const QString path = u"/com/velmora/app"_s;

/// Another instance, which never answers a call; it may end when it gets one.
class MuteInstance : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit MuteInstance(bool leaves)
        : m_leaves(leaves)
    {
        m_peer->connection().registerObject(path, this, QDBusConnection::ExportScriptableSlots);
        m_peer->connection().registerService(service);
    }

public Q_SLOTS:
    Q_SCRIPTABLE void Activate(const QVariantMap & /*platformData*/)
    {
        setDelayedReply(true);
        if (m_leaves)
            QTimer::singleShot(0, this, [this] { m_peer.reset(); });
    }

private:
    bool m_leaves;
    std::optional<BusPeer> m_peer{u"mute"_s};
};

} // namespace

class SingleInstanceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"QDBus|QObject|No answer"_s)); }

    void mutesAreNotWaitedFor();
    void takesRequestsOfTheDesktop();

private:
    BusPeer m_one{u"one"_s};
    BusPeer m_two{u"two"_s};
};

void SingleInstanceTest::mutesAreNotWaitedFor()
{
    {
        const MuteInstance hanging(false);
        SingleInstance second(m_two.bus(), 200ms);
        QTRY_COMPARE(second.role(), Role::Second);
    }
    const MuteInstance leaving(true);
    SingleInstance next(m_two.bus(), 10s);
    QTRY_COMPARE(next.role(), Role::First);
}

void SingleInstanceTest::takesRequestsOfTheDesktop()
{
    SingleInstance first(m_one.bus());
    QTRY_COMPARE(first.role(), Role::First);
    const QSignalSpy activated(&first, &SingleInstance::activated);
    const auto isTaken = [this](const QString &method, const QVariantList &arguments) {
        return m_two.call(service, path, u"org.freedesktop.Application"_s, method, arguments)
                   .type() == QDBusMessage::ReplyMessage;
    };
    const QVariantMap noData;
    const QVariant noParameter = QVariant::fromValue(QVariantList());
    QVERIFY(isTaken(u"Activate"_s, {noData}));
    QCOMPARE(activated.size(), 1);
    QVERIFY(isTaken(u"ActivateAction"_s, {u"preferences"_s, noParameter, noData}));
    QCOMPARE(activated.size(), 2);
    QVERIFY(isTaken(u"Open"_s, {QStringList{u"file:///x"_s}, noData}));
    QVERIFY(!isTaken(u"ActivateAction"_s, {u"explode"_s, noParameter, noData}));
    QCOMPARE(activated.size(), 2);

    SingleInstance second(m_two.bus(), 10s);
    QTRY_COMPARE(second.role(), Role::Second);
    QCOMPARE(activated.size(), 3);
}

QTEST_GUILESS_MAIN(SingleInstanceTest)
#include "SingleInstanceTest.moc"
