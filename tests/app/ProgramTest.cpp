#include "platform/linux/dbus/BusConnection.h"
#include "support/BusDaemon.h"

#include <QDBusConnectionInterface>
#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

using namespace Qt::StringLiterals;
using velmora::BusConnection;
using velmora::test::BusDaemon;

namespace
{

constexpr int patience = 30'000; // milliseconds, for a loaded machine

/// The program itself, on a desktop without a screen to look at.
struct Program : QProcess {
    explicit Program(const QMap<QString, QString> &variables = {},
                     const QString &program = QStringLiteral(VELMORA_PROGRAM),
                     const QStringList &arguments = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (auto it = variables.begin(); it != variables.end(); ++it)
            it.value().isNull() ? environment.remove(it.key())
                                : environment.insert(it.key(), it.value());
        setProcessEnvironment(environment);
        setProcessChannelMode(MergedChannels);
        start(program, arguments);
    }
    ~Program() override
    {
        kill();
        waitForFinished();
    }

    bool says(const char *text)
    {
        while (!m_output.contains(text) && waitForReadyRead(patience))
            m_output += readAll();
        return m_output.contains(text);
    }

    bool ends(int status)
    {
        return (state() == NotRunning || waitForFinished(patience)) && exitStatus() == NormalExit &&
               exitCode() == status;
    }

    bool endsBySignal()
    {
        terminate();
        return ends(0);
    }

private:
    QByteArray m_output;
};

/// Waits until the program is up: the next start only tells it to come forward.
bool isUpOn(const QByteArray &address)
{
    BusConnection bus(address);
    return QTest::qWaitFor(
        [&bus] {
            return bus.isConnected() &&
                   bus.connection().interface()->isServiceRegistered(u"com.velmora.app"_s);
        },
        patience);
}

QMap<QString, QString> onBus(const BusDaemon &bus)
{
    return {{u"DBUS_SESSION_BUS_ADDRESS"_s, QString::fromUtf8(bus.address())}};
}

} // namespace

class ProgramTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsThatThereIsNoDisplay();
    void outlivesTheReaderOfItsOutput();
    void runsWithoutABus();
    void usesABusThatAnswersLater();
    void mirrorsTasksOfAFolder();
};

void ProgramTest::tellsThatThereIsNoDisplay()
{
    const QString none;
    const QString nobody = u":4711"_s;
    const QString nowhere = u"nowhere"_s;
    const std::vector<std::array<QString, 3>> rows{
        {none, none, none},       {none, nobody, none},          {none, none, nowhere},
        {u"xcb"_s, nobody, none}, {u"wayland"_s, none, nowhere}, {u"abacus"_s, none, none},
    };
    for (const auto &[platform, x11, wayland] : rows) {
        Program program({{u"QT_QPA_PLATFORM"_s, platform},
                         {u"DISPLAY"_s, x11},
                         {u"WAYLAND_DISPLAY"_s, wayland}});
        QVERIFY(program.ends(EXIT_FAILURE));
        const QByteArray output = program.readAll();
        QVERIFY2(output.startsWith("velmora: there is no display: "), output.constData());
        QCOMPARE(output.count('\n'), 1);
    }
}

void ProgramTest::outlivesTheReaderOfItsOutput()
{
    const QString reader = u"exec \"$0\" > >(head --lines=1 >/dev/null) 2>&1"_s;
    Program program({}, u"bash"_s, {u"-c"_s, reader, QStringLiteral(VELMORA_PROGRAM)});
    QVERIFY(isUpOn(BusConnection::sessionAddress()));
    for (int i = 0; i < 2; ++i) { // each is told of, to nobody
        Program another;
        QVERIFY(another.ends(0));
    }
    QCOMPARE(program.state(), QProcess::Running);
    QVERIFY(program.endsBySignal());
}

void ProgramTest::runsWithoutABus()
{
    BusDaemon bus;
    for (int i = 0; i < 2; ++i) { // there is none, or it hangs
        Program program(onBus(bus));
        QVERIFY(program.says("created for screen"));
        QVERIFY(program.endsBySignal());
        bus.hang();
    }
}

void ProgramTest::usesABusThatAnswersLater()
{
    BusDaemon bus;
    bus.hang();
    Program program(onBus(bus));
    QVERIFY(program.says("created for screen"));
    for (int i = 0; i < 2; ++i) { // and one that comes back
        bus.kill();
        bus.start();
        QVERIFY(isUpOn(bus.address()));
        Program another(onBus(bus));
        QVERIFY(another.ends(0));
    }
    QVERIFY(program.says("openPreferences"));
    QVERIFY(program.endsBySignal());
}

/// At a later start without a question, down to what is stored.
void ProgramTest::mirrorsTasksOfAFolder()
{
    const auto folder = [](QStandardPaths::StandardLocation location, const char *path) {
        QDir folder(QStandardPaths::writableLocation(location));
        return folder.mkpath(QLatin1String(path)) && folder.cd(QLatin1String(path)) ? folder
                                                                                    : QDir();
    };
    const auto write = [](const QString &path, const QByteArray &text) {
        QFile file(path);
        return file.open(QFile::WriteOnly) && file.write(text) == text.size();
    };
    const QDir calendar = folder(QStandardPaths::GenericDataLocation, "velmora/calendars/home");
    const QString settings = folder(QStandardPaths::GenericConfigLocation, "velmora")
                                 .filePath(QStringLiteral("velmora.conf"));
    QVERIFY(write(calendar.filePath(QStringLiteral("task.ics")),
                  "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:test\r\nBEGIN:VTODO\r\nUID:task\r\n"
                  "DTSTAMP:20240101T000000Z\r\nSUMMARY:Water the plants\r\nEND:VTODO\r\n"
                  "END:VCALENDAR\r\n"));
    QVERIFY(write(settings, "[General]\nhasRequestedPermissions=true\n"));
    const BusDaemon nowhere;
    Program program(onBus(nowhere));
    const auto isStored = [&settings] {
        QFile file(settings);
        return file.open(QFile::ReadOnly) && file.readAll().contains("Water the plants");
    };
    QVERIFY(QTest::qWaitFor(isStored, patience));
    QVERIFY(program.endsBySignal());
}

QTEST_GUILESS_MAIN(ProgramTest)
#include "ProgramTest.moc"
