#pragma once

#include "platform/linux/GObjectPointer.h"
#include "platform/linux/calendar/CalendarSource.h"

#define EDS_DISABLE_DEPRECATED // NOLINT(cppcoreguidelines-macro-usage)
#include <libecal/libecal.h>
#include <map>
#include <mutex>

namespace velmora
{

/// Ends the blocking calls to a service that does not answer. Any thread.
class EvolutionCalls
{
public:
    /// For the calls of one question, which have ten seconds together. Needs the main loop for
    /// that.
    [[nodiscard]] std::shared_ptr<GCancellable> begin();
    void giveUp();

private:
    std::mutex m_mutex;
    std::shared_ptr<GCancellable> m_current;
    bool m_isEnding = false;
};

/// The calendars and task lists of Evolution Data Server that are enabled and chosen there. The
/// service may vanish and come back at any time: connections are made anew when they are needed.
class EvolutionSource final : public CalendarSource
{
public:
    explicit EvolutionSource(std::shared_ptr<EvolutionCalls> calls);

    [[nodiscard]] bool isUsable() override;
    [[nodiscard]] std::optional<std::vector<TimedEvent>> events(const TimeWindow &window) override;
    [[nodiscard]] std::optional<std::vector<Reminder>> reminders() override;
    [[nodiscard]] std::optional<QString> add(const QString &title) override;
    [[nodiscard]] bool complete(const QString &id) override;
    [[nodiscard]] bool remove(const QString &id) override;

private:
    /// Gives back a reference to what tells us of changes.
    struct Disconnect {
        EvolutionSource *self = nullptr;
        void operator()(gpointer object) const
        {
            g_signal_handlers_disconnect_by_data(object, self);
            g_object_unref(object);
        }
    };
    template<typename T>
    using Connected = std::unique_ptr<T, Disconnect>;

    struct Client {
        Connected<ECalClient> client;
        Connected<ECalClientView> view;
        QColor color;
    };
    using Clients = std::map<QByteArray, Client>; ///< by the identifier of the source

    bool begin();
    [[nodiscard]] Clients *clients(ECalClientSourceType type);
    [[nodiscard]] Client connectTo(ESource *source, ECalClientSourceType type);
    [[nodiscard]] std::optional<QByteArray> textOf(ECalClient *client, const QByteArray &query);
    template<typename Visit>
    bool visitAll(ECalClientSourceType type, const QByteArray &query, Visit visit);
    template<typename Change>
    bool change(const QString &id, Change change);
    void noteChange(bool isOfSources);

    static void sourcesChanged(ESourceRegistry *registry, ESource *source, EvolutionSource *self);
    static void objectsChanged(ECalClientView *view, gpointer objects, EvolutionSource *self);
    static void backendDied(EClient *client, EvolutionSource *self);

    std::shared_ptr<EvolutionCalls> m_calls;
    std::shared_ptr<GCancellable> m_cancellable; ///< of the present question
    GObjectPointer<GDBusConnection> m_bus;
    Connected<ESourceRegistry> m_registry{nullptr, {this}};
    std::map<ECalClientSourceType, Clients> m_clients;
    bool m_areSourcesChanged = true;

    bool m_isComplete = false; ///< the present question has reached everything

    // What was found, which stands until something changes
    bool m_hasEvents = false;
    bool m_hasReminders = false;
    TimeWindow m_window;
    std::optional<std::vector<TimedEvent>> m_events;
    std::optional<std::vector<Reminder>> m_reminders;
};

} // namespace velmora
