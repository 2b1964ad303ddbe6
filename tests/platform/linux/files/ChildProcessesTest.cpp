#include "FileSamples.h"
#include "platform/linux/files/LinuxChildProcesses.h"

#include <QEventLoop>
#include <QTemporaryDir>
#include <QTest>

#include <signal.h>

using namespace velmora;

class ChildProcessesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void argumentsArriveByteForByte();
    void itHasNothingOfOurs();
    void outcomes_data();
    void outcomes();
    void itsWorkIsFinishedWithoutUs();

private:
    static ProcessOutcome run(const QByteArray &executable, const QList<QByteArray> &arguments);
};

ProcessOutcome ChildProcessesTest::run(const QByteArray &executable,
                                       const QList<QByteArray> &arguments)
{
    LinuxChildProcesses processes;
    QEventLoop loop;
    ProcessOutcome outcome{QStringLiteral("no answer"), -1};
    bool isCalling = true;
    processes.run(executable, arguments, [&](const ProcessOutcome &result) {
        outcome =
            isCalling ? ProcessOutcome{QStringLiteral("answered inside the call"), -1} : result;
        loop.quit();
    });
    isCalling = false;
    loop.exec();
    return outcome;
}

void ChildProcessesTest::argumentsArriveByteForByte()
{
    const QTemporaryDir folder;
    const QByteArray path = QFile::encodeName(folder.filePath(QStringLiteral("arguments")));
    const QList<QByteArray> odd{"-x", "", "a b", "\xFF\xC3(", "'\"\\$(date)\n", "*"};
    const ProcessOutcome outcome =
        run("/bin/sh", QList<QByteArray>{"-c", "printf '%s|' \"$@\" >\"$0\"", path} + odd);
    QCOMPARE(outcome.launchError, QString());
    QCOMPARE(outcome.status, 0);
    QCOMPARE(readFile(path), odd.join('|') + '|');
}

void ChildProcessesTest::itHasNothingOfOurs()
{
    // Each of them /dev/null, and no terminal that a question could be asked on.
    QCOMPARE(run("/bin/sh", {"-c", "for fd in 0 1 2; do "
                                   "[ \"$(readlink /proc/$$/fd/$fd)\" = /dev/null ] || exit 3; "
                                   "done; (: </dev/tty) 2>/dev/null && exit 4; exit 0"})
                 .status,
             0);
}

void ChildProcessesTest::outcomes_data()
{
    QTest::addColumn<QByteArray>("executable");
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("error");
    QTest::newRow("status") << QByteArray("/bin/sh") << QByteArray("exit 12") << 12 << QString();
    QTest::newRow("killed") << QByteArray("/bin/sh") << QByteArray("kill -KILL $$") << 9
                            << QString();
    QTest::newRow("missing") << QByteArray("/no/such/zip") << QByteArray() << 0
                             << QStringLiteral("/no/such/zip: No such file or directory");
    QTest::newRow("not to be run") << QByteArray("/etc/passwd") << QByteArray() << 0
                                   << QStringLiteral("/etc/passwd: Permission denied");
}

void ChildProcessesTest::outcomes()
{
    QFETCH(const QByteArray, executable);
    QFETCH(const QByteArray, script);
    QFETCH(const int, status);
    QFETCH(const QString, error);
    const ProcessOutcome outcome = run(executable, {"-c", script});
    QCOMPARE(outcome.launchError, error);
    QCOMPARE(outcome.status, status);
}

void ChildProcessesTest::itsWorkIsFinishedWithoutUs()
{
    const QTemporaryDir folder;
    const QByteArray start = QFile::encodeName(folder.filePath(QStringLiteral("start")));
    const QByteArray end = QFile::encodeName(folder.filePath(QStringLiteral("end")));
    mkfifo(start.constData(), 0600);
    bool isAnswered = false;
    {
        LinuxChildProcesses processes;
        processes.run(
            "/bin/sh",
            {"-c", "read word <\"$0\"; echo $word >\"$1.part\"; mv \"$1.part\" \"$1\"", start, end},
            [&](const ProcessOutcome & /*outcome*/) { isAnswered = true; });
    }
    writeFile(start, "go\n"); // waits until the other end is open
    QTRY_COMPARE(readFile(end), QByteArray("go\n"));
    QVERIFY(!isAnswered);
}

QTEST_GUILESS_MAIN(ChildProcessesTest)
#include "ChildProcessesTest.moc"
