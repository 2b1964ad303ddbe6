#include "widgets/CalendarModel.h"
#include "widgets/ShownWidget.h"

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class CalendarWidgetViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsTheState();
    void coloursCanBeRead();
};

void CalendarWidgetViewTest::showsTheState()
{
    ShownWidget shown("calendar", 154);
    FakeCalendarStore &store = shown.platform.calendar;
    const auto texts = [&shown] { return shown.texts("NotchText").join(u", "_s); };
    const auto event = [&shown](const QString &title, qint64 start, qint64 end) {
        const QDateTime now = shown.clock.now();
        return CalendarEvent{title, title, now.addSecs(start), now.addSecs(end), false, Qt::red};
    };
    QCOMPARE(texts(), u"Grant Calendar Access"_s);
    shown.services.calendarService()->requestAccess();
    store.answers.give();
    QCOMPARE(texts(), u"No events today"_s);

    const QString title = u"A title\nof lines that has no room"_s;
    store.events = std::vector{event(title, 150, 1350)};
    Q_EMIT store.changed();
    shown.clock.advance(50ms);
    store.answers.give();
    QCOMPARE(texts(), u"In 2m, , A title of lines that has no room, 10:02 AM – 10:22 AM"_s);
    QVERIFY(shown.items("NotchText").at(2)->property("truncated").toBool());
    shown.clock.setNow(shown.clock.now().addSecs(20)); // half a minute into a minute
    store.events->push_back(event(u"Other"_s, 2000, 3000));
    store.questions.clear();
    shown.clock.advance(60s); // of the service
    store.answers.give();
    QCOMPARE(texts(), u"In 1m, +1, A title of lines that has no room, 10:02 AM – 10:22 AM"_s);
    shown.clock.advance(70s);
    QCOMPARE(texts(), u"LIVE, +1, A title of lines that has no room, Ends 20m"_s);
    QCOMPARE(shown.items("velmora::RoundedRectangle").size(), 2); // with a halo
    shown.clock.advance(60s);
    QCOMPARE(texts(), u"LIVE, +1, A title of lines that has no room, Ends 19m"_s);
    QVERIFY(store.questions.size() >= 6); // by the view as well
    shown.end();
}

void CalendarWidgetViewTest::coloursCanBeRead()
{
    QCOMPARE(onBlack(Qt::red).hue(), QColor(Qt::red).hue());
    QCOMPARE(onBlack(Qt::yellow), QColor(Qt::yellow));
    for (const QColor dark : {Qt::black, Qt::darkBlue, Qt::blue, Qt::darkGreen, Qt::darkRed}) {
        const QColor light = onBlack(dark);
        QVERIFY(qGray(light.rgb()) > 90);
        QVERIFY(dark == Qt::black || light.hue() == dark.hue());
    }
}

QTEST_MAIN(CalendarWidgetViewTest)
#include "CalendarWidgetViewTest.moc"
