#include "services/PomodoroService.h"

#include "support/FakeNotifications.h"
#include "support/HandClock.h"
#include "support/MemoryStore.h"
#include "support/VirtualClock.h"

#include <QSignalSpy>
#include <QTest>

#include <limits>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr qint64 huge = std::numeric_limits<qint64>::max();

const QString key = u"pomodoro_settings_v1"_s;

/// None: the phase runs out.
using Operation = void (PomodoroService::*)();

} // namespace

class PomodoroServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void transitions();
    void announcements();
    void restsOnZeroForASecond();
    void ticksThatAreEarlyOrLate();
    void countsTheSleepOfTheMachine();
    void storedSettings();
    void assignments();
    void tellsWhenAllIsInPlace();

private:
    void make() { m_service.emplace(*m_clock, *m_store, *m_shown); }
    [[nodiscard]] QString state() const;
    void bring(const QString &wanted);

    std::optional<VirtualClock> m_clock;
    std::optional<MemoryStore> m_store;
    std::optional<FakeNotifications> m_shown;
    std::optional<PomodoroService> m_service;
};

void PomodoroServiceTest::init()
{
    m_service.reset();
    m_clock.emplace();
    m_store.emplace();
    m_shown.emplace();
    make();
}

/// Phase, sessions completed, time, and whether it runs.
QString PomodoroServiceTest::state() const
{
    return u"%1 %2 %3%4"_s.arg(m_service->phaseLabel())
        .arg(m_service->sessionsCompleted())
        .arg(m_service->timeString(), m_service->isRunning() ? u" runs"_s : QString());
}

/// Brings the service into a state by its own means, with the notifications of that forgotten.
void PomodoroServiceTest::bring(const QString &wanted)
{
    for (int i = 0; i < 8 && !wanted.startsWith(state().section(u' ', 0, 1)); ++i) {
        m_service->skip();
    }
    if (wanted.endsWith(u"runs"_s)) {
        m_service->start();
        m_clock->advance(7s);
    }
    QCOMPARE(state(), wanted);
    m_shown->added.clear();
}

void PomodoroServiceTest::transitions()
{
    constexpr Operation start = &PomodoroService::start;
    constexpr Operation pause = &PomodoroService::pause;
    constexpr Operation skip = &PomodoroService::skip;
    constexpr Operation reset = &PomodoroService::reset;
    constexpr Operation runOut = nullptr;
    const std::vector<std::tuple<QString, Operation, QString>> rows{
        {u"LONG 0 15:00"_s, start, u"LONG 0 15:00 runs"_s},
        {u"WORK 0 24:53 runs"_s, start, u"WORK 0 24:53 runs"_s},
        {u"WORK 2 24:53 runs"_s, pause, u"WORK 2 24:53"_s},
        {u"WORK 0 24:53 runs"_s, runOut, u"BREAK 1 05:00"_s},
        {u"WORK 2 24:53 runs"_s, skip, u"BREAK 3 05:00"_s},
        {u"WORK 3 24:53 runs"_s, runOut, u"LONG 0 15:00"_s},
        {u"BREAK 3 04:53 runs"_s, runOut, u"WORK 3 25:00"_s},
        {u"BREAK 1 05:00"_s, skip, u"WORK 1 25:00"_s},
        {u"LONG 0 14:53 runs"_s, runOut, u"WORK 0 25:00"_s},
        {u"WORK 2 24:53 runs"_s, reset, u"WORK 0 25:00"_s},
        {u"BREAK 3 05:00"_s, reset, u"WORK 0 25:00"_s},
    };
    QCOMPARE(m_shown->requests, 1);
    m_clock->advance(1h); // a timer that stands still
    QVERIFY(m_store->written.isEmpty());
    for (const auto &[before, operation, after] : rows) {
        QCOMPARE(state(), u"WORK 0 25:00"_s);
        bring(before);
        if (operation != nullptr) {
            (*m_service.*operation)();
        } else {
            m_clock->advance(std::chrono::seconds(m_service->secondsRemaining() + 1));
        }
        QCOMPARE(state(), after);
        const bool isTold = operation == skip || operation == runOut;
        QCOMPARE(m_shown->added.size(), isTold ? 1U : 0U);
        QCOMPARE(m_clock->runningTimers(), m_service->isRunning() ? 1 : 0);
        init();
    }

    for (const int sessions : {1, 0}) { // a long break after each
        m_service->setSessionsBeforeLongBreak(sessions);
        for (int i = 0; i < 2; ++i) {
            m_service->skip();
            QCOMPARE(state(), u"LONG 0 15:00"_s);
            m_service->skip();
        }
    }
}

