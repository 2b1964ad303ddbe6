#include "widgets/SystemMonitorRow.h"

#include "support/FakeSound.h"
#include "support/FakeStatistics.h"
#include "support/VirtualClock.h"

#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace std::chrono_literals;
using Kind = SystemMonitorRow::Kind;

namespace
{

constexpr double gibibyte = 1024.0 * 1024 * 1024;

QColor green()
{
    return QColor::fromRgbF(0.35F, 0.85F, 0.5F);
}
QColor orange()
{
    return QColor::fromRgbF(1.0F, 0.6F, 0.2F);
}
QColor red()
{
    return QColor::fromRgbF(1.0F, 0.35F, 0.3F);
}

QString dash()
{
    return QStringLiteral("\u2014");
}

} // namespace

class SystemMonitorRowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_statistics.emplace(); }
    void cleanup() { m_monitor.reset(); }

    void beforeTheFirstFigures();
    void processor_data();
    void processor();
    void memory_data();
    void memory();
    void disk_data();
    void disk();
    void tellsOfNewFigures();
    void survivesItsMonitor();

private:
    /// Starts a monitor over what the statistics say now, and two seconds later over `load`.
    SystemMonitorService &monitor(std::uint32_t load = 0);

    VirtualClock m_clock;
    std::optional<FakeStatistics> m_statistics;
    FakeSound m_sound;
    std::unique_ptr<SystemMonitorService> m_monitor;
};

SystemMonitorService &SystemMonitorRowTest::monitor(std::uint32_t load)
{
    m_statistics->ticks = {{{0, 0, 0, 0}}};
    m_monitor = std::make_unique<SystemMonitorService>(m_clock, *m_statistics, m_sound);
    m_statistics->ticks = {{{load, 0, 100 - load, 0}}};
    m_clock.advance(2s);
    return *m_monitor;
}

void SystemMonitorRowTest::beforeTheFirstFigures()
{
    SystemMonitorService bare(m_clock, *m_statistics, m_sound);
    const std::vector<std::tuple<Kind, QString, QString>> rows{
        {Kind::Processor, QStringLiteral("CPU"), QStringLiteral("0%")},
        {Kind::Memory, QStringLiteral("RAM"), QStringLiteral("0.0G")},
        {Kind::Disk, QStringLiteral("DISK"), dash()}};
    for (const auto &[kind, label, text] : rows) {
        SystemMonitorRow row;
        row.setKind(kind);
        QCOMPARE(row.text(), QString()); // no monitor
        QCOMPARE(row.fraction(), 0.0);
        row.setMonitor(&bare);
        QCOMPARE(row.label(), label);
        QCOMPARE(row.text(), text);
        QCOMPARE(row.fraction(), 0.0);
        QCOMPARE(row.color(), green());
    }
}

void SystemMonitorRowTest::processor_data()
{
    QTest::addColumn<int>("load");
    QTest::addColumn<QColor>("color");
    QTest::newRow("65 %") << 65 << green();
    QTest::newRow("66 %") << 66 << orange();
    QTest::newRow("85 %") << 85 << orange();
    QTest::newRow("86 %") << 86 << red();
    QTest::newRow("full") << 100 << red();
}

void SystemMonitorRowTest::processor()
{
    QFETCH(const int, load);
    SystemMonitorRow row;
    row.setMonitor(&monitor(static_cast<std::uint32_t>(load)));
    QCOMPARE(row.text(), QString::number(load) + QLatin1Char('%'));
    QCOMPARE(row.fraction(), load / 100.0);
    QTEST(row.color(), "color");
}

void SystemMonitorRowTest::memory_data()
{
    QTest::addColumn<double>("used");
    QTest::addColumn<double>("total");
    QTest::addColumn<double>("fraction");
    QTest::addColumn<QString>("text");
    QTest::newRow("rounded") << 7.1875 << 16.0 << 0.44921875 << QStringLiteral("7.2G");
    QTest::newRow("rounded up") << 7.78125 << 16.0 << 0.486328125 << QStringLiteral("7.8G");
    QTest::newRow("more than there is") << 24.0 << 16.0 << 1.5 << QStringLiteral("24.0G");
    QTest::newRow("total not known") << 4.0 << 0.0 << 0.0 << QStringLiteral("4.0G");
}

void SystemMonitorRowTest::memory()
{
    QFETCH(const double, used);
    QFETCH(const double, total);
    m_statistics->pages = MemoryPages{static_cast<std::uint64_t>(used * gibibyte), 0, 1};
    m_statistics->memory = static_cast<std::uint64_t>(total * gibibyte);
    SystemMonitorRow row;
    row.setKind(Kind::Memory);
    row.setMonitor(&monitor());
    QTEST(row.text(), "text");
    QTEST(row.fraction(), "fraction");
    QCOMPARE(row.color(), row.fraction() > 1 ? red() : green());
}

void SystemMonitorRowTest::disk_data()
{
    QTest::addColumn<double>("free");
    QTest::addColumn<double>("total");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("color");
    QTest::newRow("plenty") << 120.4 << 400.0 << QStringLiteral("120G free") << orange();
    QTest::newRow("one unit") << 1.0 << 4.0 << QStringLiteral("1G free") << orange();
    QTest::newRow("half a unit") << 0.5 << 100.0 << QStringLiteral("512M free") << red();
    QTest::newRow("hardly less than one")
        << 0.9999 << 100.0 << QStringLiteral("1024M free") << red();
    QTest::newRow("full") << 0.0 << 100.0 << QStringLiteral("0M free") << red();
    QTest::newRow("empty") << 64.0 << 64.0 << QStringLiteral("64G free") << green();
    QTest::newRow("not known") << 0.0 << 0.0 << dash() << green();
}

void SystemMonitorRowTest::disk()
{
    QFETCH(const double, free);
    QFETCH(const double, total);
    m_statistics->disk = {free * gibibyte, total * gibibyte};
    SystemMonitorRow row;
    row.setKind(Kind::Disk);
    row.setMonitor(&monitor());
    QTEST(row.text(), "text");
    QTEST(row.color(), "color");
}

void SystemMonitorRowTest::tellsOfNewFigures()
{
    SystemMonitorRow row;
    row.setMonitor(&monitor(10));
    const QSignalSpy changed(&row, &SystemMonitorRow::changed);
    m_statistics->disk = {gibibyte, 2 * gibibyte};
    m_clock.advance(2s);
    QVERIFY(!changed.isEmpty());

    // A monitor that was exchanged is not heard any more.
    FakeStatistics quiet;
    SystemMonitorService other(m_clock, quiet, m_sound);
    row.setMonitor(&other);
    const auto heard = changed.size();
    m_statistics->disk = {0.0, 2 * gibibyte};
    m_clock.advance(2s);
    QCOMPARE(changed.size(), heard);
    QCOMPARE(row.text(), QStringLiteral("0%"));
    row.setMonitor(nullptr);
}

void SystemMonitorRowTest::survivesItsMonitor()
{
    SystemMonitorRow row;
    row.setMonitor(&monitor(90));
    QCOMPARE(row.color(), red());
    m_monitor.reset();
    QCOMPARE(row.monitor(), nullptr);
    QCOMPARE(row.text(), QString());
    QCOMPARE(row.fraction(), 0.0);
    QCOMPARE(row.color(), green());
    row.setMonitor(&monitor(70));
    QCOMPARE(row.color(), orange());
}

QTEST_GUILESS_MAIN(SystemMonitorRowTest)
#include "SystemMonitorRowTest.moc"
