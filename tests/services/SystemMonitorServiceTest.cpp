#include "services/SystemMonitorService.h"

#include "support/FakeSystem.h"
#include "support/HandClock.h"
#include "support/VirtualClock.h"

#include <QSignalSpy>
#include <QTest>

#include <limits>
#include <optional>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

constexpr std::uint64_t gibibyte = 1024ULL * 1024 * 1024;

InterfaceBytes en0(std::uint64_t sent, std::uint64_t received)
{
    return {QStringLiteral("en0"), sent, received};
}

struct Machine {
    VirtualClock clock;
    FakeStatistics statistics;
    FakeSound sound;
};

} // namespace

class SystemMonitorServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { m_service.reset(); }

    void loadIsTheSumOverAllCores();
    void loadSurvivesWrapsAndGaps();
    void memoryCountsActiveAndWired();
    void volumeFollowsTheServer();
    void adjustVolume_data();
    void adjustVolume();
    void networkRates();
    void networkRatesNeverGoNegative();
    void noTimeBetweenTwoSamplesKeepsTheRates();
    void diskFailureShowsZero();
    void tellsOfChangesOnly();

private:
    /// Begins to sample what the doubles of a new machine say after `prepare`.
    SystemMonitorService &start(const std::function<void()> &prepare = [] {});
    void nextSample() { m_machine->clock.advance(2s); }
    [[nodiscard]] FakeStatistics &statistics() { return m_machine->statistics; }

    std::optional<Machine> m_machine;
    std::optional<SystemMonitorService> m_service;
};

SystemMonitorService &SystemMonitorServiceTest::start(const std::function<void()> &prepare)
{
    m_service.reset();
    m_machine.emplace();
    prepare();
    return m_service.emplace(m_machine->clock, m_machine->statistics, m_machine->sound);
}

void SystemMonitorServiceTest::loadIsTheSumOverAllCores()
{
    const auto &service = start([this] { statistics().ticks = {{{5, 5, 9, 0}, {0, 0, 0, 0}}}; });
    QCOMPARE(service.cpuUsage(), 0.0);
    // 60 of 100 ticks on one core and 100 of 300 on the other: 40 %, where a mean would say 46.7 %.
    statistics().ticks = {{{35, 25, 49, 10}, {100, 0, 200, 0}}};
    m_machine->clock.advance(1999ms);
    QCOMPARE(service.cpuUsage(), 0.0);
    m_machine->clock.advance(1ms);
    QCOMPARE(service.cpuUsage(), 40.0);
}

void SystemMonitorServiceTest::loadSurvivesWrapsAndGaps()
{
    constexpr auto top = std::numeric_limits<std::uint32_t>::max();
    const auto &service = start([this] { statistics().ticks = {{{top, 100, 100, 0}}}; });
    const auto next = [this, &service](const std::optional<std::vector<CoreTicks>> &ticks) {
        statistics().ticks = ticks;
        nextSample();
        return service.cpuUsage();
    };
    QCOMPARE(next({{{50, 125, 175, 0}}}), 25.0);  // the field that wrapped counts 0 this time
    QCOMPARE(next(std::nullopt), 25.0);           // a failed reading keeps the load,
    QCOMPARE(next({{{100, 125, 225, 0}}}), 50.0); // and the next one spans the gap
    QCOMPARE(next(std::vector<CoreTicks>()), 50.0);
    QCOMPARE(next({{{100, 125, 225, 0}}}), 0.0); // standing still is one idle tick
}

void SystemMonitorServiceTest::memoryCountsActiveAndWired()
{
    const auto &service = start([this] {
        statistics().pages = MemoryPages{262'144, 131'072, 4096};
        statistics().memory = 8 * gibibyte;
    });
    for (int sample = 0; sample < 2; ++sample) {
        QCOMPARE(service.memUsedGB(), 1.5);
        QCOMPARE(service.memTotalGB(), 8.0);
        statistics().pages = std::nullopt; // a failed reading keeps both
        statistics().memory = 0;
        nextSample();
    }
}

void SystemMonitorServiceTest::volumeFollowsTheServer()
{
    const auto &service = start();
    QCOMPARE(service.volume(), 0.5F);
    m_machine->sound.reported = 0;
    nextSample();
    QCOMPARE(service.volume(), 0.0F);
    m_machine->sound.reported = 37;
    nextSample();
    m_machine->sound.reported = std::nullopt;
    nextSample();
    QCOMPARE(service.volume(), 0.37F);
}

