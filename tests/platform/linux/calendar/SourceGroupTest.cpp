#include "platform/linux/calendar/SourceGroup.h"

#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace Qt::Literals::StringLiterals;

namespace
{

const QDateTime morning(QDate(2026, 3, 2), QTime(9, 0));

TimedEvent eventOf(const char *id, int hours)
{
    const QDateTime start = morning.addSecs(hours * 3600);
    const qint64 moment = start.toSecsSinceEpoch();
    return {
        moment,
        moment + 60,
        {QString::fromLatin1(id), QString::fromLatin1(id), start, start.addSecs(60), false, {}}};
}

/// What a source has. Changed while nothing is asked.
struct Contents {
    std::optional<std::vector<TimedEvent>> events = std::vector<TimedEvent>();
    std::vector<Reminder> reminders;
    bool isUsable = true;
    bool isSlow = false;
    QSemaphore mayAnswer; ///< of a slow one
};

class FakeSource final : public CalendarSource
{
public:
    explicit FakeSource(Contents &contents)
        : m_contents(contents)
    {
    }

    bool isUsable() override { return m_contents.isUsable; }
    std::optional<std::vector<TimedEvent>> events(const TimeWindow & /*window*/) override
    {
        if (m_contents.isSlow) {
            m_contents.mayAnswer.acquire();
        }
        return m_contents.events;
    }
    std::optional<std::vector<Reminder>> reminders() override { return m_contents.reminders; }
    std::optional<QString> add(const QString &title) override
    {
        if (!m_contents.isUsable) {
            return std::nullopt;
        }
        m_contents.reminders.push_back({title, title, {}});
        return title;
    }
    bool complete(const QString &id) override { return remove(id); }
    bool remove(const QString &id) override
    {
        return std::erase_if(m_contents.reminders,
                             [&id](const Reminder &one) { return one.id == id; }) > 0;
    }

private:
    Contents &m_contents;
};

/// Two sources, and the roles over both.
struct Two {
    Two()
    {
        for (Contents &one : contents) {
            group->add({[&one] { return std::make_unique<FakeSource>(one); },
                        [&one] { one.mayAnswer.release(100); }});
        }
    }

    void ask()
    {
        titles = u"not yet"_s;
        stores.events->fetchEvents(morning, morning.addDays(1), &context, [this](auto events) {
            QStringList found;
            for (const CalendarEvent &event : events.value_or(std::vector<CalendarEvent>())) {
                found << event.title;
            }
            titles = events ? found.join(QLatin1Char(' ')) : u"none"_s;
        });
    }

    template<typename Answer, typename Call>
    Answer answerOf(Call call)
    {
        std::optional<Answer> answer;
        call([&answer](const Answer &given) { answer = given; });
        return QTest::qWaitFor([&answer] { return answer.has_value(); }) ? *answer : Answer();
    }

    std::array<Contents, 2> contents;
    std::shared_ptr<SourceGroup> group = std::make_shared<SourceGroup>();
    CalendarStores stores = storesOver(group);
    QObject context;
    QString titles;
};

} // namespace

class SourceGroupTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsEventsOnce();
    void aSlowSourceHoldsNobodyUp();
    void oneUsableSourceIsEnough();
    void remindersGoWhereTheyCan();
};

void SourceGroupTest::showsEventsOnce()
{
    Two two;
    two.contents[0].events = {eventOf("a", 3), eventOf("b", 1), eventOf("", 4), eventOf("x", 24)};
    two.contents[1].events = {eventOf("a", 3), eventOf("a", 2), eventOf("", 4), eventOf("y", -1)};
    two.ask();
    QTRY_COMPARE(two.titles, u"b a a  "_s);
}

void SourceGroupTest::aSlowSourceHoldsNobodyUp()
{
    Two two;
    two.contents[0].events = {eventOf("quick", 1)};
    two.contents[1].events = {eventOf("slow", 2)};
    two.ask();
    QTRY_COMPARE(two.titles, u"quick slow"_s);

    two.contents[1].isSlow = true;
    two.ask();
    QTRY_COMPARE(two.titles, u"quick slow"_s); // what it said last
    QSignalSpy changed(two.stores.events.get(), &CalendarStore::changed);
    two.contents[1].events = {eventOf("late", 2)};
    two.contents[1].mayAnswer.release();
    QTRY_COMPARE(changed.size(), 1);
    two.contents[1].mayAnswer.release();
    two.ask();
    QTRY_COMPARE(two.titles, u"quick late"_s);

    two.ask(); // ends while that is going on
}

void SourceGroupTest::oneUsableSourceIsEnough()
{
    Two two;
    two.contents[0].events = {eventOf("a", 1)};
    two.contents[1].events = std::nullopt;
    two.contents[1].isUsable = false;
    const auto access = [&two] {
        return two.answerOf<bool>(
            [&](auto done) { two.stores.reminders->checkAccess(&two.context, done); });
    };
    two.ask();
    QTRY_COMPARE(two.titles, u"a"_s);
    QVERIFY(access());
    two.contents[0].isUsable = false;
    QVERIFY(!access());

    Two silent;
    silent.contents[0].events = silent.contents[1].events = std::nullopt;
    silent.ask();
    QTRY_COMPARE(silent.titles, u"none"_s);
}

void SourceGroupTest::remindersGoWhereTheyCan()
{
    Two two;
    const auto add = [&two](const char *title) {
        return two.answerOf<std::optional<QString>>([&](auto done) {
            two.stores.reminders->add(QString::fromLatin1(title), &two.context, done);
        });
    };
    QVERIFY(add("one"));
    QCOMPARE(two.contents[1].reminders.size(), std::size_t(1));
    two.contents[1].isUsable = false;
    QVERIFY(add("two"));
    QCOMPARE(two.contents[0].reminders.size(), std::size_t(1));
    two.contents[0].isUsable = false;
    QVERIFY(!add("three"));

    two.contents[1].reminders.push_back({u"two"_s, u"two"_s, {}});
    const auto open = [&two] {
        return two
            .answerOf<std::optional<std::vector<Reminder>>>(
                [&](auto done) { two.stores.reminders->fetchOpen(&two.context, done); })
            ->size();
    };
    QCOMPARE(open(), std::size_t(2));
    const auto complete = [&two](const char *id) {
        return two.answerOf<bool>([&](auto done) {
            two.stores.reminders->complete(QString::fromLatin1(id), &two.context, done);
        });
    };
    QVERIFY(complete("two"));
    QVERIFY(!complete("three"));
    QCOMPARE(open(), std::size_t(1)); // in both
}

QTEST_GUILESS_MAIN(SourceGroupTest)
#include "SourceGroupTest.moc"
