#include "widgets/SystemMonitorRow.h"

namespace velmora
{

namespace
{

/// In units of 2^30 bytes, below one in 2^20; a dash while the size is not known.
QString freeSpaceText(double usedGB, double totalGB)
{
    if (totalGB <= 0) {
        return QStringLiteral("\u2014");
    }
    const double free = totalGB - usedGB;
    return free >= 1.0 ? QString::asprintf("%.0fG free", free)
                       : QString::asprintf("%.0fM free", free * 1024);
}

} // namespace

QColor SystemMonitorRow::color() const
{
    if (m_fraction > 0.85) {
        return QColor::fromRgbF(1.0F, 0.35F, 0.3F);
    }
    if (m_fraction > 0.65) {
        return QColor::fromRgbF(1.0F, 0.6F, 0.2F);
    }
    return QColor::fromRgbF(0.35F, 0.85F, 0.5F);
}

void SystemMonitorRow::componentComplete()
{
    connect(m_monitor, &SystemMonitorService::changed, this, &SystemMonitorRow::takeFigures);
    takeFigures();
}

void SystemMonitorRow::takeFigures()
{
    const auto ratio = [](double used, double total) { return total > 0 ? used / total : 0.0; };
    switch (m_kind) {
    case Kind::Processor:
        m_label = QStringLiteral("CPU");
        m_fraction = m_monitor->cpuUsage() / 100;
        m_text = QString::asprintf("%.0f%%", m_monitor->cpuUsage());
        break;
    case Kind::Memory:
        m_label = QStringLiteral("RAM");
        m_fraction = ratio(m_monitor->memUsedGB(), m_monitor->memTotalGB());
        m_text = QString::asprintf("%.1fG", m_monitor->memUsedGB());
        break;
    case Kind::Disk:
        m_label = QStringLiteral("DISK");
        m_fraction = ratio(m_monitor->diskUsedGB(), m_monitor->diskTotalGB());
        m_text = freeSpaceText(m_monitor->diskUsedGB(), m_monitor->diskTotalGB());
        break;
    }
    Q_EMIT changed();
}

} // namespace velmora
