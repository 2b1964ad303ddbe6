#include "services/TodoService.h"

#include "support/FakeCalendar.h"
#include "support/MemoryStore.h"
#include "support/VirtualClock.h"

#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

const QString localKey = u"todo_local_v1"_s;
const QString trashKey = u"todo_trash_v1"_s;

/// The virtual clock begins on a Wednesday at ten.
QDateTime at(const QTime &time)
{
    return {QDate(2024, 5, 15), time};
}

struct Desk {
    VirtualClock clock;
    MemoryStore store;
    FakeReminderStore reminders;
    std::optional<TodoService> made;

    TodoService &service() { return made ? *made : made.emplace(clock, store, reminders); }

    void settle() { reminders.answers.give(); }

    void grant()
    {
        service().requestAccess();
        settle();
    }

    void refresh()
    {
        service().refresh();
        settle();
    }

    /// As it will be found by the next process.
    void restart() { made.reset(); }

    /// Mirrors have a star.
    QString shown()
    {
        QStringList titles;
        for (const TodoItem &item : service().items()) {
            titles << item.title + (item.reminderID ? u"*"_s : u""_s) +
                          (item.isCompleted ? u" (done)"_s : u""_s);
        }
        return titles.join(u", "_s);
    }

    QString trashed()
    {
        QStringList titles;
        for (const TrashedItem &each : service().trash()) {
            titles << each.item.title;
        }
        return titles.join(u", "_s);
    }

    TodoItem item(std::size_t index) { return service().items().at(index); }
    TodoItem trashedItem(std::size_t index) { return service().trash().at(index).item; }
};

} // namespace

class TodoServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void localTasks();
    void mirrorsReminders();
    void changesReminders();
    void failingStore();
    void changesThatCrossAnswers();
    void completion();
    void trash();
    void restoring();
    void storedForm();
    void unreadableListsAreKept_data();
    void unreadableListsAreKept();
    void writesOnlyWhatIsNew();
};

void TodoServiceTest::localTasks()
{
    Desk desk;
    for (const QString &title : {u"one"_s, u" two\t"_s, u" \t\u00a0"_s, QString()}) {
        desk.service().add(title);
    }
    QCOMPARE(desk.shown(), u" two\t, one"_s);
    desk.refresh(); // without access
    desk.clock.advance(5min);
    QCOMPARE(desk.reminders.fetches, 0);
    QCOMPARE(desk.reminders.calls, QStringList());
    desk.restart();
    QCOMPARE(desk.shown(), u" two\t, one"_s);
    QVERIFY(!desk.service().isAuthorized());
}

void TodoServiceTest::mirrorsReminders()
{
    Desk desk;
    desk.service().add(u"local"_s);
    desk.reminders.open = {{u"1"_s, u"undated"_s, {}},
                           {u"2"_s, u"late"_s, at({12, 0})},
                           {u"3"_s, {}, at({11, 0})},
                           {u"4"_s, u"early"_s, at({9, 0})},
                           {u"5"_s, u"no date"_s, QDateTime()}};
    desk.grant();
    QVERIFY(desk.service().isAuthorized());
    QCOMPARE(desk.shown(), u"local, early*, late*, undated*, no date*"_s);
    QVERIFY(!desk.item(4).dueDate);
    desk.service().add(u"new"_s); // on top until it is read again, and then the first of its kind
    desk.settle();
    QCOMPARE(desk.shown(), u"new*, local, early*, late*, undated*, no date*"_s);
    Q_EMIT desk.reminders.changed();
    Q_EMIT desk.reminders.changed();
    const int fetches = desk.reminders.fetches;
    desk.clock.advance(50ms);
    desk.settle();
    QCOMPARE(desk.reminders.fetches, fetches + 1);
    QCOMPARE(desk.shown(), u"local, early*, late*, new*, undated*, no date*"_s);
    desk.reminders.open.clear();
    desk.clock.advance(1min);
    desk.settle();
    QCOMPARE(desk.shown(), u"local"_s);
    desk.reminders.isGranted = false; // nothing is asked of the user at the next launch
    desk.restart();
    desk.reminders.open = {{u"1"_s, u"back"_s, {}}};
    desk.service().checkAccess();
    desk.settle();
    QVERIFY(!desk.service().isAuthorized());
    QCOMPARE(desk.shown(), u"local"_s);
    desk.reminders.isGranted = true;
    desk.clock.advance(1min);
    desk.settle();
    QCOMPARE(desk.shown(), u"local, back*"_s);
}

void TodoServiceTest::changesReminders()
{
    Desk desk;
    desk.reminders.open = {{u"a"_s, u"first"_s, at({11, 0})}, {u"b"_s, u"second"_s, at({12, 0})}};
    desk.grant();
    desk.service().complete(desk.item(0));
    desk.service().deleteItem(desk.item(1));
    desk.service().add(u" third "_s);
    desk.settle();
    desk.service().restore(desk.trashedItem(0));
    desk.settle();
    QCOMPARE(desk.reminders.calls,
             QStringList({u"complete a"_s, u"remove b"_s, u"add  third "_s, u"add second"_s}));
    desk.clock.advance(700ms);
    QCOMPARE(desk.shown(), u"second*,  third *"_s);
    QCOMPARE(*desk.item(0).dueDate, at({12, 0}));
    desk.refresh();
    QVERIFY(!desk.item(0).dueDate);
}

