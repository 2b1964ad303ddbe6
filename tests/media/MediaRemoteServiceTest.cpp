#include "media/MediaRemoteService.h"

#include "support/FakeMediaRemote.h"
#include "support/HttpServer.h"
#include "support/VirtualClock.h"

#include <QBuffer>
#include <QSignalSpy>
#include <QTest>

#include <limits>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

QImage cover(Qt::GlobalColor color)
{
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

QByteArray encoded(const QImage &image)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return buffer.data();
}

QVariantHash with(QVariantHash answer, const char *key, const QVariant &value)
{
    answer.insert(QLatin1String(key), value);
    return answer;
}

QVariantHash notice(const QString &state, const QString &name)
{
    return {{QStringLiteral("Player State"), state},
            {QStringLiteral("Name"), name},
            {QStringLiteral("Artist"), QStringLiteral("Them")},
            {QStringLiteral("Duration"), 1500},
            {QStringLiteral("Playback Position"), 12.5}};
}

struct Rig {
    VirtualClock clock;
    FakeMediaRemote remote;
    HttpServer server;
    MediaRemoteService service{clock, remote, server.url()};

    [[nodiscard]] const NowPlayingInfo &now() const { return service.nowPlaying(); }

    /// Whether a search for a cover is begun in answer to what `act` does. One of our own, begun
    /// afterwards, shows when it would have come.
    template<typename Act>
    [[nodiscard]] bool searches(Act act)
    {
        const auto before = server.requests.size();
        act();
        VirtualClock otherClock;
        ArtworkLookup later(otherClock, server.url());
        later.start(QStringLiteral("later"), QStringLiteral("a"), [](const QImage &) {});
        const QByteArray last = "/search?term=a%20later&";
        const auto lasts = server.count(last);
        if (!QTest::qWaitFor([&] { return server.count(last) > lasts; })) {
            qFatal("the server is not reached");
        }
        return server.requests.size() > before + 1;
    }
};

} // namespace

class MediaRemoteServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void asksByItselfAndOnChanges();
    void missingParts();
    void parsing();
    void position();
    void answers();
    void spotifyNotices();
    void crossingAnswers();
    void artworkOfTheTrack();
    void answerAfterTheEnd();
};

void MediaRemoteServiceTest::asksByItselfAndOnChanges()
{
    Rig rig;
    QVERIFY(rig.remote.isRegistered);
    QCOMPARE(rig.remote.questions.size(), 1U);
    rig.clock.advance(10s);
    QCOMPARE(rig.remote.questions.size(), 12U); // each second, and once more after two
    rig.remote.questions.clear();
    Q_EMIT rig.remote.nowPlayingInfoDidChange();
    Q_EMIT rig.remote.nowPlayingApplicationIsPlayingDidChange();
    Q_EMIT rig.remote.nowPlayingApplicationDidChange();
    Q_EMIT rig.remote.appleMusicPlayerInfo();
    QCOMPARE(rig.remote.questions.size(), 4U);

    // Observers hear of every answer that names a track.
    QSignalSpy changes(&rig.service, &MediaRemoteService::nowPlayingChanged);
    rig.remote.answer(
        with(playingTrack(QStringLiteral("Song")), NowPlayingKey::artworkData, cover(Qt::red)));
    QCOMPARE(changes.size(), 4);

    rig.service.togglePlayPause();
    rig.service.nextTrack();
    rig.service.previousTrack();
    QCOMPARE(rig.remote.commands, (QList<quint32>{2, 4, 5}));
    QCOMPARE(changes.size(), 4);
}

void MediaRemoteServiceTest::missingParts()
{
    VirtualClock clock;
    FakeMediaRemote remote;
    remote.isThere = false;
    MediaRemoteService without(clock, remote, QUrl());
    clock.advance(10s);
    without.togglePlayPause();
    QVERIFY(remote.questions.empty() && remote.commands.isEmpty());
    // Its own notices still reach us.
    Q_EMIT remote.spotifyPlaybackStateChanged(
        notice(QStringLiteral("Playing"), QStringLiteral("Song")));
    QCOMPARE(without.nowPlaying().title, QStringLiteral("Song"));

    FakeMediaRemote deaf;
    deaf.canQuery = false;
    MediaRemoteService sender(clock, deaf, QUrl());
    sender.refresh();
    sender.nextTrack();
    QCOMPARE(deaf.commands, QList<quint32>{4});
    FakeMediaRemote mute;
    mute.canSend = false;
    MediaRemoteService reader(clock, mute, QUrl());
    reader.nextTrack();
    QCOMPARE(mute.questions.size(), 1U);
}

