#include "overlay/CollapsedLiveStrip.h"

#include "support/FakePlatform.h"

#include <QSignalSpy>
#include <QTest>
#include <QTranslator>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

struct Desk {
    FakePlatform platform;
    VirtualClock &clock = platform.clock;
    NotchServices services{platform.roles};

    [[nodiscard]] std::unique_ptr<CollapsedLiveStrip> strip(const QString &missed = {})
    {
        auto strip = std::make_unique<CollapsedLiveStrip>();
        strip->setProperty("services", QVariant::fromValue(&services));
        strip->setProperty("missedStatus", missed);
        strip->componentComplete();
        return strip;
    }

    void play(const QString &title, const QString &artist = {}, bool isPlaying = true)
    {
        MediaTrack track = playingTrack(title, artist);
        track.isPlaying = isPlaying;
        platform.media.answer(track);
    }

    void stopPlaying() { Q_EMIT platform.media.spotifyChanged({}); }
};

/// Another language, in which every text is the same.
struct Translated final : QTranslator {
    Translated() { QCoreApplication::installTranslator(this); }
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char *, const char *, const char *, int) const override
    {
        return QStringLiteral("x");
    }
};

} // namespace

class CollapsedLiveStripTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void slides();
    void takesTurns();
    void shrinkingList();
    void quietWithoutNews();
    void volumeAndNotices();
    void screens();
};

void CollapsedLiveStripTest::slides()
{
    Desk desk;
    const auto strip = desk.strip();
    desk.play(QStringLiteral(" A\ntitle\tof\u2028lines "), QStringLiteral("Them"));
    QCOMPARE(strip->slideCount(), 1);
    QCOMPARE(strip->look().first, QStringLiteral("A title of lines"));
    QCOMPARE(strip->look().second, QStringLiteral("Them"));
    desk.play(QStringLiteral("Song"), {}, false); // paused is as good as playing
    QCOMPARE(strip->look().symbol, QStringLiteral("play.slash"));
    desk.stopPlaying();
    QCOMPARE(strip->slideCount(), 0);

    PomodoroService &timer = *desk.services.pomodoroService();
    timer.start();
    QCOMPARE(strip->look().first, QStringLiteral("25:00"));
    QCOMPARE(strip->look().symbol, QStringLiteral("timer"));
    QCOMPARE(strip->look().firstColor, timer.phaseColor());
    desk.clock.advance(61s);
    QCOMPARE(strip->look().first, QStringLiteral("23:59"));
    timer.skip();
    QCOMPARE(strip->slideCount(), 0); // the break waits to be started
    timer.start();
    QCOMPARE(strip->look().symbol, QStringLiteral("cup.and.saucer.fill"));

    const Translated translated;
    timer.skip();
    timer.start();
    QCOMPARE(strip->look().second, QStringLiteral("x"));
    QCOMPARE(strip->look().symbol, QStringLiteral("timer"));
}

void CollapsedLiveStripTest::takesTurns()
{
    Desk desk;
    const auto strip = desk.strip();
    desk.play(QStringLiteral("Song"));
    desk.clock.advance(12s); // ticks mean nothing to one slide
    QCOMPARE(strip->currentIndex(), 0);
    desk.services.pomodoroService()->start();
    desk.clock.advance(3s); // the clock went on meanwhile: a slide may have a short first turn
    QCOMPARE(strip->currentIndex(), 1);
    QCOMPARE(strip->look().second, QStringLiteral("WORK"));
    strip->setShowVolume(true);
    strip->showNotice(QStringLiteral("Note"));
    desk.clock.advance(5s); // and it goes on behind the volume and a notice
    QCOMPARE(strip->currentIndex(), 0);

    // A new strip begins afresh.
    desk.clock.advance(5s);
    QCOMPARE(strip->currentIndex(), 1);
    QCOMPARE(desk.strip()->currentIndex(), 0);
}

void CollapsedLiveStripTest::shrinkingList()
{
    Desk desk;
    const auto strip = desk.strip();
    desk.play(QStringLiteral("Song"));
    desk.services.pomodoroService()->start();
    desk.clock.advance(5s);
    desk.services.pomodoroService()->pause();
    QCOMPARE(strip->slideCount(), 1);
    QCOMPARE(strip->currentIndex(), 0);
    QCOMPARE(strip->look().first, QStringLiteral("Song"));

    // What follows moves up under an index that stays.
    desk.services.pomodoroService()->start();
    desk.stopPlaying();
    QCOMPARE(strip->currentIndex(), 0);
    QCOMPARE(strip->look().second, QStringLiteral("WORK"));
}

