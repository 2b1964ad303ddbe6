#include "platform/linux/calendar/CalendarItem.h"

#include "platform/linux/calendar/TaskEdits.h"

#include <QTest>

using namespace velmora;
using namespace Qt::Literals::StringLiterals;

namespace
{

qint64 moment(const char *text)
{
    return QDateTime::fromString(QString::fromLatin1(text), Qt::ISODate).toSecsSinceEpoch();
}

QByteArray calendar(const QByteArray &body)
{
    QByteArray text = "BEGIN:VCALENDAR\nVERSION:2.0\n" + body + "END:VCALENDAR\n";
    return text.replace('\n', "\r\n");
}

QByteArray eventText(const QByteArray &lines)
{
    return "BEGIN:VEVENT\nUID:one\nSUMMARY:One\n" + lines + "END:VEVENT\n";
}

QByteArray taskText(const QByteArray &lines)
{
    return "BEGIN:VTODO\nUID:one\nSUMMARY:One\n" + lines + "END:VTODO\n";
}

/// "title: start/end" in UTC, sorted.
QStringList occurrences(const QByteArray &text, const char *from, const char *to)
{
    const CalendarItem item(text);
    QStringList found;
    for (const auto &[begin, end, event] : item.events({moment(from), moment(to)})) {
        const auto told = [](const QDateTime &time) {
            return time.toUTC().toString(u"yyyy-MM-dd'T'hh:mm"_s);
        };
        found << u"%1 %2/%3%4"_s.arg(event.title, told(event.start), told(event.end),
                                     event.isAllDay ? u" all day"_s : QString());
    }
    found.sort();
    return found;
}

/// The starts alone.
QString starts(const QByteArray &text, const char *from, const char *to)
{
    QStringList found;
    for (const QString &one : occurrences(text, from, to)) {
        found << one.section(QLatin1Char(' '), 1, 1).section(QLatin1Char('/'), 0, 0);
    }
    return found.join(QLatin1Char(' '));
}

QStringList openTasks(const QByteArray &text)
{
    QStringList found;
    for (const OpenTask &one : CalendarItem(text).openTasks()) {
        found << one.reminder.title + (one.reminder.due
                                           ? QLatin1Char(' ') + one.reminder.due->toUTC().toString(
                                                                    u"yyyy-MM-dd'T'hh:mm"_s)
                                           : QString());
    }
    return found;
}

} // namespace

class CalendarItemTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void timesOfSingleEvents_data();
    void timesOfSingleEvents();
    void rules_data();
    void rules();
    void replacedAndCancelledOccurrences();
    void severalEventsInOneFile();
    void badInput_data();
    void badInput();
    void openTasksAreListed();
    void completes_data();
    void completes();
    void editsLeaveTheRest();
    void removes();
};

void CalendarItemTest::initTestCase()
{
    icalerror_set_errors_are_fatal(0);
    qputenv("TZ", "Europe/Berlin");
    tzset();
}

void CalendarItemTest::timesOfSingleEvents_data()
{
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *lines, const char *expected) {
        QTest::newRow(name) << QByteArray(lines) << QString::fromUtf8(expected);
    };
    row("UTC", "DTSTART:20260701T100000Z\nDTEND:20260701T113000Z\n",
        "One 2026-07-01T10:00/2026-07-01T11:30");
    row("zone by name", "DTSTART;TZID=America/New_York:20260701T100000\nDURATION:PT45M\n",
        "One 2026-07-01T14:00/2026-07-01T14:45");
    row("zone with something before it",
        "DTSTART;TZID=/freeassociation.sourceforge.net/Asia/Tokyo:20260701T190000\n",
        "One 2026-07-01T10:00/2026-07-01T10:00");
    row("unknown zone", "DTSTART;TZID=Nowhere:20260701T100000\n",
        "One 2026-07-01T08:00/2026-07-01T08:00");
    row("floating", "DTSTART:20260701T100000\nDTEND:20260701T110000\n",
        "One 2026-07-01T08:00/2026-07-01T09:00");
    row("all day", "DTSTART;VALUE=DATE:20260701\n",
        "One 2026-06-30T22:00/2026-07-01T22:00 all day");
    row("some days, with a clock change",
        "DTSTART;VALUE=DATE:20260328\nDTEND;VALUE=DATE:20260331\n",
        "One 2026-03-27T23:00/2026-03-30T22:00 all day");
    row("a day by the calendar", "DTSTART;TZID=Europe/Berlin:20260328T120000\nDURATION:P1D\n",
        "One 2026-03-28T11:00/2026-03-29T10:00");
    row("end before the start", "DTSTART:20260701T100000Z\nDTEND:20260701T090000Z\n",
        "One 2026-07-01T10:00/2026-07-01T10:00");
    row("far ahead", "DTSTART;TZID=Europe/Berlin:20400701T100000\n",
        "One 2040-07-01T08:00/2040-07-01T08:00");
    row("cancelled", "DTSTART:20260701T100000Z\nSTATUS:CANCELLED\n", "");
    row("folded, lower case", "dtstart;tzid=Europe/\n Berlin:20260701T1\n 00000\n",
        "One 2026-07-01T08:00/2026-07-01T08:00");
}

