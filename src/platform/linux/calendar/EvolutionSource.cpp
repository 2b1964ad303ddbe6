#include "platform/linux/calendar/EvolutionSource.h"

#include "platform/linux/calendar/CalendarItem.h"
#include "platform/linux/calendar/ContentLines.h"

#include <QCoreApplication>
#include <QTimer>

#include <chrono>
#include <set>
#include <utility>

namespace velmora
{

using namespace std::chrono_literals;

namespace
{

constexpr auto longestQuestion = 10s;

struct GFree {
    void operator()(char *text) const { g_free(text); }
};
using Text = std::unique_ptr<char, GFree>;

QByteArray textOf(ICalComponent *component)
{
    return {Text(i_cal_component_as_ical_string(component)).get()};
}

/// The zones that libical does not know by their name.
std::set<QByteArray> unknownZones(const QByteArray &text)
{
    std::set<QByteArray> zones;
    forEachLine(text, [&zones](const ContentLine &line) {
        constexpr QByteArrayView parameter = ";TZID=";
        const qsizetype found = line.raw.indexOf(parameter);
        if (found == line.name.size()) {
            const QByteArray rest = line.raw.sliced(found + parameter.size()).toByteArray();
            const QByteArray zone = rest.left(rest.indexOf(':')).replace('"', "");
            if (icaltimezone_get_builtin_timezone(zone) == nullptr) {
                zones.insert(zone);
            }
        }
    });
    return zones;
}

const char *extensionOf(ECalClientSourceType type)
{
    return type == E_CAL_CLIENT_SOURCE_TYPE_EVENTS ? E_SOURCE_EXTENSION_CALENDAR
                                                   : E_SOURCE_EXTENSION_TASK_LIST;
}

bool isChosen(ESource *source, ECalClientSourceType type)
{
    return e_source_selectable_get_selected(
               E_SOURCE_SELECTABLE(e_source_get_extension(source, extensionOf(type)))) != 0;
}

} // namespace

std::shared_ptr<GCancellable> EvolutionCalls::begin()
{
    const std::lock_guard lock(m_mutex);
    m_current = std::shared_ptr<GCancellable>(g_cancellable_new(), GObjectRelease());
    if (m_isEnding) {
        g_cancellable_cancel(m_current.get());
    }
    QMetaObject::invokeMethod(QCoreApplication::instance(), [current = m_current] {
        QTimer::singleShot(longestQuestion, QCoreApplication::instance(),
                           [current] { g_cancellable_cancel(current.get()); });
    });
    return m_current;
}

void EvolutionCalls::giveUp()
{
    const std::lock_guard lock(m_mutex);
    m_isEnding = true;
    if (m_current) {
        g_cancellable_cancel(m_current.get());
    }
}

EvolutionSource::EvolutionSource(std::shared_ptr<EvolutionCalls> calls)
    : m_calls(std::move(calls))
{
}

/// For a question: connects to the service, if that is to be had.
bool EvolutionSource::begin()
{
    m_cancellable = m_calls->begin();
    m_isComplete = true;
    if (m_bus && g_dbus_connection_is_closed(m_bus.get()) != 0) {
        m_clients.clear();
        m_registry.reset();
        m_bus.reset();
    }
    if (!m_bus) {
        m_bus.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, m_cancellable.get(), nullptr));
        if (m_bus) {
            g_dbus_connection_set_exit_on_close(m_bus.get(), FALSE);
        }
    }
    if (m_bus && !m_registry) {
        m_registry.reset(e_source_registry_new_sync(m_cancellable.get(), nullptr));
        for (const char *signal : {"source-added", "source-removed", "source-changed",
                                   "source-enabled", "source-disabled"}) {
            if (m_registry) {
                g_signal_connect(m_registry.get(), signal, G_CALLBACK(&sourcesChanged), this);
            }
        }
    }
    return m_registry != nullptr;
}

/// The calendars or task lists that can be had at present; null where the service does not answer.
EvolutionSource::Clients *EvolutionSource::clients(ECalClientSourceType type)
{
    if (!begin()) {
        return nullptr;
    }
    if (std::exchange(m_areSourcesChanged, false)) {
        m_clients.clear();
    }
    Clients &known = m_clients[type];
    GList *const sources = e_source_registry_list_enabled(m_registry.get(), extensionOf(type));
    for (const GList *one = sources; one != nullptr; one = one->next) {
        auto *const source = E_SOURCE(one->data);
        const QByteArray uid = e_source_get_uid(source);
        if (isChosen(source, type) && known.count(uid) == 0) {
            Client client = connectTo(source, type);
            if (client.client) {
                known.emplace(uid, std::move(client));
            } else {
                m_isComplete = false;
            }
        }
    }
    g_list_free_full(sources, g_object_unref);
    return &known;
}

