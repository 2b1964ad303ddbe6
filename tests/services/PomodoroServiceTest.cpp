#include "services/PomodoroService.h"

#include "support/FakeNotifications.h"
#include "support/MemoryStore.h"
#include "support/VirtualClock.h"

#include <QSignalSpy>
#include <QTest>
#include <QUuid>

#include <limits>

using namespace velmora;
using namespace std::chrono_literals;

using Phase = PomodoroPhase;
Q_DECLARE_METATYPE(velmora::PomodoroPhase)

namespace
{

constexpr qint64 huge = std::numeric_limits<qint64>::max();

QString key()
{
    return QStringLiteral("pomodoro_settings_v1");
}

enum class Event { Start, Pause, Skip, RunOut, Reset };

/// A clock whose ticks come when the test says.
struct HandClock final : Clock {
    std::chrono::nanoseconds time{0};
    Task task;

    QDateTime now() const override { return {}; }
    std::chrono::nanoseconds uptime() const override { return time; }
    std::chrono::nanoseconds bootTime() const override { return time; }
    TimerHandle every(std::chrono::milliseconds, Task repeated) override
    {
        task = std::move(repeated);
        return std::make_unique<Timer>();
    }
    TimerHandle after(std::chrono::milliseconds, Task) override { return {}; }
    TimerHandle everyFrame(Task) override { return {}; }

    void fireAt(std::chrono::nanoseconds moment)
    {
        time = moment;
        const Task copy = task;
        copy();
    }
};

} // namespace

Q_DECLARE_METATYPE(Event)

class PomodoroServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void beginsWithAWorkSession();
    void transitions_data();
    void transitions();
    void announcements();
    void restsOnZeroForASecond();
    void continuesWhereItWasPaused();
    void timeAndProgress();
    void aDayOfPhases();
    void ticksThatAreEarlyOrLate();
    void countsTheSleepOfTheMachine_data();
    void countsTheSleepOfTheMachine();
    void readsStoredSettings();
    void refusesStoredSettings_data();
    void refusesStoredSettings();
    void assignments();
    void refusesAssignments();
    void longBreakAfterEachSession();
    void tellsWhenAllIsInPlace();
    void endsWithItsOwner();

private:
    void make() { m_service = std::make_unique<PomodoroService>(*m_clock, *m_store, *m_shown); }
    void bring(Phase phase, qint64 completed, bool running);
    void runOut() { m_clock->advance(std::chrono::seconds(m_service->secondsRemaining() + 1)); }

    std::unique_ptr<VirtualClock> m_clock;
    std::unique_ptr<MemoryStore> m_store;
    std::unique_ptr<FakeNotifications> m_shown;
    std::unique_ptr<PomodoroService> m_service;
};

void PomodoroServiceTest::init()
{
    m_service.reset();
    m_clock = std::make_unique<VirtualClock>();
    m_store = std::make_unique<MemoryStore>();
    m_shown = std::make_unique<FakeNotifications>();
    make();
}

/// Brings the service into a state by its own means, with the notifications of that forgotten.
void PomodoroServiceTest::bring(Phase phase, qint64 completed, bool running)
{
    if (phase == Phase::longBreak) {
        m_service->setSessionsBeforeLongBreak(1);
        m_service->skip();
        m_service->setSessionsBeforeLongBreak(4);
    }
    while (m_service->phase() != phase || m_service->sessionsCompleted() != completed) {
        m_service->skip();
    }
    if (running) {
        m_service->start();
        m_clock->advance(7s);
    }
    m_shown->added.clear();
}

void PomodoroServiceTest::beginsWithAWorkSession()
{
    QCOMPARE(m_service->phase(), Phase::work);
    QCOMPARE(m_service->timeString(), QStringLiteral("25:00"));
    QCOMPARE(m_service->isRunning(), false);
    QCOMPARE(m_service->sessionsCompleted(), 0);
    QCOMPARE(m_service->shortBreakMinutes(), 5);
    QCOMPARE(m_service->longBreakMinutes(), 15);
    QCOMPARE(m_service->sessionsBeforeLongBreak(), 4);
    QCOMPARE(m_shown->requests, 1);
    m_clock->advance(1h);
    QCOMPARE(m_service->secondsRemaining(), 1500);
    QVERIFY(m_shown->added.empty());
    QVERIFY(m_store->written.isEmpty()); // nothing was assigned
    QCOMPARE(m_clock->runningTimers(), 0);
}

