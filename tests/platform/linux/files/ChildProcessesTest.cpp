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
    void outcomes();
    void itsWorkIsFinishedWithoutUs();
    void unlessItWasToEnd();

private:
    static ProcessOutcome run(const Command &command);
    [[nodiscard]] QByteArray path(const char *name) const
    {
        return QFile::encodeName(m_folder.filePath(QString::fromLatin1(name)));
    }

    const QTemporaryDir m_folder;
};

ProcessOutcome ChildProcessesTest::run(const Command &command)
{
    LinuxChildProcesses processes;
    return answerOf<ProcessOutcome>([&](const auto &done) { processes.run(command, done); });
}

void ChildProcessesTest::argumentsAndInputArrive()
{
    const QByteArray input = QByteArray("line \xFF\n").repeated(100'000); // more than a pipe holds
    const QList<QByteArray> odd{"-x", "", "a b", "\xFF\xC3(", "'\"\\$(date)\n", "*"};
    const QList<QByteArray> script{"-c", "{ printf '%s|' \"$@\"; cat; } >\"$0\"",
                                   path("arguments")};
    QCOMPARE(run({"/bin/sh", script + odd, input}).status, 0);
    QVERIFY(readFile(path("arguments")) == odd.join('|') + '|' + input);
}

void ChildProcessesTest::outcomes()
{
    // Each of its files is /dev/null, and there is no terminal that a question could be asked on.
    const QByteArray looks = "for fd in 0 1 2; do "
                             "[ \"$(readlink /proc/$$/fd/$fd)\" = /dev/null ] || exit 3; "
                             "done; (: </dev/tty) 2>/dev/null && exit 4; exit 0";
    QCOMPARE(run({"/bin/sh", {"-c", looks}, {}}).status, 0);
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
    const QByteArray start = path("start");
    const QByteArray end = path("end");
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
    const QByteArray told = path("told");
    const QByteArray ready = path("ready");
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
