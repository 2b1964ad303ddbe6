#pragma once

#include "platform/CalendarStore.h"
#include "platform/Clock.h"
#include "services/CalendarEventInfo.h"
#include "services/StoreAccess.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace velmora
{

/// The timed events of the coming 24 hours: which is under way, which comes next, how many there
/// are. Read every minute, and soon after the store says that something changed. Main thread only.
class CalendarService : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made once by the program")

public:
    /// Both have to outlive the service.
    CalendarService(Clock &clock, CalendarStore &store, QObject *parent = nullptr);

    /// Nothing is read without. The events that were read last stay.
    [[nodiscard]] bool isAuthorized() const { return m_access.isGranted(); }
    /// The first one under way.
    [[nodiscard]] const std::optional<CalendarEventInfo> &currentEvent() const
    {
        return m_currentEvent;
    }
    /// The first one that is not under way.
    [[nodiscard]] const std::optional<CalendarEventInfo> &nextEvent() const { return m_nextEvent; }
    [[nodiscard]] int todayCount() const { return m_todayCount; }

    /// Asks the user, once in the life of an installation.
    void requestAccess() { m_access.request(); }
    /// Takes the store's present answer, without a question.
    void checkAccess() { m_access.check(); }

    void refresh();

Q_SIGNALS:
    void isAuthorizedChanged();
    void eventsChanged();

private:
    void take(std::uint64_t question, const std::optional<std::vector<CalendarEvent>> &events);
    void passTime();
    void publish();
    void watchNextTurn(const QDateTime &now);

    Clock &m_clock;
    CalendarStore &m_store;
    StoreAccess m_access;
    std::uint64_t m_asked = 0;
    std::uint64_t m_answered = 0;            ///< the latest question that was
    std::vector<CalendarEventInfo> m_events; ///< by start
    std::optional<CalendarEventInfo> m_currentEvent;
    std::optional<CalendarEventInfo> m_nextEvent;
    int m_todayCount = 0;
    TimerHandle m_timer;
    TimerHandle m_nextTurn;
};

} // namespace velmora
