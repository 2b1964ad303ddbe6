#pragma once

#include "platform/CalendarStore.h"
#include "platform/ReminderStore.h"

#include <QtPlugin>

#include <functional>
#include <memory>

namespace velmora
{

/// The time between two moments, in seconds since the epoch; the second one is not included.
struct TimeWindow {
    qint64 from = 0;
    qint64 to = 0;

    /// What has no duration takes up its moment.
    [[nodiscard]] bool overlaps(qint64 start, qint64 end) const
    {
        return start < to && (end > from || (start == end && start >= from));
    }
    [[nodiscard]] bool covers(const TimeWindow &other) const
    {
        return other.from >= from && other.to <= to;
    }
    /// Also covers the windows of the next day, of a clock that is a little behind too.
    [[nodiscard]] TimeWindow widened() const { return {from - 3600, to + 86400}; }
};

/// An event with its moments, in seconds since the epoch: to tell those from a local time each time
/// they are compared is expensive.
struct TimedEvent {
    qint64 start = 0;
    qint64 end = 0;
    CalendarEvent event;

    bool operator==(const TimedEvent &) const = default;
};

/// Where calendars and tasks come from. Waits for disks or services, so it is made, used and
/// destroyed in a thread of its own, which has an event loop.
class CalendarSource
{
public:
    CalendarSource() = default;
    CalendarSource(const CalendarSource &) = delete;
    CalendarSource &operator=(const CalendarSource &) = delete;
    virtual ~CalendarSource() = default;

    /// Whether it answers.
    [[nodiscard]] virtual bool isUsable() = 0;

    /// May answer with more than the window.
    [[nodiscard]] virtual std::optional<std::vector<TimedEvent>>
    events(const TimeWindow &window) = 0;
    [[nodiscard]] virtual std::optional<std::vector<Reminder>> reminders() = 0;
    [[nodiscard]] virtual std::optional<QString> add(const QString &title) = 0;
    [[nodiscard]] virtual bool complete(const QString &id) = 0;
    [[nodiscard]] virtual bool remove(const QString &id) = 0;

    /// To be called in that thread whenever answers may differ from the last ones.
    std::function<void()> changed;
};

/// How a source is had.
struct SourceFactory {
    std::function<std::unique_ptr<CalendarSource>()> make; ///< in the source's thread
    std::function<void()> giveUp; ///< has it end what it is at, and all that comes; any thread
};

/// What a module that brings another source has as its root object.
class CalendarModule
{
public:
    CalendarModule() = default;
    CalendarModule(const CalendarModule &) = delete;
    CalendarModule &operator=(const CalendarModule &) = delete;
    virtual ~CalendarModule() = default;

    [[nodiscard]] virtual SourceFactory source() = 0;
};

} // namespace velmora

Q_DECLARE_INTERFACE(velmora::CalendarModule, "com.velmora.app.CalendarModule/1")