void PomodoroServiceTest::announcements()
{
    m_service->setWorkMinutes(50);
    m_service->setShortBreakMinutes(10);
    m_service->setLongBreakMinutes(30);
    m_service->setSessionsBeforeLongBreak(2);
    QStringList told;
    QStringList identifiers;
    for (int i = 0; i < 4; ++i) {
        m_service->skip();
        const UserNotification &shown = m_shown->added.back();
        told << shown.title + u" / "_s + shown.body;
        identifiers << shown.identifier;
        QVERIFY(shown.hasSound);
    }
    const QString back = u"Break over — back to work! / Start your 50-minute focus session."_s;
    QCOMPARE(told, (QStringList{u"Pomodoro complete! / Take a 10-minute break."_s, back,
                                u"4 sessions done — great work! / Take a 30-minute long break."_s,
                                back}));
    QCOMPARE(identifiers.removeDuplicates(), 0);
}

void PomodoroServiceTest::restsOnZeroForASecond()
{
    m_service->setWorkMinutes(1);
    m_service->start();
    m_clock->advance(60s);
    QCOMPARE(state(), u"WORK 0 00:00 runs"_s);
    QCOMPARE(m_service->progress(), 1.0);
    m_service->pause();
    m_service->start();
    m_clock->advance(999ms);
    QCOMPARE(state(), u"WORK 0 00:00 runs"_s);
    m_clock->advance(1ms);
    QCOMPARE(state(), u"BREAK 1 05:00"_s);

    // A phase of no length ends with its first second.
    m_service->setShortBreakMinutes(0);
    QCOMPARE(m_service->timeString(), u"00:00"_s);
    QCOMPARE(m_service->progress(), 0.0);
    m_service->start();
    m_clock->advance(1s);
    QCOMPARE(state(), u"WORK 1 01:00"_s);

    m_service->setWorkMinutes(100);
    QCOMPARE(m_service->timeString(), u"100:00"_s);
    m_service->start();
    m_clock->advance(25min);
    m_service->pause();
    m_clock->advance(1h);
    m_service->start();
    m_service->start(); // does not count twice
    m_clock->advance(55s);
    QCOMPARE(m_service->timeString(), u"74:05"_s);
    QCOMPARE(m_service->progress(), 1 - 4445.0 / 6000);
    m_service->setWorkMinutes(huge / 60);
    QVERIFY(m_service->progress() > 0.99);
}

