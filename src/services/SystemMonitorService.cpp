#include "services/SystemMonitorService.h"

#include "platform/SoundOutput.h"
#include "platform/SystemStatistics.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velmora
{

using namespace std::chrono_literals;

namespace
{

constexpr double bytesToGB = 1.0 / 1073741824.0;
constexpr double bytesToKB = 1.0 / 1024.0;
constexpr std::chrono::milliseconds sampleInterval = 2s;

/// A counter that went backwards has wrapped or was reset: that sample counts nothing for it.
double risen(std::uint32_t before, std::uint32_t now)
{
    const auto difference = static_cast<std::int64_t>(now) - static_cast<std::int64_t>(before);
    return static_cast<double>(std::max<std::int64_t>(difference, 0));
}

double rate(std::uint64_t before, std::uint64_t now, double seconds)
{
    const std::uint64_t delta = now < before ? 0 : now - before;
    return static_cast<double>(delta) / seconds * bytesToKB;
}

double finiteOrZero(const std::optional<double> &bytes)
{
    return bytes && std::isfinite(*bytes) ? *bytes : 0;
}

} // namespace

SystemMonitorService::SystemMonitorService(Clock &clock, SystemStatistics &statistics,
                                           SoundOutput &sound, QObject *parent)
    : QObject(parent)
    , m_clock(clock)
    , m_statistics(statistics)
    , m_sound(sound)
    , m_previousBytesTime(clock.uptime())
{
    sample();
    m_timer = m_clock.every(sampleInterval, [this] { sample(); });
}

void SystemMonitorService::adjustVolume(float delta)
{
    if (std::isnan(delta))
        return;
    const float volume = std::clamp(m_volume + delta, 0.0F, 1.0F);
    m_sound.setVolumePercent(static_cast<int>(volume * 100.0F));
    set(m_volume, volume);
    publish();
}

void SystemMonitorService::sample()
{
    sampleProcessor();
    sampleMemory();
    sampleVolume();
    sampleNetwork();
    sampleDisk();
    publish();
}

void SystemMonitorService::sampleProcessor()
{
    const auto cores = m_statistics.processorTicks();
    if (!cores)
        return;

    // One sum over all cores rather than a mean of percentages, so that each tick weighs the same.
    double used = 0;
    double total = 0;
    for (std::uint32_t core = 0; core < cores->size(); ++core) {
        const auto &ticks = (*cores)[core];
        const auto [previous, isFirst] = m_previousTicks.try_emplace(core, ticks);
        if (isFirst)
            continue;
        const auto &before = previous->second;
        const double busy =
            risen(before[0], ticks[0]) + risen(before[1], ticks[1]) + risen(before[3], ticks[3]);
        used += busy;
        total += std::max(busy + risen(before[2], ticks[2]), 1.0);
        previous->second = ticks;
    }
    if (total > 0)
        set(m_cpuUsage, used / total * 100);
}

void SystemMonitorService::sampleMemory()
{
    const auto pages = m_statistics.memoryPages();
    if (!pages)
        return;
    const auto used = static_cast<double>((pages->active + pages->wired) * pages->pageSize);
    const auto total = static_cast<double>(m_statistics.physicalMemory());
    set(m_memUsedGB, used * bytesToGB);
    set(m_memTotalGB, total * bytesToGB);
}

void SystemMonitorService::sampleVolume()
{
    if (const auto percent = m_sound.volumePercent())
        set(m_volume, static_cast<float>(*percent) / 100.0F);
}

void SystemMonitorService::sampleNetwork()
{
    // Monotonic time: setting the wall clock must not turn into a rate.
    const auto now = m_clock.uptime();
    const NetworkBytes bytes = interfaceTotals();
    const double elapsed = std::chrono::duration<double>(now - m_previousBytesTime).count();
    if (m_previousBytes && elapsed > 0) {
        set(m_netUpKBs, rate(m_previousBytes->up, bytes.up, elapsed));
        set(m_netDownKBs, rate(m_previousBytes->down, bytes.down, elapsed));
    }
    m_previousBytes = bytes;
    m_previousBytesTime = now;
}

SystemMonitorService::NetworkBytes SystemMonitorService::interfaceTotals() const
{
    NetworkBytes totals;
    const auto interfaces = m_statistics.interfaces();
    if (!interfaces)
        return totals;
    for (const InterfaceBytes &interface : *interfaces) {
        if (!interface.name.startsWith(QLatin1String("en")))
            continue;
        totals.up += interface.sent;
        totals.down += interface.received;
    }
    return totals;
}

void SystemMonitorService::sampleDisk()
{
    const FileSystemSize size = m_statistics.homeFileSystem();
    const double free = finiteOrZero(size.freeBytes) * bytesToGB;
    const double total = finiteOrZero(size.totalBytes) * bytesToGB;
    set(m_diskTotalGB, total);
    set(m_diskUsedGB, total - free);
}

template<typename T>
void SystemMonitorService::set(T &property, T value)
{
    m_hasChanged |= property != value;
    property = value;
}

void SystemMonitorService::publish()
{
    if (std::exchange(m_hasChanged, false)) {
        Q_EMIT changed();
    }
}

} // namespace velmora
