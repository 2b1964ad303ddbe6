// Works with calendars and tasks in folders, for tests that need another process:
//
//   store_client FOLDERS list FROM TO        the events between two moments
//   store_client FOLDERS open                the open reminders
//   store_client FOLDERS add TITLE           prints the identifier
//   store_client FOLDERS complete|remove ID
//
// The own folder is told by XDG_DATA_HOME. Fails where a call fails.
#include "platform/linux/calendar/CalendarStores.h"

#include <QCoreApplication>

#include <cstdio>

using namespace velmora;
using namespace Qt::Literals::StringLiterals;

namespace
{

QString told(const QDateTime &time)
{
    return time.toString(u"yyyy-MM-dd HH:mm"_s);
}

void print(const QStringList &words)
{
    std::printf("%s\n", qPrintable(words.join(QLatin1Char('|'))));
    std::fflush(stdout);
}

class Client
{
public:
    explicit Client(const QString &folders)
        : m_stores(makeCalendarStores(m_bus, folders))
    {
    }

    bool run(const QStringList &command)
    {
        const QString &verb = command.first();
        if (verb == QLatin1String("list") && command.size() == 3) {
            list(command.at(1), command.at(2));
        } else if (verb == QLatin1String("open")) {
            m_stores.reminders->fetchOpen(&m_context, &Client::tellReminders);
        } else if (verb == QLatin1String("add") && command.size() == 2) {
            m_stores.reminders->add(command.at(1), &m_context, [](const auto &id) {
                print({id.value_or(QString())});
                QCoreApplication::exit(id ? 0 : 1);
            });
        } else if (verb == QLatin1String("complete") && command.size() == 2) {
            m_stores.reminders->complete(command.at(1), &m_context, &Client::finish);
        } else if (verb == QLatin1String("remove") && command.size() == 2) {
            m_stores.reminders->remove(command.at(1), &m_context, &Client::finish);
        } else {
            return false;
        }
        return true;
    }

private:
    static void finish(bool succeeded) { QCoreApplication::exit(succeeded ? 0 : 1); }

    void list(const QString &from, const QString &to)
    {
        m_stores.events->fetchEvents(
            QDateTime::fromString(from, Qt::ISODate), QDateTime::fromString(to, Qt::ISODate),
            &m_context, [](const auto &events) {
                for (const CalendarEvent &one : *events) {
                    print({one.id, told(one.start), told(one.end), one.title,
                           one.isAllDay ? u"all day"_s : QString()});
                }
                finish(true);
            });
    }

    static void tellReminders(const std::optional<std::vector<Reminder>> &reminders)
    {
        for (const Reminder &one : *reminders) {
            print({one.id, one.due ? told(*one.due) : QString(), one.title});
        }
        finish(true);
    }

    BusConnection m_bus{QDBusConnection(u"none"_s)};
    CalendarStores m_stores;
    QObject m_context;
};

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 3) {
        return 2;
    }
    Client client(arguments.at(1));
    return client.run(arguments.mid(2)) ? QCoreApplication::exec() : 2;
}