void PomodoroServiceTest::ticksThatAreEarlyOrLate()
{
    HandClock clock;
    PomodoroService service(clock, *m_store, *m_shown);
    service.setWorkMinutes(24 * 60);
    service.start();
    const auto leftAt = [&](std::chrono::nanoseconds time) {
        clock.fireAt(time);
        return service.secondsRemaining();
    };
    QCOMPARE(leftAt(960ms), 86'399);
    QCOMPARE(leftAt(1950ms), 86'398);
    QCOMPARE(leftAt(1960ms), 86'398); // there is nothing to count yet
    QCOMPARE(leftAt(6700ms), 86'394);
    // The fractions of late ticks add up to nothing, a whole day long.
    for (auto time = 7700ms; time < 24h; time += 1030ms) {
        clock.fireAt(time);
    }
    QVERIFY(service.secondsRemaining() <= 2);
    QCOMPARE(leftAt(24h), 0);
    QCOMPARE(leftAt(24h + 1s), 300);
    QCOMPARE(m_shown->added.size(), 1U);
}

void PomodoroServiceTest::countsTheSleepOfTheMachine()
{
    const auto start = [this](std::chrono::seconds before, std::chrono::seconds asleep) {
        init();
        m_service->start();
        m_clock->advance(before);
        m_clock->suspend(asleep);
    };
    const std::vector<std::pair<std::chrono::seconds, QString>> rows{
        {100s, u"WORK 0 22:59"_s},
        {1479s, u"WORK 0 00:00"_s},
        {1480s, u"BREAK 1 05:00"_s},
        {std::chrono::weeks(1), u"BREAK 1 05:00"_s},
    };
    for (const auto &[asleep, after] : rows) {
        const bool isOver = after.startsWith(u"BREAK"_s);
        start(20s, asleep);
        m_clock->advance(1s);
        QCOMPARE(state(), isOver ? after : after + u" runs"_s);
        QCOMPARE(m_shown->added.size(), isOver ? 1U : 0U);

        // A pause that comes before the first tick after the wake does not lose the sleep.
        start(21s, asleep);
        m_service->pause();
        QCOMPARE(state(), after);

        // A timer that stands still sleeps with the machine.
        m_clock->suspend(asleep);
        m_service->start();
        m_service->pause();
        QCOMPARE(state(), after);
    }
}

void PomodoroServiceTest::storedSettings()
{
    const auto settings = [](const QByteArray &work, const QByteArray &sessions) {
        return R"({"workMinutes":)" + work +
               R"(,"shortBreakMinutes":6,"longBreakMinutes":7,"sessionsBeforeLongBreak":)" +
               sessions + '}';
    };
    const QList<QByteArray> unusable{
        settings("-1", "4"),
        settings("25", "-1"),
        settings(QByteArray::number(huge / 60 + 1), "4"), // more seconds than can be counted
        settings("9223372036854775808", "4"),
        settings("25.5", "4"),
        settings("\"25\"", "4"),
        settings("25", "4}{"),
        R"({"workMinutes":1,"shortBreakMinutes":6,"longBreakMinutes":7})",
        "[1,2,3,4]",
        "{\"\xff\xfe\":1}",
        QByteArray(100'000, '['),
    };
    for (const QByteArray &stored : unusable) {
        m_store->setData(key, stored);
        make();
        QCOMPARE(m_service->timeString(), u"25:00"_s);
        QCOMPARE(m_service->shortBreakMinutes(), 5);
        QCOMPARE(m_store->data(key).value(), stored);
    }
    m_service->setLongBreakMinutes(16);
    QCOMPARE(m_store->data(key).value(),
             QByteArray(R"({"workMinutes":25,"shortBreakMinutes":5,"longBreakMinutes":16,)"
                        R"("sessionsBeforeLongBreak":4})"));

    m_store->setData(key, R"( {"sessionsBeforeLongBreak":1,"longBreakMinutes":20,"more":[],
                                 "shortBreakMinutes":7,"workMinutes":0} )");
    make();
    QCOMPARE(state(), u"WORK 0 00:00"_s);
    m_service->skip();
    QCOMPARE(state(), u"LONG 0 20:00"_s);
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

    m_service->skip();
    m_service->setShortBreakMinutes(8);
    QCOMPARE(m_service->secondsRemaining(), 480);
    bring(u"LONG 0 15:00"_s);
    m_service->setLongBreakMinutes(40);
    QCOMPARE(m_service->secondsRemaining(), 2400);

    make(); // what was assigned is there in the next process
    QCOMPARE(m_service->shortBreakMinutes(), 8);
    QCOMPARE(m_service->longBreakMinutes(), 40);
    QCOMPARE(m_service->timeString(), u"10:00"_s);

    m_store->written.clear();
    for (const qint64 minutes : {qint64{-1}, huge / 60 + 1, huge}) {
        m_service->setWorkMinutes(minutes);
        m_service->setShortBreakMinutes(minutes);
        m_service->setLongBreakMinutes(minutes);
    }
    m_service->setSessionsBeforeLongBreak(-1);
    QVERIFY(m_store->written.isEmpty());
    QCOMPARE(m_service->timeString(), u"10:00"_s);
}

void PomodoroServiceTest::tellsWhenAllIsInPlace()
{
    const QSignalSpy seconds(&*m_service, &PomodoroService::secondsRemainingChanged);
    const QSignalSpy progress(&*m_service, &PomodoroService::progressChanged);
    const QSignalSpy running(&*m_service, &PomodoroService::isRunningChanged);
    QStringList seen;
    connect(&*m_service, &PomodoroService::phaseChanged, this,
            [this, &seen] { seen << state() << QString::number(m_shown->added.size()); });
    m_service->start();
    m_clock->advance(3s);
    QCOMPARE(seconds.size(), 3);
    QCOMPARE(progress.size(), 3);
    QCOMPARE(running.size(), 1);
    m_clock->advance(25min);
    QCOMPARE(running.size(), 2);
    QCOMPARE(seen, (QStringList{u"BREAK 1 05:00"_s, u"1"_s}));

    // Who hears of the end may start the next phase at once.
    connect(&*m_service, &PomodoroService::phaseChanged, &*m_service, &PomodoroService::start);
    m_service->skip();
    m_clock->advance(2s);
    QCOMPARE(state(), u"WORK 1 24:58 runs"_s);
}

QTEST_GUILESS_MAIN(PomodoroServiceTest)
#include "PomodoroServiceTest.moc"