void SystemMonitorServiceTest::adjustVolume_data()
{
    QTest::addColumn<int>("before");
    QTest::addColumn<float>("delta");
    QTest::addColumn<std::vector<int>>("written");
    QTest::addColumn<float>("after");
    using Limits = std::numeric_limits<float>;
    QTest::newRow("up to the top") << 95 << 0.1F << std::vector{100} << 1.0F;
    QTest::newRow("down to the bottom") << 5 << -0.1F << std::vector{0} << 0.0F;
    QTest::newRow("truncates") << 50 << 0.2575F << std::vector{75} << 0.7575F;
    QTest::newRow("without bounds") << 50 << Limits::infinity() << std::vector{100} << 1.0F;
    QTest::newRow("no number") << 50 << Limits::quiet_NaN() << std::vector<int>() << 0.5F;
}

void SystemMonitorServiceTest::adjustVolume()
{
    QFETCH(int, before);
    QFETCH(float, delta);
    auto &service = start([&] { m_machine->sound.reported = before; });
    service.adjustVolume(delta);
    QTEST(m_machine->sound.written, "written");
    QTEST(service.volume(), "after");
    // The server has the last word.
    nextSample();
    QCOMPARE(service.volume(), static_cast<float>(before) / 100.0F);
}

void SystemMonitorServiceTest::networkRates()
{
    const auto &service = start([this] { statistics().network = {{en0(1000, 2000)}}; });
    QCOMPARE(service.netUpKBs(), 0.0);
    statistics().network = {{
        en0(1000 + 2048, 2000 + 4096),
        {QStringLiteral("lo0"), 1'000'000, 1'000'000},
        {QStringLiteral("en1"), 2048, 0},
        {QStringLiteral("utun0"), 1'000'000, 1'000'000},
    }};
    m_machine->clock.setNow(m_machine->clock.now().addDays(-30)); // does not touch the rates
    nextSample();
    QCOMPARE(service.netUpKBs(), 2.0);
    QCOMPARE(service.netDownKBs(), 2.0);
    nextSample();
    QCOMPARE(service.netUpKBs(), 0.0);
}

void SystemMonitorServiceTest::networkRatesNeverGoNegative()
{
    const auto &service = start([this] { statistics().network = {{en0(1'000'000, 1'000'000)}}; });
    statistics().network = {{en0(1'002'048, 10)}};
    nextSample();
    QCOMPARE(service.netUpKBs(), 1.0);
    QCOMPARE(service.netDownKBs(), 0.0);
    // A list that cannot be read counts as no bytes at all, and so becomes the new baseline.
    statistics().network = std::nullopt;
    nextSample();
    QCOMPARE(service.netUpKBs(), 0.0);
    statistics().network = {{en0(4096, 0)}};
    nextSample();
    QCOMPARE(service.netUpKBs(), 2.0);
}

void SystemMonitorServiceTest::noTimeBetweenTwoSamplesKeepsTheRates()
{
    FakeStatistics fake;
    FakeSound sound;
    HandClock clock;
    const SystemMonitorService service(clock, fake, sound);
    const auto rateAt = [&](std::chrono::nanoseconds time, std::uint64_t sent) {
        fake.network = {{en0(sent, 0)}};
        clock.fireAt(time);
        return service.netUpKBs();
    };
    QCOMPARE(rateAt(1s, 1024), 1.0);
    QCOMPARE(rateAt(1s, 9216), 1.0);
    QCOMPARE(rateAt(2s, 11264), 2.0); // yet the baseline has moved
}

void SystemMonitorServiceTest::diskFailureShowsZero()
{
    const auto &service = start([this] {
        statistics().disk = {30.0 * gibibyte, 100.0 * gibibyte};
    });
    QCOMPARE(service.diskTotalGB(), 100.0);
    QCOMPARE(service.diskUsedGB(), 70.0);
    statistics().disk.freeBytes = std::nullopt;
    nextSample();
    QCOMPARE(service.diskUsedGB(), 100.0);
    statistics().disk = {};
    nextSample();
    QCOMPARE(service.diskTotalGB(), 0.0);
    QCOMPARE(service.diskUsedGB(), 0.0);
}

void SystemMonitorServiceTest::tellsOfChangesOnly()
{
    auto &service = start([this] {
        statistics().pages = MemoryPages{1, 1, 4096};
        m_machine->sound.reported = 20;
    });
    const QSignalSpy changes(&service, &SystemMonitorService::changed);
    m_machine->clock.advance(1h);
    QCOMPARE(changes.size(), 0);
    m_machine->sound.reported = 21;
    m_machine->clock.advance(1h);
    QCOMPARE(changes.size(), 1);
    service.adjustVolume(0.5F);
    QCOMPARE(changes.size(), 2);
    m_service.reset();
    QCOMPARE(m_machine->clock.runningTimers(), 0);
}

QTEST_GUILESS_MAIN(SystemMonitorServiceTest)
#include "SystemMonitorServiceTest.moc"
