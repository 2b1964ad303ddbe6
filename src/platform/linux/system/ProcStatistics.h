#pragma once

#include "platform/SystemStatistics.h"

#include <QFile>
#include <QString>

namespace velmora
{

/// The counters of the Linux kernel. What is missing or garbled reads as nothing. The files stay
/// open: reading one again costs a fraction of opening it.
class ProcStatistics final : public SystemStatistics
{
public:
    /// Where procfs and sysfs are mounted, and the directory whose file system is of interest.
    ProcStatistics(const QString &procRoot, const QString &sysRoot, QString home);

    /// The running system and the user's home.
    ProcStatistics();

    [[nodiscard]] std::map<std::uint64_t, CoreTicks> processorTicks() override;

    /// "Used" is what `free` calls so.
    [[nodiscard]] std::optional<MemorySize> memory() override;

    /// Loopback, bridges, tunnels and the like have no device behind them, and do not count.
    [[nodiscard]] NetworkBytes networkBytes() override;

    [[nodiscard]] FileSystemSize homeFileSystem() override;

private:
    [[nodiscard]] bool isPhysical(QByteArrayView interface) const;

    QFile m_stat;
    QFile m_meminfo;
    QFile m_netDev;
    QString m_classNet; ///< the folder of the network interfaces
    QString m_home;
};

} // namespace velmora
