#include "platform/linux/system/PulseSoundOutput.h"

#include "support/VirtualClock.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

constexpr int patience = 20'000; // milliseconds, for a loaded machine

QByteArray pactl(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral("pactl"), arguments);
    if (!process.waitForFinished(patience) || process.exitCode() != 0)
        return {};
    return process.readAllStandardOutput().trimmed();
}

void setVolume(const QString &sink, const QStringList &channels)
{
    pactl(QStringList{QStringLiteral("set-sink-volume"), sink} + channels);
}

/// The percentages of all channels of a sink, as another client sees them.
QStringList volumes(const QString &sink)
{
    const auto words =
        QString::fromUtf8(pactl({QStringLiteral("get-sink-volume"), sink})).split(u' ');
    return words.filter(QStringLiteral("%"));
}

QString newSink(const QString &name)
{
    return QString::fromUtf8(
        pactl({QStringLiteral("load-module"), QStringLiteral("module-null-sink"),
               QStringLiteral("sink_name=") + name, QStringLiteral("media.class=Audio/Sink")}));
}

const QString testSink = QStringLiteral("velmora_test");

} // namespace

/// Runs against a real server with one null sink, which is the default.
class PulseSoundOutputTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void readsAndFollows();
    void writes();
    void keepsTheBalance();
    void lastOfManyWritesCounts();
    void followsTheDefaultSink();
    void destroyedAtAnyMoment();
    void retriesWithPatience();
    void survivesTheServersDeath();

private:
    /// An output that has heard from the server already.
    std::unique_ptr<PulseSoundOutput> connected();
    /// With time enough gone to look again, for a server that named no sink in between.
    std::optional<int> volumeLater(const PulseSoundOutput &output);

    VirtualClock m_clock;
};

void PulseSoundOutputTest::init()
{
    pactl({QStringLiteral("set-default-sink"), testSink});
    setVolume(testSink, {QStringLiteral("40%")});
    QCOMPARE(volumes(testSink).value(0), QStringLiteral("40%"));
}

std::unique_ptr<PulseSoundOutput> PulseSoundOutputTest::connected()
{
    auto output = std::make_unique<PulseSoundOutput>(m_clock);
    m_clock.advance(0ms);
    [&] { QTRY_VERIFY_WITH_TIMEOUT(volumeLater(*output), patience); }();
    return output;
}

std::optional<int> PulseSoundOutputTest::volumeLater(const PulseSoundOutput &output)
{
    m_clock.advance(5s);
    return output.volumePercent();
}

void PulseSoundOutputTest::readsAndFollows()
{
    const auto output = connected();
    QCOMPARE(output->volumePercent(), 40);
    setVolume(testSink, {QStringLiteral("55%")});
    QTRY_COMPARE_WITH_TIMEOUT(output->volumePercent(), 55, patience);
    setVolume(testSink, {QStringLiteral("20%"), QStringLiteral("60%")});
    QTRY_COMPARE_WITH_TIMEOUT(output->volumePercent(), 60, patience);
    setVolume(testSink, {QStringLiteral("0%")});
    QTRY_COMPARE_WITH_TIMEOUT(output->volumePercent(), 0, patience);
    setVolume(testSink, {QStringLiteral("150%")});
    QTRY_COMPARE_WITH_TIMEOUT(output->volumePercent(), 100, patience);
}

void PulseSoundOutputTest::writes()
{
    const auto output = connected();
    for (const int percent : {73, 1, 0, 100}) {
        output->setVolumePercent(percent);
        // At once, so that a view does not jump back, and then for good.
        QCOMPARE(output->volumePercent(), percent);
        const auto text = QStringLiteral("%1%").arg(percent);
        QTRY_COMPARE_WITH_TIMEOUT(volumes(testSink), (QStringList{text, text}), patience);
        QCOMPARE(output->volumePercent(), percent);
    }
    output->setVolumePercent(1000);
    QCOMPARE(output->volumePercent(), 100);
    output->setVolumePercent(-5);
    QTRY_COMPARE_WITH_TIMEOUT(volumes(testSink).value(0), QStringLiteral("0%"), patience);
    // The server is the one to believe again after a write.
    setVolume(testSink, {QStringLiteral("44%")});
    QTRY_COMPARE_WITH_TIMEOUT(output->volumePercent(), 44, patience);
}

void PulseSoundOutputTest::keepsTheBalance()
{
    const QStringList balanced{QStringLiteral("20%"), QStringLiteral("60%")};
    setVolume(testSink, balanced);
    const auto output = connected();
    output->setVolumePercent(30);
    QTRY_COMPARE_WITH_TIMEOUT(
        volumes(testSink), (QStringList{QStringLiteral("10%"), QStringLiteral("30%")}), patience);
    // Even through silence, where the channels cannot be told apart.
    output->setVolumePercent(0);
    QTRY_COMPARE_WITH_TIMEOUT(volumes(testSink),
                              (QStringList{QStringLiteral("0%"), QStringLiteral("0%")}), patience);
    output->setVolumePercent(60);
    QTRY_COMPARE_WITH_TIMEOUT(volumes(testSink), balanced, patience);
}

void PulseSoundOutputTest::lastOfManyWritesCounts()
{
    const auto output = connected();
    for (int percent = 0; percent <= 100; ++percent)
        output->setVolumePercent(percent);
    output->setVolumePercent(64);
    QTRY_COMPARE_WITH_TIMEOUT(volumes(testSink).value(0), QStringLiteral("64%"), patience);
    QCOMPARE(output->volumePercent(), 64);
}

