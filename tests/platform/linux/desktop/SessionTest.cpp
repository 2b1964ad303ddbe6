#include "platform/linux/desktop/AutostartLoginItem.h"
#include "platform/linux/desktop/UnixSignals.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <glib.h>
#include <memory>

using namespace velmora;

namespace
{

/// The words of an entry's command line as a desktop session takes them apart.
QStringList commandOf(const QString &file)
{
    const std::unique_ptr<GKeyFile, decltype(&g_key_file_free)> entry(g_key_file_new(),
                                                                      &g_key_file_free);
    if (!g_key_file_load_from_file(entry.get(), QFile::encodeName(file).constData(),
                                   G_KEY_FILE_NONE, nullptr))
        return {};
    const std::unique_ptr<gchar, decltype(&g_free)> line(
        g_key_file_get_string(entry.get(), "Desktop Entry", "Exec", nullptr), &g_free);
    int count = 0;
    gchar **words = nullptr;
    if (!line || !g_shell_parse_argv(line.get(), &count, &words, nullptr))
        return {};
    QStringList list;
    for (int i = 0; i < count; ++i)
        list << QString::fromUtf8(words[i]).replace(QLatin1String("%%"), QLatin1String("%"));
    g_strfreev(words);
    return list;
}

using SignalHandler = void (*)(int);

SignalHandler handlerOf(int signal)
{
    struct sigaction action = {};
    sigaction(signal, nullptr, &action);
    return action.sa_handler;
}

} // namespace

class SessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void entryStartsTheProgram_data();
    void entryStartsTheProgram();
    void entryReplacesAnOlderOne();
    void failureIsToldAndLeavesNothing();
    void signalsReachTheMainLoop_data();
    void signalsReachTheMainLoop();
    void signalsAreAsBeforeAfterwards();

private:
    QString entryFile() const
    {
        return m_home->filePath(QStringLiteral("c/autostart/velmora.desktop"));
    }

    std::unique_ptr<QTemporaryDir> m_home;
};

void SessionTest::init()
{
    m_home = std::make_unique<QTemporaryDir>();
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home->filePath(QStringLiteral("c"))));
}

void SessionTest::entryStartsTheProgram_data()
{
    QTest::addColumn<QString>("program");
    QTest::newRow("plain") << QStringLiteral("/usr/bin/velmora");
    QTest::newRow("spaces") << QStringLiteral("/opt/My  Programs/velmora");
    QTest::newRow("quotation marks") << QStringLiteral("/opt/\"a\" 'b' `c`/velmora");
    QTest::newRow("shell") << QStringLiteral("/opt/$HOME;a&b|c>d<e(f)*?#~/velmora");
    QTest::newRow("backslashes") << QStringLiteral("/opt/a\\b\\\\n\\/velmora\\");
    QTest::newRow("field codes") << QStringLiteral("/opt/100%/%f/%%u/velmora");
    QTest::newRow("control characters") << QStringLiteral("/opt/a\tb\nc\rd/velmora");
    QTest::newRow("other scripts") << QStringLiteral("/opt/Прог рамма/ノッチ/velmora");
}

void SessionTest::entryStartsTheProgram()
{
    QFETCH(const QString, program);
    QCOMPARE(AutostartLoginItem(program).registerItem(), std::nullopt);
    QCOMPARE(commandOf(entryFile()), QStringList{program});

    const QString validator =
        QStandardPaths::findExecutable(QStringLiteral("desktop-file-validate"));
    QVERIFY2(!validator.isEmpty(), "the package desktop-file-utils is needed");
    QProcess validation;
    validation.setProcessChannelMode(QProcess::MergedChannels);
    validation.start(validator, {entryFile()});
    QVERIFY(validation.waitForFinished());
    QCOMPARE(QString::fromUtf8(validation.readAll()), QString());
    QCOMPARE(validation.exitCode(), 0);
}

void SessionTest::entryReplacesAnOlderOne()
{
    QCOMPARE(AutostartLoginItem(QStringLiteral("/a/very/long/path/to/velmora")).registerItem(),
             std::nullopt);
    QCOMPARE(AutostartLoginItem(QStringLiteral("/b")).registerItem(), std::nullopt);
    QCOMPARE(commandOf(entryFile()), QStringList{QStringLiteral("/b")});
    const QFileInfo file(entryFile());
    QCOMPARE(file.dir().entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{file.fileName()});
}

void SessionTest::failureIsToldAndLeavesNothing()
{
    QVERIFY(AutostartLoginItem(QString()).registerItem().has_value());
    QVERIFY(!QFile::exists(entryFile()));

    // A folder in the place of the file, then a file in the place of the folder: even root is
    // refused these.
    QVERIFY(QDir().mkpath(entryFile()));
    const auto blocked = AutostartLoginItem(QStringLiteral("/usr/bin/velmora")).registerItem();
    QVERIFY(blocked.has_value() && blocked->contains(entryFile()));

    qputenv("XDG_CONFIG_HOME", "/proc/version");
    QVERIFY(AutostartLoginItem(QStringLiteral("/usr/bin/velmora")).registerItem().has_value());
}

void SessionTest::signalsReachTheMainLoop_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGHUP") << SIGHUP;
}

void SessionTest::signalsReachTheMainLoop()
{
    QFETCH(const int, number);
    std::signal(number, SIG_DFL); // a test runner may have us ignore it
    UnixSignals unixSignals;
    QSignalSpy requested(&unixSignals, &UnixSignals::terminationRequested);
    errno = 4711;
    QCOMPARE(raise(number), 0);
    QCOMPARE(errno, 4711);
    QCOMPARE(requested.size(), 0); // not in the middle of whatever is going on
    QVERIFY(requested.wait());
    QCOMPARE(raise(number), 0); // and again
    QVERIFY(requested.wait());
    QCOMPARE(requested.size(), 2);
}

void SessionTest::signalsAreAsBeforeAfterwards()
{
    std::signal(SIGHUP, SIG_IGN);
    const SignalHandler term = handlerOf(SIGTERM);
    {
        const UnixSignals unixSignals;
        QVERIFY(handlerOf(SIGTERM) != term);
        QVERIFY2(handlerOf(SIGHUP) == SIG_IGN, "nohup is respected");
    }
    QVERIFY(handlerOf(SIGTERM) == term);
    QVERIFY(handlerOf(SIGHUP) == SIG_IGN);
    const UnixSignals second; // a later one works as the first did
    QVERIFY(handlerOf(SIGTERM) != term);
}

QTEST_GUILESS_MAIN(SessionTest)
#include "SessionTest.moc"
