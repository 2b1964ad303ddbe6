#include "overlay/CollapsedLiveStrip.h"

#include "support/FakePlatform.h"

#include <QSignalSpy>
#include <QTest>
#include <QTranslator>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

struct Desk {
    FakePlatform platform;
    VirtualClock &clock = platform.clock;
    NotchServices services{platform.roles};

    [[nodiscard]] std::unique_ptr<CollapsedLiveStrip> strip()
    {
        auto strip = std::make_unique<CollapsedLiveStrip>();
        strip->setProperty("services", QVariant::fromValue(&services));
        strip->componentComplete();
        return strip;
    }

    void play(const QString &title, bool isPlaying = true)
    {
        MediaTrack track = playingTrack(title, {});
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
        return u"x"_s;
    }
};

} // namespace

class CollapsedLiveStripTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void slides();
    void events();
    void takesTurns();
    void notices();
    void screens();
};

void CollapsedLiveStripTest::slides()
{
    Desk desk;
    const auto strip = desk.strip();
    desk.play(u" A\ntitle\tof\u2028lines "_s);
    QCOMPARE(strip->look().first, u"A title of lines"_s);
    QSignalSpy changes(strip.get(), &CollapsedLiveStrip::slideChanged);
    for (int i = 0; i < 100; ++i) {
        desk.play(u"Song"_s);
    }
    QCOMPARE(changes.size(), 1);
    desk.play(u"Song"_s, false); // paused is as good as playing
    QCOMPARE(strip->look().symbol, u"play.slash"_s);
    desk.stopPlaying();
    QCOMPARE(strip->slideCount(), 0);

    PomodoroService &timer = *desk.services.pomodoroService();
    timer.start();
    QCOMPARE(strip->look().symbol, u"timer"_s);
    desk.clock.advance(61s);
    QCOMPARE(strip->look().first, u"23:59"_s);
    timer.skip();
    QCOMPARE(strip->slideCount(), 0); // the break waits to be started
    timer.start();
    QCOMPARE(strip->look().symbol, u"cup.and.saucer.fill"_s);
    const Translated translated;
    timer.skip();
    timer.start();
    QCOMPARE(strip->look().second, u"x"_s);
    QCOMPARE(strip->look().symbol, u"timer"_s);
}

void CollapsedLiveStripTest::events()
{
    Desk desk;
    const auto strip = desk.strip();
    FakeCalendarStore &store = desk.platform.calendar;
    const QDateTime now = desk.clock.now();
    store.events = std::vector<CalendarEvent>{
        {u"a"_s, u"Now"_s, now.addSecs(-60), now.addSecs(70), false, {}},
        {u"b"_s, u"A\nnext"_s, now.addSecs(65), now.addSecs(4000), false, {}}};
    desk.services.calendarService()->requestAccess();
    store.answers.give();
    const auto shown = [&strip] { return strip->look().first + u", "_s + strip->look().second; };
    QCOMPARE(strip->slideCount(), 1);
    QCOMPARE(strip->look().symbol, u"calendar"_s);
    QCOMPARE(shown(), u"Now, Ends 1m"_s);
    desk.clock.advance(15s); // between two readings
    QCOMPARE(shown(), u"Now, Ends now"_s);
    desk.clock.advance(55s);
    QCOMPARE(shown(), u"A next, Ends 1h 5m"_s);
    store.events->clear();
    Q_EMIT store.changed();
    desk.clock.advance(100ms);
    store.answers.give();
    QCOMPARE(strip->slideCount(), 0);
}

void CollapsedLiveStripTest::takesTurns()
{
    Desk desk;
    const auto strip = desk.strip();
    desk.play(u"Song"_s);
    desk.clock.advance(12s); // ticks mean nothing to one slide
    QCOMPARE(strip->currentIndex(), 0);
    desk.services.pomodoroService()->start();
    desk.clock.advance(3s); // the clock went on meanwhile: a slide may have a short first turn
    QCOMPARE(strip->currentIndex(), 1);
    QCOMPARE(strip->look().second, u"WORK"_s);
    QCOMPARE(desk.strip()->currentIndex(), 0); // a new strip begins afresh
    strip->setShowVolume(true);                // by a finger, which does not hover
    strip->showNotice(u"Note"_s);
    desk.clock.advance(1499ms);
    QVERIFY(strip->showVolume());
    desk.clock.advance(1ms);
    QVERIFY(!strip->showVolume());
    desk.clock.advance(3500ms); // the turns go on behind the volume and a notice
    QCOMPARE(strip->currentIndex(), 0);

    // A list that shrinks: what follows moves up under an index that stays.
    desk.clock.advance(5s);
    desk.services.pomodoroService()->pause();
    QCOMPARE(strip->currentIndex(), 0);
    QCOMPARE(strip->look().first, u"Song"_s);
    desk.services.pomodoroService()->start();
    desk.stopPlaying();
    QCOMPARE(strip->currentIndex(), 0);
    QCOMPARE(strip->look().second, u"WORK"_s);
}

void CollapsedLiveStripTest::notices()
{
    Desk desk;
    const auto strip = desk.strip();
    strip->showNotice(u"One"_s);
    desk.clock.advance(2s);
    strip->showNotice(u"Two"_s);
    desk.clock.advance(2999ms); // the hide of the first has no effect
    QCOMPARE(strip->noticeText(), u"Two"_s);
    desk.clock.advance(1ms);
    QVERIFY(!strip->hasNotice());

    // Of dropped files: the last word stays, and the beginning of a drag hides none.
    DropActionsService &drop = *desk.services.dropService();
    drop.setLastStatus(u"Done"_s);
    drop.setLastStatus(u"Summary"_s);
    drop.setLastStatus(QString());
    QCOMPARE(strip->noticeText(), u"Summary"_s);
    desk.clock.advance(2s);
    drop.setLastStatus(u"Summary"_s); // again: three more seconds
    desk.clock.advance(2s);
    QVERIFY(strip->hasNotice());
}

void CollapsedLiveStripTest::screens()
{
    Desk desk;
    FakeScreens &screens = desk.platform.screens;
    screens.add();
    desk.clock.advance(1s);
    auto second = screens.add();
    // The change itself brings new strips, which are to tell of it.
    auto strip = desk.strip();
    QVERIFY(!strip->hasNotice());
    desk.clock.advance(300ms);
    QCOMPARE(strip->noticeText(), u"Monitor connected"_s);
    desk.clock.advance(3s);
    Q_EMIT screens.changed(); // moved, or of another size
    desk.clock.advance(1s);
    QVERIFY(!strip->hasNotice());
    screens.remove(second.get());
    strip = desk.strip();
    desk.clock.advance(300ms);
    QCOMPARE(strip->noticeText(), u"Monitor disconnected"_s);

    // One that flickers is no news.
    desk.clock.advance(3s);
    second = screens.add();
    desk.clock.advance(100ms);
    screens.remove(second.get());
    desk.clock.advance(1s);
    QVERIFY(!strip->hasNotice());
}

QTEST_MAIN(CollapsedLiveStripTest)
#include "CollapsedLiveStripTest.moc"
