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

#define TRY_COMPARE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, patience)

QByteArray pactl(const QStringList &arguments)
{
    QProcess process;
    process.start(u"pactl"_qs, arguments);
    if (!process.waitForFinished(patience) || process.exitCode() != 0)
        return {};
    return process.readAllStandardOutput().trimmed();
}

void setVolume(const QString &sink, const QStringList &channels)
{
    pactl(QStringList{u"set-sink-volume"_qs, sink} + channels);
}

/// The percentages of all channels of a sink, as another client sees them.
QStringList volumes(const QString &sink)
{
    const auto words = QString::fromUtf8(pactl({u"get-sink-volume"_qs, sink})).split(u' ');
    return words.filter(u"%"_qs);
}

QString newSink(const QString &name)
{
    return QString::fromUtf8(pactl({u"load-module"_qs, u"module-null-sink"_qs,
                                    u"sink_name="_qs + name, u"media.class=Audio/Sink"_qs}));
}

const QString testSink = u"velmora_test"_qs;

} // namespace

/// Runs against a real server with one null sink, which is the default.
class PulseSoundOutputTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void readsAndWrites();
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
    pactl({u"set-default-sink"_qs, testSink});
    setVolume(testSink, {u"40%"_qs});
    QCOMPARE(volumes(testSink).value(0), u"40%"_qs);
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

void PulseSoundOutputTest::readsAndWrites()
{
    const auto output = connected();
    QCOMPARE(output->volumePercent(), 40);
    setVolume(testSink, {u"150%"_qs});
    TRY_COMPARE(output->volumePercent(), 100);

    for (const int percent : {73, 1, 0, 100}) {
        for (int passed = 0; passed <= 100; ++passed)
            output->setVolumePercent(passed); // the last of many counts
        output->setVolumePercent(percent);
        // At once, so that a view does not jump back, and then for good.
        QCOMPARE(output->volumePercent(), percent);
        const auto text = u"%1%"_qs.arg(percent);
        TRY_COMPARE(volumes(testSink), (QStringList{text, text}));
        QCOMPARE(output->volumePercent(), percent);
    }
    output->setVolumePercent(-5);
    TRY_COMPARE(volumes(testSink).value(0), u"0%"_qs);
    // The server is the one to believe again after a write.
    setVolume(testSink, {u"44%"_qs});
    TRY_COMPARE(output->volumePercent(), 44);

    // The balance stays.
    const QStringList balanced{u"20%"_qs, u"60%"_qs};
    setVolume(testSink, balanced);
    TRY_COMPARE(output->volumePercent(), 60);
    output->setVolumePercent(30);
    TRY_COMPARE(volumes(testSink), (QStringList{u"10%"_qs, u"30%"_qs}));
    // Even through silence, where the channels cannot be told apart.
    output->setVolumePercent(0);
    TRY_COMPARE(volumes(testSink), (QStringList{u"0%"_qs, u"0%"_qs}));
    output->setVolumePercent(60);
    TRY_COMPARE(volumes(testSink), balanced);
}

void PulseSoundOutputTest::followsTheDefaultSink()
{
    const auto output = connected();
    const auto other = u"velmora_other"_qs;
    const QString module = newSink(other);
    QVERIFY(!module.isEmpty());
    // The new sink may be connected a moment after its module is loaded.
    QTRY_VERIFY_WITH_TIMEOUT(!volumes(other).isEmpty(), patience);
    setVolume(other, {u"80%"_qs});
    pactl({u"set-default-sink"_qs, other});
    TRY_COMPARE(volumeLater(*output), 80);
    output->setVolumePercent(15);
    TRY_COMPARE(volumes(other).value(0), u"15%"_qs);
    QCOMPARE(volumes(testSink).value(0), u"40%"_qs);
    // Gone with a write under way: the one that is left takes over, untouched.
    output->setVolumePercent(25);
    pactl({u"unload-module"_qs, module});
    TRY_COMPARE(volumeLater(*output), 40);
    QCOMPARE(volumes(testSink).value(0), u"40%"_qs);
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
}

void PulseSoundOutputTest::retriesWithPatience()
{
    const QByteArray realServer = qgetenv("PULSE_SERVER");
    const auto restore = qScopeGuard([&] { qputenv("PULSE_SERVER", realServer); });
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"socket"_qs);
    qputenv("PULSE_SERVER", "unix:" + path.toLocal8Bit());

    // Nothing there: no volume, no crash, one attempt at a time.
    PulseSoundOutput output(m_clock);
    m_clock.advance(0ms);
    TRY_COMPARE(m_clock.runningTimers(), 1);
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
        TRY_COMPARE(attempts, before + 1);
        TRY_COMPARE(m_clock.runningTimers(), 1);
    }
    QCOMPARE(output.volumePercent(), std::nullopt);
}

/// The last one, since the private desktop's own server dies in it.
void PulseSoundOutputTest::survivesTheServersDeath()
{
    const auto output = connected();
    const int server = qEnvironmentVariableIntValue("VELMORA_PID_PIPEWIRE_PULSE");
    QVERIFY(server > 0);
    output->setVolumePercent(36);
    QCOMPARE(::kill(server, SIGKILL), 0);
    TRY_COMPARE(output->volumePercent(), std::nullopt);
    output->setVolumePercent(90);
    QCOMPARE(output->volumePercent(), std::nullopt);

    QProcess replacement;
    replacement.start(u"pipewire-pulse"_qs, {});
    const auto end = qScopeGuard([&] {
        replacement.kill();
        replacement.waitForFinished(patience);
    });
    QTRY_VERIFY_WITH_TIMEOUT(!pactl({u"info"_qs}).isEmpty(), patience);
    const auto module = newSink(u"velmora_again"_qs);
    QTRY_VERIFY_WITH_TIMEOUT(!volumes(u"velmora_again"_qs).isEmpty(), patience);
    pactl({u"set-default-sink"_qs, u"velmora_again"_qs});
    setVolume(u"velmora_again"_qs, {u"66%"_qs});
    m_clock.advance(2s);
    TRY_COMPARE(output->volumePercent(), 66);

    // No sink at all: nothing to report, or the silent stand-in that the server makes; no write
    // may hang on to the sink that went.
    pactl({u"unload-module"_qs, module});
    QTRY_VERIFY_WITH_TIMEOUT(output->volumePercent() != 66, patience);
}

QTEST_GUILESS_MAIN(PulseSoundOutputTest)
#include "PulseSoundOutputTest.moc"
