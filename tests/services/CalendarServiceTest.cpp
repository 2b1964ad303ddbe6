#include "services/CalendarService.h"

#include "style/Accents.h"
#include "support/FakeCalendar.h"
#include "support/VirtualClock.h"

#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

/// The virtual clock begins on a Wednesday at ten.
QDateTime at(const QTime &time, int days = 0)
{
    return {QDate(2024, 5, 15).addDays(days), time};
}

CalendarEvent timed(const QString &title, const QDateTime &start, const QDateTime &end)
{
    return {
        .id = title, .title = title, .start = start, .end = end, .isAllDay = false, .color = {}};
}

struct Desk {
    VirtualClock clock;
    FakeCalendarStore store;
    CalendarService service{clock, store};

    void grant()
    {
        service.requestAccess();
        store.answers.give();
    }

    /// Time passes, and questions are answered at its end.
    void advance(std::chrono::nanoseconds span)
    {
        clock.advance(span);
        store.answers.give();
    }

    void show(const std::vector<CalendarEvent> &events)
    {
        store.events = events;
        service.refresh();
        store.answers.give();
    }

    [[nodiscard]] QString shown() const
    {
        const auto title = [](const auto &event) { return event ? event->title : u"-"_s; };
        return u"%1 %2 %3"_s.arg(title(service.currentEvent()), title(service.nextEvent()))
            .arg(service.todayCount());
    }
};

} // namespace

class CalendarServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void asksOnceGranted();
    void takesThePresentAnswer();
    void readsByTheMinuteAndAtChanges();
    void choosesTheEvents();
    void eventsTurnInTime();
    void lateAndMissingAnswers();
    void records();
    void texts_data();
    void texts();
};

void CalendarServiceTest::asksOnceGranted()
{
    Desk desk;
    desk.service.refresh();
    desk.advance(10min);
    QCOMPARE(desk.store.questions, QStringList());
    desk.store.isGranted = false;
    desk.grant();
    QVERIFY(!desk.service.isAuthorized());
    QCOMPARE(desk.store.questions, QStringList(u"request"_s));
    desk.store.isGranted = true;
    QSignalSpy authorized(&desk.service, &CalendarService::isAuthorizedChanged);
    desk.grant();
    QVERIFY(desk.service.isAuthorized());
    QCOMPARE(authorized.size(), 1);
    QCOMPARE(desk.store.questions.last(), u"15. 10:10:00 to 16. 10:10:00"_s);
}

/// At later launches nobody is asked, and a store that could not be used may come back.
void CalendarServiceTest::takesThePresentAnswer()
{
    Desk desk;
    desk.store.isGranted = false;
    desk.service.checkAccess();
    desk.store.answers.give();
    QVERIFY(!desk.service.isAuthorized());
    desk.store.isGranted = true;
    desk.advance(1min);
    QVERIFY(desk.service.isAuthorized());
    desk.store.isGranted = false;
    desk.store.events.reset();
    desk.advance(1min);
    QVERIFY(!desk.service.isAuthorized());
    desk.store.isGranted = true;
    Q_EMIT desk.store.changed();
    desk.advance(50ms);
    QVERIFY(desk.service.isAuthorized());
    QVERIFY(!desk.store.questions.contains(u"request"_s));
}

void CalendarServiceTest::readsByTheMinuteAndAtChanges()
{
    Desk desk;
    desk.grant();
    desk.store.questions.clear();
    desk.advance(150s);
    QCOMPARE(desk.store.questions,
             QStringList({u"15. 10:01:00 to 16. 10:01:00"_s, u"15. 10:02:00 to 16. 10:02:00"_s}));
    desk.store.questions.clear();
    for (int i = 0; i < 50; ++i) { // gathered, but not put off for as long as they go on
        Q_EMIT desk.store.changed();
        desk.clock.advance(4ms);
    }
    desk.advance(50ms);
    QCOMPARE(desk.store.questions.size(), 4);
}

void CalendarServiceTest::choosesTheEvents()
{
    Desk desk;
    desk.grant();
    const auto at10 = at({10, 0});
    const auto running = timed(u"running"_s, at({9, 30}), at({10, 45}));
    const auto alsoRunning = timed(u"also"_s, at({9, 45}), at({11, 0}));
    const auto soon = timed(u"soon"_s, at({10, 30}), at({10, 40}));
    const auto tomorrow = timed(u"tomorrow"_s, at({1, 0}, 1), at({2, 0}, 1));
    auto allDay = timed(u"all day"_s, at({0, 0}), at({0, 0}, 1));
    allDay.isAllDay = true;
    const std::vector<std::pair<std::vector<CalendarEvent>, QString>> cases{
        {{}, u"- - 0"_s},
        {{allDay}, u"- - 0"_s},
        {{tomorrow, allDay, soon}, u"- soon 2"_s},
        {{soon, alsoRunning, running}, u"running soon 3"_s},
        {{running}, u"running - 1"_s},
        {{timed(u"over"_s, at({9, 0}), at10), soon}, u"- over 2"_s},
        {{timed(u"begins"_s, at10, at({10, 1}))}, u"begins - 1"_s},
        {{timed(u"moment"_s, at10, at10)}, u"- moment 1"_s},
        {{}, u"- - 0"_s},
    };
    for (const auto &[events, expected] : cases) {
        desk.show(events);
        QCOMPARE(desk.shown(), expected);
    }
}

