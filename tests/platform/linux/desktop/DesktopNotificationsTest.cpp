#include "platform/linux/desktop/DesktopNotifications.h"

#include "platform/linux/desktop/FakeNotificationDaemon.h"

#include <QTest>

#include <memory>

using namespace velmora;
using namespace std::chrono_literals;
using velmora::test::BusPeer;
using velmora::test::FakeNotificationDaemon;

namespace
{

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

class DesktopNotificationsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void carriesEverything();
    void replacesWhatIsOnShow();
    void believesOnlyTheDaemon();
    void waitsForTheAnswer();
    void doesNotWaitForever();
    void forgetsWithTheDaemon();
    void survivesADaemonThatDies();
    void survivesOddAnswers_data();
    void survivesOddAnswers();
    void remembersTheLatest();
    void escapesMarkup_data();
    void escapesMarkup();
    void asksEachDaemonForItsMarkup();
    void sendsNothingThatTheBusWouldRefuse();
    void isSilentWithoutABus();

private:
    void add(const char *identifier, const char *body);
    void settle();
    void restart();

    std::unique_ptr<BusPeer> m_client;
    std::unique_ptr<FakeNotificationDaemon> m_daemon;
    std::unique_ptr<DesktopNotifications> m_notifications;
};

void DesktopNotificationsTest::init()
{
    m_client = std::make_unique<BusPeer>(QStringLiteral("client"));
    m_daemon = std::make_unique<FakeNotificationDaemon>(QStringLiteral("daemon"));
    m_daemon->start();
    m_notifications = std::make_unique<DesktopNotifications>(m_client->bus());
}

void DesktopNotificationsTest::cleanup()
{
    m_notifications.reset();
    m_daemon.reset();
    m_client.reset();
}

void DesktopNotificationsTest::add(const char *identifier, const char *body)
{
    m_notifications->add({text(identifier), QStringLiteral("Title"), text(body), false});
}

/// Another daemon in the place of the present one, with ids of its own.
void DesktopNotificationsTest::restart()
{
    m_daemon.reset();
    m_daemon = std::make_unique<FakeNotificationDaemon>(QStringLiteral("another daemon"));
    m_daemon->lastId = 100;
    m_daemon->start();
}

void DesktopNotificationsTest::carriesEverything()
{
    m_notifications->requestAuthorization();
    m_notifications->add({text("a"), text("Over — really"), text("Start\nanew"), true});
    m_notifications->add({text("b"), text("<b>"), QString(), false});
    QTRY_COMPARE(m_daemon->shown.size(), 2);
    const auto &first = m_daemon->shown.first();
    QCOMPARE(first.application, QStringLiteral("Velmora"));
    QCOMPARE(first.replaces, 0U);
    QCOMPARE(first.icon, QStringLiteral("com.velmora.app"));
    QCOMPARE(first.summary, text("Over — really"));
    QCOMPARE(first.body, text("Start\nanew"));
    QCOMPARE(first.actions, QStringList());
    QCOMPARE(first.lifetime, -1);
    const QVariantMap loud{{QStringLiteral("desktop-entry"), QStringLiteral("com.velmora.app")},
                           {QStringLiteral("sound-name"), QStringLiteral("message-new-instant")}};
    QCOMPARE(first.hints, loud);
    const QVariantMap quiet{{QStringLiteral("desktop-entry"), QStringLiteral("com.velmora.app")},
                            {QStringLiteral("suppress-sound"), true}};
    QCOMPARE(m_daemon->shown.last().hints, quiet);
    QCOMPARE(m_daemon->shown.last().summary, QStringLiteral("<b>")); // a title is never markup
}

/// Waits until the daemon has heard all that was said by now, and its answers have arrived.
void DesktopNotificationsTest::settle()
{
    m_client->call(m_daemon->peer().connection().baseService(), FakeNotificationDaemon::path(),
                   FakeNotificationDaemon::interface(), QStringLiteral("Settle"));
}

void DesktopNotificationsTest::replacesWhatIsOnShow()
{
    add("a", "one");
    add("b", "two");
    settle();
    add("a", "three");
    settle();
    add("b", "four");
    add("c", "five");
    settle();
    const QStringList before{text("one"), text("two"), text("three replaces 1"),
                             text("four replaces 2"), text("five")};
    QCOMPARE(m_daemon->told(), before);

    m_daemon->tellClosed({1U, 2U});
    m_daemon->tellClosed({4711U, 2U});
    settle();
    add("a", "six");
    add("b", "seven");
    settle();
    QCOMPARE(m_daemon->told().mid(5), (QStringList{text("six"), text("seven replaces 2")}));
}

