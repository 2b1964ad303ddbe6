#include "widgets/SystemMonitorRow.h"

namespace velmora
{

QColor loadColor(double fraction)
{
    if (fraction > 0.85) {
        return QColor::fromRgbF(1.0F, 0.35F, 0.3F);
    }
    if (fraction > 0.65) {
        return QColor::fromRgbF(1.0F, 0.6F, 0.2F);
    }
    return QColor::fromRgbF(0.35F, 0.85F, 0.5F);
}

QString freeSpaceText(double usedGB, double totalGB)
{
    if (totalGB <= 0) {
        return QStringLiteral("\u2014");
    }
    const double free = totalGB - usedGB;
    return free >= 1.0 ? QString::asprintf("%.0fG free", free)
                       : QString::asprintf("%.0fM free", free * 1024);
}

void SystemMonitorRow::setMonitor(SystemMonitorService *monitor)
{
    if (monitor == m_monitor) {
        return;
    }
    if (m_monitor != nullptr) {
        m_monitor->disconnect(this);
    }
    m_monitor = monitor;
    Q_EMIT monitorChanged();
    if (m_monitor != nullptr) {
        const auto forward = &SystemMonitorRow::changed;
        connect(m_monitor, &SystemMonitorService::cpuUsageChanged, this, forward);
        connect(m_monitor, &SystemMonitorService::memUsedGBChanged, this, forward);
        connect(m_monitor, &SystemMonitorService::memTotalGBChanged, this, forward);
        connect(m_monitor, &SystemMonitorService::diskUsedGBChanged, this, forward);
        connect(m_monitor, &SystemMonitorService::diskTotalGBChanged, this, forward);
    }
    Q_EMIT changed();
}

void SystemMonitorRow::setKind(Kind kind)
{
    if (kind != m_kind) {
        m_kind = kind;
        Q_EMIT kindChanged();
        Q_EMIT changed();
    }
}

QString SystemMonitorRow::label() const
{
    switch (m_kind) {
    case Kind::Processor:
        return QStringLiteral("CPU");
    case Kind::Memory:
        return QStringLiteral("RAM");
    case Kind::Disk:
        return QStringLiteral("DISK");
    }
    return {};
}

double SystemMonitorRow::fraction() const
{
    const auto ratio = [](double used, double total) { return total > 0 ? used / total : 0.0; };
    if (m_monitor == nullptr) {
        return 0;
    }
    switch (m_kind) {
    case Kind::Processor:
        return m_monitor->cpuUsage() / 100;
    case Kind::Memory:
        return ratio(m_monitor->memUsedGB(), m_monitor->memTotalGB());
    case Kind::Disk:
        return ratio(m_monitor->diskUsedGB(), m_monitor->diskTotalGB());
    }
    return 0;
}

QString SystemMonitorRow::text() const
{
    if (m_monitor == nullptr) {
        return {};
    }
    switch (m_kind) {
    case Kind::Processor:
        return QString::asprintf("%.0f%%", m_monitor->cpuUsage());
    case Kind::Memory:
        return QString::asprintf("%.1fG", m_monitor->memUsedGB());
    case Kind::Disk:
        return freeSpaceText(m_monitor->diskUsedGB(), m_monitor->diskTotalGB());
    }
    return {};
}

QColor SystemMonitorRow::color() const
{
    return loadColor(fraction());
}

} // namespace velmora