void MediaRemoteServiceTest::parsing()
{
    Rig rig;
    const QVariantHash track = playingTrack(QStringLiteral("Song"), QStringLiteral("Them"));
    const struct {
        QVariant rate;
        bool isPlaying;
    } rates[] = {{1.0, true},
                 {0.5, true},
                 {0.0, false},
                 {QVariant(), false},
                 {QStringLiteral("1"), false},
                 {1, true},
                 {std::numeric_limits<double>::quiet_NaN(), false}};
    for (const auto &[rate, isPlaying] : rates) {
        rig.service.refresh();
        rig.remote.answer(with(track, NowPlayingKey::playbackRate, rate));
        QCOMPARE(rig.now().isPlaying, isPlaying);
    }

    rig.service.refresh();
    rig.remote.answer({{QLatin1String(NowPlayingKey::title), QStringLiteral("Other")},
                       {QLatin1String(NowPlayingKey::artist), 7},
                       {QLatin1String(NowPlayingKey::album), QStringList{}},
                       {QLatin1String(NowPlayingKey::duration), QStringLiteral("long")},
                       {QLatin1String(NowPlayingKey::elapsedTime), QByteArray("12")},
                       {QLatin1String(NowPlayingKey::artworkData), QByteArray("no image")}});
    QCOMPARE(rig.now().title, QStringLiteral("Other"));
    QCOMPARE(rig.now().artist, QString());
    QCOMPARE(rig.now().album, QString());
    QCOMPARE(rig.now().duration, 0.0);
    QCOMPARE(rig.now().elapsedAtFetch, 0.0);
    QVERIFY(rig.now().artwork.isNull());

    rig.service.refresh();
    rig.remote.answer(with(track, NowPlayingKey::title, QByteArray("bytes")));
    QCOMPARE(rig.now().title, QStringLiteral("Other")); // a title of another type is none

    for (const QVariant &image : {QVariant(encoded(cover(Qt::red))), QVariant(cover(Qt::red))}) {
        rig.service.refresh();
        rig.remote.answer(with(track, NowPlayingKey::artworkData, image));
        QCOMPARE(rig.now().artwork.pixelColor(0, 0), QColor(Qt::red));
    }
}

void MediaRemoteServiceTest::position()
{
    Rig rig;
    rig.remote.answer(playingTrack(QStringLiteral("Song")));
    const auto at = [&] { return rig.now().position(rig.clock.now()); };
    QCOMPARE(at(), 10.0);
    rig.clock.advance(5s);
    QCOMPARE(at(), 15.0);
    rig.clock.advance(200s);
    QCOMPARE(at(), 100.0);
    rig.remote.answer(with(playingTrack(QStringLiteral("Song")), NowPlayingKey::playbackRate, 0.0));
    rig.clock.advance(5s);
    QCOMPARE(at(), 10.0);
    rig.remote.answer(with(playingTrack(QStringLiteral("Song")), NowPlayingKey::duration, 0.0));
    rig.clock.advance(5s);
    QCOMPARE(at(), 10.0);

    NowPlayingInfo a = rig.now();
    NowPlayingInfo b = a;
    b.elapsedAtFetch = 50;
    b.artwork = cover(Qt::red);
    b.fetchTimestamp = b.fetchTimestamp.addSecs(9);
    QVERIFY(a == b);
    b.duration = 1;
    QVERIFY(!(a == b));
}

/// What an answer makes of the item, and whether a cover is looked for.
void MediaRemoteServiceTest::answers()
{
    Rig rig;
    const QString song = QStringLiteral("Song");
    const auto answer = [&](const QVariantHash &info) {
        rig.service.refresh();
        return rig.searches([&] { rig.remote.answer(info); });
    };
    QVERIFY(!answer({})); // no title, no fallback
    QCOMPARE(rig.now().title, QString());

    QVERIFY(answer(playingTrack(song))); // a new title without a cover
    QVERIFY(!answer(with(playingTrack(song), NowPlayingKey::artworkData, cover(Qt::red))));
    QVERIFY(!answer(playingTrack(song, QStringLiteral("Others")))); // same title: keeps it
    QCOMPARE(rig.now().artwork, cover(Qt::red));
    QVERIFY(!answer({})); // the last item stays, as it was
    QCOMPARE(rig.now().title, song);
    QVERIFY(rig.now().isPlaying);

    QVERIFY(answer(playingTrack(QStringLiteral("Next"))));
    QVERIFY(rig.now().artwork.isNull());

    // A cover on its way is waited for.
    const auto pending = playingTrack(QStringLiteral("Third"));
    QVERIFY(!answer(with(pending, NowPlayingKey::artworkPending, true)));
    QVERIFY(answer(pending));
}

