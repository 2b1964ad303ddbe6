#include "platform/linux/GObjectPointer.h"
#include "platform/linux/calendar/CalendarStores.h"

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

#define EDS_DISABLE_DEPRECATED // NOLINT(cppcoreguidelines-macro-usage)
#include <libecal/libecal.h>

using namespace velmora;
using namespace Qt::Literals::StringLiterals;

namespace
{

constexpr int patience = 30'000; // milliseconds, for a loaded machine
const QDateTime morning(QDate(2026, 3, 2), QTime(9, 0), Qt::UTC);

/// Another program that uses Evolution Data Server.
class Peer
{
public:
    Peer()
        : m_registry(e_source_registry_new_sync(nullptr, nullptr))
        , m_calendar(connectTo(e_source_registry_ref_default_calendar(m_registry.get()),
                               E_CAL_CLIENT_SOURCE_TYPE_EVENTS))
        , m_tasks(connectTo(e_source_registry_ref_default_task_list(m_registry.get()),
                            E_CAL_CLIENT_SOURCE_TYPE_TASKS))
    {
    }

    void add(const char *component) { create(m_calendar.get(), component); }
    void addTask(const char *component) { create(m_tasks.get(), component); }

    /// The summaries of the tasks that are not completed.
    QStringList openTasks()
    {
        QStringList found;
        GSList *tasks = nullptr;
        e_cal_client_get_object_list_sync(m_tasks.get(), "(not (is-completed?))", &tasks, nullptr,
                                          nullptr);
        for (const GSList *one = tasks; one != nullptr; one = one->next) {
            found << QString::fromUtf8(i_cal_component_get_summary(I_CAL_COMPONENT(one->data)));
        }
        g_slist_free_full(tasks, g_object_unref);
        found.sort();
        return found;
    }

private:
    static GObjectPointer<ECalClient> connectTo(ESource *source, ECalClientSourceType type)
    {
        const GObjectPointer<ESource> owned(source);
        return GObjectPointer<ECalClient>(reinterpret_cast<ECalClient *>(
            e_cal_client_connect_sync(source, type, 10, nullptr, nullptr)));
    }

    static void create(ECalClient *client, const char *component)
    {
        const GObjectPointer<ICalComponent> parsed(i_cal_component_new_from_string(component));
        char *uid = nullptr;
        QVERIFY(e_cal_client_create_object_sync(client, parsed.get(), E_CAL_OPERATION_FLAG_NONE,
                                                &uid, nullptr, nullptr) != 0);
        g_free(uid);
    }

    GObjectPointer<ESourceRegistry> m_registry;
    GObjectPointer<ECalClient> m_calendar;
    GObjectPointer<ECalClient> m_tasks;
};

/// The process that has the calendars.
uint factory()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    const QStringList names = bus.interface()->registeredServiceNames();
    const QStringList found = names.filter(u"evolution.dataserver.Calendar"_s);
    return found.isEmpty() ? 0U : bus.interface()->servicePid(found.first()).value();
}

} // namespace

class EvolutionDataTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void showsWhatIsThere();
    void keepsReminders();
    void survivesTheServicesEnd();
    void aHungServiceHoldsNobodyUp();

private:
    QString titles();
    QStringList open();

    QTemporaryDir m_folder;
    std::unique_ptr<Peer> m_peer;
    BusConnection m_bus{QDBusConnection::sessionBus()};
    CalendarStores m_stores;
};

/// The titles of a day's events.
QString EvolutionDataTest::titles()
{
    std::optional<QString> answer;
    m_stores.events->fetchEvents(morning, morning.addDays(1), this, [&answer](const auto &events) {
        QStringList found;
        for (const CalendarEvent &one : *events) {
            found << one.title;
        }
        answer = found.join(QLatin1Char(' '));
    });
    return QTest::qWaitFor([&] { return answer.has_value(); }, patience) ? *answer : u"no answer"_s;
}

QStringList EvolutionDataTest::open()
{
    std::optional<QStringList> answer;
    m_stores.reminders->fetchOpen(this, [&answer](const auto &reminders) {
        QStringList found;
        for (const Reminder &one : *reminders) {
            found << one.title;
        }
        found.sort();
        answer = found;
    });
    return QTest::qWaitFor([&] { return answer.has_value(); }, patience)
               ? *answer
               : QStringList(u"no answer"_s);
}

void EvolutionDataTest::initTestCase()
{
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder.path()));
    m_stores = makeCalendarStores(m_bus, {});
    QSignalSpy added(m_stores.events.get(), &CalendarStore::changed);
    QVERIFY2(added.wait(patience), "neither service nor module");
    m_peer = std::make_unique<Peer>();
}

