#include "platform/linux/media/MprisMediaRemote.h"

#include "platform/linux/media/FakePlayers.h"
#include "support/BusPeer.h"
#include "support/FakeHttpGetter.h"
#include "support/VirtualClock.h"

#include <QElapsedTimer>
#include <QRegularExpression>
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

/// What a program sees of the desktop's media, with a bus connection of its own.
struct Desktop {
    static inline int count = 0;
    VirtualClock clock;
    FakeHttpGetter http;
    BusPeer peer{QStringLiteral("remote%1").arg(++count)};
    MprisMediaRemote remote{peer.bus(), clock, http};
    QList<PlayerNotice> spotify;

    Desktop()
    {
        QObject::connect(&remote, &MediaRemote::spotifyChanged, &remote,
                         [this](const PlayerNotice &notice) { spotify.append(notice); });
    }

    MediaTrack track() { return remote.track().value_or(MediaTrack()); }
    QString title() { return track().title; }

    /// Lets a little time pass at each look, for what waits for its turn.
    bool shows(const char *expected)
    {
        return QTest::qWaitFor(
            [&] { return clock.advance(30ms), title() == QString::fromUtf8(expected); });
    }
};

QByteArray playing(const QByteArray &player, const QByteArray &title,
                   const QByteArray &state = "Playing")
{
    return "{'player':'" + player + "','appear':'" + player + "','set':{'PlaybackStatus':'" +
           state + "','Metadata':{'mpris:trackid':{'$':'o','value':'/" + player +
           "'},'xesam:title':'" + title + "'}}}";
}

QByteArray becomes(const QByteArray &player, const QByteArray &state)
{
    return "{'player':'" + player + "','change':{'PlaybackStatus':'" + state + "'}}";
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
    void signalsEachChangeOnce();
    void survivesStorms();
    void hangingPlayersDisturbNobody();
    void playersLeaveAtAnyMoment();
    void twoPlayersSendNotices();
    void tellsTheEndOfItAll();
    void fetchesTheCover();
    void survivesTheBus();
};

void MprisMediaRemoteTest::tellsWhatPlays()
{
    FakePlayers players;
    // One that is there before us, under two names, and one that comes later.
    QVERIFY(players.tell("{'player':'a','appear':'vlc','set':{'PlaybackStatus':'Playing','Rate':"
                         "1.5,'Position':2500000,'Metadata':{'mpris:length':90000000,'xesam:title':"
                         "'Song','xesam:album':'Album','xesam:artist':['One','Two']}}}"));
    QVERIFY(players.tell("{'player':'a','appear':'vlc.instance7'}"));
    Desktop desktop;
    QVERIFY(!desktop.remote.track());
    QVERIFY(desktop.shows("Song"));
    const MediaTrack track = desktop.track();
    QCOMPARE(track.artist, QStringLiteral("One, Two"));
    QCOMPARE(track.album, QStringLiteral("Album"));
    QCOMPARE(track.duration, 90.0);
    QVERIFY(track.isPlaying && track.elapsed >= 2.5);
    QCOMPARE(players.calls("a GetAll"), 1);

    QVERIFY(players.tell(becomes("a", "Paused")));
    QTRY_VERIFY(!desktop.track().isPlaying);
    QVERIFY(players.tell(becomes("a", "Stopped")));
    QTRY_VERIFY(!desktop.remote.track());
    QVERIFY(players.tell(playing("b", "Later")));
    QVERIFY(desktop.shows("Later"));
    for (const auto command : {PlaybackCommand::nextTrack, PlaybackCommand::togglePlayPause,
                               PlaybackCommand::previousTrack})
        desktop.remote.send(command);
    QTRY_COMPARE(players.calls("b Previous"), 1);
    QCOMPARE(players.calls("b Next"), 1);
    QCOMPARE(players.calls("b PlayPause"), 1);
}

