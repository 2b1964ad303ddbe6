#include "widgets/NowPlayingModel.h"

#include "support/FakePlatform.h"
#include "widgets/MarqueeMotion.h"

#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

struct Rig {
    FakePlatform platform;
    VirtualClock &clock = platform.clock;
    MediaRemoteService service{clock, platform.media, platform.http, platform.store};
    NowPlayingModel model;

    Rig()
    {
        platform.media.questions = 0; // of the service
        model.setProperty("service", QVariant::fromValue(&service));
        model.setProperty("clock", QVariant::fromValue<Clock *>(&clock));
        model.setProperty("barPixels", 150);
        model.componentComplete();
    }

    /// A track that only differs from others in what `change` makes of it.
    void play(const std::function<void(MediaTrack &)> &change = [](MediaTrack &) {})
    {
        MediaTrack track = playingTrack(u"Song"_s, u"Them"_s);
        change(track);
        platform.media.answer(track);
    }
};

struct Marquee {
    VirtualClock clock;
    MarqueeMotion motion;

    Marquee(double textWidth, double frameWidth)
    {
        motion.setProperty("clock", QVariant::fromValue<Clock *>(&clock));
        motion.setProperty("textWidth", textWidth);
        motion.setProperty("frameWidth", frameWidth);
        motion.setText(u"Song"_s);
        motion.componentComplete();
    }
};

} // namespace

class NowPlayingModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void timeText();
    void asksWhileOnShow();
    void whatItShows();
    void covers();
    void positionMovesWhileItCanBeSeen();
    void marqueeStandsStillIfItFits();
    void marqueeSlides();
    void marqueeBeginsAnew();
};

void NowPlayingModelTest::timeText()
{
    for (const double none : {0.0, -1.0, qQNaN(), qInf()}) {
        QCOMPARE(playbackTimeText(none), u"0:00"_s);
    }
    QCOMPARE(playbackTimeText(59.99), u"0:59"_s);
    QCOMPARE(playbackTimeText(3700), u"61:40"_s);
    QCOMPARE(playbackTimeText(1e300), u"150000000000000:00"_s);
}

void NowPlayingModelTest::asksWhileOnShow()
{
    Rig rig;
    auto &questions = rig.platform.media.questions;
    QCOMPARE(questions, 1);
    rig.clock.advance(10s); // the retry of the start is over
    questions = 0;
    rig.clock.advance(3s);
    QCOMPARE(questions, 6); // with the service's own
}

void NowPlayingModelTest::whatItShows()
{
    Rig rig;
    QCOMPARE(rig.model.title(), u"Nothing Playing"_s);
    QVERIFY(!rig.model.hasTrack() && !rig.model.hasDuration());

    QSignalSpy tracks(&rig.model, &NowPlayingModel::trackChanged);
    rig.play();
    QCOMPARE(rig.model.title(), u"Song"_s);
    QCOMPARE(rig.model.durationText(), u"1:40"_s);
    rig.play([&](MediaTrack &track) { track.isPlaying = false; });
    // A pause and the repetitions of the poll are the same track.
    QCOMPARE(tracks.size(), 1);
    QVERIFY(!rig.model.isPlaying());
    rig.play([&](MediaTrack &track) { track.artist = u"Others"_s; });
    QCOMPARE(tracks.size(), 2);
}

void NowPlayingModelTest::covers()
{
    Rig rig;
    const auto play = [&rig](const QString &title, const QImage &cover) {
        rig.play([&](MediaTrack &track) {
            track.title = title;
            track.isArtworkPending = true;
            track.artwork = cover;
        });
        return rig.model.coverKey();
    };
    QImage cover(2, 2, QImage::Format_RGB32);
    cover.fill(Qt::red);
    const int red = play(u"One"_s, cover);
    QCOMPARE(play(u"One"_s, cover.copy()), red);
    QCOMPARE(play(u"Two"_s, cover.copy()), red);
    // One that comes a moment after its track is waited for,
    QCOMPARE(play(u"Three"_s, {}), red);
    rig.clock.advance(200ms);
    QCOMPARE(play(u"Three"_s, cover), red);
    rig.clock.advance(200ms);
    QCOMPARE(rig.model.coverKey(), red);
    // but not for ever, however often there is news meanwhile.
    for (int i = 0; i < 4; ++i) {
        play(u"Four"_s, {});
        rig.clock.advance(100ms);
    }
    QVERIFY(!rig.model.hasArtwork());
    const int none = rig.model.coverKey();
    QVERIFY(none != red);
    QCOMPARE(play(u"Five"_s, {}), none);
    cover.fill(Qt::blue);
    QVERIFY(play(u"Five"_s, cover) != none);
    Q_EMIT rig.platform.media.spotifyChanged(PlayerNotice());
    QVERIFY(!rig.model.hasArtwork()); // the end of all tracks is no new one
}