void EvolutionDataTest::showsWhatIsThere()
{
    QCOMPARE(titles(), QString());
    QSignalSpy changed(m_stores.events.get(), &CalendarStore::changed);
    m_peer->add(
        "BEGIN:VEVENT\r\nUID:one\r\nSUMMARY:One\r\nDTSTART;TZID=Europe/Berlin:20250303T110000\r\n"
        "RRULE:FREQ=WEEKLY\r\nEXDATE;TZID=Europe/Berlin:20260309T110000\r\nEND:VEVENT\r\n");
    QTRY_VERIFY_WITH_TIMEOUT(!changed.isEmpty(), patience);
    QCOMPARE(titles(), u"One"_s);

    // What a folder has as well shows once, another event beside it.
    QVERIFY(QDir().mkpath(m_folder.filePath(u"velmora/calendars/a"_s)));
    QFile file(m_folder.filePath(u"velmora/calendars/a/1.ics"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(
        "BEGIN:VEVENT\r\nUID:one\r\nSUMMARY:One\r\nDTSTART:20260302T100000Z\r\nEND:VEVENT\r\n"
        "BEGIN:VEVENT\r\nUID:two\r\nSUMMARY:Two\r\nDTSTART:20260302T120000Z\r\nEND:VEVENT\r\n");
    file.close();
    QTRY_COMPARE_WITH_TIMEOUT(titles(), u"One Two"_s, patience);
}

void EvolutionDataTest::keepsReminders()
{
    std::optional<QString> id;
    m_stores.reminders->add(u"Wäsche, aufhängen"_s, this, [&id](const auto &made) { id = made; });
    QTRY_VERIFY_WITH_TIMEOUT(id, patience);
    QCOMPARE(m_peer->openTasks(), QStringList(u"Wäsche, aufhängen"_s));
    QCOMPARE(open(), m_peer->openTasks());

    m_peer->addTask("BEGIN:VTODO\r\nUID:weekly\r\nSUMMARY:Weekly\r\nDTSTART:20260302T100000Z\r\n"
                    "DUE:20260302T110000Z\r\nRRULE:FREQ=WEEKLY;COUNT=2\r\nEND:VTODO\r\n");
    QTRY_COMPARE_WITH_TIMEOUT(open().size(), 2, patience);
    int done = 0;
    const auto count = [&done](bool succeeded) { done += succeeded ? 1 : 0; };
    m_stores.reminders->complete(*id, this, count);
    m_stores.reminders->complete(u"weekly"_s, this, count);
    QTRY_COMPARE_WITH_TIMEOUT(done, 2, patience);
    QCOMPARE(open(), QStringList(u"Weekly"_s));
    QCOMPARE(m_peer->openTasks(), QStringList(u"Weekly"_s));
    m_stores.reminders->remove(u"weekly"_s, this, count);
    QTRY_COMPARE_WITH_TIMEOUT(done, 3, patience);
    QCOMPARE(m_peer->openTasks(), QStringList());
}

void EvolutionDataTest::survivesTheServicesEnd()
{
    const uint before = factory();
    QVERIFY(before != 0);
    QCOMPARE(kill(static_cast<pid_t>(before), SIGKILL), 0);
    QTRY_COMPARE_WITH_TIMEOUT(titles(), u"One Two"_s, patience);
    QTRY_VERIFY_WITH_TIMEOUT(factory() != 0 && factory() != before, patience);
    m_peer = std::make_unique<Peer>();
    m_peer->add(
        "BEGIN:VEVENT\r\nUID:three\r\nSUMMARY:Three\r\nDTSTART:20260302T130000Z\r\nEND:VEVENT\r\n");
    QTRY_COMPARE_WITH_TIMEOUT(titles(), u"One Two Three"_s, patience);
}

void EvolutionDataTest::aHungServiceHoldsNobodyUp()
{
    const auto pid = static_cast<pid_t>(factory());
    QCOMPARE(kill(pid, SIGSTOP), 0);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(titles(), u"One Two Three"_s);
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(kill(pid, SIGCONT), 0);
    m_peer->add(
        "BEGIN:VEVENT\r\nUID:four\r\nSUMMARY:Four\r\nDTSTART:20260302T140000Z\r\nEND:VEVENT\r\n");
    QTRY_COMPARE_WITH_TIMEOUT(titles(), u"One Two Three Four"_s, patience);
    // And the end comes soon while it hangs.
    QCOMPARE(kill(pid, SIGSTOP), 0);
    timer.restart();
    {
        const CalendarStores stores = makeCalendarStores(m_bus, {});
        QSignalSpy added(stores.events.get(), &CalendarStore::changed);
        QVERIFY(added.wait(patience));
        stores.events->fetchEvents(morning, morning.addDays(1), this, [](const auto &) {});
    }
    QVERIFY2(timer.elapsed() < 8000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(kill(pid, SIGCONT), 0);
}

QTEST_GUILESS_MAIN(EvolutionDataTest)
#include "EvolutionDataTest.moc"
