#include "platform/linux/media/MprisMediaRemote.h"

#include "platform/linux/media/FakePlayers.h"
#include "support/BusPeer.h"
#include "support/VirtualClock.h"

#include <QElapsedTimer>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace velmora;
using namespace std::chrono_literals;
using velmora::test::BusPeer;
using velmora::test::FakePlayers;

namespace
{

const auto titleKey = QLatin1String(NowPlayingKey::title);

/// What a program sees of the desktop's media, with a bus connection of its own.
struct Desktop {
    Desktop()
        : peer(QStringLiteral("remote%1").arg(++count))
        , remote(peer.bus(), clock)
    {
        QString error;
        functions = remote.load(error).value();
        functions.registerForNowPlayingNotifications();
    }

    QVariantHash info()
    {
        std::optional<QVariantHash> answer;
        functions.getNowPlayingInfo([&](const QVariantHash &info) { answer = info; });
        if (answer)
            qWarning("Answered inside of the call");
        if (!QTest::qWaitFor([&] { return answer.has_value(); }))
            qWarning("No answer");
        return answer.value_or(QVariantHash());
    }

    /// Lets a little time pass at each look, for what waits for its turn.
    bool shows(const QString &title)
    {
        return QTest::qWaitFor([&] {
            clock.advance(30ms);
            return info().value(titleKey).toString() == title;
        });
    }

    double position() { return info().value(QLatin1String(NowPlayingKey::elapsedTime)).toDouble(); }

    static inline int count = 0;
    VirtualClock clock;
    BusPeer peer;
    MprisMediaRemote remote;
    MediaRemote::Functions functions;
};

QString playing(const QString &player, const QString &title,
                const QString &state = QStringLiteral("Playing"))
{
    return QStringLiteral("{'player':'%1','appear':'%1','set':{'PlaybackStatus':'%3','Metadata':{"
                          "'mpris:trackid':{'$':'o','value':'/%1'},'xesam:title':'%2'}}}")
        .arg(player, title, state);
}

} // namespace

class MprisMediaRemoteTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsWhatPlays();
    void toleratesNonsense();
    void followsThePosition();
    void choosesAmongPlayers();
    void passesCommandsOn();
    void signalsEachChangeOnce();
    void survivesStorms();
    void hangingPlayersDisturbNobody();
    void playersLeaveAtAnyMoment();
    void asksAgain();
    void twoPlayersSendNotices();
    void tellsTheEndOfItAll();
    void fetchesTheCover();
    void survivesTheBus();
};

void MprisMediaRemoteTest::tellsWhatPlays()
{
    FakePlayers players;
    // One that is there before us, under two names, and one that comes later.
    QVERIFY(players.tell(QStringLiteral(
        "{'player':'a','appear':'vlc','set':{'PlaybackStatus':'Playing','Rate':1.5,'Position':"
        "2500000,"
        "'Metadata':{'mpris:length':90000000,'xesam:title':'Song','xesam:album':'Album',"
        "'xesam:artist':['One','Two']}}}")));
    QVERIFY(players.tell(QStringLiteral("{'player':'a','appear':'vlc.instance7'}")));
    Desktop desktop;
    QCOMPARE(desktop.info(), QVariantHash());
    QVERIFY(desktop.shows(QStringLiteral("Song")));
    const QVariantHash info = desktop.info();
    QCOMPARE(info.value(QLatin1String(NowPlayingKey::artist)),
             QVariant(QStringLiteral("One, Two")));
    QCOMPARE(info.value(QLatin1String(NowPlayingKey::album)), QVariant(QStringLiteral("Album")));
    QCOMPARE(info.value(QLatin1String(NowPlayingKey::duration)), QVariant(90.0));
    QCOMPARE(info.value(QLatin1String(NowPlayingKey::playbackRate)), QVariant(1.5));
    QCOMPARE(info.value(QLatin1String(NowPlayingKey::elapsedTime)).typeId(), QMetaType::Double);
    QVERIFY(desktop.position() >= 2.5);
    QCOMPARE(players.calls(QStringLiteral("a GetAll")), 1);

    QVERIFY(players.tell(QStringLiteral("{'player':'a','change':{'PlaybackStatus':'Paused'}}")));
    QTRY_COMPARE(desktop.info().value(QLatin1String(NowPlayingKey::playbackRate)), QVariant(0.0));
    QVERIFY(players.tell(QStringLiteral("{'player':'a','change':{'PlaybackStatus':'Stopped'}}")));
    QTRY_COMPARE(desktop.info(), QVariantHash());
    QVERIFY(players.tell(playing(QStringLiteral("b"), QStringLiteral("Later"))));
    QVERIFY(desktop.shows(QStringLiteral("Later")));
}

