#pragma once

#include <QColor>
#include <QDateTime>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace velmora
{

/// One event, or one occurrence of a recurring one.
struct CalendarEvent {
    QString id;      ///< the same for all occurrences; empty where the store has none
    QString title;   ///< in one line; may be empty
    QDateTime start; ///< local time; of an all-day event, the first moment of its day
    QDateTime end;   ///< local time, never before the start; all day: the end of its last day
    bool isAllDay = false;
    QColor color; ///< of its calendar; invalid where that has none

    bool operator==(const CalendarEvent &) const = default;
};

/// The events of the user's calendars. Used on the main thread; all calls return at once. Each is
/// answered once, on the main loop and never inside the call, unless `context` or the store is
/// destroyed before. An answer may take seconds.
class CalendarStore : public QObject
{
    Q_OBJECT

public:
    using AccessAnswer = std::function<void(bool granted)>;
    /// Nothing where no calendar can be read at present.
    using EventsAnswer = std::function<void(const std::optional<std::vector<CalendarEvent>> &)>;

    /// Asks for permission. May be asked again after a refusal.
    virtual void requestAccess(QObject *context, AccessAnswer done) = 0;
    /// The present answer, without a question.
    virtual void checkAccess(QObject *context, AccessAnswer done) = 0;

    /// The events that overlap the time from `from` on and before `to`, by start. Cancelled ones
    /// are left out.
    virtual void fetchEvents(const QDateTime &from, const QDateTime &to, QObject *context,
                             EventsAnswer done) = 0;

Q_SIGNALS:
    /// Events or access may differ from what was answered last. Comes on the main loop; changes in
    /// quick succession come as one.
    void changed();
};

} // namespace velmora
