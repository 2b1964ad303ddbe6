#include "platform/linux/files/LinuxChildProcesses.h"

#include <QProcess>

#include <memory>
#include <unistd.h>
#include <utility>
#include <vector>

namespace velmora
{

namespace
{

/// A command line as the kernel takes it. It is made before the fork: behind it, memory must not be
/// allocated any more.
struct CommandLine {
    QByteArray executable;
    QList<QByteArray> arguments;
    std::vector<char *> pointers;

    CommandLine(const QByteArray &program, const QList<QByteArray> &rest)
        : executable(program)
        , arguments(rest)
    {
        pointers.push_back(executable.data());
        for (QByteArray &argument : arguments) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
    }
};

} // namespace

void LinuxChildProcesses::run(const QByteArray &executable, const QList<QByteArray> &arguments,
                              Done done)
{
    // Nobody's child but its own: if the program ends first, the destructor of QProcess would kill
    // an archiver in the middle of its work.
    auto *const process = new QProcess;
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->setProgram(QString::fromUtf8(executable));
    process->setChildProcessModifier(
        [command = std::make_shared<CommandLine>(executable, arguments)] {
            // Without a terminal there is nobody to ask for the password of an archive.
            setsid();
            // QProcess takes text for arguments, and paths are bytes. If this fails, QProcess tries
            // the same without arguments, fails as well and reports it.
            execv(command->executable.constData(), command->pointers.data());
        });
    const auto answer = [process, done = std::move(done)](const ProcessOutcome &outcome) {
        process->deleteLater();
        done(outcome);
    };
    connect(process, &QProcess::finished, this, [process, answer](int status) {
        // For one that a signal ended, the status is the number of the signal.
        process->disconnect();
        answer({{}, status});
    });
    connect(
        process, &QProcess::errorOccurred, this,
        [process, answer](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart) {
                process->disconnect();
                // "execvp: No such file or directory": which call it was is of no use to anybody.
                const QString reason = process->errorString().section(QStringLiteral(": "), -1);
                answer({process->program() + QStringLiteral(": ") + reason, 0});
            }
        },
        Qt::QueuedConnection); // it may come up inside start()
    // One whose answer nobody waits for any more cleans up after itself.
    connect(process, &QProcess::finished, process, &QObject::deleteLater);
    process->start();
}

} // namespace velmora
