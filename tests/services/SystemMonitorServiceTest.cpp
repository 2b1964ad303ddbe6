#include "services/SystemMonitorService.h"

#include "platform/SoundOutput.h"
#include "platform/SystemStatistics.h"
#include "support/VirtualClock.h"

#include <QSignalSpy>
#include <QTest>

#include <limits>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

constexpr std::uint64_t gibibyte = 1024ULL * 1024 * 1024;

struct FakeStatistics final : SystemStatistics {
    std::optional<std::vector<CoreTicks>> ticks = std::vector<CoreTicks>{};
    std::optional<MemoryPages> pages;
    std::uint64_t memory = 0;
    std::optional<std::vector<InterfaceBytes>> network = std::vector<InterfaceBytes>{};
    FileSystemSize disk;

    std::optional<std::vector<CoreTicks>> processorTicks() override { return ticks; }
    std::optional<MemoryPages> memoryPages() override { return pages; }
    std::uint64_t physicalMemory() override { return memory; }
    std::optional<std::vector<InterfaceBytes>> interfaces() override { return network; }
    FileSystemSize homeFileSystem() override { return disk; }
};

struct FakeSound final : SoundOutput {
    std::optional<int> reported;
    std::vector<int> written;

    std::optional<int> volumePercent() const override { return reported; }
    void setVolumePercent(int percent) override { written.push_back(percent); }
};

InterfaceBytes en0(std::uint64_t sent, std::uint64_t received)
{
    return {QStringLiteral("en0"), sent, received};
}

} // namespace

class SystemMonitorServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsWithABaseline();
    void loadIsTheSumOverAllCores();
    void loadSurvivesWrapsAndGaps();
    void memoryCountsActiveAndWired();
    void volumeFollowsTheServer();
    void adjustVolume_data();
    void adjustVolume();
    void adjustVolumeIgnoresNonsense();
    void networkRates();
    void networkRatesNeverGoNegative();
    void noTimeBetweenTwoSamplesKeepsTheRates();
    void wallClockJumpsDoNotTouchTheRates();
    void diskFailureShowsZero();
    void signalsOnlyOnChange();
    void destroyedServiceStopsSampling();

private:
    VirtualClock m_clock;
};

void SystemMonitorServiceTest::startsWithABaseline()
{
    FakeStatistics statistics;
    statistics.ticks = {{{500, 500, 100, 0}}};
    statistics.network = {{en0(10'000'000, 20'000'000)}};
    FakeSound sound;
    const SystemMonitorService service(m_clock, statistics, sound);
    QCOMPARE(service.cpuUsage(), 0.0);
    QCOMPARE(service.netUpKBs(), 0.0);
    QCOMPARE(service.netDownKBs(), 0.0);
    QCOMPARE(service.volume(), 0.5F);
}

void SystemMonitorServiceTest::loadIsTheSumOverAllCores()
{
    FakeStatistics statistics;
    statistics.ticks = {{{0, 0, 0, 0}, {0, 0, 0, 0}}};
    FakeSound sound;
    const SystemMonitorService service(m_clock, statistics, sound);
    // 60 of 100 ticks on one core and 100 of 300 on the other: 40 %, where a mean would say 46.7 %.
    statistics.ticks = {{{30, 20, 40, 10}, {100, 0, 200, 0}}};
    m_clock.advance(1999ms);
    QCOMPARE(service.cpuUsage(), 0.0);
    m_clock.advance(1ms);
    QCOMPARE(service.cpuUsage(), 40.0);
}

void SystemMonitorServiceTest::loadSurvivesWrapsAndGaps()
{
    FakeStatistics statistics;
    constexpr auto top = std::numeric_limits<std::uint32_t>::max();
    statistics.ticks = {{{top, 100, 100, 0}}};
    FakeSound sound;
    const SystemMonitorService service(m_clock, statistics, sound);
    // The wrapped field counts 0 in this sample only.
    statistics.ticks = {{{50, 125, 175, 0}}};
    m_clock.advance(2s);
    QCOMPARE(service.cpuUsage(), 25.0);
    // A failed reading keeps the load, and the next one spans the gap.
    statistics.ticks = std::nullopt;
    m_clock.advance(2s);
    QCOMPARE(service.cpuUsage(), 25.0);
    statistics.ticks = {{{100, 125, 225, 0}}};
    m_clock.advance(2s);
    QCOMPARE(service.cpuUsage(), 50.0);
    // No core at all: the last load that could be computed.
    statistics.ticks->clear();
    m_clock.advance(2s);
    QCOMPARE(service.cpuUsage(), 50.0);
    // Counters that stand still count as one idle tick.
    statistics.ticks = {{{100, 125, 225, 0}}};
    m_clock.advance(2s);
    QCOMPARE(service.cpuUsage(), 0.0);
}