EvolutionSource::Client EvolutionSource::connectTo(ESource *source, ECalClientSourceType type)
{
    constexpr auto noWait = static_cast<guint32>(-1);
    Client made{{nullptr, {this}}, {nullptr, {this}}, {}};
    made.client.reset(reinterpret_cast<ECalClient *>(
        e_cal_client_connect_sync(source, type, noWait, m_cancellable.get(), nullptr)));
    if (!made.client) {
        return made;
    }
    g_signal_connect(made.client.get(), "backend-died", G_CALLBACK(&backendDied), this);
    const char *const color = e_source_selectable_get_color(
        E_SOURCE_SELECTABLE(e_source_get_extension(source, extensionOf(type))));
    made.color = QColor(QString::fromUtf8(color));

    ECalClientView *view = nullptr;
    if (e_cal_client_get_view_sync(made.client.get(), "#t", &view, m_cancellable.get(), nullptr) !=
        0) {
        made.view.reset(view);
        e_cal_client_view_set_flags(view, E_CAL_CLIENT_VIEW_FLAGS_NONE, nullptr);
        for (const char *signal : {"objects-added", "objects-modified", "objects-removed"}) {
            g_signal_connect(view, signal, G_CALLBACK(&objectsChanged), this);
        }
        e_cal_client_view_start(view, nullptr);
    }
    return made;
}

/// What matches the query, with all that belongs to it, and the zones that only the service knows.
std::optional<QByteArray> EvolutionSource::textOf(ECalClient *client, const QByteArray &query)
{
    GSList *components = nullptr;
    if (e_cal_client_get_object_list_sync(client, query.constData(), &components,
                                          m_cancellable.get(), nullptr) == 0) {
        return std::nullopt;
    }
    QByteArray text = "BEGIN:VCALENDAR\r\n";
    std::set<QByteArray> seen;
    for (const GSList *one = components; one != nullptr; one = one->next) {
        auto *const component = I_CAL_COMPONENT(one->data);
        const char *const uid = i_cal_component_get_uid(component);
        if (!e_cal_util_component_has_recurrences(component) &&
            !e_cal_util_component_is_instance(component)) {
            text += velmora::textOf(component);
        } else if (seen.insert(uid).second) {
            // Also what has been moved away from where the query looks.
            GSList *all = nullptr;
            e_cal_client_get_objects_for_uid_sync(client, uid, &all, m_cancellable.get(), nullptr);
            for (const GSList *each = all; each != nullptr; each = each->next) {
                text +=
                    velmora::textOf(e_cal_component_get_icalcomponent(E_CAL_COMPONENT(each->data)));
            }
            g_slist_free_full(all, g_object_unref);
        }
    }
    g_slist_free_full(components, g_object_unref);
    for (const QByteArray &name : unknownZones(text)) {
        ICalTimezone *zone = nullptr; // the client keeps it
        if (e_cal_client_get_timezone_sync(client, name.constData(), &zone, m_cancellable.get(),
                                           nullptr) != 0 &&
            zone != nullptr) {
            const GObjectPointer<ICalComponent> component(i_cal_timezone_get_component(zone));
            text += component ? velmora::textOf(component.get()) : QByteArray();
        }
    }
    return text + "END:VCALENDAR\r\n";
}

/// Takes a look at what matches the query in all calendars or lists. False where the service does
/// not answer, or not in time.
template<typename Visit>
bool EvolutionSource::visitAll(ECalClientSourceType type, const QByteArray &query, Visit visit)
{
    Clients *const all = clients(type);
    if (all == nullptr) {
        return false;
    }
    for (auto one = all->begin(); one != all->end();) {
        const auto text = textOf(one->second.client.get(), query);
        if (text) {
            visit(CalendarItem(*text), one->second.color);
            ++one;
        } else {
            one = all->erase(one); // connected anew at the next question
            m_isComplete = false;
        }
    }
    return g_cancellable_is_cancelled(m_cancellable.get()) == 0;
}

bool EvolutionSource::isUsable()
{
    return begin();
}

std::optional<std::vector<TimedEvent>> EvolutionSource::events(const TimeWindow &window)
{
    if (m_hasEvents && m_window.covers(window)) {
        return m_events;
    }
    m_window = window.widened();
    const auto told = [](qint64 moment) {
        return QDateTime::fromSecsSinceEpoch(moment, Qt::UTC)
            .toString(QStringLiteral("yyyyMMdd'T'HHmmss'Z'"))
            .toLatin1();
    };
    const QByteArray query = "(occur-in-time-range? (make-time \"" + told(m_window.from) +
                             "\") (make-time \"" + told(m_window.to) + "\"))";
    std::vector<TimedEvent> found;
    const auto take = [&](const CalendarItem &item, const QColor &color) {
        for (TimedEvent &event : item.events(m_window)) {
            event.event.color = color;
            found.push_back(std::move(event));
        }
    };
    const bool isAnswered = visitAll(E_CAL_CLIENT_SOURCE_TYPE_EVENTS, query, take);
    m_hasEvents = isAnswered && m_isComplete;
    m_events = isAnswered ? std::optional(std::move(found)) : std::nullopt;
    return m_events;
}

