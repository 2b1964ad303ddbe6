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

/// Looks again and again while a little time passes, for what waits for its turn.
#define TRY_LATER(actual, expected) QTRY_COMPARE((m_desktop->clock.advance(30ms), actual), expected)

namespace
{

/// What a program sees of the desktop's media, with a bus connection of its own.
struct Desktop {
    static inline int count = 0;
    VirtualClock clock;
    FakeHttpGetter http;
    test::BusPeer peer{QStringLiteral("remote%1").arg(++count)};
    MprisMediaRemote remote{peer.bus(), clock, http};
    QSignalSpy changes{&remote, &MediaRemote::changed};
    QSignalSpy music{&remote, &MediaRemote::appleMusicChanged};
    QList<PlayerNotice> spotify;

    Desktop()
    {
        QObject::connect(&remote, &MediaRemote::spotifyChanged, &remote,
                         [this](const PlayerNotice &notice) { spotify.append(notice); });
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

/// The track of player a becomes this one.
QByteArray metadata(const QByteArray &json)
{
    return "{'player':'a','change':{'Metadata':" + json + "}}";
}

} // namespace

class MprisMediaRemoteTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_players.emplace();
        m_desktop.emplace();
    }

    void tellsWhatPlays();
    void toleratesNonsense();
    void followsThePosition();
    void choosesAmongPlayers();
    void signalsEachChangeOnce();
    void hangingPlayersDisturbNobody();
    void playersLeaveAtAnyMoment();
    void sendsNotices();
    void fetchesTheCover();
    void survivesTheBus();

private:
    void tell(const QByteArray &command) { m_players->tell(command); }
    MediaTrack track() { return m_desktop->remote.track().value_or(MediaTrack()); }
    QString title() { return track().title; }
    bool shows(const char *expected)
    {
        return QTest::qWaitFor([&] {
            m_desktop->clock.advance(30ms);
            return title() == QString::fromUtf8(expected);
        });
    }

    std::optional<test::FakePlayers> m_players;
    std::optional<Desktop> m_desktop;
};

void MprisMediaRemoteTest::tellsWhatPlays()
{
    // One that is there before us, under two names, and one that comes later.
    tell("{'player':'a','appear':'vlc','set':{'PlaybackStatus':'Playing','Rate':1.5,"
         "'Position':2500000,'Metadata':{'mpris:length':90000000,'xesam:title':'Song',"
         "'xesam:album':'Album','xesam:artist':['One','Two']}}}");
    tell("{'player':'a','appear':'vlc.instance7'}");
    QVERIFY(shows("Song"));
    const int asked = m_players->calls("a GetAll");
    m_desktop.emplace();
    QVERIFY(!m_desktop->remote.track());
    QVERIFY(shows("Song"));
    QCOMPARE(track().artist, QStringLiteral("One, Two"));
    QCOMPARE(track().album, QStringLiteral("Album"));
    QCOMPARE(track().duration, 90.0);
    QVERIFY(track().isPlaying && track().elapsed >= 2.5);
    QCOMPARE(m_players->calls("a GetAll"), asked + 1);

    tell(becomes("a", "Paused"));
    QTRY_VERIFY(!track().isPlaying);
    tell(becomes("a", "Stopped"));
    QTRY_VERIFY(!m_desktop->remote.track());
    tell(playing("b", "Later"));
    QVERIFY(shows("Later"));
    for (const auto command : {PlaybackCommand::nextTrack, PlaybackCommand::togglePlayPause,
                               PlaybackCommand::previousTrack})
        m_desktop->remote.send(command);
    for (const auto *call : {"b Next", "b PlayPause", "b Previous"})
        QTRY_COMPARE(m_players->calls(call), 1);
}

void MprisMediaRemoteTest::toleratesNonsense()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
    tell("{'player':'a','appear':'a','set':{'PlaybackStatus':{'$':'v','value':'Playing'},"
         "'Position':'soon','Metadata':{'mpris:length':-1,'xesam:artist':7,"
         "'xesam:album':{'$':'nest','count':9},'mpris:artUrl':['x'],"
         "'xesam:title':{'$':'repeat','value':'\u00e4\U0001f3b5','count':400000}}}}");
    TRY_LATER(title().size(), 1000);
    QVERIFY(!title().back().isHighSurrogate());
    QCOMPARE(track().artist, QString());
    QCOMPARE(track().duration, 0.0);
    QVERIFY(track().isPlaying && track().artwork.isNull());

    for (const auto *nonsense :
         {"7", "'text'", "['a','b']", "{'$':'nest','count':12}", "{'$':'v','value':5}", "{}"})
        tell(metadata(nonsense));
    tell("{'player':'a','seeked':'never'}");
    QTRY_VERIFY(!m_desktop->remote.track()); // still playing, but nothing with a name
    tell(metadata("{'xesam:url':'file:///music/My%20Song.mp3'}"));
    QVERIFY(shows("My Song.mp3"));

    // Answers of another shape, and a player without its object.
    tell("{'player':'b','on':'GetAll','do':'nonsense'}");
    tell(playing("b", "B"));
    tell("{'player':'c','on':'GetAll','do':'refuse'}");
    tell(playing("c", "C"));
    TRY_LATER(m_players->calls("c GetAll") >= 2, true);
    QCOMPARE(title(), QStringLiteral("My Song.mp3"));
}