void CalendarItemTest::timesOfSingleEvents()
{
    QFETCH(const QByteArray, lines);
    QFETCH(const QString, expected);
    QCOMPARE(occurrences(calendar(eventText(lines)), "2026-03-01T00:00:00Z", "2041-01-01T00:00:00Z")
                 .join(QLatin1Char('\n')),
             expected);
}

void CalendarItemTest::rules_data()
{
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<QString>("expected"); // starts within 1 March to 1 July 2026
    const auto row = [](const char *lines, const char *expected) {
        QTest::newRow(lines) << QByteArray(lines) << QString::fromUtf8(expected);
    };
    row("DTSTART;TZID=Europe/Berlin:20200101T090000\nRRULE:FREQ=DAILY;INTERVAL=40\n",
        "2026-03-30T07:00 2026-05-09T07:00 2026-06-18T07:00");
    row("DTSTART;TZID=Europe/Berlin:20200101T090000\nRRULE:FREQ=DAILY;INTERVAL=40;COUNT=58\n",
        "2026-03-30T07:00");
    row("DTSTART:20260323T090000Z\nRRULE:FREQ=WEEKLY;UNTIL=20260406T090000Z\n",
        "2026-03-23T09:00 2026-03-30T09:00 2026-04-06T09:00");
    row("DTSTART;TZID=Europe/Berlin:20260323T090000\nRRULE:FREQ=WEEKLY;UNTIL=20260406T065959Z\n",
        "2026-03-23T08:00 2026-03-30T07:00");
    row("DTSTART;TZID=Europe/Berlin:20260323T090000\nRRULE:FREQ=WEEKLY;UNTIL=20260406\n",
        "2026-03-23T08:00 2026-03-30T07:00 2026-04-06T07:00");
    row("DTSTART:20200131T100000Z\nRRULE:FREQ=MONTHLY;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=-1\n",
        "2026-03-31T10:00 2026-04-30T10:00 2026-05-29T10:00 2026-06-30T10:00");
    row("DTSTART;VALUE=DATE:20000515\nRRULE:FREQ=YEARLY\n", "2026-05-14T22:00");
    row("DTSTART:20200101T100000Z\nRRULE:FREQ=HOURLY;INTERVAL=1000\n",
        "2026-04-11T02:00 2026-05-22T18:00");
    row("DTSTART;TZID=Europe/Berlin:20260301T090000\nRDATE;TZID=Europe/"
        "Berlin:20260310T100000,20260401T100000\n",
        "2026-03-01T08:00 2026-03-10T09:00 2026-04-01T08:00");
    row("DTSTART:20260301T090000Z\nRDATE;VALUE=PERIOD:20260310T100000Z/PT2H\n",
        "2026-03-01T09:00 2026-03-10T10:00");
    row("DTSTART;TZID=Europe/Berlin:20260301T090000\nRRULE:FREQ=DAILY;COUNT=4\n"
        "EXDATE;TZID=Europe/Berlin:20260302T090000\nEXDATE:20260303T080000Z\n",
        "2026-03-01T08:00 2026-03-04T08:00");
    row("DTSTART;VALUE=DATE:20260301\nRRULE:FREQ=DAILY;COUNT=3\nEXDATE;VALUE=DATE:20260302\n",
        "2026-02-28T23:00 2026-03-02T23:00");
    row("DTSTART:20260301T090000Z\nRRULE:FREQ=DAILY;COUNT=3\nEXDATE;VALUE=DATE:20260302\n",
        "2026-03-01T09:00 2026-03-03T09:00");
    row("DTSTART:20260301T090000Z\nRRULE:FREQ=SECONDLY\n", "2026-03-01T09:00");
}

