#include "services/CalendarEventInfo.h"

#include <QLocale>

#include <algorithm>

namespace velmora
{

namespace
{

QString shortDuration(qint64 milliseconds)
{
    const qint64 minutes = std::max<qint64>(milliseconds, 0) / 60'000;
    if (minutes < 1) {
        return QStringLiteral("now");
    }
    return minutes < 60 ? QStringLiteral("%1m").arg(minutes)
                        : QStringLiteral("%1h %2m").arg(minutes / 60).arg(minutes % 60);
}

} // namespace

QString CalendarEventInfo::timeRangeString() const
{
    if (isAllDay) {
        return QStringLiteral("All day");
    }
    const auto text = [](const QDateTime &time) {
        return QLocale().toString(time, QStringLiteral("h:mm AP"));
    };
    return text(startDate) + QStringLiteral(" \u2013 ") + text(endDate);
}

QString CalendarEventInfo::relativeString(const QDateTime &now) const
{
    return isUnderWay(now) ? QStringLiteral("Ends ") + shortDuration(now.msecsTo(endDate))
                           : QStringLiteral("In ") + shortDuration(now.msecsTo(startDate));
}

} // namespace velmora
