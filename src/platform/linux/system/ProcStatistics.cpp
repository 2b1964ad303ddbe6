#include "platform/linux/system/ProcStatistics.h"

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

/// The whole text; empty if it cannot be read.
QByteArray readAgain(QFile &file)
{
    if (!file.isOpen() && !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return {};
    QByteArray text = file.seek(0) ? file.readAll() : QByteArray();
    if (text.isEmpty())
        file.close(); // and is opened anew the next time
    return text;
}

/// Takes what comes before the separator, and the separator.
QByteArrayView take(QByteArrayView &rest, char separator)
{
    const qsizetype end = rest.indexOf(separator);
    const QByteArrayView taken = end < 0 ? rest : rest.first(end);
    rest = end < 0 ? QByteArrayView() : rest.sliced(end + 1);
    return taken;
}

/// Takes one number of a line; nothing if there is none.
std::optional<std::uint64_t> takeNumber(QByteArrayView &line)
{
    line = line.trimmed();
    bool isNumber = false;
    const std::uint64_t number = take(line, ' ').toULongLong(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

/// One line "cpu7 user nice system idle iowait irq softirq steal …", after its "cpu". Guest time is
/// part of user time already.
struct CoreLine {
    std::size_t number;
    std::array<std::uint64_t, 4> ticks;
};

std::optional<CoreLine> parseCore(QByteArrayView line)
{
    const auto number = takeNumber(line);
    std::array<std::optional<std::uint64_t>, 8> fields;
    std::generate(fields.begin(), fields.end(), [&line] { return takeNumber(line); });
    const auto [user, nice, system, idle, ioWait, irq, softIrq, steal] = fields;
    if (!number || *number >= mostCores || !user || !nice || !system || !idle)
        return std::nullopt;
    return CoreLine{static_cast<std::size_t>(*number),
                    {*user, *system + irq.value_or(0) + softIrq.value_or(0) + steal.value_or(0),
                     *idle + ioWait.value_or(0), *nice}};
}

/// The lines of /proc/meminfo that matter here, in units of 1024 bytes.
struct MemInfo {
    std::optional<std::uint64_t> total, free, available;
    std::uint64_t kernel = 0;
};

MemInfo parseMemInfo(QByteArrayView text)
{
    MemInfo info;
    while (!text.isEmpty()) {
        QByteArrayView line = take(text, '\n');
        const QByteArrayView key = take(line, ':');
        const auto value = takeNumber(line);
        if (!value)
            continue;
        if (key == "MemTotal")
            info.total = value;
        else if (key == "MemFree")
            info.free = value;
        else if (key == "MemAvailable")
            info.available = value;
        else if (key == "SUnreclaim" || key == "KernelStack" || key == "PageTables" ||
                 key == "Percpu")
            info.kernel += *value;
    }
    return info;
}

} // namespace

ProcStatistics::ProcStatistics(const QString &procRoot, const QString &sysRoot, QString home)
    : m_stat(procRoot + QLatin1String("/stat"))
    , m_meminfo(procRoot + QLatin1String("/meminfo"))
    , m_netDev(procRoot + QLatin1String("/net/dev"))
    , m_physical(sysRoot)
    , m_home(std::move(home))
{
}

ProcStatistics::ProcStatistics()
    : ProcStatistics(QStringLiteral("/proc"), QStringLiteral("/sys"), QDir::homePath())
{
}

std::optional<std::vector<CoreTicks>> ProcStatistics::processorTicks()
{
    if (!readCores(readAgain(m_stat)))
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

bool ProcStatistics::readCores(QByteArrayView text)
{
    bool isAnyRead = false;
    // The cores come first; the long lines about interrupts need not be looked at.
    while (text.startsWith("cpu")) {
        const QByteArrayView line = take(text, '\n').sliced(3);
        if (line.startsWith(' '))
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
    const MemInfo info = parseMemInfo(readAgain(m_meminfo));
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
    const QByteArray bytes = readAgain(m_netDev);
    QByteArrayView text = bytes;
    QByteArrayList kernelNames;
    std::vector<InterfaceBytes> counters;
    while (!text.isEmpty()) {
        // "name: received-bytes, seven more about receiving, sent-bytes, …"; the two lines of
        // headings hold no number and so drop out.
        QByteArrayView line = take(text, '\n');
        const QByteArrayView name = take(line, ':').trimmed();
        std::array<std::optional<std::uint64_t>, 9> fields;
        std::generate(fields.begin(), fields.end(), [&line] { return takeNumber(line); });
        if (!fields.front() || !fields.back())
            continue;
        kernelNames.append(name.toByteArray());
        counters.push_back({QString(), *fields.back(), *fields.front()});
    }
    if (counters.empty())
        return std::nullopt; // there always is a loopback: this is no list of interfaces

    const QStringList &names = m_physical.namesFor(kernelNames);
    for (std::size_t i = 0; i < counters.size(); ++i)
        counters[i].name = names.at(static_cast<qsizetype>(i));
    std::erase_if(counters, [](const auto &each) { return each.name.isEmpty(); });
    return counters;
}

FileSystemSize ProcStatistics::homeFileSystem()
{
    struct statvfs status = {};
    if (::statvfs(QFile::encodeName(m_home).constData(), &status) != 0)
        return {};
    const auto blockSize = static_cast<double>(status.f_frsize);
    // What the user can fill, as df and file managers have it; the rest is kept for root.
    return {static_cast<double>(status.f_bavail) * blockSize,
            static_cast<double>(status.f_blocks) * blockSize};
}

} // namespace velmora