void CalendarItemTest::rules()
{
    QFETCH(const QByteArray, lines);
    QFETCH(const QString, expected);
    QCOMPARE(starts(calendar(eventText(lines)), "2026-02-28T23:00:00Z", "2026-07-01T00:00:00Z"),
             expected);
}

void CalendarItemTest::replacedAndCancelledOccurrences()
{
    const QByteArray text = calendar(
        eventText("DTSTART;TZID=Europe/"
                  "Berlin:20260302T090000\nDURATION:PT1H\nRRULE:FREQ=DAILY;COUNT=5\n") +
        "BEGIN:VEVENT\nUID:one\nSUMMARY:Moved\nRECURRENCE-ID;TZID=Europe/Berlin:20260303T090000\n"
        "DTSTART;TZID=Europe/Berlin:20260310T150000\nDURATION:PT2H\nEND:VEVENT\n" +
        "BEGIN:VEVENT\nUID:one\nSUMMARY:Cancelled\nRECURRENCE-ID:20260304T080000Z\nSTATUS:"
        "CANCELLED\n"
        "DTSTART;TZID=Europe/Berlin:20260304T090000\nEND:VEVENT\n");
    QCOMPARE(occurrences(text, "2026-03-01T00:00:00Z", "2026-04-01T00:00:00Z"),
             (QStringList{u"Moved 2026-03-10T14:00/2026-03-10T16:00"_s,
                          u"One 2026-03-02T08:00/2026-03-02T09:00"_s,
                          u"One 2026-03-05T08:00/2026-03-05T09:00"_s,
                          u"One 2026-03-06T08:00/2026-03-06T09:00"_s}));
    // Also where only the new place is within the window.
    QCOMPARE(starts(text, "2026-03-09T00:00:00Z", "2026-04-01T00:00:00Z"), u"2026-03-10T14:00"_s);
}

void CalendarItemTest::severalEventsInOneFile()
{
    const QByteArray zone = "BEGIN:VTIMEZONE\nTZID:Office\nBEGIN:STANDARD\nDTSTART:"
                            "19700101T000000\nTZOFFSETFROM:+0530\n"
                            "TZOFFSETTO:+0530\nEND:STANDARD\nEND:VTIMEZONE\n";
    const QByteArray other =
        "BEGIN:VEVENT\nUID:two\nSUMMARY:Two\\, too\\nlong\nDTSTART;TZID=Office:20260302T090000\n"
        "BEGIN:VALARM\nDTSTART:20260302T090000Z\nSUMMARY:Alarm\nEND:VALARM\nEND:VEVENT\n";
    const QByteArray text = "\xEF\xBB\xBF" +
                            calendar(eventText("DTSTART:20260302T080000Z\n") + zone + other) +
                            calendar("BEGIN:VEVENT\nUID:x\nDTSTART:20260302T100000Z\n");
    QCOMPARE(occurrences(text, "2026-03-01T00:00:00Z", "2026-04-01T00:00:00Z"),
             (QStringList{u"One 2026-03-02T08:00/2026-03-02T08:00"_s,
                          u"Two, too long 2026-03-02T03:30/2026-03-02T03:30"_s}));
}