void MprisMediaRemoteTest::toleratesNonsense()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
    FakePlayers players;
    Desktop desktop;
    QVERIFY(players.tell(QStringLiteral(
        "{'player':'a','appear':'a','set':{'PlaybackStatus':{'$':'v','value':'Playing'},"
        "'Rate':{'$':'NaN'},'Position':'soon','Metadata':{'mpris:length':-1,'xesam:artist':7,"
        "'xesam:album':{'$':'nest','count':9},'mpris:artUrl':['x'],"
        "'xesam:title':{'$':'repeat','value':'\u00e4\U0001f3b5','count':400000}}}}")));
    QTRY_VERIFY(!(desktop.clock.advance(30ms), desktop.info()).isEmpty());
    const QVariantHash info = desktop.info();
    QCOMPARE(info.value(titleKey).toString().size(), 1000);
    QVERIFY(!info.value(titleKey).toString().back().isHighSurrogate());
    QCOMPARE(info.value(QLatin1String(NowPlayingKey::artist)), QVariant(QString()));
    QCOMPARE(info.value(QLatin1String(NowPlayingKey::duration)), QVariant(0.0));
    QCOMPARE(info.value(QLatin1String(NowPlayingKey::playbackRate)), QVariant(1.0));
    QVERIFY(!info.contains(QLatin1String(NowPlayingKey::artworkData)));

    const auto change = QStringLiteral("{'player':'a','change':{'Metadata':%1}}");
    for (const auto *metadata :
         {"7", "'text'", "['a','b']", "{'$':'nest','count':12}", "{'$':'v','value':5}", "{}"})
        QVERIFY(players.tell(change.arg(QLatin1String(metadata))));
    QVERIFY(players.tell(QStringLiteral("{'player':'a','seeked':'never'}")));
    QTRY_COMPARE(desktop.info(), QVariantHash()); // still playing, but nothing with a name
    QVERIFY(
        players.tell(change.arg(QStringLiteral("{'xesam:url':'file:///music/My%20Song.mp3'}"))));
    QVERIFY(desktop.shows(QStringLiteral("My Song.mp3")));

    // Answers of another shape, and a player without its object.
    QVERIFY(players.tell(QStringLiteral("{'player':'b','on':'GetAll','do':'nonsense'}")));
    QVERIFY(players.tell(QStringLiteral("{'player':'c','on':'GetAll','do':'refuse'}")));
    QVERIFY(players.tell(playing(QStringLiteral("b"), QStringLiteral("B"))));
    QVERIFY(players.tell(playing(QStringLiteral("c"), QStringLiteral("C"))));
    QTRY_VERIFY((desktop.clock.advance(30ms), players.calls(QStringLiteral("c GetAll"))) >= 2);
    QVERIFY(players.tell(QStringLiteral("{'player':'c','on':'GetAll','do':'answer'}")));
    QVERIFY(players.tell(QStringLiteral("{'vanish':'a'}")));
    QTRY_VERIFY((desktop.clock.advance(500ms), desktop.info().value(titleKey)) ==
                QVariant(QStringLiteral("C")));
}