void CollapsedLiveStripTest::quietWithoutNews()
{
    Desk desk;
    const auto strip = desk.strip();
    desk.play(QStringLiteral("Song"));
    QSignalSpy changes(strip.get(), &CollapsedLiveStrip::slideChanged);
    for (int i = 0; i < 100; ++i) {
        desk.play(QStringLiteral("Song"));
    }
    QCOMPARE(changes.size(), 0);
    desk.play(QStringLiteral("Other"));
    QCOMPARE(changes.size(), 1);
}

void CollapsedLiveStripTest::volumeAndNotices()
{
    Desk desk;
    const auto strip = desk.strip();
    strip->showNotice(QStringLiteral("One"));
    desk.clock.advance(2s);
    strip->showNotice(QStringLiteral("Two"));
    QCOMPARE(strip->noticeText(), QStringLiteral("Two"));
    desk.clock.advance(2900ms); // the hide of the first has no effect
    QVERIFY(strip->hasNotice());
    desk.clock.advance(100ms);
    QVERIFY(!strip->hasNotice());

    // Of dropped files: the last word stays, and the beginning of a drag hides none.
    DropActionsService &drop = *desk.services.dropService();
    drop.setLastStatus(QStringLiteral("Done"));
    drop.setLastStatus(QStringLiteral("Summary"));
    drop.setLastStatus(QString());
    QCOMPARE(strip->noticeText(), QStringLiteral("Summary"));
    drop.setLastStatus(QStringLiteral("Summary")); // again: three more seconds
    desk.clock.advance(2s);
    drop.setLastStatus(QStringLiteral("Summary"));
    desk.clock.advance(2s);
    QVERIFY(strip->hasNotice());

    // What came before there was a strip is shown as long as anything else.
    const auto late = desk.strip(QStringLiteral("Zip failed"));
    desk.clock.advance(2999ms);
    QCOMPARE(late->noticeText(), QStringLiteral("Zip failed"));
    desk.clock.advance(1ms);
    QVERIFY(!late->hasNotice());

    // Nobody has to find a way back from the volume.
    strip->setShowVolume(true);
    strip->setVolumeInUse(true);
    desk.clock.advance(1min);
    strip->setVolumeInUse(false);
    desk.clock.advance(1499ms);
    QVERIFY(strip->showVolume());
    desk.clock.advance(1ms);
    QVERIFY(!strip->showVolume());
    strip->setShowVolume(true); // by a finger, which does not hover
    desk.clock.advance(1500ms);
    QVERIFY(!strip->showVolume());
}

void CollapsedLiveStripTest::screens()
{
    Desk desk;
    desk.platform.screens.add(QRectF(0, 0, 800, 600));
    desk.clock.advance(1s);
    auto second = desk.platform.screens.add(QRectF(800, 0, 800, 600));
    // The change itself brings new strips, which are to tell of it.
    auto strip = desk.strip();
    QVERIFY(!strip->hasNotice());
    desk.clock.advance(300ms);
    QCOMPARE(strip->noticeText(), QStringLiteral("Monitor connected"));
    desk.clock.advance(3s);
    Q_EMIT desk.platform.screens.changed(); // moved, or of another size
    desk.clock.advance(1s);
    QVERIFY(!strip->hasNotice());
    desk.platform.screens.remove(second.get());
    strip = desk.strip();
    desk.clock.advance(300ms);
    QCOMPARE(strip->noticeText(), QStringLiteral("Monitor disconnected"));
    QVERIFY(!desk.strip()->hasNotice());

    // One that flickers is no news.
    desk.clock.advance(3s);
    second = desk.platform.screens.add(QRectF(800, 0, 800, 600));
    desk.clock.advance(100ms);
    desk.platform.screens.remove(second.get());
    desk.clock.advance(1s);
    QVERIFY(!strip->hasNotice());
}

QTEST_MAIN(CollapsedLiveStripTest)
#include "CollapsedLiveStripTest.moc"
