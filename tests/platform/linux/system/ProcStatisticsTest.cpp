#include "platform/linux/system/ProcStatistics.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/statvfs.h>
#include <unistd.h>

using namespace velmora;

namespace
{

const QByteArray netHeadings =
    "Inter-|   Receive                                                |  Transmit\n"
    " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets errs\n";

QByteArray netLine(const QByteArray &name, int received, int sent)
{
    return name.rightJustified(6) + ": " + QByteArray::number(received) + " 7 0 0 0 0 0 0 " +
           QByteArray::number(sent) + " 9 0 0 0 0 0 0\n";
}

/// A procfs and a sysfs of our own making.
class FakeTree
{
public:
    FakeTree()
    {
        QDir(m_folder.path()).mkpath(QStringLiteral("proc/net"));
        QDir(m_folder.path()).mkpath(QStringLiteral("sys/class/net"));
    }

    ProcStatistics statistics() const { return {path(u"proc"), path(u"sys"), path(u"")}; }

    void write(QStringView name, const QByteArray &text) const
    {
        QFile file(path(u"proc/") + name.toString());
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }

    void addDevice(QStringView interface) const
    {
        QVERIFY(QDir().mkpath(path(u"sys/class/net/") + interface.toString() +
                              QStringLiteral("/device")));
    }

    QString path(QStringView name) const { return m_folder.path() + u'/' + name.toString(); }

private:
    QTemporaryDir m_folder;
};

QStringList names(const std::optional<std::vector<InterfaceBytes>> &interfaces)
{
    QStringList result;
    for (const auto &interface : interfaces.value_or(std::vector<InterfaceBytes>{}))
        result.append(interface.name);
    return result;
}

} // namespace

class ProcStatisticsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void coresSumTheirFields();
    void coresComeAndGo();
    void memoryAgreesWithFree();
    void onlyPhysicalInterfaces();
    void missingOrGarbledFilesGiveNothing();
    void runningSystem();
};

void ProcStatisticsTest::coresSumTheirFields()
{
    const FakeTree tree;
    tree.write(u"stat", "cpu  9 9 9 9 9 9 9 9 9 9\n"
                        "cpu0 1 2 4 8 16 32 64 128 256 512\n"
                        "cpu1 4294967301 0 0 0 0 0 0 0 0 0\n"
                        "intr 1 2 3\n");
    auto statistics = tree.statistics();
    const std::vector<CoreTicks> expected = {{1, 4 + 32 + 64 + 128, 8 + 16, 2}, {5, 0, 0, 0}};
    QCOMPARE(statistics.processorTicks(), std::optional(expected));
}

void ProcStatisticsTest::coresComeAndGo()
{
    const FakeTree tree;
    tree.write(u"stat", "cpu 0 0 0 0\ncpu0 1 0 0 1\ncpu2 3 0 0 3\n");
    auto statistics = tree.statistics();
    QCOMPARE(statistics.processorTicks()->size(), 3U);
    // Each keeps its place, and one that wakes up brings no past.
    tree.write(u"stat", "cpu 0 0 0 0\ncpu1 90000 0 0 5000\ncpu2 30 0 0 30\n");
    const std::vector<CoreTicks> expected = {{1, 0, 1, 0}, {}, {30, 0, 30, 0}};
    QCOMPARE(statistics.processorTicks(), std::optional(expected));
    tree.write(u"stat", "cpu 0 0 0 0\ncpu1 90007 0 0 5003\ncpu2 30 0 0 30\n");
    QCOMPARE(statistics.processorTicks()->at(1), (CoreTicks{7, 0, 3, 0}));

    // A long file is read to its end.
    QByteArray text = "cpu 0 0 0 0\n";
    for (int core = 0; core < 1000; ++core)
        text += "cpu" + QByteArray::number(core) + " 1 0 0 " + QByteArray::number(core) + '\n';
    tree.write(u"stat", text);
    auto large = tree.statistics();
    const auto ticks = large.processorTicks();
    QCOMPARE(ticks->size(), 1000U);
    QCOMPARE(ticks->back(), (CoreTicks{1, 0, 999, 0}));
}