void NowPlayingModelTest::positionMovesWhileItCanBeSeen()
{
    Rig rig;
    rig.play(); // at 10 of 100 seconds
    QCOMPARE(rig.model.progress(), 0.1);
    QSignalSpy moves(&rig.model, &NowPlayingModel::progressChanged);
    rig.clock.advance(10200ms);
    QCOMPARE(rig.model.positionText(), u"0:20"_s);
    // A quarter of a pixel each: 100 s / 150 px / 4 = 167 ms.
    QVERIFY(moves.size() >= 55 && moves.size() <= 70);

    rig.play([&](MediaTrack &track) {
        track.duration = 2.0;
        track.elapsed = 0.0;
    });
    moves.clear();
    rig.clock.advance(1s);
    QVERIFY(moves.size() >= 55 && moves.size() <= 63); // each frame
    rig.clock.advance(5s);
    QCOMPARE(rig.model.progress(), 1.0);
    QCOMPARE(rig.model.positionText(), u"0:02"_s);

    // At its end, paused, of unknown length: nothing moves, and only the two polls go on.
    QCOMPARE(rig.clock.runningTimers(), 2);
    rig.play([&](MediaTrack &track) { track.isPlaying = false; });
    QCOMPARE(rig.model.progress(), 0.1);
    QCOMPARE(rig.clock.runningTimers(), 2);
    rig.play([&](MediaTrack &track) { track.duration = 0.0; });
    QCOMPARE(rig.model.progress(), 0.0);
    QCOMPARE(rig.clock.runningTimers(), 2);
    rig.play([&](MediaTrack &track) { track.elapsed = 500.0; });
    QCOMPARE(rig.model.progress(), 1.0);
    QCOMPARE(rig.model.positionText(), u"1:40"_s);
    rig.play([&](MediaTrack &track) { track.elapsed = -3.0; });
    QCOMPARE(rig.model.progress(), 0.0);
}

void NowPlayingModelTest::marqueeStandsStillIfItFits()
{
    for (const double textWidth : {50.0, 100.0, 102.0}) {
        Marquee marquee(textWidth, 100);
        marquee.clock.advance(10s);
        QCOMPARE(marquee.motion.offset(), 0.0);
        QCOMPARE(marquee.clock.runningTimers(), 0);
    }
}

void NowPlayingModelTest::marqueeSlides()
{
    Marquee marquee(156, 100); // 56 + 16 points, 2 seconds
    const auto after = [&marquee](std::chrono::milliseconds time) {
        marquee.clock.advance(time);
        return marquee.motion.offset();
    };
    QCOMPARE(after(1300ms), 0.0);
    for (int round = 0; round < 3; ++round) {
        QVERIFY(qAbs(after(1s) + 36) < 1);
        QCOMPARE(after(1050ms), -72.0);
        QCOMPARE(after(740ms), -72.0);
        QCOMPARE(after(30ms), 0.0); // with the frame in which it arrived
        QVERIFY(after(780ms) > -2.0);
    }
}

void NowPlayingModelTest::marqueeBeginsAnew()
{
    Marquee marquee(156, 100);
    marquee.clock.advance(2s);
    QVERIFY(marquee.motion.offset() < 0);
    marquee.motion.setText(u"Other"_s);
    QCOMPARE(marquee.motion.offset(), 0.0);
    // A place that still grows when the text comes.
    marquee.motion.setProperty("frameWidth", 20);
    marquee.clock.advance(1s);
    marquee.motion.setProperty("frameWidth", 200);
    marquee.clock.advance(10s);
    QCOMPARE(marquee.motion.offset(), 0.0);
    QVERIFY(!marquee.motion.isRightToLeft());
    marquee.motion.setText(QString(u'\u05e9'));
    QVERIFY(marquee.motion.isRightToLeft());
}

QTEST_GUILESS_MAIN(NowPlayingModelTest)
#include "NowPlayingModelTest.moc"
