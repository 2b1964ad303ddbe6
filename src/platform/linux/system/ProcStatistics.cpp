#include "platform/linux/system/ProcStatistics.h"

#include "platform/linux/system/TextScanner.h"

#include <QDir>

#include <algorithm>
#include <sys/statvfs.h>
#include <unistd.h>
#include <utility>

namespace velmora
{

namespace
{

constexpr std::size_t mostCores = 8192; // the kernel's own limit; guards against a garbled number

/// One line "cpu7 user nice system idle iowait irq softirq steal …", after its "cpu". Guest time is
/// part of user time already.
struct CoreLine {
    std::size_t number;
    std::array<std::uint64_t, 4> ticks;
};

std::optional<CoreLine> parseCore(TextScanner line)
{
    const auto number = line.number();
    if (!number || *number >= mostCores)
        return std::nullopt;
    std::array<std::uint64_t, 8> fields{};
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const auto value = line.number();
        if (!value && i < 4)
            return std::nullopt;
        if (!value)
            break;
        fields[i] = *value;
    }
    const auto [user, nice, system, idle, ioWait, irq, softIrq, steal] = fields;
    return CoreLine{static_cast<std::size_t>(*number),
                    {user, system + irq + softIrq + steal, idle + ioWait, nice}};
}

/// The lines of /proc/meminfo that matter here, in units of 1024 bytes.
struct MemInfo {
    std::optional<std::uint64_t> total, free, available;
    std::uint64_t kernel = 0;
};

MemInfo parseMemInfo(TextScanner text)
{
    MemInfo info;
    while (!text.atEnd()) {
        TextScanner line(text.line());
        const auto key = line.until(':');
        const auto value = line.number();
        if (!key || !value)
            continue;
        if (*key == "MemTotal")
            info.total = value;
        else if (*key == "MemFree")
            info.free = value;
        else if (*key == "MemAvailable")
            info.available = value;
        else if (*key == "SUnreclaim" || *key == "KernelStack" || *key == "PageTables" ||
                 *key == "Percpu")
            info.kernel += *value;
    }
    return info;
}

} // namespace

ProcStatistics::ProcStatistics(const std::string &procRoot, const std::string &sysRoot,
                               std::string home)
    : m_stat(procRoot + "/stat")
    , m_meminfo(procRoot + "/meminfo")
    , m_netDev(procRoot + "/net/dev")
    , m_physical(sysRoot)
    , m_home(std::move(home))
{
}

ProcStatistics::ProcStatistics()
    : ProcStatistics("/proc", "/sys", QDir::homePath().toStdString())
{
}

std::optional<std::vector<CoreTicks>> ProcStatistics::processorTicks()
{
    const auto text = m_stat.read();
    if (!text || !readCores(*text))
        return std::nullopt;
    m_hasReadCores = true;

    std::vector<CoreTicks> result(m_cores.size());
    for (std::size_t number = 0; number < m_cores.size(); ++number) {
        const Core &core = m_cores[number];
        for (std::size_t i = 0; i < core.ticks.size(); ++i)
            result[number][i] = static_cast<std::uint32_t>(core.ticks[i] - core.origin[i]);
    }
    return result;
}

bool ProcStatistics::readCores(std::string_view text)
{
    bool isAnyRead = false;
    TextScanner scanner(text);
    while (!scanner.atEnd()) {
        TextScanner line(scanner.line());
        // The cores come first; the long lines about interrupts need not be looked at.
        if (!line.skip("cpu"))
            break;
        if (line.skip(" "))
            continue; // the sum of all cores
        if (const auto core = parseCore(line)) {
            storeCore(core->number, core->ticks);
            isAnyRead = true;
        }
    }
    return isAnyRead;
}

void ProcStatistics::storeCore(std::size_t number, const std::array<std::uint64_t, 4> &ticks)
{
    if (number >= m_cores.size())
        m_cores.resize(number + 1);
    Core &core = m_cores[number];
    // A core that was off until now counts from now on: its past is no load of the last moment.
    if (!core.isSeen && m_hasReadCores)
        core.origin = ticks;
    core.isSeen = true;
    core.ticks = ticks;
}

std::optional<MemoryPages> ProcStatistics::memoryPages()
{
    const auto text = m_meminfo.read();
    if (!text)
        return std::nullopt;
    const MemInfo info = parseMemInfo(TextScanner(*text));
    if (!info.total || !info.free)
        return std::nullopt;
    m_physicalMemory = *info.total * 1024;

    // In some containers "available" exceeds the total; then, as in `free`, the free memory counts.
    std::uint64_t available = info.available.value_or(*info.free);
    if (available > *info.total)
        available = std::min(*info.free, *info.total);
    const std::uint64_t used = *info.total - available;
    const std::uint64_t wired = std::min(info.kernel, used);

    const auto pageSize = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    const std::uint64_t usedPages = used * 1024 / pageSize;
    const std::uint64_t wiredPages = wired * 1024 / pageSize;
    return MemoryPages{usedPages - wiredPages, wiredPages, pageSize};
}

std::uint64_t ProcStatistics::physicalMemory()
{
    if (m_physicalMemory == 0)
        static_cast<void>(memoryPages());
    return m_physicalMemory;
}

std::optional<std::vector<InterfaceBytes>> ProcStatistics::interfaces()
{
    const auto text = m_netDev.read();
    if (!text)
        return std::nullopt;

    m_netNames.clear();
    m_netTraffic.clear();
    TextScanner scanner(*text);
    while (!scanner.atEnd()) {
        // "name: received-bytes, seven more about receiving, sent-bytes, …"; the two lines of
        // headings hold no number and so drop out.
        TextScanner line(scanner.line());
        const auto name = line.until(':');
        if (!name)
            continue;
        std::array<std::optional<std::uint64_t>, 9> fields;
        std::generate(fields.begin(), fields.end(), [&line] { return line.number(); });
        if (!fields.front() || !fields.back())
            continue;
        m_netNames.push_back(*name);
        m_netTraffic.push_back({*fields.back(), *fields.front()});
    }

    if (m_netNames.empty())
        return std::nullopt; // there always is a loopback: this is no list of interfaces

    m_physical.update(m_netNames);
    std::vector<InterfaceBytes> result;
    for (std::size_t i = 0; i < m_netNames.size(); ++i) {
        if (const QString &name = m_physical.nameAt(i); !name.isEmpty())
            result.push_back({name, m_netTraffic[i].sent, m_netTraffic[i].received});
    }
    return result;
}

FileSystemSize ProcStatistics::homeFileSystem()
{
    struct statvfs status = {};
    if (::statvfs(m_home.c_str(), &status) != 0)
        return {};
    const auto blockSize = static_cast<double>(status.f_frsize);
    // What the user can fill, as df and file managers have it; the rest is kept for root.
    return {static_cast<double>(status.f_bavail) * blockSize,
            static_cast<double>(status.f_blocks) * blockSize};
}

} // namespace velmora
