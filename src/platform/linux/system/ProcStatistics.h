#pragma once

#include "platform/SystemStatistics.h"
#include "platform/linux/system/PhysicalInterfaces.h"

#include <QFile>

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

    /// A core's place is its number in the kernel; one that is off keeps its last counters.
    [[nodiscard]] std::optional<std::vector<CoreTicks>> processorTicks() override;

    /// Active and wired pages together are what `free` calls used.
    [[nodiscard]] std::optional<MemoryPages> memoryPages() override;
    [[nodiscard]] std::uint64_t physicalMemory() override;

    /// Physical interfaces only. A name stays with its interface while the process runs.
    [[nodiscard]] std::optional<std::vector<InterfaceBytes>> interfaces() override;

    [[nodiscard]] FileSystemSize homeFileSystem() override;

private:
    struct Core {
        std::array<std::uint64_t, 4> origin{};
        std::array<std::uint64_t, 4> ticks{};
        bool isSeen = false;
    };

    [[nodiscard]] bool readCores(QByteArrayView text);
    void storeCore(std::size_t number, const std::array<std::uint64_t, 4> &ticks);

    QFile m_stat;
    QFile m_meminfo;
    QFile m_netDev;
    PhysicalInterfaces m_physical;
    QString m_home;

    std::vector<Core> m_cores;
    bool m_hasReadCores = false;
    std::uint64_t m_physicalMemory = 0;
};

} // namespace velmora
