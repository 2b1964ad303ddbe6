#include "services/SystemMonitorService.h"

#include "support/FakePlatform.h"
#include "support/HandClock.h"

#include <QSignalSpy>
#include <QTest>

#include <limits>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

constexpr std::uint64_t gibibyte = 1024ULL * 1024 * 1024;

} // namespace

class SystemMonitorServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void loadIsTheSumOverAllCores();
    void memoryAndDisk();
    void adjustVolume_data();
    void adjustVolume();
    void networkRates();
    void tellsOfChangesOnly();

private:
    /// Begins to sample what the doubles say by now.
    SystemMonitorService &start()
    {
        return m_service.emplace(m_machine->clock, m_machine->statistics, m_machine->sound);
    }
    void nextSample() { m_machine->clock.advance(2s); }
    [[nodiscard]] FakeStatistics &statistics() { return m_machine->statistics; }

    std::optional<FakePlatform> m_machine;
    std::optional<SystemMonitorService> m_service;
};

void SystemMonitorServiceTest::init()
{
    m_service.reset();
    m_machine.emplace();
}

void SystemMonitorServiceTest::loadIsTheSumOverAllCores()
{
    statistics().ticks = {{0, {5, 5, 9, 0}}, {1, {0, 50, 0, 0}}};
    const auto &service = start();
    // 60 of 100 ticks on one core and 100 of 300 on the other: 40 %, where a mean would say 46.7 %.
    statistics().ticks = {{0, {35, 25, 49, 10}}, {1, {100, 50, 200, 0}}};
    m_machine->clock.advance(1999ms);
    QCOMPARE(service.cpuUsage(), 0.0);
    m_machine->clock.advance(1ms);
    QCOMPARE(service.cpuUsage(), 40.0);

    const auto next = [&](const std::map<std::uint64_t, CoreTicks> &ticks) {
        statistics().ticks = ticks;
        nextSample();
        return service.cpuUsage();
    };
    QCOMPARE(next({{0, {0, 50, 124, 10}}}), 25.0);  // what went backwards counts nothing this time
    QCOMPARE(next({}), 25.0);                       // a failed reading keeps the load,
    QCOMPARE(next({{0, {50, 50, 174, 10}}}), 50.0); // and the next one spans the gap
    // A core that wakes up brings no past, and one that was off goes on where it was.
    QCOMPARE(next({{0, {50, 50, 274, 10}}, {2, {9000, 0, 0, 0}}}), 0.0);
    QCOMPARE(next({{1, {200, 50, 200, 0}}}), 100.0);
    QCOMPARE(next({{1, {200, 50, 200, 0}}}), 0.0); // standing still is one idle tick
}

void SystemMonitorServiceTest::memoryAndDisk()
{
    statistics().memorySize = MemorySize{gibibyte * 3 / 2, 8 * gibibyte};
    statistics().disk = {30.0 * gibibyte, 100.0 * gibibyte};
    const auto &service = start();
    QCOMPARE(service.diskTotalGB(), 100.0);
    QCOMPARE(service.diskUsedGB(), 70.0);
    statistics().memorySize = std::nullopt; // a failed reading keeps both
    statistics().disk = {};
    nextSample();
    QCOMPARE(service.memUsedGB(), 1.5);
    QCOMPARE(service.memTotalGB(), 8.0);
    QCOMPARE(service.diskTotalGB(), 0.0);
    QCOMPARE(service.diskUsedGB(), 0.0);
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
    auto &service = start();
    QCOMPARE(service.volume(), 0.5F);
    m_machine->sound.reported = before;
    nextSample();
    service.adjustVolume(delta);
    QTEST(m_machine->sound.written, "written");
    QTEST(service.volume(), "after");
    nextSample(); // the server has the last word,
    QCOMPARE(service.volume(), static_cast<float>(before) / 100.0F);
    m_machine->sound.reported = std::nullopt; // as long as it says anything
    nextSample();
    QCOMPARE(service.volume(), static_cast<float>(before) / 100.0F);
}

void SystemMonitorServiceTest::networkRates()
{
    statistics().network = {1000, 2000};
    const auto &service = start();
    QCOMPARE(service.netUpKBs(), 0.0);
    statistics().network = {1000 + 4096, 2000 + 2048};
    m_machine->clock.setNow(m_machine->clock.now().addDays(-30)); // does not touch the rates
    nextSample();
    QCOMPARE(service.netUpKBs(), 2.0);
    QCOMPARE(service.netDownKBs(), 1.0);
    statistics().network = {1000 + 4096, 0}; // one that starts anew is no negative rate,
    nextSample();
    QCOMPARE(service.netUpKBs(), 0.0);
    QCOMPARE(service.netDownKBs(), 0.0);
    statistics().network = {0, 4096}; // but the new baseline
    nextSample();
    QCOMPARE(service.netDownKBs(), 2.0);

    HandClock clock;
    const SystemMonitorService byHand(clock, statistics(), m_machine->sound);
    const auto rateAt = [&](std::chrono::nanoseconds time, std::uint64_t sent) {
        statistics().network = {sent, 0};
        clock.fireAt(time);
        return byHand.netUpKBs();
    };
    QCOMPARE(rateAt(1s, 1024), 1.0);
    QCOMPARE(rateAt(1s, 9216), 1.0);  // no time has passed
    QCOMPARE(rateAt(2s, 11264), 2.0); // yet the baseline has moved
}

void SystemMonitorServiceTest::tellsOfChangesOnly()
{
    statistics().memorySize = MemorySize{1, 2};
    m_machine->sound.reported = 20;
    auto &service = start();
    const QSignalSpy changes(&service, &SystemMonitorService::changed);
    m_machine->clock.advance(1h);
    QCOMPARE(changes.size(), 0);
    m_machine->sound.reported = 21;
    m_machine->clock.advance(1h);
    QCOMPARE(changes.size(), 1);
    service.adjustVolume(0.5F);
    QCOMPARE(changes.size(), 2);
}

QTEST_GUILESS_MAIN(SystemMonitorServiceTest)
#include "SystemMonitorServiceTest.moc"