void MprisMediaRemoteTest::followsThePosition()
{
    const auto position = [this] { return track().elapsed; };
    const auto asked = [this] { return m_players->calls("a Get"); };
    tell(playing("a", "One"));
    QVERIFY(shows("One"));
    TRY_LATER(asked(), 1); // GetAll brought none
    tell("{'player':'a','seeked':60000000,'set':{'Position':70000000}}");
    QTRY_COMPARE(position(), 60.0);
    m_desktop->clock.advance(4s);
    QCOMPARE(position(), 64.0);
    m_desktop->clock.advance(2s);
    QTRY_COMPARE(position(), 70.0); // by now it has been asked for, once
    QCOMPARE(asked(), 2);

    // One question at a time.
    tell("{'player':'a','on':'Get','do':'hang'}");
    for (const char *title : {"Two", "Three"}) {
        tell(metadata("{'xesam:title':'" + QByteArray(title) + "'}"));
        QVERIFY(shows(title));
        QVERIFY(position() < 1);
        TRY_LATER(asked(), 3);
    }
}

void MprisMediaRemoteTest::choosesAmongPlayers()
{
    tell("{'player':'playerctld','appear':'playerctld'}");
    for (const char *title : {"A", "B", "C"}) { // in silence the next one takes over
        const QByteArray player = QByteArray(title).toLower();
        tell(playing(player, title));
        QVERIFY(shows(title));
        tell(becomes(player, "Paused"));
    }
    tell(becomes("c", "Playing"));
    for (const QByteArray player : {"a", "b"}) {
        tell(becomes(player, "Playing"));
        tell("{'player':'" + player + "','invalidate':['Metadata']}");
        TRY_LATER(m_players->calls(player + " GetAll"), 2);
    }
    QVERIFY(shows("C")); // which plays on
    tell(becomes("c", "Paused"));
    QVERIFY(shows("B")); // which began last
    tell(becomes("b", "Paused"));
    QVERIFY(shows("A"));
    tell("{'vanish':'a'}");
    QVERIFY(shows("B")); // of those that are silent, the one that was active last
    tell("{'vanish':'b'}");
    QVERIFY(shows("C"));
    QCOMPARE(m_players->calls("playerctld GetAll"), 0);
    // A player that is replaced under the same name is another player.
    tell("{'vanish':'c'}");
    tell(playing("c", "D"));
    QVERIFY(shows("D"));
}

void MprisMediaRemoteTest::signalsEachChangeOnce()
{
    const auto &changes = m_desktop->changes;
    tell(playing("a", "A"));
    QVERIFY(shows("A"));
    m_desktop->clock.advance(1s);
    QCOMPARE(changes.size(), 1);
    // Repeats say nothing; the question that follows shows that they have arrived.
    for (int i = 0; i < 5; ++i)
        tell(becomes("a", "Playing"));
    tell("{'player':'a','invalidate':['Metadata']}");
    TRY_LATER(m_players->calls("a GetAll"), 2);
    QCOMPARE(changes.size(), 1);
    tell(becomes("a", "Paused"));
    TRY_LATER(changes.size(), 2);

    // In a storm time stands still: the last is told after 30 ms, the first perhaps at once.
    m_desktop->clock.advance(1s);
    const int asked = m_players->calls("a Get");
    tell("{'player':'a','storm':2000}");
    QTRY_COMPARE(title(), QStringLiteral("Track 2000"));
    const auto told = changes.size();
    QVERIFY(told <= 3);
    m_desktop->clock.advance(29ms);
    QCOMPARE(changes.size(), told);
    m_desktop->clock.advance(1ms);
    QCOMPARE(changes.size(), told + 1);
    TRY_LATER(track().isArtworkPending, false);
    QVERIFY(m_players->calls("a Get") - asked <= 3);
}

void MprisMediaRemoteTest::hangingPlayersDisturbNobody()
{
    for (int i = 0; i < 20; ++i) {
        const auto name = "p" + QByteArray::number(i);
        if (i % 7 == 0)
            tell("{'player':'" + name + "','on':'GetAll','do':'hang'}");
        tell(playing(name, name, "Paused"));
    }
    QElapsedTimer timer;
    timer.start();
    tell(becomes("p3", "Playing"));
    QVERIFY(shows("p3"));
    QVERIFY2(timer.elapsed() < 4000, "waited for a player that hangs");
    // What a hanging player tells by itself counts.
    tell(becomes("p3", "Paused"));
    tell("{'player':'p7','change':{'PlaybackStatus':'Playing',"
         "'Metadata':{'xesam:title':'Awake'}}}");
    QVERIFY(shows("Awake"));
}

