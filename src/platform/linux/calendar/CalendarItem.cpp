#include "platform/linux/calendar/CalendarItem.h"

#include "platform/linux/calendar/ContentLines.h"
#include "platform/linux/calendar/Recurrence.h"

#include <algorithm>
#include <iterator>

namespace velmora
{

namespace
{

constexpr int secondsPerDay = 86400;
constexpr std::size_t mostOccurrences = 1000; ///< of one event within a window
constexpr int farthestYears = 8;              ///< from one occurrence of a task to the next
constexpr qsizetype longestLine = 1'000'000;  ///< the parser's effort grows with the square
constexpr int deepestComponent = 8;           ///< it recurses

/// Parsing everything else takes most of the time. EXRULE is obsolete and may never come true.
bool isUsed(const QByteArray &name)
{
    static constexpr const char *names[] = {
        "COMPLETED", "DTEND",         "DTSTART",    "DUE",    "DURATION", "EXDATE",
        "RDATE",     "RECURRENCE-ID", "RRULE",      "STATUS", "SUMMARY",  "TZID",
        "TZNAME",    "TZOFFSETFROM",  "TZOFFSETTO", "UID"};
    return std::binary_search(std::begin(names), std::end(names), name.constData(),
                              [](const char *a, const char *b) { return qstrcmp(a, b) < 0; });
}

/// libical goes through all of its zones one by one.
bool isKnown(const QByteArray &zone)
{
    thread_local QByteArray last;
    if (zone != last && icaltimezone_get_builtin_timezone(zone) != nullptr) {
        last = zone;
    }
    return zone == last;
}

/// Without what is not used, and without the descriptions of zones that are known by their name:
/// programs cut those down to the years of an event.
QByteArray relevantText(const QByteArray &text)
{
    QByteArray kept;
    kept.reserve(text.size());
    int depth = 0;
    qsizetype zoneBegin = -1;
    bool isKnownZone = false;
    forEachLine(text, [&](const ContentLine &line) {
        const bool isBegin = line.name == "BEGIN";
        const bool isEnd = line.name == "END" && depth > 0;
        const bool isZone = (isBegin || isEnd) && line.value() == "VTIMEZONE";
        depth += isBegin ? 1 : 0;
        if (isBegin && isZone) {
            zoneBegin = kept.size();
            isKnownZone = false;
        } else if (zoneBegin >= 0 && line.name == "TZID") {
            isKnownZone = isKnown(line.raw.sliced(line.name.size() + 1).trimmed().toByteArray());
        }
        if (depth <= deepestComponent && line.raw.size() <= longestLine &&
            (isBegin || isEnd || isUsed(line.name))) {
            kept.append(line.raw);
        }
        if (isEnd && isZone && zoneBegin >= 0) {
            kept.truncate(isKnownZone ? zoneBegin : kept.size());
            zoneBegin = -1;
        }
        depth -= isEnd ? 1 : 0;
    });
    return kept;
}

/// Seconds since the epoch; nothing for what is no time. A time without a zone is one of the
/// machine's.
std::optional<qint64> momentOf(const icaltimetype &time)
{
    const QDate date(time.year, time.month, time.day);
    if (!date.isValid()) {
        return std::nullopt;
    }
    if (time.is_date != 0) {
        return date.startOfDay().toSecsSinceEpoch();
    }
    if (const icaltimezone *const zone = icaltime_get_timezone(time)) {
        auto *const mutableZone = const_cast<icaltimezone *>(zone); // as libical wants it
        return icaltime_as_timet_with_zone(time, mutableZone);
    }
    return QDateTime(date, QTime(time.hour, time.minute, time.second % 60)).toSecsSinceEpoch();
}

QString titleOf(icalcomponent *component)
{
    return QString::fromUtf8(icalcomponent_get_summary(component)).simplified();
}

bool has(icalcomponent *component, icalproperty_kind kind)
{
    return icalcomponent_get_first_property(component, kind) != nullptr;
}

bool recurs(icalcomponent *component)
{
    return has(component, ICAL_RRULE_PROPERTY) || has(component, ICAL_RDATE_PROPERTY);
}

/// A task that is done, or an event or task that is called off.
bool isClosed(icalcomponent *component)
{
    const icalproperty_status status = icalcomponent_get_status(component);
    return status == ICAL_STATUS_CANCELLED || status == ICAL_STATUS_COMPLETED ||
           has(component, ICAL_COMPLETED_PROPERTY);
}

/// When an event or task takes place. An end, or DUE, is absent as a null time.
struct Schedule {
    explicit Schedule(icalcomponent *component)
        : start(icalcomponent_get_dtstart(component))
        , end(icalcomponent_isa(component) == ICAL_VTODO_COMPONENT
                  ? icalcomponent_get_due(component)
                  : icalcomponent_get_dtend(component))
    {
        if (icaltime_is_null_time(start) != 0) {
            start = end;
        }
    }