void MediaRemoteServiceTest::spotifyNotices()
{
    Rig rig;
    const QString song = QStringLiteral("Song");
    const auto tell = [&](const std::optional<QVariantHash> &userInfo) {
        Q_EMIT rig.remote.spotifyPlaybackStateChanged(userInfo);
    };
    const auto playing = notice(QStringLiteral("Playing"), song);
    QVERIFY(rig.searches([&] { tell(playing); }));
    QCOMPARE(rig.remote.questions.size(), 2U); // and it asks
    QCOMPARE(rig.now().duration, 1.5);
    QCOMPARE(rig.now().elapsedAtFetch, 12.5);
    QVERIFY(rig.now().isPlaying);

    // It stands in while the desktop names nothing, and its position goes on from its own time.
    const auto stamp = rig.now().fetchTimestamp;
    rig.clock.advance(3s);
    rig.remote.answer({});
    QCOMPARE(rig.now().title, song);
    QCOMPARE(rig.now().fetchTimestamp, stamp);

    // Nothing to go by, nothing changes.
    tell(std::nullopt);
    tell(notice(QStringLiteral("Paused"), QString()));
    QVERIFY(rig.now().isPlaying);
    for (const QString &state : {QStringLiteral("Paused"), QString(), QStringLiteral("odd")}) {
        tell(notice(state, song));
        QVERIFY(!rig.now().isPlaying);
    }

    // A desktop that names a track ends the fallback.
    rig.remote.answer(playingTrack(QStringLiteral("Real")));
    rig.service.refresh();
    rig.remote.answer({});
    QCOMPARE(rig.now().title, QStringLiteral("Real"));

    // A cover is kept for the same title, and only for that.
    rig.service.refresh();
    rig.remote.answer(with(playingTrack(song), NowPlayingKey::artworkData, cover(Qt::red)));
    tell(playing);
    QCOMPARE(rig.now().artwork, cover(Qt::red));
    tell(notice(QStringLiteral("Playing"), QStringLiteral("Other")));
    QVERIFY(rig.now().artwork.isNull());

    // Stopped clears, whatever the name; nothing comes back afterwards.
    for (const QString &name : {song, QString()}) {
        tell(playing);
        tell(notice(QStringLiteral("Stopped"), name));
        QCOMPARE(rig.now().title, QString());
        rig.remote.answer({});
        QCOMPARE(rig.now().title, QString());
    }
}

void MediaRemoteServiceTest::crossingAnswers()
{
    Rig rig;
    rig.clock.advance(3s);
    Q_EMIT rig.remote.spotifyPlaybackStateChanged(
        notice(QStringLiteral("Playing"), QStringLiteral("Song")));
    auto late = std::exchange(rig.remote.questions, {});
    // Repeated, late, and after the player has said that it is over: the last to arrive decides.
    late.front()({});
    QCOMPARE(rig.now().title, QStringLiteral("Song"));
    Q_EMIT rig.remote.spotifyPlaybackStateChanged(
        notice(QStringLiteral("Stopped"), QStringLiteral("Song")));
    late.front()({});
    QCOMPARE(rig.now().title, QString());
    late.back()(playingTrack(QStringLiteral("Late")));
    QCOMPARE(rig.now().title, QStringLiteral("Late"));
    late.back()(playingTrack(QStringLiteral("Late")));
    QCOMPARE(rig.now().title, QStringLiteral("Late"));
}

void MediaRemoteServiceTest::artworkOfTheTrack()
{
    Rig rig;
    rig.server.pages["/search"] = [&rig] {
        return HttpServer::ok(R"({"results": [{"artworkUrl100": ")" + rig.server.url().toEncoded() +
                              R"(/cover/100x100bb.png"}]})");
    };
    rig.server.pages["/cover/600x600bb.png"] = [] {
        return HttpServer::ok(encoded(cover(Qt::green)));
    };
    const auto song = playingTrack(QStringLiteral("Song"), QStringLiteral("Them"));
    const auto other = playingTrack(QStringLiteral("Other"));
    rig.remote.answer(song);
    QTRY_VERIFY(!rig.now().artwork.isNull());
    QCOMPARE(rig.now().artwork.pixelColor(0, 0), QColor(Qt::green));

    // Back from another track, the cover is known.
    rig.service.refresh();
    rig.remote.answer(with(other, NowPlayingKey::artworkPending, true));
    QVERIFY(rig.now().artwork.isNull());
    rig.service.refresh();
    QVERIFY(!rig.searches([&] { rig.remote.answer(song); }));
    QVERIFY(!rig.now().artwork.isNull());

    // A cover that comes for a track that has passed is not put on the next one, and the fallback
    // gets its own.
    Q_EMIT rig.remote.spotifyPlaybackStateChanged(
        notice(QStringLiteral("Playing"), QStringLiteral("Third")));
    rig.service.refresh();
    rig.remote.answer(with(other, NowPlayingKey::artworkPending, true));
    QTRY_COMPARE(rig.server.count("/cover"), 2);
    Q_EMIT rig.remote.spotifyPlaybackStateChanged(
        notice(QStringLiteral("Playing"), QStringLiteral("Fourth")));
    QTRY_VERIFY(!rig.now().artwork.isNull());
    QCOMPARE(rig.now().title, QStringLiteral("Fourth"));
    rig.remote.answer({});
    QVERIFY(!rig.now().artwork.isNull());
}

void MediaRemoteServiceTest::answerAfterTheEnd()
{
    VirtualClock clock;
    FakeMediaRemote remote;
    {
        const MediaRemoteService service(clock, remote, QUrl());
    }
    remote.answer(playingTrack(QStringLiteral("Song")));
    Q_EMIT remote.nowPlayingInfoDidChange();
    QCOMPARE(clock.runningTimers(), 0);
}

QTEST_GUILESS_MAIN(MediaRemoteServiceTest)
#include "MediaRemoteServiceTest.moc"
