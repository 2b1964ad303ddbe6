#include "widgets/ClockModel.h"

#include <QLocale>

namespace velmora
{

void ClockModel::tick()
{
    const QDateTime now = m_clock->now();
    const QString time = now.toString(QStringLiteral("HH:mm"));
    const QString date = QLocale().toString(now.date(), QStringLiteral("ddd, MMM d"));
    if (time != m_time || date != m_date) {
        m_time = time;
        m_date = date;
        Q_EMIT changed();
    }
    const std::chrono::milliseconds toNextSecond(1000 - now.time().msec());
    m_timer = m_clock->after(toNextSecond, [this] { tick(); });
}

} // namespace velmora