void PomodoroServiceTest::transitions_data()
{
    QTest::addColumn<Phase>("phase");
    QTest::addColumn<int>("completed");
    QTest::addColumn<bool>("running");
    QTest::addColumn<Event>("event");
    QTest::addColumn<Phase>("nextPhase");
    QTest::addColumn<int>("nextCompleted");
    QTest::addColumn<bool>("nextRunning");
    QTest::addColumn<int>("nextSeconds");
    QTest::addColumn<int>("notifications");
    using enum PomodoroPhase;
    using enum Event;
    const auto row = [](const char *name, Phase phase, int completed, bool running, Event event,
                        Phase nextPhase, int nextCompleted, bool nextRunning, int nextSeconds,
                        int notifications) {
        QTest::newRow(name) << phase << completed << running << event << nextPhase << nextCompleted
                            << nextRunning << nextSeconds << notifications;
    };
    row("start", work, 1, false, Start, work, 1, true, 1500, 0);
    row("start a break", longBreak, 0, false, Start, longBreak, 0, true, 900, 0);
    row("start twice", work, 0, true, Start, work, 0, true, 1493, 0);
    row("pause", work, 2, true, Pause, work, 2, false, 1493, 0);
    row("pause a break", shortBreak, 2, true, Pause, shortBreak, 2, false, 293, 0);
    row("pause twice", work, 2, false, Pause, work, 2, false, 1500, 0);
    row("work runs out", work, 0, true, RunOut, shortBreak, 1, false, 300, 1);
    row("work is skipped", work, 2, true, Skip, shortBreak, 3, false, 300, 1);
    row("work is skipped, stopped", work, 0, false, Skip, shortBreak, 1, false, 300, 1);
    row("the fourth runs out", work, 3, true, RunOut, longBreak, 0, false, 900, 1);
    row("the fourth is skipped", work, 3, false, Skip, longBreak, 0, false, 900, 1);
    row("break runs out", shortBreak, 3, true, RunOut, work, 3, false, 1500, 1);
    row("break is skipped", shortBreak, 1, false, Skip, work, 1, false, 1500, 1);
    row("long break runs out", longBreak, 0, true, RunOut, work, 0, false, 1500, 1);
    row("long break is skipped", longBreak, 0, true, Skip, work, 0, false, 1500, 1);
    row("reset work", work, 2, true, Reset, work, 0, false, 1500, 0);
    row("reset a break", shortBreak, 3, true, Reset, work, 0, false, 1500, 0);
    row("reset, stopped", longBreak, 0, false, Reset, work, 0, false, 1500, 0);
}

void PomodoroServiceTest::transitions()
{
    QFETCH(const Phase, phase);
    QFETCH(const int, completed);
    QFETCH(const bool, running);
    QFETCH(const Event, event);
    QFETCH(const bool, nextRunning);
    QFETCH(const int, nextCompleted);
    QFETCH(const int, nextSeconds);
    QFETCH(const int, notifications);
    bring(phase, completed, running);
    switch (event) {
    case Event::Start:
        m_service->start();
        break;
    case Event::Pause:
        m_service->pause();
        break;
    case Event::Skip:
        m_service->skip();
        break;
    case Event::RunOut:
        runOut();
        break;
    case Event::Reset:
        m_service->reset();
        break;
    }
    QTEST(m_service->phase(), "nextPhase");
    QCOMPARE(m_service->isRunning(), nextRunning);
    QCOMPARE(m_service->sessionsCompleted(), nextCompleted);
    QCOMPARE(m_service->secondsRemaining(), nextSeconds);
    QCOMPARE(int(m_shown->added.size()), notifications);
    QCOMPARE(m_clock->runningTimers(), nextRunning ? 1 : 0);
}

void PomodoroServiceTest::announcements()
{
    m_service->setWorkMinutes(50);
    m_service->setShortBreakMinutes(10);
    m_service->setLongBreakMinutes(30);
    m_service->setSessionsBeforeLongBreak(2);
    for (int i = 0; i < 4; ++i) {
        m_service->skip();
    }
    QStringList told;
    QStringList identifiers;
    for (const UserNotification &shown : m_shown->added) {
        told << shown.title + QStringLiteral(" / ") + shown.body;
        identifiers << shown.identifier;
        QVERIFY(shown.hasSound);
        QVERIFY(!QUuid::fromString(shown.identifier).isNull());
    }
    QCOMPARE(told, (QStringList{
                       QStringLiteral("Pomodoro complete! / Take a 10-minute break."),
                       QStringLiteral("Break over — back to work! / "
                                      "Start your 50-minute focus session."),
                       QStringLiteral("4 sessions done — great work! / "
                                      "Take a 30-minute long break."),
                       QStringLiteral("Break over — back to work! / "
                                      "Start your 50-minute focus session."),
                   }));
    QCOMPARE(identifiers.removeDuplicates(), 0);
}

