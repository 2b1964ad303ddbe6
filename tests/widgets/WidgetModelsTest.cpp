#include "support/FakePlatform.h"
#include "widgets/ClockModel.h"
#include "widgets/MarqueeMotion.h"
#include "widgets/NowPlayingModel.h"

#include <QLocale>
#include <QScopeGuard>
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

class WidgetModelsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void clockTurnsWithTheMinute();
    void nowPlayingWhileOnShow();
    void marquee();
};

void WidgetModelsTest::clockTurnsWithTheMinute()
{
    const auto restore = qScopeGuard([former = QLocale()] { QLocale::setDefault(former); });
    VirtualClock clock;
    ClockModel model;
    model.setProperty("clock", QVariant::fromValue<Clock *>(&clock));
    const auto text = [&] { return model.time() + u' ' + model.date(); };
    const std::pair<QString, QString> rows[]{{u"de_DE"_s, u"09:07 So., Mai 5"_s},
                                             {u"ja_JP"_s, u"09:07 日, 5月 5"_s},
                                             {u"en_US"_s, u"09:07 Sun, May 5"_s}};
    for (const auto &[locale, shown] : rows) {
        QLocale::setDefault(QLocale(locale));
        clock.setNow(QDateTime(QDate(2024, 5, 5), QTime(9, 7, 3)));
        model.componentComplete();
        QCOMPARE(text(), shown);
    }
    // A model that is made within a second must not lag behind by that part of one.
    clock.setNow(QDateTime(QDate(2024, 5, 5), QTime(23, 58, 59, 400)));
    model.componentComplete();
    const QSignalSpy changes(&model, &ClockModel::changed);
    clock.advance(599ms);
    QVERIFY(changes.isEmpty());
    clock.advance(1ms);
    QCOMPARE(text(), u"23:59 Sun, May 5"_s);
    clock.advance(59'999ms);
    QCOMPARE(changes.size(), 1);
    clock.advance(1ms);
    QCOMPARE(text(), u"00:00 Mon, May 6"_s);
    QCOMPARE(changes.size(), 2);
}

void WidgetModelsTest::nowPlayingWhileOnShow()
{
    Rig rig;
    auto &questions = rig.platform.media.questions;
    QCOMPARE(questions, 1);
    rig.clock.advance(10s); // the retry of the start is over
    questions = 0;
    rig.clock.advance(3s);
    QCOMPARE(questions, 6); // with the service's own

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

    for (const double none : {0.0, -1.0, qQNaN(), qInf()}) {
        QCOMPARE(playbackTimeText(none), u"0:00"_s);
    }
    QCOMPARE(playbackTimeText(59.99), u"0:59"_s);
    QCOMPARE(playbackTimeText(3700), u"61:40"_s);
    QCOMPARE(playbackTimeText(1e300), u"150000000000000:00"_s);
}

void WidgetModelsTest::marquee()
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

QTEST_GUILESS_MAIN(WidgetModelsTest)
#include "WidgetModelsTest.moc"
