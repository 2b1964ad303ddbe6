#include "platform/linux/calendar/CalendarStores.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <map>
#include <set>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace velmora;
using namespace Qt::Literals::StringLiterals;

namespace
{

constexpr int patience = 20'000; // milliseconds, for a loaded machine
const QDateTime today(QDate(2026, 3, 2), QTime(0, 0), Qt::UTC);

QByteArray eventText(const QByteArray &title, const QByteArray &start = "20260302T100000Z",
                     const QByteArray &more = {})
{
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VEVENT\r\nUID:" + title +
           "\r\nSUMMARY:" + title + "\r\nDTSTART:" + start + "\r\n" + more +
           "END:VEVENT\r\nEND:VCALENDAR\r\n";
}

QByteArray taskText(const QByteArray &title, const QByteArray &more = {})
{
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VTODO\r\nUID:" + title +
           "\r\nSUMMARY:" + title + "\r\n" + more + "END:VTODO\r\nEND:VCALENDAR\r\n";
}

/// A folder of our own and one of the user's, and the stores over both.
struct Place {
    QTemporaryDir folder;
    QString own = folder.filePath(u"own/velmora/calendars"_s);
    QString other = folder.filePath(u"other"_s);
    BusConnection bus{QDBusConnection(u"none"_s)};
    CalendarStores stores = made();
    QObject context;

    [[nodiscard]] CalendarStores made()
    {
        qputenv("XDG_DATA_HOME", QFile::encodeName(path(u"own"_s)));
        return makeCalendarStores(bus, other);
    }
    [[nodiscard]] QString path(const QString &name) const { return folder.filePath(name); }

    void write(const QString &name, const QByteArray &text) const
    {
        QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
        QSaveFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size() &&
                file.commit());
    }

    [[nodiscard]] QByteArray text(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// The names in a folder, hidden ones too.
    [[nodiscard]] std::set<QString> files(const QString &name) const
    {
        const QStringList names =
            QDir(path(name)).entryList(QDir::Files | QDir::Hidden | QDir::System);
        return {names.begin(), names.end()};
    }

    /// Waits for the answer of a call that takes the context and a callback.
    template<typename Answer, typename Call>
    Answer answerOf(Call call)
    {
        std::optional<Answer> answer;
        call([&answer](const Answer &given) { answer = given; });
        if (!QTest::qWaitFor([&answer] { return answer.has_value(); }, patience)) {
            qFatal("no answer");
        }
        return *answer;
    }

    std::optional<std::vector<CalendarEvent>> fetch(const QDateTime &from = today, int hours = 24)
    {
        return answerOf<std::optional<std::vector<CalendarEvent>>>([&](auto done) {
            stores.events->fetchEvents(from, from.addSecs(hours * 3600), &context, done);
        });
    }

    /// The titles of a day's events, by start, or "none" where there is no answer.
    QString titles(const QDateTime &from = today)
    {
        const auto events = fetch(from);
        QStringList found;
        for (const CalendarEvent &one : events.value_or(std::vector<CalendarEvent>())) {
            found << one.title;
        }
        return events ? found.join(QLatin1Char(' ')) : u"none"_s;
    }

    /// Identifiers and titles of what is open.
    std::map<QString, QString> open()
    {
        const auto reminders = answerOf<std::optional<std::vector<Reminder>>>(
            [&](auto done) { stores.reminders->fetchOpen(&context, done); });
        std::map<QString, QString> found;
        for (const Reminder &one : reminders.value_or(std::vector<Reminder>())) {
            found[one.id] = one.title;
        }
        return found;
    }

    std::optional<QString> add(const QString &title)
    {
        return answerOf<std::optional<QString>>(
            [&](auto done) { stores.reminders->add(title, &context, done); });
    }
    bool complete(const QString &id)
    {
        return answerOf<bool>([&](auto done) { stores.reminders->complete(id, &context, done); });
    }
    bool remove(const QString &id)
    {
        return answerOf<bool>([&](auto done) { stores.reminders->remove(id, &context, done); });
    }
    bool access()
    {
        return answerOf<bool>([&](auto done) { stores.reminders->requestAccess(&context, done); });
    }
};

} // namespace

class FolderStoresTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsCalendarsOfAllFolders();
    void whatCannotBeReadIsPassedOver();
    void accessNeedsAFolder();
    void changesShow_data();
    void changesShow();
    void readsNothingWhileNothingChanges();
    void theWindowMovesOn();
    void keepsReminders();
    void newRemindersGoToTheUsersList();
    void anotherProgramsChangesStay();
    void fullDiskLosesNothing();
    void answersEndWithWhoeverAsked();
};

void FolderStoresTest::showsCalendarsOfAllFolders()
{
    Place place;
    QCOMPARE(place.titles(), QString());
    place.write(u"own/velmora/calendars/a/1.ics"_s, eventText("Late", "20260302T180000Z"));
    place.write(u"other/in-root.ics"_s, eventText("Early", "20260302T010000Z"));
    place.write(u"other/b/color"_s, "#1a2b3cFF\n");
    place.write(u"other/b/displayname"_s, "Anything");
    place.write(u"other/b/2.ics"_s, eventText("Noon", "20260302T120000Z", "DURATION:PT1H\r\n"));
    place.write(u"other/b/.hidden.ics"_s, eventText("Hidden"));
    place.write(u"other/b/3.ics.tmp"_s, eventText("Unfinished"));
    QVERIFY(QFile::link(u".."_s, place.path(u"other/b/circle"_s)));
    QVERIFY(QFile::link(place.other, place.path(u"other/again"_s)));
    // Nothing of all this needs a notice: the folders come up while nobody could watch them.
    QCOMPARE(place.titles(), u"Early Noon Late"_s);
    const auto events = place.fetch();
    const CalendarEvent expected{u"Noon"_s,
                                 u"Noon"_s,
                                 today.addSecs(12 * 3600).toLocalTime(),
                                 today.addSecs(13 * 3600).toLocalTime(),
                                 false,
                                 QColor(0x1a, 0x2b, 0x3c)};
    QVERIFY(events->at(1) == expected);
    QVERIFY(!events->at(0).color.isValid());
    // The time that is asked about ends before its last moment.
    QCOMPARE(place.fetch(today.addSecs(13 * 3600), 5)->size(), std::size_t(0));
    QCOMPARE(place.fetch(today.addSecs(12 * 3600 + 1), 5)->size(), std::size_t(1));
}

void FolderStoresTest::whatCannotBeReadIsPassedOver()
{
    Place place;
    place.write(u"other/a/1.ics"_s, eventText("Good"));
    place.write(u"other/a/2.ics"_s, "nothing of the kind");
    place.write(u"other/a/large.ics"_s, eventText("Large"));
    QVERIFY(QFile::resize(place.path(u"other/a/large.ics"_s), 50LL * 1024 * 1024));
    QVERIFY(QFile::link(u"/dev/zero"_s, place.path(u"other/a/endless.ics"_s)));
    QVERIFY(QFile::link(u"nowhere"_s, place.path(u"other/a/dangling.ics"_s)));
    QVERIFY(QFile::link(u"self.ics"_s, place.path(u"other/a/self.ics"_s)));
    QVERIFY(QDir().mkpath(place.path(u"other/a/folder.ics"_s)));
    QCOMPARE(mkfifo(qPrintable(place.path(u"other/a/pipe.ics"_s)), 0600), 0);
    QCOMPARE(place.titles(), u"Good"_s);
}

void FolderStoresTest::accessNeedsAFolder()
{
    Place place;
    QVERIFY(place.access());
    QVERIFY(QDir(place.own).exists());

    QVERIFY(QDir(place.own).removeRecursively());
    place.write(u"own/velmora/calendars"_s, "no folder");
    QVERIFY(!place.access());
    QCOMPARE(place.titles(), u"none"_s);
    QVERIFY(!place.add(u"Task"_s));
    QVERIFY(QDir().mkpath(place.other));
    QVERIFY2(place.access(), "the user's folder is enough");
}