void PomodoroServiceTest::restsOnZeroForASecond()
{
    m_service->setWorkMinutes(1);
    m_service->start();
    m_clock->advance(60s);
    QCOMPARE(m_service->timeString(), QStringLiteral("00:00"));
    QCOMPARE(m_service->progress(), 1.0);
    QCOMPARE(m_service->isRunning(), true);
    m_service->pause();
    QCOMPARE(m_service->phase(), Phase::work);
    m_service->start();
    m_clock->advance(999ms);
    QCOMPARE(m_service->phase(), Phase::work);
    m_clock->advance(1ms);
    QCOMPARE(m_service->phase(), Phase::shortBreak);
    QCOMPARE(m_service->isRunning(), false);

    // A phase of no length ends with its first second.
    m_service->setShortBreakMinutes(0);
    QCOMPARE(m_service->timeString(), QStringLiteral("00:00"));
    QCOMPARE(m_service->progress(), 0.0);
    m_service->start();
    m_clock->advance(1s);
    QCOMPARE(m_service->phase(), Phase::work);
}

void PomodoroServiceTest::continuesWhereItWasPaused()
{
    m_service->start();
    m_clock->advance(10s);
    m_service->pause();
    m_clock->advance(1h);
    m_service->start();
    m_service->start(); // does not count twice
    m_clock->advance(5s);
    QCOMPARE(m_service->secondsRemaining(), 1485);
}

void PomodoroServiceTest::timeAndProgress()
{
    m_service->setWorkMinutes(100);
    QCOMPARE(m_service->timeString(), QStringLiteral("100:00"));
    QCOMPARE(m_service->progress(), 0.0);
    m_service->start();
    m_clock->advance(25min + 55s);
    QCOMPARE(m_service->timeString(), QStringLiteral("74:05"));
    QCOMPARE(m_service->progress(), 1 - 4445.0 / 6000);
    m_service->setWorkMinutes(huge / 60);
    QVERIFY(m_service->progress() > 0.99);
    QCOMPARE(m_service->phaseDuration(), huge / 60 * 60);
}

void PomodoroServiceTest::aDayOfPhases()
{
    // One cycle is four sessions of 1501 s, three breaks of 301 s and one of 901 s.
    constexpr qint64 day = 24 * 60 * 60;
    constexpr qint64 cycle = 4 * 1501 + 3 * 301 + 901;
    QStringList phases;
    m_service->start();
    for (int second = 0; second < day; ++second) {
        m_clock->advance(1s);
        if (!m_service->isRunning()) {
            phases << m_service->phaseLabel();
            m_service->start();
        }
    }
    const QString one = QStringLiteral("BREAK WORK BREAK WORK BREAK WORK LONG WORK");
    QCOMPARE(phases, QStringList(11, one).join(QLatin1Char(' ')).split(QLatin1Char(' ')));
    QCOMPARE(qsizetype(m_shown->added.size()), phases.size());
    QCOMPARE(m_service->secondsRemaining(), 1500 - (day - 11 * cycle));
}

