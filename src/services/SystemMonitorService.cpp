#include "services/SystemMonitorService.h"

#include "platform/SoundOutput.h"

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

/// A counter that went backwards was reset: that sample counts nothing for it.
double risen(std::uint64_t before, std::uint64_t now)
{
    return static_cast<double>(now < before ? 0 : now - before);
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
    // One sum over all cores rather than a mean of percentages, so that each tick weighs the same.
    double used = 0;
    double total = 0;
    for (const auto &[core, ticks] : m_statistics.processorTicks()) {
        const auto [previous, isFirst] = m_previousTicks.try_emplace(core, ticks);
        if (isFirst)
            continue;
        const CoreTicks &before = previous->second;
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
    if (const auto memory = m_statistics.memory()) {
        set(m_memUsedGB, static_cast<double>(memory->used) * bytesToGB);
        set(m_memTotalGB, static_cast<double>(memory->total) * bytesToGB);
    }
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
    const NetworkBytes bytes = m_statistics.networkBytes();
    const double elapsed = std::chrono::duration<double>(now - m_previousBytesTime).count();
    if (m_previousBytes && elapsed > 0) {
        set(m_netUpKBs, risen(m_previousBytes->sent, bytes.sent) / elapsed * bytesToKB);
        set(m_netDownKBs, risen(m_previousBytes->received, bytes.received) / elapsed * bytesToKB);
    }
    m_previousBytes = bytes;
    m_previousBytesTime = now;
}

void SystemMonitorService::sampleDisk()
{
    const FileSystemSize size = m_statistics.homeFileSystem();
    set(m_diskTotalGB, size.totalBytes * bytesToGB);
    set(m_diskUsedGB, (size.totalBytes - size.freeBytes) * bytesToGB);
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