void SystemMonitorServiceTest::memoryCountsActiveAndWired()
{
    FakeStatistics statistics;
    statistics.pages = MemoryPages{262'144, 131'072, 4096};
    statistics.memory = 8 * gibibyte;
    FakeSound sound;
    const SystemMonitorService service(m_clock, statistics, sound);
    QCOMPARE(service.memUsedGB(), 1.5);
    QCOMPARE(service.memTotalGB(), 8.0);
    statistics.pages = std::nullopt;
    statistics.memory = 0;
    m_clock.advance(2s);
    QCOMPARE(service.memUsedGB(), 1.5);
    QCOMPARE(service.memTotalGB(), 8.0);
}

void SystemMonitorServiceTest::volumeFollowsTheServer()
{
    FakeStatistics statistics;
    FakeSound sound;
    sound.reported = 0;
    const SystemMonitorService service(m_clock, statistics, sound);
    QCOMPARE(service.volume(), 0.0F);
    sound.reported = 37;
    m_clock.advance(2s);
    QCOMPARE(service.volume(), 0.37F);
    sound.reported = std::nullopt;
    m_clock.advance(2s);
    QCOMPARE(service.volume(), 0.37F);
}

void SystemMonitorServiceTest::adjustVolume_data()
{
    QTest::addColumn<int>("before");
    QTest::addColumn<float>("delta");
    QTest::addColumn<int>("written");
    QTest::addColumn<float>("after");

    QTest::newRow("up to the top") << 95 << 0.1F << 100 << 1.0F;
    QTest::newRow("down to the bottom") << 5 << -0.1F << 0 << 0.0F;
    QTest::newRow("truncates") << 50 << 0.2575F << 75 << 0.7575F;
    QTest::newRow("without bounds") << 50 << std::numeric_limits<float>::infinity() << 100 << 1.0F;
}

void SystemMonitorServiceTest::adjustVolume()
{
    QFETCH(int, before);
    QFETCH(float, delta);
    QFETCH(int, written);
    QFETCH(float, after);

    FakeStatistics statistics;
    FakeSound sound;
    sound.reported = before;
    SystemMonitorService service(m_clock, statistics, sound);
    service.adjustVolume(delta);
    QCOMPARE(sound.written, std::vector<int>{written});
    QCOMPARE(service.volume(), after);
    // The server has the last word.
    m_clock.advance(2s);
    QCOMPARE(service.volume(), static_cast<float>(before) / 100.0F);
}

void SystemMonitorServiceTest::adjustVolumeIgnoresNonsense()
{
    FakeStatistics statistics;
    FakeSound sound;
    SystemMonitorService service(m_clock, statistics, sound);
    service.adjustVolume(std::numeric_limits<float>::quiet_NaN());
    QVERIFY(sound.written.empty());
    QCOMPARE(service.volume(), 0.5F);
}

void SystemMonitorServiceTest::networkRates()
{
    FakeStatistics statistics;
    FakeSound sound;
    const SystemMonitorService service(m_clock, statistics, sound);
    statistics.network = {{
        en0(2048, 4096),
        {QStringLiteral("lo0"), 1'000'000, 1'000'000},
        {QStringLiteral("en1"), 2048, 0},
        {QStringLiteral("utun0"), 1'000'000, 1'000'000},
    }};
    m_clock.advance(2s);
    QCOMPARE(service.netUpKBs(), 2.0);
    QCOMPARE(service.netDownKBs(), 2.0);
    m_clock.advance(2s);
    QCOMPARE(service.netUpKBs(), 0.0);
}

void SystemMonitorServiceTest::networkRatesNeverGoNegative()
{
    FakeStatistics statistics;
    statistics.network = {{en0(1'000'000, 1'000'000)}};
    FakeSound sound;
    const SystemMonitorService service(m_clock, statistics, sound);
    statistics.network = {{en0(1'002'048, 10)}};
    m_clock.advance(2s);
    QCOMPARE(service.netUpKBs(), 1.0);
    QCOMPARE(service.netDownKBs(), 0.0);
    // A list that cannot be read counts as no bytes at all, and so becomes the new baseline.
    statistics.network = std::nullopt;
    m_clock.advance(2s);
    QCOMPARE(service.netUpKBs(), 0.0);
    statistics.network = {{en0(4096, 0)}};
    m_clock.advance(2s);
    QCOMPARE(service.netUpKBs(), 2.0);
}

