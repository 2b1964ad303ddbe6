#include "services/CalendarService.h"

#include "style/Accents.h"

#include <QUuid>

#include <algorithm>
#include <tuple>

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds refreshInterval = 60s;
constexpr qint64 windowSeconds = 86'400;

CalendarEventInfo infoOf(const CalendarEvent &event)
{
    return {.id =
                event.id.isEmpty() ? QUuid::createUuid().toString(QUuid::WithoutBraces) : event.id,
            .title = event.title.trimmed().isEmpty() ? QStringLiteral("Event") : event.title,
            .startDate = event.start,
            .endDate = event.end,
            .isAllDay = event.isAllDay,
            .color = event.color.isValid() ? event.color : accent::blue};
}

std::vector<CalendarEventInfo> timedEvents(const std::vector<CalendarEvent> &events)
{
    std::vector<CalendarEventInfo> timed;
    for (const CalendarEvent &event : events) {
        if (!event.isAllDay) {
            timed.push_back(infoOf(event));
        }
    }
    std::stable_sort(timed.begin(), timed.end(), [](const auto &one, const auto &other) {
        return one.startDate < other.startDate;
    });
    return timed;
}

} // namespace

CalendarService::CalendarService(Clock &clock, CalendarStore &store, QObject *parent)
    : QObject(parent)
    , m_clock(clock)
    , m_store(store)
    , m_access(clock, store)
    , m_timer(clock.every(refreshInterval, [this] {
        m_access.retry();
        refresh();
    }))
{
    connect(&m_access, &StoreAccess::isGrantedChanged, this, &CalendarService::isAuthorizedChanged);
    connect(&m_access, &StoreAccess::readWanted, this, &CalendarService::refresh);
}

void CalendarService::refresh()
{
    if (!isAuthorized()) {
        return;
    }
    const QDateTime now = m_clock.now();
    m_store.fetchEvents(
        now, now.addSecs(windowSeconds), this,
        [this, question = ++m_asked](const auto &events) { take(question, events); });
}

void CalendarService::take(std::uint64_t question,
                           const std::optional<std::vector<CalendarEvent>> &events)
{
    if (question < m_answered) {
        return;
    }
    m_answered = question;
    if (events) {
        m_events = timedEvents(*events);
        publish();
    } else {
        passTime();
        m_access.check();
    }
}

/// Events begin and end between two answers, and when no answer comes.
void CalendarService::passTime()
{
    const QDateTime now = m_clock.now();
    std::erase_if(m_events, [&now](const auto &event) { return event.endDate <= now; });
    publish();
}

void CalendarService::publish()
{
    const QDateTime now = m_clock.now();
    const auto isUnderWay = [&now](const auto &event) { return event.isUnderWay(now); };
    const auto eventAt = [this](auto found) {
        return found == m_events.end() ? std::nullopt : std::optional(*found);
    };
    const auto current = eventAt(std::find_if(m_events.begin(), m_events.end(), isUnderWay));
    const auto next = eventAt(std::find_if_not(m_events.begin(), m_events.end(), isUnderWay));
    const int count = static_cast<int>(m_events.size());
    watchNextTurn(now);
    if (std::tie(current, next, count) != std::tie(m_currentEvent, m_nextEvent, m_todayCount)) {
        m_currentEvent = current;
        m_nextEvent = next;
        m_todayCount = count;
        Q_EMIT eventsChanged();
    }
}

void CalendarService::watchNextTurn(const QDateTime &now)
{
    qint64 wait = windowSeconds * 1000;
    for (const CalendarEventInfo &event : m_events) {
        for (const QDateTime &turn : {event.startDate, event.endDate}) {
            const qint64 distance = now.msecsTo(turn);
            wait = distance > 0 ? std::min(wait, distance) : wait;
        }
    }
    m_nextTurn = m_clock.after(std::chrono::milliseconds(wait), [this] { passTime(); });
}

} // namespace velmora
