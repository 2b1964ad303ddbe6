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

const QByteArray netHeadings = "Inter-|   Receive  |  Transmit\n face |bytes packets|bytes\n";

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

} // namespace

class ProcStatisticsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void coresSumTheirFields();
    void memoryAgreesWithFree();
    void onlyPhysicalInterfaces();
    void missingOrGarbledFilesGiveNothing();
    void runningSystem();
};

void ProcStatisticsTest::coresSumTheirFields()
{
    const FakeTree tree;
    QByteArray text = "cpu  9 9 9 9 9 9 9 9 9 9\n"
                      "cpu0 1 2 4 8 16 32 64 128 256 512\n"
                      "cpu2 4294967301 0 0 3\n";
    tree.write(u"stat", text + "intr 1 2 3\n");
    auto statistics = tree.statistics();
    const std::map<std::uint64_t, CoreTicks> expected{{0, {1, 4 + 32 + 64 + 128, 8 + 16, 2}},
                                                      {2, {4294967301, 0, 3, 0}}};
    QCOMPARE(statistics.processorTicks(), expected);

    // A file that has grown is read anew, to its end.
    for (int core = 3; core < 1000; ++core)
        text += "cpu" + QByteArray::number(core) + " 1 0 0 " + QByteArray::number(core) + '\n';
    tree.write(u"stat", text);
    QCOMPARE(statistics.processorTicks().at(999), (CoreTicks{1, 0, 999, 0}));
}

void ProcStatisticsTest::memoryAgreesWithFree()
{
    const FakeTree tree;
    auto statistics = tree.statistics();
    const auto used = [&](const QByteArray &more) {
        tree.write(u"meminfo", "MemTotal: 64000 kB\nMemFree:   16000 kB\n" + more);
        const MemorySize memory = statistics.memory().value_or(MemorySize{});
        return memory.total == 64'000 * 1024 ? memory.used / 1024 : 0;
    };
    QCOMPARE(used("MemAvailable:   24000 kB\nBuffers: 1 kB\nHugePages_Total: 0\n"), 40'000ULL);
    QCOMPARE(used({}), 48'000ULL);
    // A container that is told of its host's available memory.
    QCOMPARE(used("MemAvailable: 9990000 kB\n"), 48'000ULL);
}

void ProcStatisticsTest::onlyPhysicalInterfaces()
{
    const FakeTree tree;
    tree.addDevice(u"wlan0");
    tree.addDevice(u"enp3s0");
    tree.write(u"net/dev", netHeadings + netLine("lo", 1, 1) + netLine("enp3s0", 10, 20) +
                               netLine("docker0", 2, 2) + netLine("wlan0", 30, 40) +
                               netLine("../../..", 5, 5));
    const NetworkBytes bytes = tree.statistics().networkBytes();
    QCOMPARE(bytes.received, 40U);
    QCOMPARE(bytes.sent, 60U);
}

void ProcStatisticsTest::missingOrGarbledFilesGiveNothing()
{
    const FakeTree tree;
    tree.addDevice(u"eth0");
    auto statistics = tree.statistics();
    const auto readsNothing = [&statistics] {
        return statistics.processorTicks().empty() && !statistics.memory() &&
               statistics.networkBytes().received == 0;
    };
    QVERIFY(readsNothing());
    for (const QByteArray &text :
         {QByteArray("\0\xff\xfe\n\n\0", 6),
          QByteArray("cpu\ncpux 1 2\ncpu0 1 2\ncpu99999999999999999999 1 2 3 4"),
          QByteArray("cpu0 -1 2 3 4\nMemTotal: lots kB\nMemFree: 0x10 kB\n"),
          QByteArray("MemTotal:\nMemFree\n:::\neth0: 1 2 3\neth0: 99999999999999999999999 2 3 4 5 "
                     "6 7 8 9\n"),
          QByteArray(100'000, 'c')}) {
        for (const auto name : {u"stat", u"meminfo", u"net/dev"})
            tree.write(name, text);
        QVERIFY2(readsNothing(), text.left(60).constData());
    }
    tree.write(u"stat", "cpu 0 0 0 0\ncpu0 1 0 0 1\n");
    QVERIFY(!statistics.processorTicks().empty()); // one that is there later is found

    ProcStatistics nowhere(QString(), QString(), QStringLiteral("/nonexistent"));
    QCOMPARE(nowhere.homeFileSystem().totalBytes, 0.0);
}

void ProcStatisticsTest::runningSystem()
{
    ProcStatistics statistics;
    const auto cores = statistics.processorTicks().size();
    QCOMPARE(cores, static_cast<std::size_t>(::sysconf(_SC_NPROCESSORS_ONLN)));
    QCOMPARE(statistics.processorTicks().size(), cores); // and again
    const auto memory = statistics.memory();
    QVERIFY(memory && memory->used > 0 && memory->used < memory->total);

    struct statvfs home = {};
    QCOMPARE(::statvfs(QDir::homePath().toLocal8Bit().constData(), &home), 0);
    QCOMPARE(statistics.homeFileSystem().totalBytes,
             static_cast<double>(home.f_blocks) * static_cast<double>(home.f_frsize));
}

QTEST_GUILESS_MAIN(ProcStatisticsTest)
#include "ProcStatisticsTest.moc"