void MprisMediaRemoteTest::toleratesNonsense()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
    FakePlayers players;
    Desktop desktop;
    QVERIFY(players.tell(
        "{'player':'a','appear':'a','set':{'PlaybackStatus':{'$':'v','value':'Playing'},"
        "'Position':'soon','Metadata':{'mpris:length':-1,'xesam:artist':7,"
        "'xesam:album':{'$':'nest','count':9},'mpris:artUrl':['x'],"
        "'xesam:title':{'$':'repeat','value':'\u00e4\U0001f3b5','count':400000}}}}"));
    QTRY_VERIFY((desktop.clock.advance(30ms), desktop.remote.track()));
    const MediaTrack track = desktop.track();
    QCOMPARE(track.title.size(), 1000);
    QVERIFY(!track.title.back().isHighSurrogate());
    QCOMPARE(track.artist, QString());
    QCOMPARE(track.duration, 0.0);
    QVERIFY(track.isPlaying && track.artwork.isNull());

    for (const auto *metadata :
         {"7", "'text'", "['a','b']", "{'$':'nest','count':12}", "{'$':'v','value':5}", "{}"})
        QVERIFY(players.tell(QByteArray("{'player':'a','change':{'Metadata':") + metadata + "}}"));
    QVERIFY(players.tell("{'player':'a','seeked':'never'}"));
    QTRY_VERIFY(!desktop.remote.track()); // still playing, but nothing with a name
    QVERIFY(players.tell("{'player':'a','change':{'Metadata':{'xesam:url':"
                         "'file:///music/My%20Song.mp3'}}}"));
    QVERIFY(desktop.shows("My Song.mp3"));

    // Answers of another shape, and a player without its object.
    QVERIFY(players.tell("{'player':'b','on':'GetAll','do':'nonsense'}"));
    QVERIFY(players.tell(playing("b", "B")));
    QVERIFY(players.tell("{'player':'c','on':'GetAll','do':'refuse'}"));
    QVERIFY(players.tell(playing("c", "C")));
    QTRY_VERIFY((desktop.clock.advance(30ms), players.calls("c GetAll")) >= 2);
    QCOMPARE(desktop.title(), QStringLiteral("My Song.mp3"));
}

void MprisMediaRemoteTest::followsThePosition()
{
    FakePlayers players;
    Desktop desktop;
    const auto position = [&] { return desktop.track().elapsed; };
    const auto asked = [&] { return players.calls("a Get"); };
    QVERIFY(players.tell(playing("a", "One")));
    QVERIFY(desktop.shows("One"));
    QTRY_COMPARE((desktop.clock.advance(30ms), asked()), 1); // GetAll brought none
    QVERIFY(players.tell("{'player':'a','seeked':60000000,'set':{'Position':70000000}}"));
    QTRY_COMPARE(position(), 60.0);
    desktop.clock.advance(4s);
    QCOMPARE(position(), 64.0);
    desktop.clock.advance(2s);
    QTRY_COMPARE(position(), 70.0); // by now it has been asked for, once
    QCOMPARE(asked(), 2);

    // One question at a time.
    QVERIFY(players.tell("{'player':'a','on':'Get','do':'hang'}"));
    for (const char *title : {"Two", "Three"}) {
        QVERIFY(players.tell("{'player':'a','change':{'Metadata':{'xesam:title':'" +
                             QByteArray(title) + "'}}}"));
        QVERIFY(desktop.shows(title));
        QVERIFY(position() < 1);
        QTRY_COMPARE((desktop.clock.advance(30ms), asked()), 3);
    }
}

void MprisMediaRemoteTest::choosesAmongPlayers()
{
    FakePlayers players;
    Desktop desktop;
    QVERIFY(players.tell("{'player':'playerctld','appear':'playerctld'}"));
    for (const char *title : {"A", "B", "C"}) { // in silence the next one takes over
        const QByteArray player = QByteArray(title).toLower();
        QVERIFY(players.tell(playing(player, title)));
        QVERIFY(desktop.shows(title));
        QVERIFY(players.tell(becomes(player, "Paused")));
    }
    QVERIFY(players.tell(becomes("c", "Playing")));
    for (const QByteArray player : {"a", "b"}) {
        QVERIFY(players.tell(becomes(player, "Playing")));
        QVERIFY(players.tell("{'player':'" + player + "','invalidate':['Metadata']}"));
        QTRY_COMPARE((desktop.clock.advance(30ms), players.calls(player + " GetAll")), 2);
    }
    QVERIFY(desktop.shows("C")); // which plays on
    QVERIFY(players.tell(becomes("c", "Paused")));
    QVERIFY(desktop.shows("B")); // which began last
    QVERIFY(players.tell(becomes("b", "Paused")));
    QVERIFY(desktop.shows("A"));
    QVERIFY(players.tell("{'vanish':'a'}"));
    QVERIFY(desktop.shows("B")); // of those that are silent, the one that was active last
    QVERIFY(players.tell("{'vanish':'b'}"));
    QVERIFY(desktop.shows("C"));
    QCOMPARE(players.calls("playerctld GetAll"), 0);
    // A player that is replaced under the same name is another player.
    QVERIFY(players.tell("{'vanish':'c'}"));
    QVERIFY(players.tell(playing("c", "D")));
    QVERIFY(desktop.shows("D"));
}