void ProcStatisticsTest::memoryAgreesWithFree()
{
    const FakeTree tree;
    const auto page = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    tree.write(u"meminfo", "MemTotal:       16384000 kB\nMemFree:         1024000 kB\n"
                           "MemAvailable:    8192000 kB\nBuffers:          102400 kB\n"
                           "SReclaimable:     500000 kB\nSUnreclaim:       128000 kB\n"
                           "KernelStack:       12800 kB\nPageTables:        64000 kB\n"
                           "Percpu:             6400 kB\n");
    auto statistics = tree.statistics();
    const auto pages = statistics.memoryPages();
    QVERIFY(pages);
    QCOMPARE(pages->pageSize, page);
    QCOMPARE((pages->active + pages->wired) * page, 8'192'000ULL * 1024);
    QCOMPARE(pages->wired * page, 211'200ULL * 1024);
    QCOMPARE(statistics.physicalMemory(), 16'384'000ULL * 1024);

    const auto used = [&] {
        const auto pages = statistics.memoryPages().value_or(MemoryPages{});
        return (pages.active + pages.wired) * pages.pageSize / 1024;
    };
    tree.write(u"meminfo", "MemTotal: 64000 kB\nMemFree: 16000 kB\n");
    QCOMPARE(used(), 48'000ULL);
    // A container that is told of its host's available memory.
    tree.write(u"meminfo", "MemTotal: 64000 kB\nMemFree: 16000 kB\nMemAvailable: 9990000 kB\n");
    QCOMPARE(used(), 48'000ULL);
    // The kernel's share never makes the sum larger than what is used.
    tree.write(
        u"meminfo",
        "MemTotal: 64000 kB\nMemFree: 16000 kB\nMemAvailable: 63936 kB\nSUnreclaim: 999 kB\n");
    QCOMPARE(used(), 64ULL);
}

void ProcStatisticsTest::onlyPhysicalInterfaces()
{
    const FakeTree tree;
    tree.addDevice(u"wlan0");
    tree.addDevice(u"enp3s0");
    tree.write(u"net/dev", netHeadings + netLine("lo", 1, 1) + netLine("enp3s0", 10, 20) +
                               netLine("docker0", 2, 2) + netLine("wlan0", 30, 40) +
                               netLine("../../..", 5, 5));
    auto statistics = tree.statistics();
    const auto interfaces = statistics.interfaces();
    QCOMPARE(names(interfaces), (QStringList{u"en0"_qs, u"en1"_qs}));
    QCOMPARE(interfaces->front().received, 10U);
    QCOMPARE(interfaces->front().sent, 20U);
    QCOMPARE(interfaces->back().sent, 40U);

    // One goes, another one comes, and the first comes back at the end of the kernel's list.
    tree.addDevice(u"usb0");
    tree.write(u"net/dev", netHeadings + netLine("usb0", 3, 3) + netLine("wlan0", 2, 2));
    QCOMPARE(names(statistics.interfaces()), (QStringList{u"en2"_qs, u"en1"_qs}));
    tree.write(u"net/dev", netHeadings + netLine("wlan0", 2, 2) + netLine("enp3s0", 1, 1));
    QCOMPARE(names(statistics.interfaces()), (QStringList{u"en1"_qs, u"en0"_qs}));
}

void ProcStatisticsTest::missingOrGarbledFilesGiveNothing()
{
    const FakeTree tree;
    auto statistics = tree.statistics();
    const auto readsNothing = [&statistics] {
        return !statistics.processorTicks() && !statistics.memoryPages() &&
               !statistics.interfaces() && statistics.physicalMemory() == 0;
    };
    QVERIFY(readsNothing());
    QVERIFY(QDir().mkdir(tree.path(u"proc/stat")));
    QVERIFY(readsNothing());
    QVERIFY(QDir().rmdir(tree.path(u"proc/stat")));
    const std::array<QByteArray, 6> garbage = {
        QByteArray(),
        QByteArray("\0\xff\xfe\n\n\0", 6),
        QByteArray(
            "cpu\ncpux 1 2\ncpu0 1 2\ncpu99999999999999999999 1 2 3 4\ncpu4000000000 1 2 3 4"),
        QByteArray("cpu0 -1 2 3 4\nMemTotal: lots kB\nMemFree: 0x10 kB\n"),
        QByteArray("MemTotal:\nMemFree\n:::\neth0: 1 2 3\neth0: 99999999999999999999999 2 3 4 5 6 "
                   "7 8 9\n"),
        QByteArray(100'000, 'c'),
    };
    for (const QByteArray &text : garbage) {
        for (const auto name : {u"stat", u"meminfo", u"net/dev"})
            tree.write(name, text);
        QVERIFY2(readsNothing(), text.left(60).constData());
    }
    tree.write(u"stat", "cpu 0 0 0 0\ncpu0 1 0 0 1\n");
    QVERIFY(statistics.processorTicks()); // one that is there later is found

    const auto nonexistent = QStringLiteral("/nonexistent");
    ProcStatistics nowhere(QStringLiteral("/proc/self/status"), nonexistent, nonexistent);
    QVERIFY(!nowhere.processorTicks());
    QVERIFY(!nowhere.homeFileSystem().totalBytes);
    QVERIFY(!nowhere.homeFileSystem().freeBytes);
}

void ProcStatisticsTest::runningSystem()
{
    ProcStatistics statistics;
    const auto before = statistics.processorTicks();
    const auto after = statistics.processorTicks();
    QVERIFY(before && after);
    QVERIFY(before->size() >= static_cast<std::size_t>(::sysconf(_SC_NPROCESSORS_ONLN)));
    QCOMPARE(after->size(), before->size());
    const auto memory = statistics.memoryPages();
    QVERIFY(memory && memory->active > 0 && memory->wired > 0);
    QVERIFY((memory->active + memory->wired) * memory->pageSize < statistics.physicalMemory());
    QVERIFY(statistics.interfaces());

    struct statvfs home = {};
    QCOMPARE(::statvfs(QDir::homePath().toLocal8Bit().constData(), &home), 0);
    QCOMPARE(
        statistics.homeFileSystem().totalBytes,
        std::optional(static_cast<double>(home.f_blocks) * static_cast<double>(home.f_frsize)));
}

QTEST_GUILESS_MAIN(ProcStatisticsTest)
#include "ProcStatisticsTest.moc"