std::optional<std::vector<Reminder>> EvolutionSource::reminders()
{
    if (m_hasReminders) {
        return m_reminders;
    }
    std::vector<Reminder> found;
    const auto take = [&](const CalendarItem &item, const QColor & /*color*/) {
        for (OpenTask &task : item.openTasks()) {
            found.push_back(std::move(task.reminder));
        }
    };
    const bool isAnswered = visitAll(E_CAL_CLIENT_SOURCE_TYPE_TASKS, "(not (is-completed?))", take);
    m_hasReminders = isAnswered && m_isComplete;
    m_reminders = isAnswered ? std::optional(std::move(found)) : std::nullopt;
    return m_reminders;
}

std::optional<QString> EvolutionSource::add(const QString &title)
{
    if (!begin()) {
        return std::nullopt;
    }
    const GObjectPointer<ESource> list(e_source_registry_ref_default_task_list(m_registry.get()));
    if (!list) {
        return std::nullopt;
    }
    m_hasReminders = false;
    const Client client = connectTo(list.get(), E_CAL_CLIENT_SOURCE_TYPE_TASKS);
    const GObjectPointer<ICalComponent> task(i_cal_component_new_vtodo());
    i_cal_component_set_summary(task.get(), title.toUtf8().constData());
    i_cal_component_set_status(task.get(), I_CAL_STATUS_NEEDSACTION);
    char *made = nullptr;
    if (!client.client ||
        e_cal_client_create_object_sync(client.client.get(), task.get(), E_CAL_OPERATION_FLAG_NONE,
                                        &made, m_cancellable.get(), nullptr) == 0) {
        return std::nullopt;
    }
    return QString::fromUtf8(Text(made).get());
}

/// Does something to a task in the first list that has it.
template<typename Change>
bool EvolutionSource::change(const QString &id, Change change)
{
    Clients *const all = clients(E_CAL_CLIENT_SOURCE_TYPE_TASKS);
    if (all == nullptr) {
        return false;
    }
    m_hasReminders = false;
    for (const auto &[uid, one] : *all) {
        ICalComponent *task = nullptr;
        if (e_cal_client_get_object_sync(one.client.get(), id.toUtf8().constData(), nullptr, &task,
                                         m_cancellable.get(), nullptr) != 0) {
            const GObjectPointer<ICalComponent> owned(task);
            return change(one.client.get(), task);
        }
    }
    return false;
}

bool EvolutionSource::complete(const QString &id)
{
    return change(id, [this](ECalClient *client, ICalComponent *task) {
        return e_cal_util_mark_task_complete_sync(task, static_cast<time_t>(-1), client,
                                                  m_cancellable.get(), nullptr) != 0 &&
               e_cal_client_modify_object_sync(client, task, E_CAL_OBJ_MOD_ALL,
                                               E_CAL_OPERATION_FLAG_NONE, m_cancellable.get(),
                                               nullptr) != 0;
    });
}

bool EvolutionSource::remove(const QString &id)
{
    return change(id, [this, &id](ECalClient *client, ICalComponent * /*task*/) {
        return e_cal_client_remove_object_sync(client, id.toUtf8().constData(), nullptr,
                                               E_CAL_OBJ_MOD_ALL, E_CAL_OPERATION_FLAG_NONE,
                                               m_cancellable.get(), nullptr) != 0;
    });
}

void EvolutionSource::noteChange(bool isOfSources)
{
    // Nothing is let go of here, in the midst of its own signal.
    m_areSourcesChanged = m_areSourcesChanged || isOfSources;
    m_hasEvents = m_hasReminders = false;
    if (changed) {
        changed();
    }
}

void EvolutionSource::sourcesChanged(ESourceRegistry * /*registry*/, ESource * /*source*/,
                                     EvolutionSource *self)
{
    self->noteChange(true);
}

void EvolutionSource::objectsChanged(ECalClientView * /*view*/, gpointer /*objects*/,
                                     EvolutionSource *self)
{
    self->noteChange(false);
}

void EvolutionSource::backendDied(EClient * /*client*/, EvolutionSource *self)
{
    self->noteChange(true);
}

class EvolutionModule final : public QObject, public CalendarModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "com.velmora.app.CalendarModule/1")
    Q_INTERFACES(velmora::CalendarModule)

public:
    SourceFactory source() override
    {
        const auto calls = std::make_shared<EvolutionCalls>();
        return {[calls] { return std::make_unique<EvolutionSource>(calls); },
                [calls] { calls->giveUp(); }};
    }
};

} // namespace velmora

#include "EvolutionSource.moc"