void MprisMediaRemoteTest::playersLeaveAtAnyMoment()
{
    tell("{'player':'a','on':'GetAll','do':'leave'}");
    tell(playing("a", "A"));
    QTRY_COMPARE(m_players->calls("a GetAll"), 1);
    for (int i = 0; i < 20; ++i)
        tell(playing("p" + QByteArray::number(i), "P"));
    QVERIFY(shows("P"));
    m_desktop->clock.advance(30ms); // so that their coming has been told, and their going is news
    const auto told = m_desktop->changes.size();
    m_players->kill();
    QTRY_VERIFY(!m_desktop->remote.track());
    m_desktop->clock.advance(30ms);
    QVERIFY(m_desktop->changes.size() > told);
    m_desktop->remote.send(PlaybackCommand::nextTrack);

    // Ours may go first, with questions and answers under way.
    m_players.emplace();
    m_desktop.emplace();
    tell(playing("z", "Z"));
    m_desktop.reset();
    QCoreApplication::processEvents();
}

void MprisMediaRemoteTest::sendsNotices()
{
    const auto &notices = m_desktop->spotify;
    tell("{'player':'s','appear':'spotify'}"); // stopped
    tell("{'player':'s','change':{'PlaybackStatus':'Playing','Position':12500000,'Metadata':{"
         "'mpris:length':90000000,'xesam:title':'T','xesam:artist':'A',"
         "'mpris:artUrl':'https://host/cover'}}}");
    TRY_LATER(notices.size(), 1);
    const MediaTrack track = notices.back().track;
    QCOMPARE(notices.back().state, PlaybackState::Playing);
    QCOMPARE(track.title, QStringLiteral("T"));
    QCOMPARE(track.artist, QStringLiteral("A"));
    QCOMPARE(track.duration, 90.0);
    QVERIFY(track.elapsed >= 12.5);
    QVERIFY(track.isArtworkPending); // so that no other is searched for
    tell(becomes("s", "Paused"));
    TRY_LATER(notices.size(), 2);
    QCOMPARE(notices.back().state, PlaybackState::Paused);
    tell("{'vanish':'s'}");
    TRY_LATER(notices.size(), 3);
    QCOMPARE(notices.back().state, PlaybackState::Stopped);

    tell(playing("Cider", "M"));
    TRY_LATER(m_desktop->music.size(), 1);
    tell("{'vanish':'Cider'}");
    TRY_LATER(m_desktop->music.size(), 2);

    tell(playing("a", "Song"));
    tell(playing("spotify", "Other"));
    QVERIFY(shows("Song"));
    TRY_LATER(notices.size(), 4); // that it plays
    // One of two that ends must not blank out the other; a gap between two tracks is no end.
    tell("{'vanish':'spotify'}");
    tell(metadata("{'xesam:title':'Next'}"));
    QVERIFY(shows("Next"));
    m_desktop->clock.advance(30ms);
    tell(becomes("a", "Stopped"));
    // As little time as possible, however slow the bus is.
    QTRY_VERIFY(!m_desktop->remote.track());
    m_desktop->clock.advance(30ms);
    tell(becomes("a", "Playing"));
    QTRY_VERIFY(m_desktop->remote.track());
    m_desktop->clock.advance(1s);
    QCOMPARE(notices.size(), 4);

    tell("{'vanish':'a'}");
    TRY_LATER(notices.size(), 5);
    QCOMPARE(notices.back().state, PlaybackState::Stopped);
}

void MprisMediaRemoteTest::fetchesTheCover()
{
    const QTemporaryDir folder;
    QImage cover(900, 300, QImage::Format_RGB32);
    cover.fill(Qt::red);
    QVERIFY(cover.save(folder.filePath(QStringLiteral("cover 1.png"))));
    tell(playing("a", "A"));
    QVERIFY(shows("A"));
    tell(metadata("{'xesam:title':'B','mpris:artUrl':'file://" + folder.path().toUtf8() +
                  "/cover%201.png'}"));
    QVERIFY(shows("B"));
    TRY_LATER(track().artwork.size(), QSize(256, 85));

    // The cover of the last track is never the cover of the next.
    tell(metadata("{'xesam:title':'C','mpris:artUrl':'file:///dev/zero'}"));
    QTRY_COMPARE(title(), QStringLiteral("C"));
    QVERIFY(track().artwork.isNull());
    TRY_LATER(track().isArtworkPending, false);
    QVERIFY(track().artwork.isNull());
}

/// Last, since it leaves no bus behind.
void MprisMediaRemoteTest::survivesTheBus()
{
    tell(playing("a", "A"));
    QVERIFY(shows("A"));
    const pid_t bus = qEnvironmentVariableIntValue("VELMORA_PID_SESSION_BUS");
    QVERIFY(bus > 0);
    ::kill(bus, SIGKILL);
    QTRY_VERIFY(!m_desktop->remote.track());
    m_desktop->remote.send(PlaybackCommand::nextTrack);
}

QTEST_GUILESS_MAIN(MprisMediaRemoteTest)
#include "MprisMediaRemoteTest.moc"
