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

} // namespace

class ProcStatisticsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void coresSumTheirFields();
    void memoryAgreesWithFree();
    void onlyPhysicalInterfaces();
    void missingOrGarbledFilesGiveNothing();
    void runningSystem();

private:
    void write(const QString &name, const QByteArray &text) const
    {
        QFile file(m_folder->filePath(u"proc/"_qs + name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }
    void addDevice(const QString &interface) const
    {
        QVERIFY(QDir(m_folder->path()).mkpath(u"sys/class/net/%1/device"_qs.arg(interface)));
    }

    std::optional<QTemporaryDir> m_folder; ///< with a procfs and a sysfs of our own making
    std::optional<ProcStatistics> m_statistics;
};

void ProcStatisticsTest::init()
{
    m_folder.emplace();
    QVERIFY(QDir(m_folder->path()).mkpath(u"proc/net"_qs));
    m_statistics.emplace(m_folder->filePath(u"proc"_qs), m_folder->filePath(u"sys"_qs),
                         m_folder->path());
}

void ProcStatisticsTest::coresSumTheirFields()
{
    QByteArray text = "cpu  9 9 9 9 9 9 9 9 9 9\n"
                      "cpu0 1 2 4 8 16 32 64 128 256 512\n"
                      "cpu2 4294967301 0 0 3\n";
    write(u"stat"_qs, text + "intr 1 2 3\n");
    const std::map<std::uint64_t, CoreTicks> expected{{0, {1, 4 + 32 + 64 + 128, 8 + 16, 2}},
                                                      {2, {4294967301, 0, 3, 0}}};
    QCOMPARE(m_statistics->processorTicks(), expected);

    // A file that has grown is read anew, to its end.
    for (int core = 3; core < 1000; ++core)
        text += "cpu" + QByteArray::number(core) + " 1 0 0 " + QByteArray::number(core) + '\n';
    write(u"stat"_qs, text);
    QCOMPARE(m_statistics->processorTicks().at(999), (CoreTicks{1, 0, 999, 0}));
}

void ProcStatisticsTest::memoryAgreesWithFree()
{
    const auto used = [&](const QByteArray &more) {
        write(u"meminfo"_qs, "MemTotal: 64000 kB\nMemFree:   16000 kB\n" + more);
        const MemorySize memory = m_statistics->memory().value_or(MemorySize{});
        return memory.total == 64'000 * 1024 ? memory.used / 1024 : 0;
    };
    QCOMPARE(used("MemAvailable:   24000 kB\nBuffers: 1 kB\nHugePages_Total: 0\n"), 40'000ULL);
    QCOMPARE(used({}), 48'000ULL);
    // A container that is told of its host's available memory.
    QCOMPARE(used("MemAvailable: 9990000 kB\n"), 48'000ULL);
}

void ProcStatisticsTest::onlyPhysicalInterfaces()
{
    addDevice(u"wlan0"_qs);
    addDevice(u"enp3s0"_qs);
    write(u"net/dev"_qs, netHeadings + netLine("lo", 1, 1) + netLine("enp3s0", 10, 20) +
                             netLine("docker0", 2, 2) + netLine("wlan0", 30, 40) +
                             netLine("../../..", 5, 5));
    const NetworkBytes bytes = m_statistics->networkBytes();
    QCOMPARE(bytes.received, 40U);
    QCOMPARE(bytes.sent, 60U);
}

void ProcStatisticsTest::missingOrGarbledFilesGiveNothing()
{
    addDevice(u"eth0"_qs);
    const auto readsNothing = [this] {
        return m_statistics->processorTicks().empty() && !m_statistics->memory() &&
               m_statistics->networkBytes().received == 0;
    };
    QVERIFY(readsNothing());
    for (const QByteArray &text :
         {QByteArray("\0\xff\xfe\n\n\0", 6),
          QByteArray("cpu\ncpux 1 2\ncpu0 1 2\ncpu99999999999999999999 1 2 3 4"),
          QByteArray("cpu0 -1 2 3 4\nMemTotal: lots kB\nMemFree: 0x10 kB\n"),
          QByteArray("MemTotal:\nMemFree\n:::\neth0: 1 2 3\neth0: 99999999999999999999999 2 3 4 5 "
                     "6 7 8 9\n"),
          QByteArray(100'000, 'c')}) {
        for (const auto *name : {"stat", "meminfo", "net/dev"})
            write(QLatin1String(name), text);
        QVERIFY2(readsNothing(), text.left(60).constData());
    }
    write(u"stat"_qs, "cpu 0 0 0 0\ncpu0 1 0 0 1\n");
    QVERIFY(!m_statistics->processorTicks().empty()); // one that is there later is found

    ProcStatistics nowhere({}, {}, u"/nonexistent"_qs);
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
