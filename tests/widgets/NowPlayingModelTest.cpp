#include "widgets/NowPlayingModel.h"

#include "support/FakePlatform.h"
#include "widgets/MarqueeMotion.h"

#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <limits>

using namespace velmora;
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
        model.setProperty("service", QVariant::fromValue(&service));
        model.setProperty("clock", QVariant::fromValue<Clock *>(&clock));
        model.setProperty("barPixels", 150);
        model.componentComplete();
    }

    /// A track that only differs from others in what `change` makes of it.
    void play(const std::function<void(MediaTrack &)> &change = [](MediaTrack &) {})
    {
        MediaTrack track = playingTrack(QStringLiteral("Song"), QStringLiteral("Them"));
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
        motion.setText(QStringLiteral("Song"));
        motion.componentComplete();
    }
};

} // namespace

class NowPlayingModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void timeText_data();
    void timeText();
    void asksWhileOnShow();
    void whatItShows();
    void positionMovesWhileItCanBeSeen();
    void marqueeStandsStillIfItFits();
    void marqueeSlides();
    void marqueeBeginsAnew();
};

void NowPlayingModelTest::timeText_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0.0 << "0:00";
    QTest::newRow("cut") << 59.99 << "0:59";
    QTest::newRow("minute") << 60.0 << "1:00";
    QTest::newRow("over an hour") << 3700.0 << "61:40";
    QTest::newRow("negative") << -1.0 << "0:00";
    QTest::newRow("nan") << std::nan("") << "0:00";
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << "0:00";
    QTest::newRow("absurd") << 1e300 << "150000000000000:00";
}

void NowPlayingModelTest::timeText()
{
    QFETCH(double, seconds);
    QTEST(playbackTimeText(seconds), "text");
}

void NowPlayingModelTest::asksWhileOnShow()
{
    FakePlatform platform;
    MediaRemoteService service(platform.clock, platform.media, platform.http, platform.store);
    platform.clock.advance(10s); // the retry of the start is over
    platform.media.questions = 0;
    {
        NowPlayingModel model;
        model.setProperty("service", QVariant::fromValue(&service));
        model.setProperty("clock", QVariant::fromValue<Clock *>(&platform.clock));
        model.componentComplete();
        QCOMPARE(platform.media.questions, 1);
        platform.clock.advance(3s);
        QCOMPARE(platform.media.questions, 7); // with the service's own
    }
    platform.clock.advance(3s);
    QCOMPARE(platform.media.questions, 10);
}

void NowPlayingModelTest::whatItShows()
{
    Rig rig;
    QCOMPARE(rig.model.title(), QStringLiteral("Nothing Playing"));
    QVERIFY(!rig.model.hasTrack() && !rig.model.hasDuration());

    QSignalSpy tracks(&rig.model, &NowPlayingModel::trackChanged);
    QSignalSpy covers(&rig.model, &NowPlayingModel::artworkChanged);
    rig.play();
    QCOMPARE(rig.model.title(), QStringLiteral("Song"));
    QCOMPARE(rig.model.durationText(), QStringLiteral("1:40"));
    QImage cover(2, 2, QImage::Format_RGB32);
    cover.fill(Qt::red);
    rig.play([&](MediaTrack &track) { track.artwork = cover; });
    rig.play([&](MediaTrack &track) { track.isPlaying = false; });
    // A cover, a pause and the repetitions of the poll are the same track.
    QCOMPARE(tracks.size(), 1);
    QCOMPARE(covers.size(), 1);
    QVERIFY(!rig.model.isPlaying());
    rig.play([&](MediaTrack &track) { track.artist = QStringLiteral("Others"); });
    QCOMPARE(tracks.size(), 2);
}

void NowPlayingModelTest::positionMovesWhileItCanBeSeen()
{
    Rig rig;
    rig.play(); // at 10 of 100 seconds
    QCOMPARE(rig.model.progress(), 0.1);
    QSignalSpy moves(&rig.model, &NowPlayingModel::progressChanged);
    rig.clock.advance(10200ms);
    QCOMPARE(rig.model.positionText(), QStringLiteral("0:20"));
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
    QCOMPARE(rig.model.positionText(), QStringLiteral("0:02"));

    // At its end, paused, of unknown length: nothing moves.
    const auto standsStill = [&rig] {
        QSignalSpy spy(&rig.model, &NowPlayingModel::progressChanged);
        const int timers = rig.clock.runningTimers();
        rig.clock.advance(5s);
        return spy.isEmpty() && timers == 2; // of the two polls
    };
    QVERIFY(standsStill());
    rig.play([&](MediaTrack &track) { track.isPlaying = false; });
    QCOMPARE(rig.model.progress(), 0.1);
    QVERIFY(standsStill());
    rig.play([&](MediaTrack &track) { track.duration = 0.0; });
    QCOMPARE(rig.model.progress(), 0.0);
    QVERIFY(standsStill());
    rig.play([&](MediaTrack &track) { track.elapsed = 500.0; });
    QCOMPARE(rig.model.progress(), 1.0);
    QCOMPARE(rig.model.positionText(), QStringLiteral("1:40"));
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
    const auto offset = [&] { return marquee.motion.offset(); };
    marquee.clock.advance(1300ms);
    QCOMPARE(offset(), 0.0);
    for (int round = 0; round < 3; ++round) {
        marquee.clock.advance(1s);
        QVERIFY(qAbs(offset() + 36) < 1);
        marquee.clock.advance(1050ms);
        QCOMPARE(offset(), -72.0);
        marquee.clock.advance(740ms);
        QCOMPARE(offset(), -72.0);
        marquee.clock.advance(30ms); // with the frame in which it arrived
        QCOMPARE(offset(), 0.0);
        marquee.clock.advance(780ms);
        QVERIFY(offset() > -2.0);
    }
}

void NowPlayingModelTest::marqueeBeginsAnew()
{
    Marquee marquee(156, 100);
    marquee.clock.advance(2s);
    QVERIFY(marquee.motion.offset() < 0);
    marquee.motion.setText(QStringLiteral("Other"));
    QCOMPARE(marquee.motion.offset(), 0.0);
    marquee.motion.setProperty("textWidth", 90);
    marquee.clock.advance(10s);
    QCOMPARE(marquee.motion.offset(), 0.0);
    // A place that still grows when the text comes.
    marquee.motion.setProperty("frameWidth", 20);
    marquee.clock.advance(1s);
    marquee.motion.setProperty("frameWidth", 100);
    marquee.clock.advance(10s);
    QCOMPARE(marquee.motion.offset(), 0.0);
    QVERIFY(!marquee.motion.isRightToLeft());
    marquee.motion.setText(QString(u'\u05e9'));
    QVERIFY(marquee.motion.isRightToLeft());
}

QTEST_GUILESS_MAIN(NowPlayingModelTest)
#include "NowPlayingModelTest.moc"