void MprisMediaRemoteTest::signalsEachChangeOnce()
{
    FakePlayers players;
    Desktop desktop;
    QSignalSpy changes(&desktop.remote, &MediaRemote::changed);
    QVERIFY(players.tell(playing("a", "A")));
    QVERIFY(desktop.shows("A"));
    desktop.clock.advance(1s);
    QCOMPARE(changes.size(), 1);
    // Repeats say nothing; the question that follows shows that they have arrived.
    for (int i = 0; i < 5; ++i)
        QVERIFY(players.tell(becomes("a", "Playing")));
    QVERIFY(players.tell("{'player':'a','invalidate':['Metadata']}"));
    QTRY_COMPARE((desktop.clock.advance(30ms), players.calls("a GetAll")), 2);
    QCOMPARE(changes.size(), 1);
    QVERIFY(players.tell(becomes("a", "Paused")));
    QTRY_COMPARE((desktop.clock.advance(30ms), changes.size()), 2);
}

void MprisMediaRemoteTest::survivesStorms()
{
    FakePlayers players;
    Desktop desktop;
    QVERIFY(players.tell(playing("a", "A")));
    QVERIFY(desktop.shows("A"));
    desktop.clock.advance(1s);
    QSignalSpy changes(&desktop.remote, &MediaRemote::changed);
    const int asked = players.calls("a Get");
    QVERIFY(players.tell("{'player':'a','storm':2000}"));
    // Time stands still: the last is told after 30 ms, the first perhaps at once.
    QTRY_COMPARE(desktop.title(), QStringLiteral("Track 2000"));
    const auto told = changes.size();
    QVERIFY(told <= 1);
    desktop.clock.advance(29ms);
    QCOMPARE(changes.size(), told);
    desktop.clock.advance(1ms);
    QCOMPARE(changes.size(), told + 1);
    QTRY_VERIFY((desktop.clock.advance(100ms), !desktop.track().isArtworkPending));
    QVERIFY(players.calls("a Get") - asked <= 3);
}

void MprisMediaRemoteTest::hangingPlayersDisturbNobody()
{
    FakePlayers players;
    Desktop desktop;
    for (int i = 0; i < 20; ++i) {
        const auto name = "p" + QByteArray::number(i);
        if (i % 7 == 0)
            QVERIFY(players.tell("{'player':'" + name + "','on':'GetAll','do':'hang'}"));
        QVERIFY(players.tell(playing(name, name, "Paused")));
    }
    QElapsedTimer timer;
    timer.start();
    QVERIFY(players.tell(becomes("p3", "Playing")));
    QVERIFY(desktop.shows("p3"));
    QVERIFY2(timer.elapsed() < 4000, "waited for a player that hangs");
    // What a hanging player tells by itself counts.
    QVERIFY(players.tell(becomes("p3", "Paused")));
    QVERIFY(players.tell("{'player':'p7','change':{'PlaybackStatus':'Playing',"
                         "'Metadata':{'xesam:title':'Awake'}}}"));
    QVERIFY(desktop.shows("Awake"));
}

void MprisMediaRemoteTest::playersLeaveAtAnyMoment()
{
    FakePlayers players;
    Desktop desktop;
    QVERIFY(players.tell("{'player':'a','on':'GetAll','do':'leave'}"));
    QVERIFY(players.tell(playing("a", "A")));
    QTRY_COMPARE(players.calls("a GetAll"), 1);
    for (int i = 0; i < 20; ++i)
        QVERIFY(players.tell(playing("p" + QByteArray::number(i), "P")));
    QVERIFY(desktop.shows("P"));
    desktop.clock.advance(30ms); // so that their coming has been told, and their going is news
    QSignalSpy changes(&desktop.remote, &MediaRemote::changed);
    players.kill();
    QTRY_VERIFY(!desktop.remote.track());
    desktop.clock.advance(30ms);
    QVERIFY(!changes.isEmpty());
    desktop.remote.send(PlaybackCommand::nextTrack);

    { // Ours may go first, with questions and answers under way.
        FakePlayers others;
        const Desktop brief;
        QVERIFY(others.tell(playing("z", "Z")));
    }
    QCoreApplication::processEvents();
}

