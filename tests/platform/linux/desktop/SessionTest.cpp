#include "platform/linux/desktop/AutostartLoginItem.h"
#include "platform/linux/desktop/UnixSignals.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <glib.h>

using namespace velmora;
using namespace Qt::StringLiterals;

namespace
{

/// The words of an entry's command line as a desktop session takes them apart.
QStringList commandOf(const QString &file)
{
    g_autoptr(GKeyFile) entry = g_key_file_new();
    g_key_file_load_from_file(entry, QFile::encodeName(file).constData(), G_KEY_FILE_NONE, nullptr);
    g_autofree gchar *line = g_key_file_get_string(entry, "Desktop Entry", "Exec", nullptr);
    g_auto(GStrv) words = nullptr;
    int count = 0;
    QStringList list;
    if (line != nullptr && g_shell_parse_argv(line, &count, &words, nullptr)) {
        for (int i = 0; i < count; ++i)
            list << QString::fromUtf8(words[i]).replace(u"%%"_s, u"%"_s);
    }
    return list;
}

} // namespace

class SessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.path())); }

    void failureIsToldAndLeavesNothing();
    void entryStartsTheProgram();
    void signalsReachTheMainLoop();

private:
    QTemporaryDir m_home;
    QString m_entry = m_home.filePath(u"autostart/velmora.desktop"_s);
};

void SessionTest::failureIsToldAndLeavesNothing()
{
    QVERIFY(AutostartLoginItem(QString()).registerItem().has_value());
    QVERIFY(!QFile::exists(m_entry));

    // A folder in the place of the file, then a file in the place of the folder: even root is
    // refused these.
    QVERIFY(QDir().mkpath(m_entry));
    const auto blocked = AutostartLoginItem(u"/usr/bin/velmora"_s).registerItem();
    QVERIFY(blocked.has_value() && blocked->contains(m_entry));
    QVERIFY(QDir().rmdir(m_entry));

    qputenv("XDG_CONFIG_HOME", "/proc/version");
    QVERIFY(AutostartLoginItem(u"/usr/bin/velmora"_s).registerItem().has_value());
}

void SessionTest::entryStartsTheProgram()
{
    for (const auto *path : {"/usr/bin/velmora", "/opt/My  Programs/velmora",
                             "/opt/\"a\" 'b' `c`/velmora", "/opt/$HOME;a&b|c>d<e(f)*?#~/velmora",
                             "/opt/a\\b\\\\n\\/velmora\\", "/opt/100%/%f/%%u/velmora",
                             "/opt/a\tb\nc\rd/velmora", "/opt/Прог рамма/ノッチ/velmora"}) {
        const QString program = QString::fromUtf8(path);
        QCOMPARE(AutostartLoginItem(program).registerItem(), std::nullopt);
        QCOMPARE(commandOf(m_entry), QStringList{program});

        QProcess validation;
        validation.setProcessChannelMode(QProcess::MergedChannels);
        validation.start(u"desktop-file-validate"_s, {m_entry});
        QVERIFY2(validation.waitForFinished(), "the package desktop-file-utils is needed");
        QCOMPARE(QString::fromUtf8(validation.readAll()), QString());
        QCOMPARE(validation.exitCode(), 0);
    }
    const QFileInfo file(m_entry); // each replaced the one before
    QCOMPARE(file.dir().entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{file.fileName()});
}

void SessionTest::signalsReachTheMainLoop()
{
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        std::signal(number, SIG_DFL); // a test runner may have us ignore it
        {
            UnixSignals unixSignals;
            QSignalSpy requested(&unixSignals, &UnixSignals::terminationRequested);
            for (int i = 0; i < 2; ++i) { // and again
                errno = 4711;
                QCOMPARE(raise(number), 0);
                QCOMPARE(errno, 4711);
                QCOMPARE(requested.size(), i); // not in the middle of whatever is going on
                QVERIFY(requested.wait());
            }
        }
        QVERIFY(std::signal(number, SIG_IGN) == SIG_DFL); // all is as it was before
    }
    const UnixSignals unixSignals;
    QVERIFY2(std::signal(SIGHUP, SIG_DFL) == SIG_IGN, "nohup is respected");
}

QTEST_GUILESS_MAIN(SessionTest)
#include "SessionTest.moc"