void PulseSoundOutputTest::followsTheDefaultSink()
{
    const auto output = connected();
    const auto other = QStringLiteral("velmora_other");
    const QString module = newSink(other);
    QVERIFY(!module.isEmpty());
    // The new sink may be connected a moment after its module is loaded.
    QTRY_VERIFY_WITH_TIMEOUT(!volumes(other).isEmpty(), patience);
    setVolume(other, {QStringLiteral("80%")});
    pactl({QStringLiteral("set-default-sink"), other});
    QTRY_COMPARE_WITH_TIMEOUT(volumeLater(*output), 80, patience);
    output->setVolumePercent(15);
    QTRY_COMPARE_WITH_TIMEOUT(volumes(other).value(0), QStringLiteral("15%"), patience);
    QCOMPARE(volumes(testSink).value(0), QStringLiteral("40%"));
    // Gone with a write under way: the one that is left takes over, untouched.
    output->setVolumePercent(25);
    pactl({QStringLiteral("unload-module"), module});
    QTRY_COMPARE_WITH_TIMEOUT(volumeLater(*output), 40, patience);
    QCOMPARE(volumes(testSink).value(0), QStringLiteral("40%"));
}

void PulseSoundOutputTest::destroyedAtAnyMoment()
{
    // Before it connects, after so many turns of the loop while it does, and within a write.
    PulseSoundOutput{m_clock};
    for (int turns = 0; turns < 12; ++turns) {
        PulseSoundOutput output(m_clock);
        m_clock.advance(0ms);
        for (int turn = 0; turn < turns; ++turn)
            QCoreApplication::processEvents();
    }
    connected()->setVolumePercent(50);
    QCOMPARE(m_clock.runningTimers(), 0);
    const auto output = connected();
    QVERIFY(output->volumePercent());
}

void PulseSoundOutputTest::retriesWithPatience()
{
    const QByteArray realServer = qgetenv("PULSE_SERVER");
    const auto restore = qScopeGuard([&] { qputenv("PULSE_SERVER", realServer); });
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("socket"));
    qputenv("PULSE_SERVER", "unix:" + path.toLocal8Bit());

    // Nothing there: no volume, no crash, one attempt at a time.
    PulseSoundOutput output(m_clock);
    m_clock.advance(0ms);
    QTRY_COMPARE_WITH_TIMEOUT(m_clock.runningTimers(), 1, patience);
    output.setVolumePercent(50);
    QCOMPARE(output.volumePercent(), std::nullopt);

    // Something that speaks another protocol.
    int attempts = 0;
    QLocalServer server;
    connect(&server, &QLocalServer::newConnection, this, [&] {
        ++attempts;
        QLocalSocket *const socket = server.nextPendingConnection();
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        socket->write(QByteArray(4096, 'x'));
        socket->disconnectFromServer();
    });
    QVERIFY(server.listen(path));
    for (const auto delay : {2s, 5s, 10s, 30s, 60s, 60s}) {
        const int before = attempts;
        m_clock.advance(delay - 1ms);
        QCOMPARE(m_clock.runningTimers(), 1);
        QCOMPARE(attempts, before);
        m_clock.advance(1ms);
        QTRY_COMPARE_WITH_TIMEOUT(attempts, before + 1, patience);
        QTRY_COMPARE_WITH_TIMEOUT(m_clock.runningTimers(), 1, patience);
    }
    QCOMPARE(output.volumePercent(), std::nullopt);
}

/// The last one, since the private desktop's own server dies in it.
void PulseSoundOutputTest::survivesTheServersDeath()
{
    const auto output = connected();
    const int server = qEnvironmentVariableIntValue("VELMORA_PID_PIPEWIRE_PULSE");
    QVERIFY(server > 0);
    output->setVolumePercent(35);
    QTRY_COMPARE_WITH_TIMEOUT(volumes(testSink).value(0), QStringLiteral("35%"), patience);
    output->setVolumePercent(36);
    QCOMPARE(::kill(server, SIGKILL), 0);
    QTRY_COMPARE_WITH_TIMEOUT(output->volumePercent(), std::nullopt, patience);
    output->setVolumePercent(90);
    QCOMPARE(output->volumePercent(), std::nullopt);

    QProcess replacement;
    replacement.start(QStringLiteral("pipewire-pulse"), {});
    const auto end = qScopeGuard([&] {
        replacement.kill();
        replacement.waitForFinished(patience);
    });
    QTRY_VERIFY_WITH_TIMEOUT(!pactl({QStringLiteral("info")}).isEmpty(), patience);
    const auto module = newSink(QStringLiteral("velmora_again"));
    QTRY_VERIFY_WITH_TIMEOUT(!volumes(QStringLiteral("velmora_again")).isEmpty(), patience);
    pactl({QStringLiteral("set-default-sink"), QStringLiteral("velmora_again")});
    setVolume(QStringLiteral("velmora_again"), {QStringLiteral("66%")});
    m_clock.advance(2s);
    QTRY_COMPARE_WITH_TIMEOUT(output->volumePercent(), 66, patience);

    // No sink at all: nothing to report, or the silent stand-in that the server makes; no write
    // may hang on to the sink that went.
    pactl({QStringLiteral("unload-module"), module});
    QTRY_VERIFY_WITH_TIMEOUT(output->volumePercent() != 66, patience);
}

QTEST_GUILESS_MAIN(PulseSoundOutputTest)
#include "PulseSoundOutputTest.moc"