void MprisMediaRemoteTest::twoPlayersSendNotices()
{
    FakePlayers players;
    Desktop desktop;
    QSignalSpy music(&desktop.remote, &MediaRemote::appleMusicChanged);
    const auto notices = [&] { return desktop.clock.advance(30ms), desktop.spotify.size(); };
    QVERIFY(players.tell("{'player':'s','appear':'spotify'}")); // stopped
    QVERIFY(players.tell(
        "{'player':'s','change':{'PlaybackStatus':'Playing','Position':12500000,'Metadata':{"
        "'mpris:length':90000000,'xesam:title':'T','xesam:artist':'A',"
        "'mpris:artUrl':'https://host/cover'}}}"));
    QTRY_COMPARE(notices(), 1);
    const PlayerNotice notice = desktop.spotify.back();
    QCOMPARE(notice.state, PlaybackState::Playing);
    QCOMPARE(notice.track.title, QStringLiteral("T"));
    QCOMPARE(notice.track.artist, QStringLiteral("A"));
    QCOMPARE(notice.track.duration, 90.0);
    QVERIFY(notice.track.elapsed >= 12.5);
    QVERIFY(notice.track.isArtworkPending); // so that no other is searched for
    QVERIFY(players.tell(becomes("s", "Paused")));
    QTRY_COMPARE(notices(), 2);
    QCOMPARE(desktop.spotify.back().state, PlaybackState::Paused);
    QVERIFY(players.tell("{'vanish':'s'}"));
    QTRY_COMPARE(notices(), 3);
    QCOMPARE(desktop.spotify.back().state, PlaybackState::Stopped);

    QVERIFY(players.tell(playing("Cider", "M")));
    QTRY_COMPARE((desktop.clock.advance(30ms), music.size()), 1);
    QVERIFY(players.tell("{'vanish':'Cider'}"));
    QTRY_COMPARE((desktop.clock.advance(30ms), music.size()), 2);
}

void MprisMediaRemoteTest::tellsTheEndOfItAll()
{
    FakePlayers players;
    Desktop desktop;
    QVERIFY(players.tell(playing("a", "Song")));
    QVERIFY(players.tell(playing("spotify", "Other")));
    QVERIFY(desktop.shows("Song"));
    QTRY_COMPARE((desktop.clock.advance(30ms), desktop.spotify.size()), 1); // that it plays
    // One of two that ends must not blank out the other; a gap between two tracks is no end.
    QVERIFY(players.tell("{'vanish':'spotify'}"));
    QVERIFY(players.tell("{'player':'a','change':{'Metadata':{'xesam:title':'Next'}}}"));
    QVERIFY(desktop.shows("Next"));
    desktop.clock.advance(30ms);
    QVERIFY(players.tell(becomes("a", "Stopped")));
    // As little time as possible, however slow the bus is.
    QTRY_VERIFY(!desktop.remote.track());
    desktop.clock.advance(30ms);
    QVERIFY(players.tell(becomes("a", "Playing")));
    QTRY_VERIFY(desktop.remote.track());
    desktop.clock.advance(1s);
    QCOMPARE(desktop.spotify.size(), 1);

    QVERIFY(players.tell("{'vanish':'a'}"));
    QTRY_COMPARE((desktop.clock.advance(100ms), desktop.spotify.size()), 2);
    QCOMPARE(desktop.spotify.back().state, PlaybackState::Stopped);
}

void MprisMediaRemoteTest::fetchesTheCover()
{
    const QTemporaryDir folder;
    QImage cover(900, 300, QImage::Format_RGB32);
    cover.fill(Qt::red);
    QVERIFY(cover.save(folder.filePath(QStringLiteral("cover 1.png"))));
    FakePlayers players;
    Desktop desktop;
    QSignalSpy changes(&desktop.remote, &MediaRemote::changed);
    const auto track = [&](const QByteArray &title, const QByteArray &address) {
        return "{'player':'a','appear':'a','change':{'PlaybackStatus':'Playing','Metadata':{"
               "'xesam:title':'" +
               title + "','mpris:artUrl':'" + address + "'}}}";
    };
    const auto settles = [&] {
        return QTest::qWaitFor(
            [&] { return desktop.clock.advance(100ms), !desktop.track().isArtworkPending; });
    };
    QVERIFY(players.tell(track("A", "file://" + folder.path().toUtf8() + "/cover%201.png")));
    QVERIFY(desktop.shows("A"));
    QVERIFY(settles());
    QCOMPARE(desktop.track().artwork.size(), QSize(256, 85));
    QVERIFY(!changes.isEmpty());

    // The cover of the last track is never the cover of the next.
    QVERIFY(players.tell(track("B", "file:///dev/zero")));
    QTRY_COMPARE(desktop.title(), QStringLiteral("B"));
    QVERIFY(desktop.track().artwork.isNull());
    QVERIFY(settles());
    QVERIFY(desktop.track().artwork.isNull());
}

/// Last, since it leaves no bus behind.
void MprisMediaRemoteTest::survivesTheBus()
{
    FakePlayers players;
    Desktop desktop;
    QVERIFY(players.tell(playing("a", "A")));
    QVERIFY(desktop.shows("A"));
    const pid_t bus = qEnvironmentVariableIntValue("VELMORA_PID_SESSION_BUS");
    QVERIFY(bus > 0);
    ::kill(bus, SIGKILL);
    QTRY_VERIFY(!desktop.remote.track());
    desktop.remote.send(PlaybackCommand::nextTrack);
}

QTEST_GUILESS_MAIN(MprisMediaRemoteTest)
#include "MprisMediaRemoteTest.moc"