void CalendarItemTest::badInput_data()
{
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char *name, const QByteArray &text) { QTest::newRow(name) << text; };
    const QByteArray start = "DTSTART:20260302T100000Z\n";
    row("nothing", "");
    row("no iCalendar", "<html>BEGIN:VEVENT</html>");
    row("zeros", QByteArray(100000, '\0'));
    row("bytes", QByteArray("BEGIN:VEVENT\n\xff\xfe\x80:\xc3\x28\nEND:VEVENT\n"));
    row("no end", "BEGIN:VCALENDAR\nBEGIN:VEVENT\n" + start);
    row("only ends", QByteArray("END:VEVENT\n").repeated(1000));
    row("nested", QByteArray("BEGIN:VEVENT\n").repeated(100000));
    row("no start", calendar(eventText("")));
    row("wrong dates",
        calendar(eventText("DTSTART:20261399T990000Z\nDTEND:x\nRRULE:FREQ=DAILY\n")));
    row("year 9999", calendar(eventText(
                         "DTSTART:99991231T235959Z\nDTEND:99991231T235959Z\nRRULE:FREQ=DAILY\n")));
    row("wrong rule",
        calendar(eventText("DTSTART:20200302T100000Z\nRRULE:FREQ=NEVER;X=;COUNT=-1\n")));
    for (const char *rule : {"SECONDLY;BYMONTH=2;BYMONTHDAY=31", "MINUTELY;BYMONTH=2;BYMONTHDAY=31",
                             "HOURLY;BYMONTH=2;BYMONTHDAY=31", "DAILY;BYMONTH=2;BYMONTHDAY=31",
                             "MONTHLY;BYMONTH=2;BYMONTHDAY=31", "YEARLY;BYMONTH=2;BYMONTHDAY=31",
                             "MONTHLY;INTERVAL=12;BYMONTH=4", "MONTHLY;BYDAY=MO;BYSETPOS=40",
                             "MINUTELY;INTERVAL=60000"}) {
        row(rule,
            calendar(eventText(QByteArray("DTSTART:20200302T100000Z\nRRULE:FREQ=") + rule + '\n')));
    }
    row("a long rule",
        calendar(eventText("DTSTART:20200302T100000Z\nRRULE:FREQ=DAILY;BYDAY=" +
                           QByteArray("MO,").repeated(5000) + "MO;COUNT=2147483647\n")));
    row("absurd lengths", calendar(eventText("DTSTART:00010101T000000Z\nDURATION:P999999999W\n")));
    row("a zone that is none",
        calendar("BEGIN:VTIMEZONE\nTZID:Z\nEND:VTIMEZONE\n"
                 "BEGIN:VTIMEZONE\nTZID:Z\nBEGIN:STANDARD\nDTSTART:x\n"
                 "RRULE:FREQ=SECONDLY\nTZOFFSETTO:+9999\nEND:STANDARD\nEND:VTIMEZONE\n" +
                 eventText("DTSTART;TZID=Z:20200302T100000\nRRULE:FREQ=DAILY\n")));
}

/// Answers, before the time limit of the tests, with as few events as there are days.
void CalendarItemTest::badInput()
{
    QFETCH(QByteArray, text);
    QVERIFY(occurrences(text, "2026-03-01T00:00:00Z", "2026-03-03T00:00:00Z").size() < 5);
    QVERIFY(openTasks(text.replace("VEVENT", "VTODO")).size() < 5);
}

void CalendarItemTest::openTasksAreListed()
{
    const QByteArray text = calendar(
        taskText("") +
        taskText("SUMMARY:Due\nDUE;TZID=Europe/Berlin:20260701T100000\n")
            .replace("SUMMARY:One\n", "") +
        taskText("DUE;VALUE=DATE:20260701\nDTSTART;VALUE=DATE:20260601\nSTATUS:IN-PROCESS\n") +
        taskText("DTSTART:20260701T100000Z\nDURATION:PT1H\n") + taskText("STATUS:COMPLETED\n") +
        taskText("STATUS:CANCELLED\n") + taskText("COMPLETED:20260101T000000Z\n") +
        eventText("DTSTART:20260701T100000Z\n"));
    QCOMPARE(openTasks(text), (QStringList{u"One"_s, u"Due 2026-07-01T08:00"_s,
                                           u"One 2026-06-30T22:00"_s, u"One 2026-07-01T11:00"_s}));
}