/// To the moment, and told once each.
void CalendarServiceTest::eventsTurnInTime()
{
    Desk desk;
    desk.grant();
    desk.show({timed(u"a"_s, at({10, 0, 10}), at({10, 0, 20})),
               timed(u"b"_s, at({10, 0, 20}), at({10, 0, 30}))});
    QSignalSpy told(&desk.service, &CalendarService::eventsChanged);
    QStringList seen;
    for (int i = 0; i < 4; ++i) {
        seen << desk.shown();
        desk.clock.advance(9999ms);
        seen << desk.shown();
        desk.clock.advance(1ms);
    }
    QCOMPARE(seen.join(u", "_s), u"- a 2, - a 2, a b 2, a b 2, b - 1, b - 1, - - 0, - - 0"_s);
    QCOMPARE(told.size(), 3);
}

void CalendarServiceTest::lateAndMissingAnswers()
{
    Desk desk;
    desk.grant();
    desk.show({timed(u"old"_s, at({10, 5}), at({10, 10}))});
    desk.service.refresh();
    desk.show({timed(u"new"_s, at({10, 5}), at({10, 10}))});
    QCOMPARE(desk.shown(), u"- new 1"_s);

    desk.service.refresh(); // answered last
    desk.store.events = std::vector{timed(u"newer"_s, at({10, 5}), at({10, 10}))};
    desk.service.refresh();
    desk.store.answers.giveLast();
    QCOMPARE(desk.shown(), u"- newer 1"_s);
    desk.store.answers.give();
    QCOMPARE(desk.shown(), u"- newer 1"_s);

    desk.store.events.reset();
    desk.advance(1min);
    QVERIFY(desk.service.isAuthorized());
    QCOMPARE(desk.shown(), u"- newer 1"_s);
    desk.advance(5min);
    QCOMPARE(desk.shown(), u"newer - 1"_s);
    desk.advance(5min);
    QCOMPARE(desk.shown(), u"- - 0"_s);
}

void CalendarServiceTest::records()
{
    Desk desk;
    desk.grant();
    auto nameless = timed({}, at({11, 0}), at({12, 0}));
    desk.show({nameless});
    QCOMPARE(desk.service.nextEvent()->title, u"Event"_s);
    QVERIFY(!desk.service.nextEvent()->id.isEmpty());
    QCOMPARE(desk.service.nextEvent()->color, accent::blue);
    nameless.color = Qt::red;
    nameless.id = u"x"_s;
    desk.show({nameless});
    QCOMPARE(desk.service.nextEvent()->id, u"x"_s);
    QCOMPARE(desk.service.nextEvent()->color, QColor(Qt::red));
}

void CalendarServiceTest::texts_data()
{
    QTest::addColumn<int>("start"); // seconds from now
    QTest::addColumn<int>("end");
    QTest::addColumn<QString>("expected");
    QTest::newRow("a minute but a second") << 59 << 100 << u"In now"_s;
    QTest::newRow("a minute") << 60 << 100 << u"In 1m"_s;
    QTest::newRow("an hour but a second") << 3599 << 4000 << u"In 59m"_s;
    QTest::newRow("an hour") << 3600 << 4000 << u"In 1h 0m"_s;
    QTest::newRow("a day") << 3900 + 79200 << 90000 << u"In 23h 5m"_s;
    QTest::newRow("under way") << -100 << 2700 << u"Ends 45m"_s;
    QTest::newRow("just begun") << 0 << 59 << u"Ends now"_s;
    QTest::newRow("just over") << -100 << 0 << u"In now"_s;
}

void CalendarServiceTest::texts()
{
    QFETCH(const int, start);
    QFETCH(const int, end);
    const QDateTime now = at({9, 0});
    CalendarEventInfo info;
    info.startDate = now.addSecs(start);
    info.endDate = now.addSecs(end);
    QTEST(info.relativeString(now), "expected");
    info.startDate = now;
    info.endDate = at({13, 5});
    QCOMPARE(info.timeRangeString(), u"9:00 AM – 1:05 PM"_s);
    info.isAllDay = true;
    QCOMPARE(info.timeRangeString(), u"All day"_s);
}

QTEST_GUILESS_MAIN(CalendarServiceTest)
#include "CalendarServiceTest.moc"