void FolderStoresTest::changesShow_data()
{
    using Change = std::function<void(Place &)>;
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const Change &change, const char *expected) {
        QTest::newRow(name) << change << QString::fromUtf8(expected);
    };
    row(
        "new file", [](Place &p) { p.write(u"other/a/2.ics"_s, eventText("Two")); }, "One Two");
    row(
        "changed in place",
        [](Place &p) {
            QFile file(p.path(u"other/a/1.ics"_s));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(eventText("Other"));
        },
        "Other");
    row(
        "removed", [](Place &p) { QFile::remove(p.path(u"other/a/1.ics"_s)); }, "");
    row(
        "new calendar", [](Place &p) { p.write(u"other/b/2.ics"_s, eventText("Two")); }, "One Two");
    row(
        "first of the own folder",
        [](Place &p) {
            p.write(u"own/velmora/calendars/b/2.ics"_s, eventText("Two"));
            p.write(u"other/a/3.ics"_s, eventText("Three")); // for the notice
        },
        "One Three Two");
    row(
        "calendar taken away",
        [](Place &p) { QDir().rename(p.path(u"other/a"_s), p.path(u"elsewhere"_s)); }, "");
    row(
        "calendar put in its place",
        [](Place &p) {
            QDir(p.path(u"other/a"_s)).removeRecursively();
            p.write(u"other/a/2.ics"_s, eventText("Two"));
        },
        "Two");
    row(
        "link to a calendar",
        [](Place &p) {
            p.write(u"elsewhere/2.ics"_s, eventText("Two"));
            QFile::link(p.path(u"elsewhere"_s), p.path(u"other/linked"_s));
        },
        "One Two");
}

void FolderStoresTest::changesShow()
{
    using Change = std::function<void(Place &)>;
    QFETCH(const Change, change);
    QFETCH(const QString, expected);
    Place place;
    place.write(u"other/a/1.ics"_s, eventText("One"));
    QCOMPARE(place.titles(), u"One"_s);
    QSignalSpy spy(place.stores.events.get(), &CalendarStore::changed);
    change(place);
    QTRY_VERIFY_WITH_TIMEOUT(!spy.isEmpty(), patience);
    const auto sorted = [&place] {
        QStringList titles = place.titles().split(QLatin1Char(' '));
        titles.sort();
        return titles.join(QLatin1Char(' '));
    };
    QTRY_COMPARE_WITH_TIMEOUT(sorted(), expected, patience);
}

/// Neither refreshes nor notices of what is no item open a file.
void FolderStoresTest::readsNothingWhileNothingChanges()
{
    Place place;
    place.write(u"other/a/1.ics"_s, eventText("One", "20260302T100000Z", "RRULE:FREQ=DAILY\r\n"));
    place.write(u"other/a/2.ics"_s, taskText("Two"));
    QCOMPARE(place.titles(), u"One"_s);
    const int watch = inotify_init1(IN_NONBLOCK);
    const auto close = qScopeGuard([watch] { ::close(watch); });
    QVERIFY(inotify_add_watch(watch, qPrintable(place.path(u"other/a"_s)), IN_OPEN) >= 0);
    for (int minute = 0; minute < 24 * 60; minute += 60) {
        QVERIFY(place.fetch(today.addSecs(minute * 60)));
        QCOMPARE(place.open().size(), std::size_t(1));
    }
    char buffer[4096];
    QCOMPARE(::read(watch, buffer, sizeof buffer), ssize_t(-1));
}

void FolderStoresTest::theWindowMovesOn()
{
    Place place;
    place.write(u"other/a/1.ics"_s,
                eventText("weekly", "20250303T120000Z", "RRULE:FREQ=WEEKLY\r\n"));
    place.write(u"other/a/2.ics"_s, eventText("long", "20260303T130000Z", "DURATION:P3D\r\n"));
    const QStringList expected{u"weekly"_s, u"long"_s, u"long"_s, u"long"_s,
                               u"long"_s,   QString(), QString(), u"weekly"_s};
    for (int day = 0; day < expected.size(); ++day) {
        QCOMPARE(place.titles(today.addDays(day)), expected.at(day));
    }
    QCOMPARE(place.titles(today.addDays(3)), expected.at(3)); // a clock that is set back
}

