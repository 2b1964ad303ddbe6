#include "platform/linux/files/LinuxChildProcesses.h"

#include <QFile>
#include <QProcess>

#include <csignal>
#include <memory>
#include <sys/mman.h>
#include <sys/prctl.h>
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
    Command command;
    std::vector<char *> pointers;

    explicit CommandLine(Command wanted)
        : command(std::move(wanted))
    {
        pointers.push_back(command.executable.data());
        for (QByteArray &argument : command.arguments) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
    }
};

void prepare(QProcess &process, const Command &command)
{
    process.setProgram(QString::fromUtf8(command.executable));
    QStringList arguments;
    for (const QByteArray &argument : command.arguments) {
        arguments << QString::fromUtf8(argument);
    }
    process.setArguments(arguments);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.setChildProcessModifier([line = std::make_shared<CommandLine>(command)] {
        // Without a terminal there is nobody to ask for the password of an archive.
        setsid();
        if (!line->command.outlivesUs) {
            prctl(PR_SET_PDEATHSIG, SIGTERM);
        }
        // QProcess takes text for arguments, and paths are bytes. If this fails, QProcess tries the
        // same with text, fails as well and reports it.
        execv(line->command.executable.constData(), line->pointers.data());
    });
}

} // namespace

void LinuxChildProcesses::run(const Command &command, Done done)
{
    // Nobody's child but its own: if the program ends first, the destructor of QProcess would kill
    // an archiver in the middle of its work.
    auto *const process = new QProcess;
    prepare(*process, command);
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

    // In memory, so that all of it is there from the start, whatever becomes of this program.
    QFile input;
    process->setStandardInputFile(QProcess::nullDevice());
    if (!command.input.isEmpty() &&
        input.open(memfd_create("input", MFD_CLOEXEC), QIODevice::WriteOnly | QIODevice::Unbuffered,
                   QFileDevice::AutoCloseHandle)) {
        input.write(command.input);
        process->setStandardInputFile(QStringLiteral("/proc/self/fd/%1").arg(input.handle()));
    }
    process->start();
}

} // namespace velmora