void PomodoroServiceTest::ticksThatAreEarlyOrLate()
{
    HandClock clock;
    PomodoroService service(clock, *m_store, *m_shown);
    service.setWorkMinutes(24 * 60);
    service.start();
    clock.fireAt(960ms);
    QCOMPARE(service.secondsRemaining(), 86'399);
    clock.fireAt(1950ms);
    QCOMPARE(service.secondsRemaining(), 86'398);
    clock.fireAt(1960ms); // there is nothing to count yet
    QCOMPARE(service.secondsRemaining(), 86'398);
    clock.fireAt(6700ms);
    QCOMPARE(service.secondsRemaining(), 86'394);
    // The fractions of late ticks add up to nothing, a whole day long.
    for (auto time = 7700ms; time < 24h; time += 1030ms) {
        clock.fireAt(time);
    }
    QCOMPARE(service.phase(), Phase::work);
    QVERIFY(service.secondsRemaining() <= 2);
    clock.fireAt(24h);
    QCOMPARE(service.secondsRemaining(), 0);
    clock.fireAt(24h + 1s);
    QCOMPARE(service.phase(), Phase::shortBreak);
    QCOMPARE(m_shown->added.size(), 1U);
}

void PomodoroServiceTest::countsTheSleepOfTheMachine_data()
{
    QTest::addColumn<int>("slept");
    QTest::addColumn<QString>("after");
    // 20 s have passed before, one passes after the wake.
    QTest::newRow("a part of the phase") << 100 << QStringLiteral("WORK 22:59");
    QTest::newRow("nearly all of it") << 1479 << QStringLiteral("WORK 00:00");
    QTest::newRow("to its end") << 1480 << QStringLiteral("BREAK 05:00");
    QTest::newRow("a week") << 7 * 86'400 << QStringLiteral("BREAK 05:00");
}

void PomodoroServiceTest::countsTheSleepOfTheMachine()
{
    QFETCH(const int, slept);
    const auto shown = [this] {
        return m_service->phaseLabel() + QLatin1Char(' ') + m_service->timeString();
    };
    m_service->start();
    m_clock->advance(20s);
    m_clock->suspend(std::chrono::seconds(slept));
    m_clock->advance(1s);
    QTEST(shown(), "after");
    const bool isOver = m_service->phase() != Phase::work;
    QCOMPARE(m_service->isRunning(), !isOver);
    QCOMPARE(m_shown->added.size(), isOver ? 1U : 0U);
    m_clock->advance(1s);
    QVERIFY(m_shown->added.size() <= 1);

    // A pause that comes before the first tick after the wake does not lose the sleep.
    m_service->reset();
    m_shown->added.clear();
    m_service->start();
    m_clock->advance(21s);
    m_clock->suspend(std::chrono::seconds(slept));
    m_service->pause();
    QTEST(shown(), "after");
    QCOMPARE(m_service->isRunning(), false);
    QCOMPARE(m_shown->added.size(), isOver ? 1U : 0U);

    // A timer that stands still sleeps with the machine.
    const QString before = shown();
    m_clock->suspend(std::chrono::seconds(slept));
    m_clock->advance(1s);
    m_service->start();
    QCOMPARE(shown(), before);
}

void PomodoroServiceTest::readsStoredSettings()
{
    m_store->setData(key(), R"( {"sessionsBeforeLongBreak":2,"longBreakMinutes":20,"more":[],
                                 "shortBreakMinutes":7,"workMinutes":0} )");
    make();
    QCOMPARE(m_service->workMinutes(), 0);
    QCOMPARE(m_service->shortBreakMinutes(), 7);
    QCOMPARE(m_service->longBreakMinutes(), 20);
    QCOMPARE(m_service->sessionsBeforeLongBreak(), 2);
    QCOMPARE(m_service->timeString(), QStringLiteral("00:00"));
    m_service->start();
    m_clock->advance(1s);
    QCOMPARE(m_service->timeString(), QStringLiteral("07:00"));
}

void PomodoroServiceTest::refusesStoredSettings_data()
{
    QTest::addColumn<QByteArray>("stored");
    const auto row = [](const char *name, const QByteArray &work, const QByteArray &sessions) {
        QTest::newRow(name)
            << R"({"workMinutes":)" + work +
                   R"(,"shortBreakMinutes":6,"longBreakMinutes":7,"sessionsBeforeLongBreak":)" +
                   sessions + '}';
    };
    row("negative length", "-1", "4");
    row("negative count", "25", "-1");
    row("more seconds than can be counted", QByteArray::number(huge / 60 + 1), "4");
    row("beyond the signed range", "9223372036854775808", "4");
    row("beyond any range", "99999999999999999999999", "4");
    row("fraction", "25.5", "4");
    row("text", "\"25\"", "4");
    row("null", "null", "4");
    row("cut short", "25", "4}{");
    QTest::newRow("one is missing")
        << QByteArray(R"({"workMinutes":1,"shortBreakMinutes":6,"longBreakMinutes":7})");
    QTest::newRow("list") << QByteArray("[1,2,3,4]");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no UTF-8") << QByteArray("{\"\xff\xfe\":1}");
    QTest::newRow("bottomless") << QByteArray(100'000, '[');
}

void PomodoroServiceTest::refusesStoredSettings()
{
    QFETCH(const QByteArray, stored);
    m_store->setData(key(), stored);
    make();
    QCOMPARE(m_service->workMinutes(), 25);
    QCOMPARE(m_service->shortBreakMinutes(), 5);
    QCOMPARE(m_service->longBreakMinutes(), 15);
    QCOMPARE(m_service->sessionsBeforeLongBreak(), 4);
    QCOMPARE(m_store->data(key()).value(), stored);
    m_service->setLongBreakMinutes(16);
    QCOMPARE(m_store->data(key()).value(),
             QByteArray(R"({"workMinutes":25,"shortBreakMinutes":5,"longBreakMinutes":16,)"
                        R"("sessionsBeforeLongBreak":4})"));
}

void PomodoroServiceTest::assignments()
{
    m_service->start();
    m_clock->advance(10s);
    m_service->setWorkMinutes(10); // the running phase goes on
    QCOMPARE(m_service->secondsRemaining(), 1490);
    m_service->pause();
    m_service->setShortBreakMinutes(3); // another phase
    m_service->setSessionsBeforeLongBreak(3);
    QCOMPARE(m_service->secondsRemaining(), 1490);
    m_service->setWorkMinutes(10); // the same, yet assigned
    QCOMPARE(m_service->secondsRemaining(), 600);

    bring(Phase::shortBreak, 1, false);
    m_service->setShortBreakMinutes(8);
    QCOMPARE(m_service->secondsRemaining(), 480);
    bring(Phase::longBreak, 0, false);
    m_service->setLongBreakMinutes(40);
    QCOMPARE(m_service->secondsRemaining(), 2400);
    m_service->reset();
    QCOMPARE(m_service->secondsRemaining(), 600);

    make(); // what was assigned is there in the next process
    QCOMPARE(m_service->shortBreakMinutes(), 8);
    QCOMPARE(m_service->longBreakMinutes(), 40);
    QCOMPARE(m_service->timeString(), QStringLiteral("10:00"));
}

void PomodoroServiceTest::refusesAssignments()
{
    for (const qint64 minutes : {qint64{-1}, huge / 60 + 1, huge}) {
        m_service->setWorkMinutes(minutes);
        m_service->setShortBreakMinutes(minutes);
        m_service->setLongBreakMinutes(minutes);
    }
    m_service->setSessionsBeforeLongBreak(-1);
    QVERIFY(m_store->written.isEmpty());
    QCOMPARE(m_service->secondsRemaining(), 1500);
    m_service->skip();
    QCOMPARE(m_service->secondsRemaining(), 300);
}

void PomodoroServiceTest::longBreakAfterEachSession()
{
    for (const int sessions : {1, 0}) {
        m_service->setSessionsBeforeLongBreak(sessions);
        for (int i = 0; i < 2; ++i) {
            m_service->skip();
            QCOMPARE(m_service->phase(), Phase::longBreak);
            QCOMPARE(m_service->sessionsCompleted(), 0);
            m_service->skip();
        }
    }
}

void PomodoroServiceTest::tellsWhenAllIsInPlace()
{
    const QSignalSpy seconds(m_service.get(), &PomodoroService::secondsRemainingChanged);
    const QSignalSpy progress(m_service.get(), &PomodoroService::progressChanged);
    const QSignalSpy running(m_service.get(), &PomodoroService::isRunningChanged);
    const QSignalSpy phase(m_service.get(), &PomodoroService::phaseChanged);
    const QSignalSpy duration(m_service.get(), &PomodoroService::phaseDurationChanged);
    QStringList seen;
    connect(m_service.get(), &PomodoroService::phaseChanged, this, [this, &seen] {
        seen << m_service->phaseLabel() << m_service->timeString()
             << QString::number(m_service->sessionsCompleted())
             << QVariant(m_service->isRunning()).toString()
             << QString::number(m_shown->added.size());
    });
    m_service->start();
    m_clock->advance(3s);
    QCOMPARE(seconds.size(), 3);
    QCOMPARE(progress.size(), 3);
    QCOMPARE(running.size(), 1);
    QCOMPARE(phase.size(), 0);
    QCOMPARE(duration.size(), 0);
    runOut();
    QCOMPARE(running.size(), 2);
    QCOMPARE(duration.size(), 1);
    const QStringList inPlace{QStringLiteral("BREAK"), QStringLiteral("05:00"), QStringLiteral("1"),
                              QStringLiteral("false"), QStringLiteral("1")};
    QCOMPARE(seen, inPlace);
    QCOMPARE(m_service->phaseColor(), QColor::fromRgbF(0.3F, 0.9F, 0.5F));

    // Who hears of the end may start the next phase at once.
    connect(m_service.get(), &PomodoroService::phaseChanged, m_service.get(),
            &PomodoroService::start);
    m_service->skip();
    QCOMPARE(m_service->isRunning(), true);
    m_clock->advance(2s);
    QCOMPARE(m_service->timeString(), QStringLiteral("24:58"));
}

void PomodoroServiceTest::endsWithItsOwner()
{
    m_service->start();
    m_service.reset();
    QCOMPARE(m_clock->runningTimers(), 0);
    m_clock->advance(1h);
    QVERIFY(m_shown->added.empty());
}

QTEST_GUILESS_MAIN(PomodoroServiceTest)
#include "PomodoroServiceTest.moc"