void FolderStoresTest::keepsReminders()
{
    Place place;
    QCOMPARE(place.open().size(), std::size_t(0));
    const QString title = u"Wäsche; \"aufhängen\", \\ — "_s + u"مهمة "_s.repeated(40);
    const auto id = place.add(title);
    QVERIFY(id);
    QCOMPARE(place.open(), (std::map<QString, QString>{{*id, title.simplified()}}));
    QCOMPARE(place.files(u"own/velmora/calendars/tasks"_s),
             (std::set{*id + u".ics"_s, u"displayname"_s}));
    const auto second = place.add(u"Second"_s);
    // What another instance finds on the disk.
    place.stores = place.made();
    QCOMPARE(place.open().size(), std::size_t(2));
    QVERIFY(place.complete(*id));
    QCOMPARE(place.open(), (std::map<QString, QString>{{*second, u"Second"_s}}));
    QVERIFY(!place.complete(*id));
    QVERIFY(place.remove(*second));
    QVERIFY(!place.remove(*second));
    QCOMPARE(place.files(u"own/velmora/calendars/tasks"_s),
             (std::set{*id + u".ics"_s, u"displayname"_s}));
}

void FolderStoresTest::newRemindersGoToTheUsersList()
{
    Place place;
    place.write(u"other/events/1.ics"_s, eventText("One"));
    place.write(u"other/list/1.ics"_s, taskText("Done", "STATUS:COMPLETED\r\n"));
    QVERIFY(place.add(u"Task"_s));
    QCOMPARE(place.files(u"other/list"_s).size(), std::size_t(2));
    QVERIFY(!QDir(place.own).exists());
}

void FolderStoresTest::anotherProgramsChangesStay()
{
    Place place;
    place.write(u"other/a/1.ics"_s, taskText("One"));
    place.write(u"elsewhere.ics"_s, taskText("Linked"));
    QFile::link(u"../../elsewhere.ics"_s, place.path(u"other/a/link.ics"_s));
    QCOMPARE(place.open().size(), std::size_t(2));
    place.write(u"other/a/1.ics"_s, taskText("One", "PRIORITY:1\r\n"));
    QVERIFY(place.complete(u"One"_s));
    QVERIFY(place.text(u"other/a/1.ics"_s).contains("PRIORITY:1"));
    QVERIFY(place.text(u"other/a/1.ics"_s).contains("STATUS:COMPLETED"));
    QVERIFY(place.complete(u"Linked"_s));
    QVERIFY(QFileInfo(place.path(u"other/a/link.ics"_s)).isSymLink());
    QVERIFY(place.text(u"elsewhere.ics"_s).contains("STATUS:COMPLETED"));
    QCOMPARE(place.open().size(), std::size_t(0));
}

void FolderStoresTest::fullDiskLosesNothing()
{
    Place place;
    const auto kept = place.add(u"Kept"_s);
    const QString folder = u"own/velmora/calendars/tasks"_s;
    const std::set<QString> before = place.files(folder);
    const QString file = folder + QLatin1Char('/') + *kept + u".ics"_s;
    const QByteArray text = place.text(file);

    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit none{50, limit.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &none);
    const auto added = place.add(u"Lost"_s);
    const bool isCompleted = place.complete(*kept);
    setrlimit(RLIMIT_FSIZE, &limit);

    QVERIFY(!added);
    QVERIFY(!isCompleted);
    QCOMPARE(place.files(folder), before);
    QCOMPARE(place.text(file), text);
    QCOMPARE(place.open().size(), std::size_t(1));
    QVERIFY(place.complete(*kept));
}

void FolderStoresTest::answersEndWithWhoeverAsked()
{
    Place place;
    place.write(u"other/a/1.ics"_s, taskText("One"));
    auto context = std::make_unique<QObject>();
    bool isCalled = false;
    place.stores.reminders->complete(u"One"_s, context.get(), [&](bool) { isCalled = true; });
    QVERIFY(!isCalled);
    context.reset();
    QCOMPARE(place.open().size(), std::size_t(0)); // it was done all the same
    QVERIFY(!isCalled);

    place.stores.events->fetchEvents(today, today.addDays(1), &place.context,
                                     [&](auto) { isCalled = true; });
    place.stores = {};
    QCoreApplication::processEvents();
    QVERIFY(!isCalled);
}

QTEST_GUILESS_MAIN(FolderStoresTest)
#include "FolderStoresTest.moc"