/// What was typed stays, whatever becomes of the reminder.
void TodoServiceTest::failingStore()
{
    Desk desk;
    desk.reminders.open = {{u"a"_s, u"mirror"_s, {}}};
    desk.grant();
    desk.reminders.isWorking = false;
    desk.service().add(u"typed"_s);
    desk.service().complete(desk.item(1));
    desk.settle();
    QCOMPARE(desk.shown(), u"typed, mirror* (done)"_s);
    desk.refresh();
    QVERIFY(desk.service().isAuthorized());
    desk.clock.advance(700ms);
    QCOMPARE(desk.shown(), u"typed"_s);
    desk.reminders.isWorking = true;
    desk.refresh();
    QCOMPARE(desk.shown(), u"typed, mirror*"_s);
    desk.restart();
    QCOMPARE(desk.shown(), u"typed, mirror*"_s);
}

void TodoServiceTest::changesThatCrossAnswers()
{
    Desk desk;
    desk.reminders.open = {{u"a"_s, u"one"_s, {}}};
    desk.grant();
    desk.service().refresh(); // reads before the change, answers after it
    desk.service().complete(desk.item(0));
    desk.reminders.answers.giveOne();
    QCOMPARE(desk.shown(), u"one* (done)"_s);
    desk.settle();
    QCOMPARE(desk.shown(), QString());

    desk.service().add(u"two"_s);
    desk.service().refresh(); // the mirror comes before the answer to the addition
    desk.reminders.answers.giveLast();
    desk.settle();
    QCOMPARE(desk.shown(), u"two*"_s);

    for (const QString &title : {u"deleted"_s, u"done"_s}) { // before they are reminders
        desk.service().add(title);
    }
    desk.service().complete(desk.item(0));
    desk.service().deleteItem(desk.item(1));
    desk.clock.advance(700ms);
    desk.settle();
    QCOMPARE(desk.reminders.calls.mid(4),
             QStringList({u"remove added-2"_s, u"complete added-3"_s}));
    desk.refresh();
    QCOMPARE(desk.shown(), u"two*"_s);
}

void TodoServiceTest::completion()
{
    Desk desk;
    desk.service().add(u"a"_s);
    desk.service().add(u"b"_s);
    const TodoItem a = desk.item(1);
    desk.service().complete(a);
    desk.clock.advance(300ms);
    desk.service().complete(a); // for nothing
    desk.service().complete(desk.item(0));
    QCOMPARE(desk.shown(), u"b (done), a (done)"_s);
    desk.clock.advance(399ms);
    QCOMPARE(desk.shown(), u"b (done), a (done)"_s);
    desk.clock.advance(1ms);
    QCOMPARE(desk.shown(), u"b (done)"_s);
    desk.service().add(u"c"_s); // stores the list as it is
    desk.restart();
    QCOMPARE(desk.shown(), u"c"_s);
    QCOMPARE(desk.trashed(), QString());
    desk.service().complete(a); // of yesterday
    QCOMPARE(desk.shown(), u"c"_s);
}

void TodoServiceTest::trash()
{
    Desk desk;
    desk.service().add(u"a"_s);
    desk.service().add(u"b"_s);
    desk.service().deleteItem(desk.item(1));
    desk.clock.advance(1min);
    desk.service().deleteItem(desk.item(0));
    QCOMPARE(desk.trashed(), u"b, a"_s);
    QCOMPARE(desk.shown(), QString());
    QSignalSpy changes(&desk.service(), &TodoService::trashChanged);
    desk.clock.suspend(7 * 24h - 2min);
    desk.clock.advance(1min); // of exactly the age
    QCOMPARE(desk.trashed(), u"b, a"_s);
    desk.clock.advance(1min);
    QCOMPARE(desk.trashed(), u"b"_s);
    QCOMPARE(changes.size(), 1);
    desk.clock.suspend(24h);
    desk.restart();
    QCOMPARE(desk.trashed(), u"b"_s); // not at the start
    desk.clock.advance(1min);
    QCOMPARE(desk.trashed(), QString());
}

void TodoServiceTest::restoring()
{
    Desk desk;
    desk.reminders.open = {{u"a"_s, u"mirror"_s, {}}};
    desk.grant();
    desk.service().deleteItem(desk.item(0));
    const QUuid id = desk.trashedItem(0).id;
    desk.restart();
    desk.service().restore(desk.trashedItem(0)); // without access
    QCOMPARE(desk.shown(), u"mirror*"_s);
    QCOMPARE(desk.item(0).id, id);
    QCOMPARE(desk.trashed(), QString());
    desk.service().deleteItem(desk.item(0));
    desk.grant();
    desk.service().restore(desk.trashedItem(0));
    QVERIFY(desk.item(0).id != id);
    desk.settle();
    desk.refresh();
    QCOMPARE(desk.shown(), u"mirror*"_s);
    QCOMPARE(*desk.item(0).reminderID, u"added-1"_s);
}