void DesktopNotificationsTest::believesOnlyTheDaemon()
{
    add("a", "one");
    settle();
    BusPeer stranger(QStringLiteral("stranger"));
    FakeNotificationDaemon::tellClosed(stranger.connection(), {1U, 2U});
    m_client->call(stranger.connection().baseService(), QStringLiteral("/"),
                   QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
    m_daemon->tellClosed({QStringLiteral("1"), 2U});
    m_daemon->tellClosed({});
    m_daemon->tellClosed({0U});
    settle();
    add("a", "two");
    settle();
    QCOMPARE(m_daemon->told().last(), text("two replaces 1"));
}

void DesktopNotificationsTest::waitsForTheAnswer()
{
    m_daemon->holds = true;
    add("a", "one");
    add("a", "two");
    add("b", "three");
    add("a", "four");
    settle();
    QCOMPARE(m_daemon->told(), (QStringList{text("one"), text("three")}));
    m_daemon->release();
    settle(); // the answers
    settle(); // what they led to
    QCOMPARE(m_daemon->told().mid(2), QStringList{text("four replaces 1")});
}

void DesktopNotificationsTest::doesNotWaitForever()
{
    m_notifications = std::make_unique<DesktopNotifications>(m_client->bus(), 1s);
    m_daemon->holds = true;
    add("a", "one");
    add("a", "two");
    QTRY_COMPARE(m_daemon->told(), (QStringList{text("one"), text("two")}));
    m_daemon->release(); // too late for the first, in time for the second
    settle();
    add("a", "three");
    settle();
    QCOMPARE(m_daemon->told().last(), text("three replaces 2"));
}

void DesktopNotificationsTest::forgetsWithTheDaemon()
{
    add("a", "one");
    settle();
    restart();
    settle();
    add("a", "two");
    settle();
    QCOMPARE(m_daemon->told(), QStringList{text("two")});
    add("a", "three");
    settle();
    QCOMPARE(m_daemon->told().last(), text("three replaces 101"));

    // Without any daemon nothing is kept for the next one.
    m_daemon->stop();
    settle();
    add("a", "nobody sees it");
    settle();
    m_daemon->start();
    add("a", "four");
    settle();
    QCOMPARE(m_daemon->told().mid(2), QStringList{text("four")});
}

void DesktopNotificationsTest::survivesADaemonThatDies()
{
    m_daemon->holds = true;
    m_daemon->capabilities = {QStringList{QStringLiteral("body-markup")}};
    add("a", "one");
    add("a", "two");
    add("b", "<three>"); // waits for the capabilities
    settle();
    QCOMPARE(m_daemon->questions, 1);
    restart();
    QTRY_COMPARE(m_daemon->shown.size(), 2);
    QStringList told = m_daemon->told();
    told.sort();
    QCOMPARE(told, (QStringList{text("<three>"), text("two")}));
}

void DesktopNotificationsTest::survivesOddAnswers_data()
{
    QTest::addColumn<bool>("refuses");
    QTest::addColumn<QVariantList>("answer");
    QTest::newRow("error") << true << QVariantList();
    QTest::newRow("nothing") << false << QVariantList();
    QTest::newRow("text") << false << QVariantList{QStringLiteral("1")};
    QTest::newRow("signed") << false << QVariantList{1};
    QTest::newRow("no id") << false << QVariantList{0U};
    QTest::newRow("list") << false << QVariantList{QStringList{QStringLiteral("1")}};
}

void DesktopNotificationsTest::survivesOddAnswers()
{
    QFETCH(const bool, refuses);
    QFETCH(const QVariantList, answer);
    m_daemon->refuses = refuses;
    m_daemon->oddAnswer = answer;
    add("a", "one");
    add("a", "two");
    settle();
    settle();
    m_daemon->refuses = false;
    m_daemon->oddAnswer.reset();
    add("a", "three");
    settle();
    add("a", "four");
    settle();
    QCOMPARE(m_daemon->told(),
             (QStringList{text("one"), text("two"), text("three"), text("four replaces 3")}));
}

void DesktopNotificationsTest::remembersTheLatest()
{
    const auto identifier = [](int number) { return QByteArray::number(number); };
    for (int i = 1; i <= 64; ++i) {
        add(identifier(i), "old");
    }
    settle();
    add(identifier(1), "used again"); // so it is not the oldest any more
    add("another", "new");
    settle();
    m_daemon->shown.clear();
    add(identifier(1), "first");
    add(identifier(3), "third");
    add(identifier(2), "second");
    settle();
    QCOMPARE(m_daemon->told(),
             (QStringList{text("first replaces 1"), text("third replaces 3"), text("second")}));

    // What is forgotten before it could be said is said nevertheless.
    m_daemon->holds = true;
    m_daemon->shown.clear();
    add("hasty", "one");
    add("hasty", "two");
    for (int i = 100; i < 164; ++i) {
        add(identifier(i), "more");
    }
    settle();
    QCOMPARE(m_daemon->told().count(text("two")), 1);
    m_daemon->release();
    settle();
    QCOMPARE(m_daemon->shown.size(), 66);
}

void DesktopNotificationsTest::escapesMarkup_data()
{
    QTest::addColumn<QVariantList>("capabilities");
    QTest::addColumn<QString>("shown");
    const QString escaped = text("R&amp;D &lt;b&gt; \"5\"");
    const QString plain = text("R&D <b> \"5\"");
    const auto row = [](const char *name, const QVariantList &capabilities, const QString &shown) {
        QTest::newRow(name) << capabilities << shown;
    };
    row("with markup", {QStringList{text("actions"), text("body-markup")}}, escaped);
    row("without", {QStringList{text("body"), text("body-hyperlinks")}}, plain);
    row("without any", {QStringList()}, plain);
    row("no list", {text("body-markup")}, escaped); // rather too much than too little
    row("nothing", {}, escaped);
}

void DesktopNotificationsTest::escapesMarkup()
{
    QFETCH(const QVariantList, capabilities);
    QFETCH(const QString, shown);
    m_daemon->capabilities = capabilities;
    m_daemon->holds = true;
    add("a", "R&D <b> \"5\"");
    add("b", "plain");
    settle();
    QCOMPARE(m_daemon->told(), QStringList{text("plain")});
    m_daemon->release();
    QTRY_COMPARE(m_daemon->told(), (QStringList{text("plain"), shown}));
}

void DesktopNotificationsTest::asksEachDaemonForItsMarkup()
{
    add("a", "plain");
    settle();
    QCOMPARE(m_daemon->questions, 0);
    add("a", "1 < 2");
    add("b", "2 < 3");
    settle();
    settle();
    add("b", "3 < 4");
    settle();
    QCOMPARE(m_daemon->questions, 1);
    QCOMPARE(m_daemon->told().mid(1),
             (QStringList{text("1 < 2 replaces 1"), text("2 < 3"), text("3 < 4 replaces 2")}));

    restart();
    m_daemon->capabilities = {QStringList{text("body-markup")}};
    settle();
    add("b", "4 < 5");
    settle();
    settle();
    QCOMPARE(m_daemon->told(), QStringList{text("4 &lt; 5")});

    // No answer is no knowledge: the next text asks again.
    restart();
    m_daemon->refuses = true;
    settle();
    for (int i = 1; i <= 2; ++i) {
        add("b", "5 < 6");
        settle();
        settle();
        QCOMPARE(m_daemon->questions, i);
        QCOMPARE(m_daemon->told().last(), text("5 &lt; 6"));
    }
}

void DesktopNotificationsTest::sendsNothingThatTheBusWouldRefuse()
{
    const QString null(QChar(u'\0'));
    const QString half(QChar(0xd800)); // of a character
    m_notifications->add({text("a"), null + half, QString(1'000'000, u'x') + half, false});
    m_notifications->add({null, text("Title"), text("be") + null + text("fore") + half, false});
    settle();
    QCOMPARE(m_daemon->shown.size(), 2);
    QCOMPARE(m_daemon->shown.first().body, QString(2000, u'x'));
    QVERIFY(m_daemon->shown.last().body.startsWith(text("before")));
    QVERIFY(m_client->connection().isConnected());
}

void DesktopNotificationsTest::isSilentWithoutABus()
{
    BusConnection bus{QByteArray()};
    DesktopNotifications nowhere(bus);
    nowhere.add({text("a"), text("Title"), text("<b>"), true});
    nowhere.add({text("a"), text("Title"), text("plain"), true});
}

QTEST_GUILESS_MAIN(DesktopNotificationsTest)
#include "DesktopNotificationsTest.moc"
