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
    QString own = folder.filePath(QStringLiteral("own/velmora/calendars"));
    QString other = folder.filePath(QStringLiteral("other"));
    BusConnection bus{QDBusConnection(QStringLiteral("none"))};
    CalendarStores stores = made();
    QObject context;

    [[nodiscard]] CalendarStores made()
    {
        qputenv("XDG_DATA_HOME", QFile::encodeName(path(QStringLiteral("own"))));
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
        return events ? found.join(QLatin1Char(' ')) : QStringLiteral("none");
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
    bool access(bool isRequest)
    {
        return answerOf<bool>([&](auto done) {
            isRequest ? stores.reminders->requestAccess(&context, done)
                      : stores.events->checkAccess(&context, done);
        });
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
    place.write(QStringLiteral("own/velmora/calendars/a/1.ics"),
                eventText("Late", "20260302T180000Z"));
    place.write(QStringLiteral("other/in-root.ics"), eventText("Early", "20260302T010000Z"));
    place.write(QStringLiteral("other/b/color"), "#1a2b3cFF\n");
    place.write(QStringLiteral("other/b/displayname"), "Anything");
    place.write(QStringLiteral("other/b/2.ics"),
                eventText("Noon", "20260302T120000Z", "DURATION:PT1H\r\n"));
    place.write(QStringLiteral("other/b/.hidden.ics"), eventText("Hidden"));
    place.write(QStringLiteral("other/b/3.ics.tmp"), eventText("Unfinished"));
    QVERIFY(QFile::link(QStringLiteral(".."), place.path(QStringLiteral("other/b/circle"))));
    QVERIFY(QFile::link(place.other, place.path(QStringLiteral("other/again"))));
    // Nothing of all this needs a notice: the folders come up while nobody could watch them.
    QCOMPARE(place.titles(), QStringLiteral("Early Noon Late"));
    const auto events = place.fetch();
    const CalendarEvent expected{QStringLiteral("Noon"),
                                 QStringLiteral("Noon"),
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
    place.write(QStringLiteral("other/a/1.ics"), eventText("Good"));
    place.write(QStringLiteral("other/a/2.ics"), "nothing of the kind");
    place.write(QStringLiteral("other/a/large.ics"), eventText("Large"));
    QVERIFY(QFile::resize(place.path(QStringLiteral("other/a/large.ics")), 50LL * 1024 * 1024));
    QVERIFY(QFile::link(QStringLiteral("/dev/zero"),
                        place.path(QStringLiteral("other/a/endless.ics"))));
    QVERIFY(
        QFile::link(QStringLiteral("nowhere"), place.path(QStringLiteral("other/a/dangling.ics"))));
    QVERIFY(
        QFile::link(QStringLiteral("self.ics"), place.path(QStringLiteral("other/a/self.ics"))));
    QVERIFY(QDir().mkpath(place.path(QStringLiteral("other/a/folder.ics"))));
    QCOMPARE(mkfifo(qPrintable(place.path(QStringLiteral("other/a/pipe.ics"))), 0600), 0);
    QCOMPARE(place.titles(), QStringLiteral("Good"));
}

void FolderStoresTest::accessNeedsAFolder()
{
    Place place;
    QVERIFY(place.access(true));
    QVERIFY(QDir(place.own).exists());

    QVERIFY(QDir(place.own).removeRecursively());
    place.write(QStringLiteral("own/velmora/calendars"), "no folder");
    QVERIFY(!place.access(false));
    QVERIFY(!place.access(true));
    QCOMPARE(place.titles(), QStringLiteral("none"));
    QVERIFY(!place.add(QStringLiteral("Task")));
    QVERIFY(QDir().mkpath(place.other));
    QVERIFY2(place.access(false), "the user's folder is enough");
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
        "new file", [](Place &p) { p.write(QStringLiteral("other/a/2.ics"), eventText("Two")); },
        "One Two");
    row(
        "changed in place",
        [](Place &p) {
            QFile file(p.path(QStringLiteral("other/a/1.ics")));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(eventText("Other"));
        },
        "Other");
    row(
        "removed", [](Place &p) { QFile::remove(p.path(QStringLiteral("other/a/1.ics"))); }, "");
    row(
        "cancelled",
        [](Place &p) {
            p.write(QStringLiteral("other/a/1.ics"),
                    eventText("One", "20260302T100000Z", "STATUS:CANCELLED\r\n"));
        },
        "");
    row(
        "new calendar",
        [](Place &p) { p.write(QStringLiteral("other/b/2.ics"), eventText("Two")); }, "One Two");
    row(
        "first of the own folder",
        [](Place &p) {
            p.write(QStringLiteral("own/velmora/calendars/b/2.ics"), eventText("Two"));
            p.write(QStringLiteral("other/a/3.ics"), eventText("Three")); // for the notice
        },
        "One Three Two");
    row(
        "calendar taken away",
        [](Place &p) {
            QDir().rename(p.path(QStringLiteral("other/a")), p.path(QStringLiteral("elsewhere")));
        },
        "");
    row(
        "calendar put in its place",
        [](Place &p) {
            QDir(p.path(QStringLiteral("other/a"))).removeRecursively();
            p.write(QStringLiteral("other/a/2.ics"), eventText("Two"));
        },
        "Two");
    row(
        "link to a calendar",
        [](Place &p) {
            p.write(QStringLiteral("elsewhere/2.ics"), eventText("Two"));
            QFile::link(p.path(QStringLiteral("elsewhere")),
                        p.path(QStringLiteral("other/linked")));
        },
        "One Two");
    row(
        "many",
        [](Place &p) {
            for (int i = 0; i < 300; ++i) {
                p.write(QStringLiteral("other/a/%1.ics").arg(i),
                        eventText("Same", "20260401T000000Z"));
            }
            p.write(QStringLiteral("other/a/1.ics"), eventText("Last"));
        },
        "Last");
}

void FolderStoresTest::changesShow()
{
    using Change = std::function<void(Place &)>;
    QFETCH(const Change, change);
    QFETCH(const QString, expected);
    Place place;
    place.write(QStringLiteral("other/a/1.ics"), eventText("One"));
    QCOMPARE(place.titles(), QStringLiteral("One"));
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
    place.write(QStringLiteral("other/a/1.ics"),
                eventText("One", "20260302T100000Z", "RRULE:FREQ=DAILY\r\n"));
    place.write(QStringLiteral("other/a/2.ics"), taskText("Two"));
    QCOMPARE(place.titles(), QStringLiteral("One"));
    const int watch = inotify_init1(IN_NONBLOCK);
    const auto close = qScopeGuard([watch] { ::close(watch); });
    QVERIFY(inotify_add_watch(watch, qPrintable(place.path(QStringLiteral("other/a"))), IN_OPEN) >=
            0);
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
    place.write(QStringLiteral("other/a/1.ics"),
                eventText("weekly", "20250303T120000Z", "RRULE:FREQ=WEEKLY\r\n"));
    place.write(QStringLiteral("other/a/2.ics"),
                eventText("long", "20260303T130000Z", "DURATION:P3D\r\n"));
    const QStringList expected{QStringLiteral("weekly"),
                               QStringLiteral("long"),
                               QStringLiteral("long"),
                               QStringLiteral("long"),
                               QStringLiteral("long"),
                               QString(),
                               QString(),
                               QStringLiteral("weekly")};
    for (int day = 0; day < expected.size(); ++day) {
        QCOMPARE(place.titles(today.addDays(day)), expected.at(day));
    }
    QCOMPARE(place.titles(today.addDays(3)), expected.at(3)); // a clock that is set back
}

void FolderStoresTest::keepsReminders()
{
    Place place;
    QCOMPARE(place.open().size(), std::size_t(0));
    const QString title =
        QString::fromUtf8("Wäsche; \"aufhängen\", \\ — ") + QStringLiteral("مهمة ").repeated(40);
    const auto id = place.add(title);
    QVERIFY(id);
    QCOMPARE(place.open(), (std::map<QString, QString>{{*id, title.simplified()}}));
    QCOMPARE(place.files(QStringLiteral("own/velmora/calendars/tasks")),
             (std::set{*id + QStringLiteral(".ics"), QStringLiteral("displayname")}));
    const auto second = place.add(QStringLiteral("Second"));
    // What another instance finds on the disk.
    place.stores = place.made();
    QCOMPARE(place.open().size(), std::size_t(2));
    QVERIFY(place.complete(*id));
    QCOMPARE(place.open(), (std::map<QString, QString>{{*second, QStringLiteral("Second")}}));
    QVERIFY(!place.complete(*id));
    QVERIFY(place.remove(*second));
    QVERIFY(!place.remove(*second));
    QCOMPARE(place.files(QStringLiteral("own/velmora/calendars/tasks")),
             (std::set{*id + QStringLiteral(".ics"), QStringLiteral("displayname")}));
}

void FolderStoresTest::newRemindersGoToTheUsersList()
{
    Place place;
    place.write(QStringLiteral("other/events/1.ics"), eventText("One"));
    place.write(QStringLiteral("other/list/1.ics"), taskText("Done", "STATUS:COMPLETED\r\n"));
    QVERIFY(place.add(QStringLiteral("Task")));
    QCOMPARE(place.files(QStringLiteral("other/list")).size(), std::size_t(2));
    QVERIFY(!QDir(place.own).exists());
}

void FolderStoresTest::anotherProgramsChangesStay()
{
    Place place;
    place.write(QStringLiteral("other/a/1.ics"), taskText("One"));
    QFile::link(QStringLiteral("../elsewhere.ics"), place.path(QStringLiteral("other/a/link.ics")));
    place.write(QStringLiteral("other/elsewhere.ics"), taskText("Linked"));
    QFile::remove(place.path(QStringLiteral("other/elsewhere.ics")));
    place.write(QStringLiteral("elsewhere.ics"), taskText("Linked"));
    QFile::remove(place.path(QStringLiteral("other/a/link.ics")));
    QFile::link(QStringLiteral("../../elsewhere.ics"),
                place.path(QStringLiteral("other/a/link.ics")));
    QCOMPARE(place.open().size(), std::size_t(2));
    place.write(QStringLiteral("other/a/1.ics"), taskText("One", "PRIORITY:1\r\n"));
    QVERIFY(place.complete(QStringLiteral("One")));
    QVERIFY(place.text(QStringLiteral("other/a/1.ics")).contains("PRIORITY:1"));
    QVERIFY(place.text(QStringLiteral("other/a/1.ics")).contains("STATUS:COMPLETED"));
    QVERIFY(place.complete(QStringLiteral("Linked")));
    QVERIFY(QFileInfo(place.path(QStringLiteral("other/a/link.ics"))).isSymLink());
    QVERIFY(place.text(QStringLiteral("elsewhere.ics")).contains("STATUS:COMPLETED"));
    QCOMPARE(place.open().size(), std::size_t(0));
}

void FolderStoresTest::fullDiskLosesNothing()
{
    Place place;
    const auto kept = place.add(QStringLiteral("Kept"));
    const QString folder = QStringLiteral("own/velmora/calendars/tasks");
    const std::set<QString> before = place.files(folder);
    const QString file = folder + QLatin1Char('/') + *kept + QStringLiteral(".ics");
    const QByteArray text = place.text(file);

    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit none{50, limit.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &none);
    const auto added = place.add(QStringLiteral("Lost"));
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
    place.write(QStringLiteral("other/a/1.ics"), taskText("One"));
    auto context = std::make_unique<QObject>();
    bool isCalled = false;
    place.stores.reminders->complete(QStringLiteral("One"), context.get(),
                                     [&](bool) { isCalled = true; });
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
