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

} // namespace

class NowPlayingModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void timeText();
    void asksWhileOnShow();
    void positionMovesWhileItCanBeSeen();
    void marquee();
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
    QCOMPARE(rig.model.positionText(), u"0:02"_s);

    // At its end, paused, of unknown length: nothing moves, and only the two polls go on.
    const auto rests = [&rig](double progress) {
        return rig.model.progress() == progress && rig.clock.runningTimers() == 2;
    };
    QVERIFY(rests(1));
    rig.play([&](MediaTrack &track) { track.isPlaying = false; });
    QVERIFY(rests(0.1));
    rig.play([&](MediaTrack &track) { track.duration = 0.0; });
    QVERIFY(rests(0));
    rig.play([&](MediaTrack &track) { track.elapsed = 500.0; });
    QVERIFY(rests(1));
    rig.play([&](MediaTrack &track) { track.elapsed = -3.0; });
    QCOMPARE(rig.model.progress(), 0.0);
}

void NowPlayingModelTest::marquee()
{
    VirtualClock clock;
    MarqueeMotion motion;
    motion.setProperty("clock", QVariant::fromValue<Clock *>(&clock));
    motion.setProperty("textWidth", 102);
    motion.setProperty("frameWidth", 100);
    motion.componentComplete();
    const auto after = [&](std::chrono::milliseconds time) {
        clock.advance(time);
        return motion.offset();
    };
    QCOMPARE(after(10s), 0.0); // it nearly fits
    QCOMPARE(clock.runningTimers(), 0);

    motion.setProperty("textWidth", 156); // 56 + 16 points, 2 seconds
    QCOMPARE(after(1300ms), 0.0);
    for (int round = 0; round < 3; ++round) {
        QVERIFY(qAbs(after(1s) + 36) < 1);
        QCOMPARE(after(1050ms), -72.0);
        QCOMPARE(after(740ms), -72.0);
        QCOMPARE(after(30ms), 0.0); // with the frame in which it arrived
        QVERIFY(after(780ms) > -2.0);
    }
    // It begins anew with another text, and while the place still grows.
    clock.advance(500ms);
    motion.setProperty("text", QString(u'\u05e9'));
    QCOMPARE(motion.offset(), 0.0);
    QVERIFY(motion.isRightToLeft());
    clock.advance(1s);
    motion.setProperty("frameWidth", 200);
    QCOMPARE(after(10s), 0.0);
}

QTEST_GUILESS_MAIN(NowPlayingModelTest)
#include "NowPlayingModelTest.moc"
