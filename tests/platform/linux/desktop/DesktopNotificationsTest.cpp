#include "platform/linux/desktop/DesktopNotifications.h"

#include "support/BusPeer.h"

#include <QDBusArgument>
#include <QDBusContext>
#include <QTest>

#include <optional>
#include <utility>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using velmora::test::BusPeer;

namespace
{

const QString interface = u"org.freedesktop.Notifications"_s;
const QString path = u"/org/freedesktop/Notifications"_s;

/// A daemon of notifications that answers well, late, with nonsense or not at all.
class FakeNotificationDaemon : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    explicit FakeNotificationDaemon(const QString &name)
        : peer(name)
    {
        bus().registerObject(path, this, QDBusConnection::ExportScriptableSlots);
        start();
    }

    void start() { bus().registerService(interface); }
    void stop() { bus().unregisterService(interface); }
    QDBusConnection &bus() { return peer.connection(); }

    /// Answers what was held back.
    void release()
    {
        holds = false;
        for (const QDBusMessage &answer : std::exchange(m_held, {})) {
            bus().send(answer);
        }
    }

    /// What was shown, as "text" or "text replaces 7".
    [[nodiscard]] QStringList told() const
    {
        QStringList told;
        for (const QVariantList &each : shown) {
            const uint replaces = each[1].toUInt();
            told << each[4].toString() +
                        (replaces == 0 ? QString() : u" replaces %1"_s.arg(replaces));
        }
        return told;
    }

    BusPeer peer;
    QList<QVariantList> shown; ///< the arguments of the calls
    uint lastId = 0;
    bool holds = false;
    QVariantList capabilities{QStringList{u"body"_s}};
    int questions = 0;                     ///< for the capabilities
    std::optional<QVariantList> oddAnswer; ///< in the place of an id
    bool refuses = false;

public Q_SLOTS:
    Q_SCRIPTABLE uint Notify(const QString &, uint replaces, const QString &, const QString &,
                             const QString &, const QStringList &, const QVariantMap &, int)
    {
        shown << message().arguments();
        const uint id = replaces == 0 ? ++lastId : replaces;
        answer(oddAnswer.value_or(QVariantList{id}));
        return 0;
    }
    Q_SCRIPTABLE QStringList GetCapabilities()
    {
        ++questions;
        answer(capabilities);
        return {};
    }

    /// Answered after all that was called before.
    Q_SCRIPTABLE void Settle() {}

private:
    void answer(const QVariantList &arguments)
    {
        setDelayedReply(true);
        m_held << (refuses ? message().createErrorReply(QDBusError::Failed, u"no"_s)
                           : message().createReply(arguments));
        if (!holds) {
            release();
        }
    }

    QList<QDBusMessage> m_held;
};

/// Says that notifications were closed.
void tellClosed(const QDBusConnection &teller, const QVariantList &arguments)
{
    QDBusMessage signal = QDBusMessage::createSignal(path, interface, u"NotificationClosed"_s);
    signal.setArguments(arguments);
    teller.send(signal);
}

} // namespace

class DesktopNotificationsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void carriesEverything();
    void waitsForTheAnswerButNotForever();
    void forgetsWithTheDaemon();
    void survivesOddAnswers();
    void remembersTheLatest();
    void escapesMarkup();

private:
    void add(const QByteArray &identifier, const QString &body)
    {
        m_notifications->add({QString::fromLatin1(identifier), u"Title"_s, body, false});
    }
    /// Waits until the daemon has heard all that was said by now, and its answers have arrived.
    void settle() { m_client->call(m_daemon->bus().baseService(), path, interface, u"Settle"_s); }
    void addAndSettle(const QByteArray &identifier, const QString &body)
    {
        add(identifier, body);
        settle();
    }
    void restart();

    std::optional<BusPeer> m_client;
    std::optional<FakeNotificationDaemon> m_daemon;
    std::optional<DesktopNotifications> m_notifications;
};

void DesktopNotificationsTest::init()
{
    m_notifications.reset();
    m_client.emplace(u"client"_s);
    m_daemon.emplace(u"daemon"_s);
    m_notifications.emplace(m_client->bus());
}

/// Another daemon in the place of the present one, with ids of its own.
void DesktopNotificationsTest::restart()
{
    m_daemon.emplace(u"another daemon"_s);
    m_daemon->lastId = 100;
}