void MprisMediaRemoteTest::followsThePosition()
{
    FakePlayers players;
    Desktop desktop;
    QVERIFY(players.tell(playing(QStringLiteral("a"), QStringLiteral("One"))));
    QVERIFY(desktop.shows(QStringLiteral("One")));
    const auto asked = [&] { return players.calls(QStringLiteral("a Get")); };
    QTRY_COMPARE((desktop.clock.advance(30ms), asked()), 1); // GetAll brought none
    QVERIFY(players.tell(
        QStringLiteral("{'player':'a','seeked':60000000,'set':{'Position':70000000}}")));
    QTRY_COMPARE(desktop.position(), 60.0);
    desktop.clock.advance(4s);
    QCOMPARE(desktop.position(), 64.0);
    desktop.clock.advance(2s);
    QTRY_COMPARE(desktop.position(), 70.0); // by now it has been asked for, once
    desktop.info();
    QCOMPARE(asked(), 2);

    // A new track begins at 0 until its position is known.
    QVERIFY(players.tell(QStringLiteral("{'player':'a','on':'Get','do':'hang'}")));
    QVERIFY(
        players.tell(QStringLiteral("{'player':'a','change':{'Metadata':{'xesam:title':'Two'}}}")));
    QVERIFY(QTest::qWaitFor([&] { return desktop.info().value(titleKey) == u"Two"_qs; }));
    QCOMPARE(desktop.position(), 0.0);
    desktop.clock.advance(30ms);
    QTRY_COMPARE(asked(), 3);
    desktop.clock.advance(20s);
    desktop.info();
    desktop.info();
    QVERIFY(players.tell(QStringLiteral("{'player':'a','seeked':-20000}"))); // as mpv does
    QTRY_COMPARE(desktop.position(), 0.0);
    QCOMPARE(asked(), 3); // one question at a time
}

void MprisMediaRemoteTest::choosesAmongPlayers()
{
    FakePlayers players;
    Desktop desktop;
    QSignalSpy applications(&desktop.remote, &MediaRemote::nowPlayingApplicationDidChange);
    QVERIFY(players.tell(playing(QStringLiteral("a"), QStringLiteral("A"))));
    QVERIFY(desktop.shows(QStringLiteral("A")));
    QVERIFY(players.tell(playing(QStringLiteral("b"), QStringLiteral("B"))));
    QVERIFY(players.tell(QStringLiteral("{'player':'playerctld','appear':'playerctld'}")));
    QTRY_COMPARE((desktop.clock.advance(30ms), players.calls(QStringLiteral("b GetAll"))), 1);
    QVERIFY(desktop.shows(QStringLiteral("A")));
    QVERIFY(players.tell(QStringLiteral("{'player':'a','change':{'PlaybackStatus':'Paused'}}")));
    QVERIFY(desktop.shows(QStringLiteral("B")));
    QVERIFY(players.tell(QStringLiteral("{'vanish':'b'}")));
    QVERIFY(desktop.shows(QStringLiteral("A")));
    QCOMPARE(applications.size(), 3);
    QCOMPARE(players.calls(QStringLiteral("playerctld GetAll")), 0);
}