    [[nodiscard]] bool hasEnd() const { return icaltime_is_null_time(end) == 0; }

    /// Of the occurrence that begins then: by the clock, also across a change of it.
    [[nodiscard]] icaltimetype endOf(const icaltimetype &begin) const
    {
        if (!hasEnd() || icaltime_compare(begin, start) == 0) {
            return end;
        }
        auto *const zone = const_cast<icaltimezone *>(icaltime_get_timezone(start));
        const icaltimetype last = zone != nullptr ? icaltime_convert_to_zone(end, zone) : end;
        return icaltime_add(begin, icaltime_subtract(last, start));
    }

    icaltimetype start;
    icaltimetype end;
};

/// Moved by days.
icaltimetype moved(icaltimetype time, int days)
{
    icaltime_adjust(&time, days, 0, 0, 0);
    return time;
}

icaltimetype utc(qint64 moment)
{
    return icaltime_from_timet_with_zone(moment, 0, icaltimezone_get_utc_timezone());
}

} // namespace

Component parseCalendar(const QByteArray &text)
{
    return Component(icalparser_parse_string(relevantText(text)));
}

CalendarItem::CalendarItem(const QByteArray &text)
    : m_root(parseCalendar(text))
{
    if (m_root) {
        collect(m_root.get());
    }
    for (icalcomponent *const component : m_components) {
        icalproperty *const id =
            icalcomponent_get_first_property(component, ICAL_RECURRENCEID_PROPERTY);
        if (id != nullptr) {
            const icaltimetype time = zonedTime(id, icalproperty_get_recurrenceid(id));
            m_overrides[icalcomponent_get_uid(component)].emplace(momentOf(time).value_or(0),
                                                                  component);
        }
    }
}

/// Events and tasks lie in one calendar, in several, or in none.
void CalendarItem::collect(icalcomponent *component)
{
    const icalcomponent_kind kind = icalcomponent_isa(component);
    if (kind == ICAL_VEVENT_COMPONENT || kind == ICAL_VTODO_COMPONENT) {
        m_components.push_back(component);
    } else if (kind == ICAL_VCALENDAR_COMPONENT || kind == ICAL_XROOT_COMPONENT) {
        for (icalcomponent *inner =
                 icalcomponent_get_first_component(component, ICAL_ANY_COMPONENT);
             inner != nullptr;
             inner = icalcomponent_get_next_component(component, ICAL_ANY_COMPONENT)) {
            collect(inner);
        }
    }
}

const CalendarItem::Overrides &CalendarItem::overridesOf(icalcomponent *master) const
{
    static const Overrides none;
    const auto found = m_overrides.find(icalcomponent_get_uid(master));
    return found != m_overrides.end() ? found->second : none;
}

bool CalendarItem::hasTasks() const
{
    return std::any_of(m_components.begin(), m_components.end(), [](icalcomponent *component) {
        return icalcomponent_isa(component) == ICAL_VTODO_COMPONENT;
    });
}

std::vector<TimedEvent> CalendarItem::events(const TimeWindow &window) const
{
    std::vector<TimedEvent> events;
    for (icalcomponent *const component : m_components) {
        if (icalcomponent_isa(component) == ICAL_VEVENT_COMPONENT && !isClosed(component)) {
            addEvents(component, window, events);
        }
    }
    return events;
}

void CalendarItem::addEvents(icalcomponent *component, const TimeWindow &window,
                             std::vector<TimedEvent> &events) const
{
    const Schedule schedule(component);
    const auto first = momentOf(schedule.start);
    if (!first) {
        return;
    }
    const bool isAllDay = schedule.start.is_date != 0;
    const auto endOf = [&](const icaltimetype &begin, qint64 start) {
        const icaltimetype end =
            schedule.hasEnd() ? schedule.endOf(begin) : moved(begin, isAllDay ? 1 : 0);
        return std::max(momentOf(end).value_or(start), start);
    };
    const auto add = [&](const icaltimetype &begin, qint64 start) {
        const qint64 end = endOf(begin, start);
        if (window.overlaps(start, end)) {
            events.push_back({start,
                              end,
                              {QString::fromUtf8(icalcomponent_get_uid(component)),
                               titleOf(component), QDateTime::fromSecsSinceEpoch(start),
                               QDateTime::fromSecsSinceEpoch(end), isAllDay, QColor()}});
        }
    };
    if (has(component, ICAL_RECURRENCEID_PROPERTY) || !recurs(component)) {
        add(schedule.start, *first);
        return;
    }
    const Overrides &others = overridesOf(component);
    // A day more on both sides, for lengths and times that depend on the zone.
    const qint64 length = endOf(schedule.start, *first) - *first + secondsPerDay;
    for (const icaltimetype &begin :
         occurrences(component, schedule.start, utc(window.from - length),
                     utc(window.to + secondsPerDay), mostOccurrences)) {
        const auto start = momentOf(begin);
        if (start && others.count(*start) == 0) {
            add(begin, *start);
        }
    }
}

std::vector<OpenTask> CalendarItem::openTasks() const
{
    std::vector<OpenTask> tasks;
    for (icalcomponent *const component : m_components) {
        if (icalcomponent_isa(component) == ICAL_VTODO_COMPONENT && !isClosed(component) &&
            !has(component, ICAL_RECURRENCEID_PROPERTY)) {
            if (auto task = openTask(component)) {
                tasks.push_back(*std::move(task));
            }
        }
    }
    return tasks;
}

std::optional<OpenTask> CalendarItem::openTask(icalcomponent *component) const
{
    const Schedule schedule(component);
    OpenTask task;
    task.start = schedule.start;
    icalcomponent *shown = component;
    icaltimetype due = schedule.end;
    if (icaltime_is_null_time(schedule.start) == 0 && recurs(component)) {
        const Overrides &others = overridesOf(component);
        const auto isOpen = [&others](const icaltimetype &start) {
            const auto other = others.find(momentOf(start).value_or(0));
            return other == others.end() || !isClosed(other->second);
        };
        auto starts = occurrences(component, schedule.start, schedule.start,
                                  moved(schedule.start, farthestYears * 366), others.size() + 100);
        if (starts.empty()) {
            starts.push_back(schedule.start); // a rule that makes no sense
        }
        const auto current = std::find_if(starts.begin(), starts.end(), isOpen);
        if (current == starts.end()) {
            return std::nullopt;
        }
        task.start = *current;
        due = schedule.endOf(*current);
        const auto next = std::find_if(current + 1, starts.end(), isOpen);
        if (const auto other = others.find(momentOf(*current).value_or(0)); other != others.end()) {
            shown = other->second;
            due = Schedule(shown).end;
            task.overridden = icalproperty_get_value_as_string(
                icalcomponent_get_first_property(shown, ICAL_RECURRENCEID_PROPERTY));
        } else if (next != starts.end()) {
            task.following = icaltime_as_timet(*next) - icaltime_as_timet(schedule.start);
            task.passed = static_cast<int>(next - starts.begin());
        }
    }
    task.reminder = {QString::fromUtf8(icalcomponent_get_uid(component)), titleOf(shown), {}};
    if (const auto moment = momentOf(due)) {
        task.reminder.due = QDateTime::fromSecsSinceEpoch(*moment);
    }
    return task;
}

} // namespace velmora