void DesktopNotificationsTest::carriesEverything()
{
    m_notifications->add({u"a"_s, u"Over — really"_s, u"Start\nanew"_s, true});
    m_notifications->add({u"b"_s, u"<b>"_s, QString(), false}); // a title is never markup
    QTRY_COMPARE(m_daemon->shown.size(), 2);
    QVariantList first = m_daemon->shown.first();
    const QVariantMap loud{{u"desktop-entry"_s, u"com.velmora.app"_s},
                           {u"sound-name"_s, u"message-new-instant"_s}};
    QCOMPARE(qdbus_cast<QVariantMap>(first.takeAt(6)), loud);
    QCOMPARE(first, (QVariantList{u"Velmora"_s, 0U, u"com.velmora.app"_s, u"Over — really"_s,
                                  u"Start\nanew"_s, QStringList(), -1}));
    const QVariantMap quiet{{u"desktop-entry"_s, u"com.velmora.app"_s},
                            {u"suppress-sound"_s, true}};
    QCOMPARE(qdbus_cast<QVariantMap>(m_daemon->shown.last().at(6)), quiet);
    QCOMPARE(m_daemon->shown.last().at(3), u"<b>"_s);

    init();
    addAndSettle("a", u"one"_s);
    addAndSettle("b", u"two"_s);
    addAndSettle("a", u"three"_s);
    tellClosed(m_daemon->bus(), {1U, 2U});
    tellClosed(m_daemon->bus(), {4711U, 2U});
    settle();
    addAndSettle("a", u"four"_s);
    addAndSettle("b", u"five"_s);
    QCOMPARE(m_daemon->told(), (QStringList{u"one"_s, u"two"_s, u"three replaces 1"_s, u"four"_s,
                                            u"five replaces 2"_s}));

    // Only the daemon is believed, and only where it makes sense.
    BusPeer stranger(u"stranger"_s);
    tellClosed(stranger.connection(), {2U, 2U});
    m_client->call(stranger.connection().baseService(), u"/"_s, u"org.freedesktop.DBus.Peer"_s,
                   u"Ping"_s);
    tellClosed(m_daemon->bus(), {u"2"_s, 2U});
    tellClosed(m_daemon->bus(), {});
    settle();
    addAndSettle("b", u"six"_s);
    QCOMPARE(m_daemon->told().last(), u"six replaces 2"_s);
}

void DesktopNotificationsTest::waitsForTheAnswerButNotForever()
{
    m_daemon->holds = true;
    add("a", u"one"_s);
    add("a", u"two"_s);
    add("b", u"three"_s);
    addAndSettle("a", u"four"_s);
    QCOMPARE(m_daemon->told(), (QStringList{u"one"_s, u"three"_s}));
    m_daemon->release();
    settle(); // the answers
    settle(); // what they led to
    QCOMPARE(m_daemon->told().mid(2), QStringList{u"four replaces 1"_s});

    init();
    m_notifications.emplace(m_client->bus(), 1s);
    m_daemon->holds = true;
    add("a", u"one"_s);
    add("a", u"two"_s);
    QTRY_COMPARE(m_daemon->told(), (QStringList{u"one"_s, u"two"_s}));
    m_daemon->release(); // too late for the first, in time for the second
    settle();
    addAndSettle("a", u"three"_s);
    QCOMPARE(m_daemon->told().last(), u"three replaces 2"_s);
}

void DesktopNotificationsTest::forgetsWithTheDaemon()
{
    addAndSettle("a", u"one"_s);
    restart();
    settle();
    addAndSettle("a", u"two"_s);
    addAndSettle("a", u"three"_s);
    QCOMPARE(m_daemon->told(), (QStringList{u"two"_s, u"three replaces 101"_s}));

    // Without any daemon nothing is kept for the next one.
    m_daemon->stop();
    settle();
    addAndSettle("a", u"nobody sees it"_s);
    m_daemon->start();
    addAndSettle("a", u"four"_s);
    QCOMPARE(m_daemon->told().mid(2), QStringList{u"four"_s});

    init();
    m_daemon->holds = true;
    m_daemon->capabilities = {QStringList{u"body-markup"_s}};
    add("a", u"one"_s);
    add("a", u"two"_s);
    addAndSettle("b", u"<three>"_s); // waits for the capabilities
    QCOMPARE(m_daemon->questions, 1);
    restart();
    QTRY_COMPARE(m_daemon->shown.size(), 2);
    QStringList told = m_daemon->told();
    told.sort();
    QCOMPARE(told, (QStringList{u"<three>"_s, u"two"_s}));
}

