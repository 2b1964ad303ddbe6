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
    void argumentsArriveByteForByte();
    void itHasNothingOfOurs();
    void inputArrives();
    void outcomes_data();
    void outcomes();
    void tooManyArguments();
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

void ChildProcessesTest::argumentsArriveByteForByte()
{
    const QTemporaryDir folder;
    const QByteArray path = QFile::encodeName(folder.filePath(QStringLiteral("arguments")));
    const QList<QByteArray> odd{"-x", "", "a b", "\xFF\xC3(", "'\"\\$(date)\n", "*"};
    const ProcessOutcome outcome =
        run({"/bin/sh", QList<QByteArray>{"-c", "printf '%s|' \"$@\" >\"$0\"", path} + odd, {}});
    QCOMPARE(outcome.launchError, QString());
    QCOMPARE(outcome.status, 0);
    QCOMPARE(readFile(path), odd.join('|') + '|');
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

void ChildProcessesTest::inputArrives()
{
    const QByteArray input = QByteArray("line \xFF\n").repeated(100'000); // more than a pipe holds
    QCOMPARE(
        run({"/bin/sh", {"-c", "[ $(wc -c) = \"$0\" ]", QByteArray::number(input.size())}, input})
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
    const ProcessOutcome outcome = run({executable, {"-c", script}, {}});
    QCOMPARE(outcome.launchError, error);
    QCOMPARE(outcome.status, status);
}

void ChildProcessesTest::tooManyArguments()
{
    const QList<QByteArray> many(30'000, QByteArray(200, 'x'));
    const ProcessOutcome outcome = run({"/bin/sh", QList<QByteArray>{"-c", "exit 0"} + many, {}});
    QCOMPARE(outcome.launchError, QStringLiteral("/bin/sh: Argument list too long"));
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