void TodoServiceTest::storedForm()
{
    const QByteArray id = "6BA7B810-9DAD-11D1-80B4-00C04FD430C8";
    const QByteArray items = R"([{"id":")" + id +
                             R"(","title":"Käse \"☃\"","isCompleted":false,)"
                             R"("dueDate":737467200.25,"reminderID":"r"},)"
                             R"({"id":")" +
                             id + R"(","title":"","isCompleted":false}])";
    const QByteArray trash = R"([{"item":{"id":")" + id +
                             R"(","title":"x","isCompleted":false},"deletedDate":737467200.5}])";
    Desk desk;
    desk.store.setData(localKey, items);
    desk.store.setData(trashKey, trash);
    QCOMPARE(desk.item(0).title, u"Käse \"☃\""_s);
    QCOMPARE(*desk.item(0).dueDate,
             QDateTime({2024, 5, 15}, {12, 0, 0, 250}, Qt::UTC)); // 2001 and 8535.5 days
    QCOMPARE(encodeTodoItems(desk.service().items()), items);
    QCOMPARE(encodeTrashedItems(desk.service().trash()), trash);
    const QByteArray lenient = R"([{"reminderID":null,"dueDate":null,"isCompleted":false,)"
                               R"("title":"a","id":")" +
                               id.toLower() + R"(","more":[]}])";
    QCOMPARE(decodeTodoItems(lenient)->front().id, QUuid(QString::fromLatin1(id)));
}

void TodoServiceTest::unreadableListsAreKept_data()
{
    const auto task = [](const char *field) {
        return QByteArray(R"([{"id":"6BA7B810-9DAD-11D1-80B4-00C04FD430C8","title":"a",)") + field +
               "}]";
    };
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("no JSON") << QByteArray("[{");
    QTest::newRow("no list") << QByteArray("{}");
    QTest::newRow("no tasks") << QByteArray("[1]");
    QTest::newRow("bad encoding") << QByteArray("[\"\xff\"]");
    QTest::newRow("no state") << task(R"("x":1)");
    QTest::newRow("state of another kind") << task(R"("isCompleted":1)");
    QTest::newRow("date of another kind") << task(R"("isCompleted":true,"dueDate":"soon")");
    QTest::newRow("date beyond all time") << task(R"("isCompleted":true,"dueDate":1e300)");
    QTest::newRow("no identifier") << QByteArray(R"([{"id":"a","title":"","isCompleted":true}])");
}

void TodoServiceTest::unreadableListsAreKept()
{
    QFETCH(const QByteArray, data);
    Desk desk;
    desk.store.setData(localKey, data);
    desk.store.setData(trashKey, R"([{"item":{"id":"6BA7B810-9DAD-11D1-80B4-00C04FD430C8",)"
                                 R"("title":"x","isCompleted":false},"deletedDate":0}])");
    for (int start = 0; start < 2; ++start) { // without a change, the second finds the same again
        QCOMPARE(desk.shown(), QString());
        QCOMPARE(desk.trashed(), u"x"_s);
        desk.restart();
    }
    desk.service().add(u"new"_s);
    desk.store.setData(localKey, "[broken again");
    desk.restart();
    QCOMPARE(desk.shown(), QString());
    QCOMPARE(*desk.store.data(u"todo_local_v1.unreadable-1"_s), data);
    QCOMPARE(*desk.store.data(u"todo_local_v1.unreadable-2"_s), QByteArray("[broken again"));
    QCOMPARE(desk.store.values.size(), 4U);
}

/// The lists are read again every minute, for as long as the machine runs.
void TodoServiceTest::writesOnlyWhatIsNew()
{
    Desk desk;
    desk.reminders.open = {{u"a"_s, u"one"_s, at({11, 0})}, {u"b"_s, u"two"_s, {}}};
    desk.grant();
    desk.clock.advance(1min);
    desk.settle();
    QSignalSpy changes(&desk.service(), &TodoService::itemsChanged);
    desk.store.written.clear();
    for (int minute = 0; minute < 100; ++minute) {
        desk.clock.advance(1min);
        desk.settle();
    }
    QCOMPARE(desk.store.written, QStringList());
    QCOMPARE(changes.size(), 0);
    desk.reminders.open.front().title = u"other"_s;
    desk.refresh();
    QCOMPARE(desk.store.written, QStringList(localKey));
    QCOMPARE(desk.shown(), u"other*, two*"_s);
}

QTEST_GUILESS_MAIN(TodoServiceTest)
#include "TodoServiceTest.moc"
