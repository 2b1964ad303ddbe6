#pragma once

#include "platform/linux/calendar/CalendarSource.h"

#include <libical/ical.h>
#include <map>

namespace velmora
{

struct ComponentFree {
    void operator()(icalcomponent *component) const { icalcomponent_free(component); }
};
using Component = std::unique_ptr<icalcomponent, ComponentFree>;

/// With those properties only that tell when something takes place, what it is and whether it is
/// done. Null for what is no calendar.
[[nodiscard]] Component parseCalendar(const QByteArray &text);

/// A task that is open, and what completing it takes.
struct OpenTask {
    Reminder reminder;
    QByteArray overridden; ///< RECURRENCE-ID, if the open occurrence has a text of its own

    /// Of a recurring task: the start of the open occurrence, by the clock of its zone, how far
    /// away the next one is in seconds, and the number of occurrences before that. Nothing where
    /// there is no further one.
    icaltimetype start = icaltime_null_time();
    std::optional<qint64> following;
    int passed = 0;
};

/// What the text of one iCalendar file means. Anything but a calendar is an empty one. Nothing of
/// libical is kept beyond this object's life.
class CalendarItem
{
public:
    explicit CalendarItem(const QByteArray &text);

    /// The events within the window, in no order and without colours; those of one recurring event
    /// up to a bound.
    [[nodiscard]] std::vector<TimedEvent> events(const TimeWindow &window) const;
    /// The tasks that are open; a recurring one once.
    [[nodiscard]] std::vector<OpenTask> openTasks() const;
    [[nodiscard]] bool hasTasks() const;

private:
    using Overrides = std::map<qint64, icalcomponent *>;

    void collect(icalcomponent *component);
    [[nodiscard]] const Overrides &overridesOf(icalcomponent *master) const;
    void addEvents(icalcomponent *component, const TimeWindow &window,
                   std::vector<TimedEvent> &events) const;
    [[nodiscard]] std::optional<OpenTask> openTask(icalcomponent *component) const;

    Component m_root;
    std::vector<icalcomponent *> m_components;   ///< events and tasks
    std::map<QByteArray, Overrides> m_overrides; ///< by UID: what takes the place of occurrences
};

} // namespace velmora
