// What calendars in folders cost, without the rest of the program:
//
//   velmora_calendar FOLDER [refreshes]
//
// Prints one "name value" a line; times in milliseconds, memory in kilobytes. Writes one event into
// FOLDER again and again, and one task into a folder beside it.
#include "platform/linux/calendar/CalendarStores.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSaveFile>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>

using namespace velmora;

namespace
{

double processorTime()
{
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// Kilobytes of a kind of memory, by the beginning of its name.
double memory(const char *kind)
{
    QFile file(QStringLiteral("/proc/self/smaps_rollup"));
    double sum = 0;
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : file.readAll().split('\n')) {
            if (line.startsWith(kind)) {
                sum += line.simplified().split(' ').at(1).toDouble();
            }
        }
    }
    return sum;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

void tell(const char *name, double value)
{
    std::printf("%s %.2f\n", name, value);
    std::fflush(stdout);
}

/// Runs the main loop until `isDone`.
template<typename Condition>
void wait(Condition isDone)
{
    while (!isDone()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

class Bench
{
public:
    explicit Bench(const QString &folder, int refreshes)
        : m_folder(folder)
        , m_refreshes(refreshes)
        , m_stores(makeCalendarStores(m_bus, folder))
    {
        QObject::connect(m_stores.events.get(), &CalendarStore::changed, &m_context,
                         [this] { ++m_changes; });
        m_pulse.setTimerType(Qt::PreciseTimer);
        m_pulse.callOnTimeout([this] {
            m_longestStop =
                std::max(m_longestStop, static_cast<double>(m_sincePulse.nsecsElapsed()) / 1e6);
            m_sincePulse.start();
        });
    }

    void run()
    {
        const double writtenBefore = memory("Anonymous");
        const double privateBefore = memory("Private_");
        QElapsedTimer timer;
        timer.start();
        m_sincePulse.start();
        m_pulse.start(1);
        fetchEvents(0);
        tell("first_answer_ms", static_cast<double>(timer.nsecsElapsed()) / 1e6);
        fetchReminders();
        m_pulse.stop();
        tell("longest_stop_ms", m_longestStop);
        tell("first_answer_cpu_ms", processorTime());
        tell("events", m_events);
        tell("reminders", m_reminders);
        tell("memory_written_kb", memory("Anonymous") - writtenBefore);
        tell("memory_private_kb", memory("Private_") - privateBefore);

        std::vector<double> unchanged;
        for (int i = 1; i <= m_refreshes; ++i) {
            const double start = processorTime();
            fetchEvents(i * 60);
            fetchReminders();
            unchanged.push_back(processorTime() - start);
        }
        tell("unchanged_refresh_cpu_ms", median(unchanged));

        std::vector<double> changed;
        std::vector<double> untilTold;
        for (int i = 0; i < m_refreshes; ++i) {
            const double start = processorTime();
            timer.start();
            writeEvent(i);
            wait([this, known = m_changes] { return m_changes > known; });
            untilTold.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
            fetchEvents(0);
            changed.push_back(processorTime() - start);
        }
        tell("change_to_signal_ms", median(untilTold));
        tell("changed_refresh_cpu_ms", median(changed));

        std::vector<double> adding;
        for (int i = 0; i < m_refreshes; ++i) {
            timer.start();
            bool isDone = false;
            m_stores.reminders->add(
                QStringLiteral("Task"), &m_context,
                [&](const std::optional<QString> &id) { isDone = id.has_value(); });
            wait([&] { return isDone; });
            adding.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
        }
        tell("add_to_file_ms", median(adding));
        tell("memory_written_at_end_kb", memory("Anonymous") - writtenBefore);
    }

private:
    void fetchEvents(int seconds)
    {
        const QDateTime from = QDateTime::currentDateTime().addSecs(seconds);
        bool isDone = false;
        m_stores.events->fetchEvents(from, from.addDays(1), &m_context, [&](const auto &events) {
            m_events = events ? static_cast<double>(events->size()) : -1;
            isDone = true;
        });
        wait([&] { return isDone; });
    }

    void fetchReminders()
    {
        bool isDone = false;
        m_stores.reminders->fetchOpen(&m_context, [&](const auto &reminders) {
            m_reminders = reminders ? static_cast<double>(reminders->size()) : -1;
            isDone = true;
        });
        wait([&] { return isDone; });
    }

    void writeEvent(int number) const
    {
        const QDateTime start = QDateTime::currentDateTimeUtc().addSecs(3600 + number * 60);
        QDir().mkpath(m_folder + QStringLiteral("/calendar-00"));
        QSaveFile file(m_folder + QStringLiteral("/calendar-00/changing.ics"));
        if (file.open(QIODevice::WriteOnly)) {
            const QByteArray time =
                start.toString(QStringLiteral("yyyyMMdd'T'HHmmss'Z'")).toLatin1();
            file.write(
                "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VEVENT\r\nUID:changing\r\nDTSTART:" +
                time + "\r\nDURATION:PT1H\r\nSUMMARY:Changing\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n");
            file.commit();
        }
    }

    QString m_folder;
    int m_refreshes;
    BusConnection m_bus{QDBusConnection(QStringLiteral("none"))};
    CalendarStores m_stores;
    QObject m_context;
    QTimer m_pulse;
    QElapsedTimer m_sincePulse;
    double m_longestStop = 0;
    double m_events = 0;
    double m_reminders = 0;
    int m_changes = 0;
};

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 2) {
        std::fprintf(stderr, "velmora_calendar FOLDER [refreshes]\n");
        return 2;
    }
    qputenv("XDG_DATA_HOME", QFile::encodeName(arguments.at(1) + QStringLiteral("-own")));
    Bench(arguments.at(1), arguments.size() > 2 ? arguments.at(2).toInt() : 50).run();
    return 0;
}