/// A clock whose monotonic time can be held still while its timers fire.
struct StuckClock final : Clock {
    std::chrono::nanoseconds time{0};
    Task task;

    QDateTime now() const override { return {}; }
    std::chrono::nanoseconds uptime() const override { return time; }
    std::chrono::nanoseconds bootTime() const override { return time; }
    TimerHandle every(std::chrono::milliseconds, Task repeated) override
    {
        task = std::move(repeated);
        return std::make_unique<Timer>();
    }
    TimerHandle after(std::chrono::milliseconds, Task) override { return {}; }
    TimerHandle everyFrame(Task) override { return {}; }
};

void SystemMonitorServiceTest::noTimeBetweenTwoSamplesKeepsTheRates()
{
    FakeStatistics statistics;
    FakeSound sound;
    StuckClock clock;
    const SystemMonitorService service(clock, statistics, sound);
    statistics.network = {{en0(1024, 0)}};
    clock.time = 1s;
    clock.task();
    QCOMPARE(service.netUpKBs(), 1.0);
    statistics.network = {{en0(9216, 0)}};
    clock.task();
    QCOMPARE(service.netUpKBs(), 1.0);
    // The sample without time has moved the baseline nevertheless.
    statistics.network = {{en0(11264, 0)}};
    clock.time = 2s;
    clock.task();
    QCOMPARE(service.netUpKBs(), 2.0);
}

void SystemMonitorServiceTest::wallClockJumpsDoNotTouchTheRates()
{
    FakeStatistics statistics;
    FakeSound sound;
    const SystemMonitorService service(m_clock, statistics, sound);
    statistics.network = {{en0(2048, 0)}};
    m_clock.setNow(m_clock.now().addDays(-30));
    m_clock.advance(2s);
    QCOMPARE(service.netUpKBs(), 1.0);
}

void SystemMonitorServiceTest::diskFailureShowsZero()
{
    FakeStatistics statistics;
    statistics.disk = {30.0 * gibibyte, 100.0 * gibibyte};
    FakeSound sound;
    const SystemMonitorService service(m_clock, statistics, sound);
    QCOMPARE(service.diskTotalGB(), 100.0);
    QCOMPARE(service.diskUsedGB(), 70.0);
    statistics.disk.freeBytes = std::nullopt;
    m_clock.advance(2s);
    QCOMPARE(service.diskUsedGB(), 100.0);
    statistics.disk = {};
    m_clock.advance(2s);
    QCOMPARE(service.diskTotalGB(), 0.0);
    QCOMPARE(service.diskUsedGB(), 0.0);
}

void SystemMonitorServiceTest::signalsOnlyOnChange()
{
    FakeStatistics statistics;
    statistics.pages = MemoryPages{1, 1, 4096};
    statistics.disk = {1.0, 2.0};
    FakeSound sound;
    sound.reported = 20;
    SystemMonitorService service(m_clock, statistics, sound);
    QSignalSpy memory(&service, &SystemMonitorService::memUsedGBChanged);
    QSignalSpy disk(&service, &SystemMonitorService::diskUsedGBChanged);
    QSignalSpy volume(&service, &SystemMonitorService::volumeChanged);
    QSignalSpy load(&service, &SystemMonitorService::cpuUsageChanged);
    m_clock.advance(1h);
    QCOMPARE(memory.size() + disk.size() + volume.size() + load.size(), 0);
    sound.reported = 21;
    m_clock.advance(1h);
    QCOMPARE(volume.size(), 1);
    QCOMPARE(memory.size() + disk.size() + load.size(), 0);
}

void SystemMonitorServiceTest::destroyedServiceStopsSampling()
{
    FakeStatistics statistics;
    FakeSound sound;
    {
        const SystemMonitorService service(m_clock, statistics, sound);
        QCOMPARE(m_clock.runningTimers(), 1);
    }
    QCOMPARE(m_clock.runningTimers(), 0);
}

QTEST_GUILESS_MAIN(SystemMonitorServiceTest)
#include "SystemMonitorServiceTest.moc"
