#include "widgets/ClockModel.h"

namespace velmora
{

void ClockModel::setClock(Clock *clock)
{
    if (clock == m_clock) {
        return;
    }
    m_clock = clock;
    m_timer.reset();
    Q_EMIT clockChanged();
    if (m_clock != nullptr) {
        tick();
    }
}

void ClockModel::tick()
{
    const QDateTime now = m_clock->now();
    const QString time = now.toString(QStringLiteral("HH:mm"));
    if (time != m_time) {
        m_time = time;
        Q_EMIT timeChanged();
    }
    const QString date = QLocale().toString(now.date(), QStringLiteral("ddd, MMM d"));
    if (date != m_date) {
        m_date = date;
        Q_EMIT dateChanged();
    }
    const std::chrono::milliseconds toNextSecond(1000 - now.time().msec());
    m_timer = m_clock->after(toNextSecond, [this] { tick(); });
}

} // namespace velmora
