#include "FileSamples.h"
#include "platform/linux/files/LinuxChildProcesses.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/wait.h>

using namespace velmora;

class ChildProcessesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void argumentsAndInputArrive();
    void itHasNothingOfOurs();
    void outcomes();
    void itsWorkIsFinishedWithoutUs();
    void unlessItWasToEnd();

private:
    static ProcessOutcome run(const Command &command);
};

ProcessOutcome ChildProcessesTest::run(const Command &command)
{
    LinuxChildProcesses processes;
    return answerOf<ProcessOutcome>([&](const auto &done) { processes.run(command, done); });
}

void ChildProcessesTest::argumentsAndInputArrive()
{
    const QTemporaryDir folder;
    const QByteArray path = QFile::encodeName(folder.filePath(QStringLiteral("arguments")));
    const QByteArray input = QByteArray("line \xFF\n").repeated(100'000); // more than a pipe holds
    const QList<QByteArray> odd{"-x", "", "a b", "\xFF\xC3(", "'\"\\$(date)\n", "*"};
    const QList<QByteArray> script{"-c", "{ printf '%s|' \"$@\"; cat; } >\"$0\"", path};
    QCOMPARE(run({"/bin/sh", script + odd, input}).status, 0);
    QVERIFY(readFile(path) == odd.join('|') + '|' + input);
}

void ChildProcessesTest::itHasNothingOfOurs()
{
    // Each of them /dev/null, and no terminal that a question could be asked on.
    QCOMPARE(run({"/bin/sh",
                  {"-c", "for fd in 0 1 2; do "
                         "[ \"$(readlink /proc/$$/fd/$fd)\" = /dev/null ] || exit 3; "
                         "done; (: </dev/tty) 2>/dev/null && exit 4; exit 0"},
                  {}})
                 .status,
             0);
}

void ChildProcessesTest::outcomes()
{
    QCOMPARE(run({"/bin/sh", {"-c", "exit 12"}, {}}).status, 12);
    QCOMPARE(run({"/bin/sh", {"-c", "kill -KILL $$"}, {}}).status, 9);
    const auto error = [](const QByteArray &executable, qsizetype arguments) {
        return run({executable, QList<QByteArray>(arguments, QByteArray(200, 'x')), {}})
            .launchError;
    };
    QCOMPARE(error("/no/such/zip", 1), QStringLiteral("/no/such/zip: No such file or directory"));
    QCOMPARE(error("/etc/passwd", 1), QStringLiteral("/etc/passwd: Permission denied"));
    QCOMPARE(error("/bin/sh", 30'000), QStringLiteral("/bin/sh: Argument list too long"));
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
        processes.run({"/bin/sh",
                       {"-c", "read word <\"$0\"; echo $word >\"$1.part\"; mv \"$1.part\" \"$1\"",
                        start, end},
                       {}},
                      [&](const ProcessOutcome & /*outcome*/) { isAnswered = true; });
    }
    writeFile(start, "go\n"); // waits until the other end is open
    QTRY_COMPARE(readFile(end), QByteArray("go\n"));
    QVERIFY(!isAnswered);
}

void ChildProcessesTest::unlessItWasToEnd()
{
    const QTemporaryDir folder;
    const QByteArray told = QFile::encodeName(folder.filePath(QStringLiteral("told")));
    const QByteArray ready = QFile::encodeName(folder.filePath(QStringLiteral("ready")));
    mkfifo(ready.constData(), 0600);
    const pid_t us = fork();
    if (us == 0) {
        int count = 0;
        const QCoreApplication application(count, nullptr);
        LinuxChildProcesses().run({"/bin/sh",
                                   {"-c",
                                    "trap 'echo >\"$0\"; exit' TERM; echo >\"$1\"; "
                                    "while :; do sleep 1; done",
                                    told, ready},
                                   {},
                                   false},
                                  [](const ProcessOutcome & /*outcome*/) {});
        readFile(ready); // waits until it listens
        _exit(0);
    }
    QCOMPARE(waitpid(us, nullptr, 0), us);
    QTRY_VERIFY(isThere(told));
}

QTEST_GUILESS_MAIN(ChildProcessesTest)
#include "ChildProcessesTest.moc"