void CalendarItemTest::completes_data()
{
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<QString>("dues"); // of what is open then, time after time
    const auto row = [](const char *name, const char *lines, const char *dues) {
        QTest::newRow(name) << QByteArray(lines) << QString::fromUtf8(dues);
    };
    row("once", "DUE:20260301T090000Z\n", "2026-03-01T09:00");
    row("weekly, three times",
        "DTSTART;TZID=Europe/Berlin:20260320T090000\nDUE;TZID=Europe/Berlin:20260320T100000\n"
        "RRULE:FREQ=WEEKLY;COUNT=3\n",
        "2026-03-20T09:00 2026-03-27T09:00 2026-04-03T08:00");
    row("on working days, until a day",
        "DUE;VALUE=DATE:20260305\nRRULE:FREQ=DAILY;BYDAY=MO,TU,WE,TH,FR;UNTIL=20260309\n",
        "2026-03-04T23:00 2026-03-05T23:00 2026-03-08T23:00");
    row("monthly, last day",
        "DTSTART;VALUE=DATE:20260131\nDUE;VALUE=DATE:20260201\n"
        "RRULE:FREQ=MONTHLY;BYMONTHDAY=-1;COUNT=3\n",
        "2026-01-31T23:00 2026-02-28T23:00 2026-03-31T22:00");
    row("with further and excepted dates",
        "DTSTART:20260301T090000Z\nDUE:20260301T100000Z\nRRULE:FREQ=DAILY;COUNT=4\n"
        "EXDATE:20260302T090000Z\nRDATE:20260303T150000Z\n",
        "2026-03-01T10:00 2026-03-03T10:00 2026-03-03T16:00 2026-03-04T10:00");
    row("with one done by another program",
        "DTSTART:20260301T090000Z\nDUE:20260301T100000Z\nRRULE:FREQ=DAILY;COUNT=3\nEND:VTODO\n"
        "BEGIN:VTODO\nUID:one\nRECURRENCE-ID:20260302T090000Z\nDTSTART:20260302T090000Z\nSTATUS:"
        "COMPLETED\n",
        "2026-03-01T10:00 2026-03-03T10:00");
    row("with one moved",
        "DTSTART:20260301T090000Z\nDUE:20260301T100000Z\nRRULE:FREQ=DAILY;COUNT=2\nEND:VTODO\n"
        "BEGIN:VTODO\nUID:one\nSUMMARY:One\nRECURRENCE-ID:20260302T090000Z\nDTSTART:"
        "20260305T090000Z\n"
        "DUE:20260305T090000Z\n",
        "2026-03-01T10:00 2026-03-05T09:00");
}

void CalendarItemTest::completes()
{
    QFETCH(const QByteArray, lines);
    QFETCH(const QString, dues);
    QByteArray text = calendar(taskText(lines));
    QStringList seen;
    while (seen.size() < 10 && !openTasks(text).isEmpty()) {
        seen << openTasks(text).first().section(QLatin1Char(' '), 1);
        const auto completed = withCompleted(text, "one", moment("2026-02-01T00:00:00Z"));
        QVERIFY(completed);
        text = *completed;
    }
    QCOMPARE(seen.join(QLatin1Char(' ')), dues);
    QVERIFY(text.contains("STATUS:COMPLETED\r\nCOMPLETED:20260201T000000Z") ||
            text.contains("COMPLETED:20260201T000000Z"));
}

void CalendarItemTest::editsLeaveTheRest()
{
    const QByteArray rest =
        "X-OTHER;X-P=\"a:b\":\xff\xfe, kept; as it is\n  and folded\nSTRANGE LINE\n"
        "BEGIN:VALARM\nTRIGGER:-PT5M\nSTATUS:NOT-OURS\nEND:VALARM\n";
    const QByteArray other = eventText("DTSTART:20260301T090000Z\nSTATUS:CONFIRMED\n");
    const QByteArray before =
        "BEGIN:VCALENDAR\n" + other + taskText("STATUS:NEEDS-ACTION\n" + rest) + "END:VCALENDAR\n";
    const QByteArray after = withCompleted(before, "one", 0).value();
    QByteArray expected = before;
    expected.replace("STATUS:NEEDS-ACTION\n", "STATUS:COMPLETED\n");
    QByteArray cut = after;
    for (const char *added : {"COMPLETED:19700101T000000Z\n", "PERCENT-COMPLETE:100\n",
                              "LAST-MODIFIED:19700101T000000Z\n", "DTSTAMP:19700101T000000Z\n"}) {
        QCOMPARE(cut.count(added), 1);
        cut.replace(added, "");
    }
    QCOMPARE(cut, expected);
    QVERIFY(!withCompleted(before, "another", 0));
}

void CalendarItemTest::removes()
{
    const QByteArray alone = calendar(taskText("") + "BEGIN:VTIMEZONE\nTZID:x\nEND:VTIMEZONE\n" +
                                      taskText("RECURRENCE-ID:20260301T090000Z\n"));
    QCOMPARE(withoutTask(alone, "one"), QByteArray());
    const QByteArray shared = calendar(eventText("") + taskText("X-A:b\n"));
    QCOMPARE(withoutTask(shared, "one"), calendar(eventText("")));
    QVERIFY(!withoutTask(shared, "two"));
}

QTEST_GUILESS_MAIN(CalendarItemTest)
#include "CalendarItemTest.moc"