void DesktopNotificationsTest::survivesOddAnswers()
{
    m_daemon->refuses = true;
    for (const QVariantList &answer : {{u"error"_s}, QVariantList(), {u"1"_s}, {0U}}) {
        m_daemon->oddAnswer = answer;
        add("a", u"one"_s);
        addAndSettle("a", u"two"_s);
        settle();
        m_daemon->refuses = false;
        m_daemon->oddAnswer.reset();
        addAndSettle("a", u"three"_s);
        addAndSettle("a", u"four"_s);
        const QString id = QString::number(m_daemon->lastId);
        QCOMPARE(m_daemon->told(),
                 (QStringList{u"one"_s, u"two"_s, u"three"_s, u"four replaces "_s + id}));
        restart();
        settle();
    }
}

void DesktopNotificationsTest::remembersTheLatest()
{
    const auto identifier = [](int number) { return QByteArray::number(number); };
    m_daemon->holds = true;
    for (int i = 1; i <= 80; ++i) { // all are under way, so none can be forgotten yet
        add(identifier(i), u"old"_s);
    }
    add(identifier(1), u"newer"_s);
    settle();
    m_daemon->release();
    settle();
    settle();
    QCOMPARE(m_daemon->told().last(), u"newer replaces 1"_s);
    addAndSettle("another", u"new"_s);
    m_daemon->shown.clear();
    add(identifier(1), u"first"_s);
    add(identifier(19), u"second"_s);
    addAndSettle(identifier(18), u"third"_s);
    QCOMPARE(m_daemon->told(),
             (QStringList{u"first replaces 1"_s, u"second replaces 19"_s, u"third"_s}));
}

void DesktopNotificationsTest::escapesMarkup()
{
    const QString escaped = u"R&amp;D &lt;b&gt; \"5\""_s;
    const QString plain = u"R&D <b> \"5\""_s;
    struct Row {
        QVariantList capabilities;
        QString shown;
        bool isAnswer;
    };
    for (const Row &row : {Row{{QStringList{u"actions"_s, u"body-markup"_s}}, escaped, true},
                           Row{{QStringList{u"body"_s, u"body-hyperlinks"_s}}, plain, true},
                           Row{{u"body-markup"_s}, escaped, false}, // rather too much
                           Row{{}, escaped, false}}) {
        m_daemon->capabilities = row.capabilities;
        addAndSettle("a", u"no markup"_s);
        QCOMPARE(m_daemon->questions, 0);
        m_daemon->holds = true;
        add("b", plain);
        add("c", plain);
        addAndSettle("d", u"none here"_s);
        QCOMPARE(m_daemon->told(), (QStringList{u"no markup"_s, u"none here"_s}));
        m_daemon->release();
        QTRY_COMPARE(m_daemon->told().mid(2), (QStringList{row.shown, row.shown}));
        addAndSettle("e", plain); // asks again if nobody knows yet
        settle();
        QCOMPARE(m_daemon->questions, row.isAnswer ? 1 : 2);
        QCOMPARE(m_daemon->told().last(), row.shown);
        restart();
        settle();
    }

    init();
    const QString null(QChar(u'\0'));
    const QString half(QChar(0xd800)); // of a character
    m_notifications->add({u"a"_s, null + half, QString(1'000'000, u'x') + half, false});
    m_notifications->add({null, u"Title"_s, u"be"_s + null + u"fore"_s + half, false});
    settle();
    QCOMPARE(m_daemon->shown.size(), 2);
    QCOMPARE(m_daemon->shown.first().at(4), QString(2000, u'x'));
    QVERIFY(m_daemon->told().last().startsWith(u"before"_s));
    QVERIFY(m_client->connection().isConnected());
}

QTEST_GUILESS_MAIN(DesktopNotificationsTest)
#include "DesktopNotificationsTest.moc"
