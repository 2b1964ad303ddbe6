#include "media/MediaRemoteService.h"

#include "support/EncodedImages.h"
#include "support/FakeHttpGetter.h"
#include "support/FakeMediaRemote.h"
#include "support/MemoryStore.h"
#include "support/VirtualClock.h"

#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace std::chrono_literals;
using enum PlaybackState;

namespace
{

QImage cover(Qt::GlobalColor color)
{
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

MediaTrack withCover(MediaTrack track, Qt::GlobalColor color)
{
    track.artwork = cover(color);
    return track;
}

MediaTrack awaitingCover(MediaTrack track)
{
    track.isArtworkPending = true;
    return track;
}

struct Rig {
    VirtualClock clock;
    FakeMediaRemote remote;
    FakeHttpGetter http;
    MemoryStore store;
    MediaRemoteService service{clock, remote, http, store};

    [[nodiscard]] const NowPlayingInfo &now() const { return service.nowPlaying(); }
    void tell(PlaybackState state, const MediaTrack &track)
    {
        Q_EMIT remote.spotifyChanged({state, track});
    }
    void tell(PlaybackState state, const QString &title)
    {
        tell(state, playingTrack(title, u"Them"_qs));
    }

    /// A search service that knows a green cover for every song.
    void serveCovers()
    {
        http.pages = [image = encoded(cover(Qt::green), "png")](const QString &url) {
            return url.contains(u"/search")
                       ? QByteArray(R"({"results": [{"artworkUrl100": "https://host/cover"}]})")
                       : image;
        };
    }

    /// Whether a search for a cover is begun in answer to what `act` does.
    template<typename Act>
    [[nodiscard]] bool searches(Act act)
    {
        const auto before = http.requests.size();
        act();
        return http.requests.size() > before;
    }
};

} // namespace

class MediaRemoteServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void asksByItselfAndOnChanges();
    void position();
    void answers();
    void spotifyNotices();
    void artworkOfTheTrack();
    void ownCoversAreWaitedFor();
};

void MediaRemoteServiceTest::asksByItselfAndOnChanges()
{
    Rig rig;
    QCOMPARE(rig.remote.questions, 1);
    rig.clock.advance(10s);
    QCOMPARE(rig.remote.questions, 12); // each second, and once more after two
    Q_EMIT rig.remote.changed();
    Q_EMIT rig.remote.appleMusicChanged();
    QCOMPARE(rig.remote.questions, 14);

    // Observers hear of every answer that names a track, and of no other.
    QSignalSpy changes(&rig.service, &MediaRemoteService::nowPlayingChanged);
    rig.remote.answer(withCover(playingTrack(u"Song"_qs), Qt::red));
    rig.remote.answer(withCover(playingTrack(u"Song"_qs), Qt::red));
    rig.clock.advance(2s);
    QCOMPARE(changes.size(), 2);

    rig.service.togglePlayPause();
    rig.service.nextTrack();
    rig.service.previousTrack();
    QCOMPARE(rig.remote.commands,
             (QList{PlaybackCommand::togglePlayPause, PlaybackCommand::nextTrack,
                    PlaybackCommand::previousTrack}));
    QCOMPARE(changes.size(), 2);
}

void MediaRemoteServiceTest::position()
{
    Rig rig;
    MediaTrack track = playingTrack(u"Song"_qs);
    rig.remote.answer(track);
    const auto at = [&] { return rig.now().position(rig.clock.now()); };
    QCOMPARE(at(), 10.0);
    rig.clock.advance(5s);
    QCOMPARE(at(), 15.0);
    rig.clock.advance(200s);
    QCOMPARE(at(), 100.0);
    track.isPlaying = false;
    rig.remote.answer(track);
    rig.clock.advance(5s);
    QCOMPARE(at(), 10.0);
    track.isPlaying = true;
    track.duration = 0;
    rig.remote.answer(track);
    rig.clock.advance(5s);
    QCOMPARE(at(), 10.0);

    // Views skip what differs in these only.
    NowPlayingInfo same = rig.now();
    same.elapsedAtFetch = 50;
    same.artwork = cover(Qt::red);
    QVERIFY(same == rig.now());
}

/// What an answer makes of the item, and whether a cover is looked for.
void MediaRemoteServiceTest::answers()
{
    Rig rig;
    const QString song = u"Song"_qs;
    const auto answer = [&](const MediaTrack &track) {
        return rig.searches([&] { rig.remote.answer(track); });
    };
    QVERIFY(!answer({})); // no title, no fallback
    QCOMPARE(rig.now().title, QString());

    QVERIFY(answer(playingTrack(song))); // a new title without a cover
    QVERIFY(!answer(withCover(playingTrack(song), Qt::red)));
    QVERIFY(!answer(playingTrack(song, u"Others"_qs))); // same title: keeps it
    QCOMPARE(rig.now().artwork, cover(Qt::red));
    QCOMPARE(rig.now().artist, u"Others"_qs);
    QVERIFY(!answer({})); // the last item stays, as it was
    QCOMPARE(rig.now().title, song);
    QVERIFY(rig.now().isPlaying);

    QVERIFY(answer(playingTrack(u"Next"_qs)));
    QVERIFY(rig.now().artwork.isNull());
}

void MediaRemoteServiceTest::spotifyNotices()
{
    Rig rig;
    const QString song = u"Song"_qs;
    QVERIFY(rig.searches([&] { rig.tell(Playing, song); }));
    QCOMPARE(rig.remote.questions, 2); // and it asks
    QCOMPARE(rig.now().duration, 100.0);
    QCOMPARE(rig.now().elapsedAtFetch, 10.0);
    QVERIFY(rig.now().isPlaying);

    // It stands in while the desktop names nothing, and its position goes on from its own time.
    const auto stamp = rig.now().fetchTimestamp;
    rig.clock.advance(3s);
    QCOMPARE(rig.now().title, song);
    QCOMPARE(rig.now().fetchTimestamp, stamp);

    // Without a name nothing changes.
    rig.tell(Paused, QString());
    QVERIFY(rig.now().isPlaying);
    rig.tell(Paused, song);
    QVERIFY(!rig.now().isPlaying);

    // A desktop that names a track has the last word, and ends the fallback.
    rig.remote.current = playingTrack(u"Real"_qs);
    rig.tell(Playing, song);
    QCOMPARE(rig.now().title, u"Real"_qs);
    rig.remote.current.reset();
    rig.service.refresh();
    QCOMPARE(rig.now().title, u"Real"_qs);

    // A cover is kept for the same title, and only for that.
    rig.remote.answer(withCover(playingTrack(song), Qt::red));
    rig.tell(Playing, song);
    QCOMPARE(rig.now().artwork, cover(Qt::red));
    rig.tell(Playing, u"Other"_qs);
    QVERIFY(rig.now().artwork.isNull());

    // Stopped clears, whatever the name; nothing comes back afterwards.
    for (const QString &name : {song, QString()}) {
        rig.tell(Playing, song);
        rig.tell(Stopped, name);
        QCOMPARE(rig.now().title, QString());
        rig.service.refresh();
        QCOMPARE(rig.now().title, QString());
    }
}

void MediaRemoteServiceTest::artworkOfTheTrack()
{
    Rig rig;
    rig.serveCovers();
    const auto song = playingTrack(u"Song"_qs, u"Them"_qs);
    const auto other = awaitingCover(playingTrack(u"Other"_qs));
    rig.remote.answer(song);
    QTRY_VERIFY(!rig.now().artwork.isNull());
    QCOMPARE(rig.now().artwork.pixelColor(0, 0), QColor(Qt::green));

    // Back from another track, the cover is known.
    rig.remote.answer(other);
    QVERIFY(rig.now().artwork.isNull());
    QVERIFY(!rig.searches([&] { rig.remote.answer(song); }));
    QVERIFY(!rig.now().artwork.isNull());

    // A cover that comes for a track that has passed is not put on the next one, and the fallback
    // gets its own.
    rig.tell(Playing, u"Third"_qs);
    rig.remote.answer(other);
    QTRY_COMPARE(rig.http.count(u"/cover"_qs), 2);
    rig.tell(Playing, u"Fourth"_qs);
    QTRY_VERIFY(!rig.now().artwork.isNull());
    QCOMPARE(rig.now().title, u"Fourth"_qs);
    rig.service.refresh();
    QVERIFY(!rig.now().artwork.isNull());
}

void MediaRemoteServiceTest::ownCoversAreWaitedFor()
{
    Rig rig;
    rig.serveCovers();
    const QString song = u"Song"_qs;
    const auto pending = awaitingCover(playingTrack(song, u"Them"_qs));
    const auto own = [&] { return rig.now().artwork == cover(Qt::red); };

    // Not searched for, whether the desktop or a notice says that there is one.
    QVERIFY(!rig.searches([&] { rig.remote.answer(pending); }));
    QVERIFY(!rig.searches([&] { rig.tell(Playing, pending); }));
    rig.remote.answer(withCover(pending, Qt::red));
    QVERIFY(own());

    // A player that names it late: what was found meanwhile does not take its place.
    const auto next = playingTrack(u"Next"_qs, u"Them"_qs);
    QVERIFY(rig.searches([&] { rig.remote.answer(next); }));
    rig.remote.answer(withCover(next, Qt::red));
    QTRY_COMPARE(rig.http.count(u"/cover"_qs), 1);
    QTRY_COMPARE(rig.http.waiting, 0);
    QVERIFY(own());

    // One that cannot be had after all is looked up.
    const auto third = playingTrack(u"Third"_qs);
    rig.remote.answer(awaitingCover(third));
    QVERIFY(rig.searches([&] { rig.remote.answer(third); }));
    QTRY_VERIFY(!rig.now().artwork.isNull());
}

QTEST_GUILESS_MAIN(MediaRemoteServiceTest)
#include "MediaRemoteServiceTest.moc"
