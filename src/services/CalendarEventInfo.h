#pragma once

#include <QColor>
#include <QDateTime>
#include <QString>

namespace velmora
{

/// An event as the views show it.
struct CalendarEventInfo {
    QString id;
    QString title;
    QDateTime startDate;
    QDateTime endDate;
    bool isAllDay = false;
    QColor color;

    [[nodiscard]] bool isUnderWay(const QDateTime &now) const
    {
        return startDate <= now && endDate > now;
    }
    /// "9:00 AM – 9:30 AM", or "All day".
    [[nodiscard]] QString timeRangeString() const;
    /// "Ends 20m" while it is under way, otherwise "In 1h 5m"; "now" for less than a minute.
    [[nodiscard]] QString relativeString(const QDateTime &now) const;

    friend bool operator==(const CalendarEventInfo &, const CalendarEventInfo &) = default;
};

} // namespace velmora