void MprisMediaRemoteTest::passesCommandsOn()
{
    FakePlayers players;
    Desktop desktop;
    QVERIFY(!desktop.functions.sendCommand(2, nullptr));
    QVERIFY(players.tell(playing(QStringLiteral("a"), QStringLiteral("A"))));
    QVERIFY(players.tell(QStringLiteral("{'player':'a','on':'Next','do':'hang'}")));
    QVERIFY(desktop.shows(QStringLiteral("A")));
    for (const quint32 command : {3U, 6U, 45U, 4'000'000'000U})
        QVERIFY(!desktop.functions.sendCommand(command, nullptr));
    for (const quint32 command : {4U, 0U, 1U, 2U, 5U})
        QVERIFY(desktop.functions.sendCommand(command, nullptr));
    QTRY_COMPARE(players.calls(QStringLiteral("a Previous")), 1);
    for (const auto *method : {"Next", "Play", "Pause", "PlayPause"})
        QCOMPARE(players.calls(QLatin1String("a ") + QLatin1String(method)), 1);
}

void MprisMediaRemoteTest::signalsEachChangeOnce()
{
    FakePlayers players;
    Desktop desktop;
    QSignalSpy infos(&desktop.remote, &MediaRemote::nowPlayingInfoDidChange);
    QSignalSpy states(&desktop.remote, &MediaRemote::nowPlayingApplicationIsPlayingDidChange);
    QVERIFY(players.tell(playing(QStringLiteral("a"), QStringLiteral("A"))));
    QVERIFY(desktop.shows(QStringLiteral("A")));
    desktop.clock.advance(1s);
    QCOMPARE(infos.size(), 1);
    QCOMPARE(states.size(), 1);
    // Repeats say nothing; the question that follows shows that they have arrived.
    for (int i = 0; i < 5; ++i)
        QVERIFY(
            players.tell(QStringLiteral("{'player':'a','change':{'PlaybackStatus':'Playing'}}")));
    QVERIFY(players.tell(QStringLiteral("{'player':'a','invalidate':['Metadata']}")));
    QTRY_COMPARE((desktop.clock.advance(30ms), players.calls(QStringLiteral("a GetAll"))), 2);
    QCOMPARE(infos.size(), 1);
    QCOMPARE(states.size(), 1);
    QVERIFY(players.tell(QStringLiteral("{'player':'a','change':{'PlaybackStatus':'Paused'}}")));
    QTRY_COMPARE((desktop.clock.advance(30ms), states.size()), 2);
    QCOMPARE(infos.size(), 1);
}

void MprisMediaRemoteTest::survivesStorms()
{
    FakePlayers players;
    Desktop desktop;
    QVERIFY(players.tell(playing(QStringLiteral("a"), QStringLiteral("A"))));
    QVERIFY(desktop.shows(QStringLiteral("A")));
    desktop.clock.advance(1s);
    QSignalSpy infos(&desktop.remote, &MediaRemote::nowPlayingInfoDidChange);
    const int asked = players.calls(QStringLiteral("a Get"));
    QVERIFY(players.tell(QStringLiteral("{'player':'a','storm':2000}")));
    // Time stands still: the last is told after 30 ms, the first perhaps at once.
    QTRY_COMPARE(desktop.info().value(titleKey), QVariant(QStringLiteral("Track 2000")));
    const auto told = infos.size();
    QVERIFY(told <= 1);
    desktop.clock.advance(29ms);
    QCOMPARE(infos.size(), told);
    desktop.clock.advance(1ms);
    QCOMPARE(infos.size(), told + 1);
    QTRY_COMPARE((desktop.clock.advance(100ms),
                  desktop.info().contains(QLatin1String(NowPlayingKey::artworkPending))),
                 false);
    QVERIFY(players.calls(QStringLiteral("a Get")) - asked <= 3);
}

void MprisMediaRemoteTest::hangingPlayersDisturbNobody()
{
    FakePlayers players;
    Desktop desktop;
    for (int i = 0; i < 20; ++i) {
        const auto name = QStringLiteral("p%1").arg(i);
        if (i % 7 == 0)
            QVERIFY(players.tell(
                QStringLiteral("{'player':'%1','on':'GetAll','do':'hang'}").arg(name)));
        QVERIFY(players.tell(playing(name, name, QStringLiteral("Paused"))));
    }
    QElapsedTimer timer;
    timer.start();
    QVERIFY(players.tell(QStringLiteral("{'player':'p3','change':{'PlaybackStatus':'Playing'}}")));
    QVERIFY(desktop.shows(QStringLiteral("p3")));
    QVERIFY2(timer.elapsed() < 4000, "waited for a player that hangs");
    // What a hanging player tells by itself counts.
    QVERIFY(players.tell(QStringLiteral("{'player':'p3','change':{'PlaybackStatus':'Paused'}}")));
    QVERIFY(players.tell(QStringLiteral("{'player':'p7','change':{'PlaybackStatus':'Playing',"
                                        "'Metadata':{'xesam:title':'Awake'}}}")));
    QVERIFY(desktop.shows(QStringLiteral("Awake")));
}

void MprisMediaRemoteTest::playersLeaveAtAnyMoment()
{
    FakePlayers players;
    Desktop desktop;
    QVERIFY(players.tell(QStringLiteral("{'player':'a','on':'GetAll','do':'leave'}")));
    QVERIFY(players.tell(playing(QStringLiteral("a"), QStringLiteral("A"))));
    QTRY_COMPARE(players.calls(QStringLiteral("a GetAll")), 1);
    for (int i = 0; i < 20; ++i)
        QVERIFY(players.tell(playing(QStringLiteral("p%1").arg(i), QStringLiteral("P"))));
    QVERIFY(desktop.shows(QStringLiteral("P")));
    desktop.clock.advance(30ms); // so that their coming has been told, and their going is news
    QSignalSpy applications(&desktop.remote, &MediaRemote::nowPlayingApplicationDidChange);
    players.kill();
    QTRY_COMPARE(desktop.info(), QVariantHash());
    desktop.clock.advance(30ms);
    QVERIFY(!applications.isEmpty());
    QVERIFY(!desktop.functions.sendCommand(2, nullptr));

    { // Ours may go first, with questions and answers under way.
        FakePlayers others;
        Desktop brief;
        QVERIFY(others.tell(playing(QStringLiteral("z"), QStringLiteral("Z"))));
        brief.functions.getNowPlayingInfo([](const QVariantHash &) { QFAIL("answered"); });
    }
    QCoreApplication::processEvents();
}

void MprisMediaRemoteTest::asksAgain()
{
    FakePlayers players;
    Desktop desktop;
    QVERIFY(players.tell(playing(QStringLiteral("a"), QStringLiteral("A"))));
    QVERIFY(desktop.shows(QStringLiteral("A")));
    QVERIFY(players.tell(QStringLiteral("{'player':'a','set':{'Metadata':{'xesam:title':'B'}}}")));
    for (int i = 0; i < 20; ++i)
        QVERIFY(players.tell(QStringLiteral("{'player':'a','invalidate':['Metadata']}")));
    QVERIFY(desktop.shows(QStringLiteral("B")));
    desktop.clock.advance(1s);
    QVERIFY(players.calls(QStringLiteral("a GetAll")) <= 3);
    // A player that is replaced under the same name is another player.
    QVERIFY(players.tell(QStringLiteral("{'vanish':'a'}")));
    QVERIFY(players.tell(playing(QStringLiteral("a"), QStringLiteral("C"))));
    QVERIFY(desktop.shows(QStringLiteral("C")));
}

void MprisMediaRemoteTest::twoPlayersSendNotices()
{
    FakePlayers players;
    Desktop desktop;
    QSignalSpy spotify(&desktop.remote, &MediaRemote::spotifyPlaybackStateChanged);
    QSignalSpy music(&desktop.remote, &MediaRemote::appleMusicPlayerInfo);
    const auto last = [&] { return spotify.back().front().value<std::optional<QVariantHash>>(); };
    QVERIFY(players.tell(QStringLiteral("{'player':'s','appear':'spotify'}"))); // stopped
    QVERIFY(players.tell(QStringLiteral(
        "{'player':'s','change':{'PlaybackStatus':'Playing','Position':12500000,'Metadata':{"
        "'mpris:length':{'$':'u','value':1500000},'xesam:title':'T','xesam:artist':'A'}}}")));
    QTRY_COMPARE((desktop.clock.advance(30ms), spotify.size()), 1);
    const QVariantHash notice = last().value();
    QCOMPARE(notice.value(QStringLiteral("Player State")), QVariant(QStringLiteral("Playing")));
    QCOMPARE(notice.value(QStringLiteral("Name")), QVariant(QStringLiteral("T")));
    QCOMPARE(notice.value(QStringLiteral("Artist")), QVariant(QStringLiteral("A")));
    QCOMPARE(notice.value(QStringLiteral("Album")), QVariant(QString()));
    QCOMPARE(notice.value(QStringLiteral("Duration")), QVariant(1500.0));
    QCOMPARE(notice.value(QStringLiteral("Playback Position")).typeId(), QMetaType::Double);
    QVERIFY(players.tell(QStringLiteral("{'player':'s','change':{'PlaybackStatus':'Paused'}}")));
    QTRY_COMPARE((desktop.clock.advance(30ms), spotify.size()), 2);
    QCOMPARE(last()->value(QStringLiteral("Player State")), QVariant(QStringLiteral("Paused")));
    QVERIFY(players.tell(QStringLiteral("{'vanish':'s'}")));
    QTRY_COMPARE((desktop.clock.advance(30ms), spotify.size()), 3);
    QCOMPARE(last()->value(QStringLiteral("Player State")), QVariant(QStringLiteral("Stopped")));

    QVERIFY(players.tell(playing(QStringLiteral("Cider"), QStringLiteral("M"))));
    QTRY_COMPARE((desktop.clock.advance(30ms), music.size()), 1);
    QVERIFY(players.tell(QStringLiteral("{'vanish':'Cider'}")));
    QTRY_COMPARE((desktop.clock.advance(30ms), music.size()), 2);
}

void MprisMediaRemoteTest::tellsTheEndOfItAll()
{
    FakePlayers players;
    Desktop desktop;
    QSignalSpy ends(&desktop.remote, &MediaRemote::spotifyPlaybackStateChanged);
    QVERIFY(players.tell(playing(QStringLiteral("a"), QStringLiteral("Song"))));
    QVERIFY(players.tell(playing(QStringLiteral("spotify"), QStringLiteral("Other"))));
    QVERIFY(desktop.shows(QStringLiteral("Song")));
    QTRY_COMPARE((desktop.clock.advance(30ms), ends.size()), 1); // that it plays
    // One of two that ends must not blank out the other; a gap between two tracks is no end.
    QVERIFY(players.tell(QStringLiteral("{'vanish':'spotify'}")));
    QVERIFY(players.tell(
        QStringLiteral("{'player':'a','change':{'Metadata':{'xesam:title':'Next'}}}")));
    QVERIFY(desktop.shows(QStringLiteral("Next")));
    desktop.clock.advance(30ms);
    QVERIFY(players.tell(QStringLiteral("{'player':'a','change':{'PlaybackStatus':'Stopped'}}")));
    // As little time as possible, however slow the bus is.
    QTRY_COMPARE(desktop.info(), QVariantHash());
    desktop.clock.advance(30ms);
    QVERIFY(players.tell(QStringLiteral("{'player':'a','change':{'PlaybackStatus':'Playing'}}")));
    QTRY_VERIFY(!desktop.info().isEmpty());
    desktop.clock.advance(1s);
    QCOMPARE(ends.size(), 1);

    QVERIFY(players.tell(QStringLiteral("{'vanish':'a'}")));
    QTRY_COMPARE((desktop.clock.advance(100ms), ends.size()), 2);
    QCOMPARE(ends.back().front().value<std::optional<QVariantHash>>()->size(), 1);
}

void MprisMediaRemoteTest::fetchesTheCover()
{
    const QTemporaryDir folder;
    QImage cover(900, 300, QImage::Format_RGB32);
    cover.fill(Qt::red);
    QVERIFY(cover.save(folder.filePath(QStringLiteral("cover 1.png"))));
    FakePlayers players;
    Desktop desktop;
    QSignalSpy infos(&desktop.remote, &MediaRemote::nowPlayingInfoDidChange);
    const auto track = [&](const QString &title, const QString &address) {
        return QStringLiteral("{'player':'a','appear':'a','change':{'PlaybackStatus':'Playing',"
                              "'Metadata':{'xesam:title':'%1','mpris:artUrl':'%2'}}}")
            .arg(title, address);
    };
    const auto pending = [&] {
        return desktop.info().contains(QLatin1String(NowPlayingKey::artworkPending));
    };
    QVERIFY(players.tell(
        track(QStringLiteral("A"), QStringLiteral("file://%1/cover%201.png").arg(folder.path()))));
    QVERIFY(desktop.shows(QStringLiteral("A")));
    QTRY_VERIFY((desktop.clock.advance(100ms), !pending()));
    QCOMPARE(desktop.info().value(QLatin1String(NowPlayingKey::artworkData)).value<QImage>().size(),
             QSize(256, 85));
    QVERIFY(!infos.isEmpty());

    // The cover of the last track is never the cover of the next.
    infos.clear();
    QVERIFY(players.tell(track(QStringLiteral("B"), QStringLiteral("file:///dev/zero"))));
    QTRY_VERIFY(desktop.info().value(titleKey) == u"B"_qs);
    QVERIFY(!desktop.info().contains(QLatin1String(NowPlayingKey::artworkData)));
    QTRY_VERIFY((desktop.clock.advance(100ms), !pending()));
    QVERIFY(!desktop.info().contains(QLatin1String(NowPlayingKey::artworkData)));
    desktop.clock.advance(1s);
    const auto told = infos.size();
    desktop.clock.advance(60s); // a failure is not tried again by itself
    QVERIFY(!pending());
    QCOMPARE(infos.size(), told);
}

/// Last, since it leaves no bus behind.
void MprisMediaRemoteTest::survivesTheBus()
{
    FakePlayers players;
    Desktop desktop;
    QVERIFY(players.tell(playing(QStringLiteral("a"), QStringLiteral("A"))));
    QVERIFY(desktop.shows(QStringLiteral("A")));
    const pid_t bus = qEnvironmentVariableIntValue("VELMORA_PID_SESSION_BUS");
    QVERIFY(bus > 0);
    ::kill(bus, SIGKILL);
    QTRY_COMPARE(desktop.info(), QVariantHash());
    QVERIFY(!desktop.functions.sendCommand(2, nullptr));
}

QTEST_GUILESS_MAIN(MprisMediaRemoteTest)
#include "MprisMediaRemoteTest.moc"
