#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

namespace velmora
{

struct Command {
    QByteArray executable;
    QList<QByteArray> arguments; ///< bytes, as paths are
    QByteArray input;            ///< what it can read
    bool outlivesUs = true;      ///< else it is told to end when this program does
};

struct ProcessOutcome {
    QString launchError; ///< why it could not be started, for the user to read; else empty
    int status = 0;      ///< exit status, or the number of the signal that ended it
};

/// Programs that run beside this one, without output or terminal.
class ChildProcesses
{
public:
    using Done = std::function<void(const ProcessOutcome &outcome)>;

    ChildProcesses() = default;
    ChildProcesses(const ChildProcesses &) = delete;
    ChildProcesses &operator=(const ChildProcesses &) = delete;
    virtual ~ChildProcesses() = default;

    /// Starts a program and returns. The answer comes once, on the main loop, never inside the
    /// call, when the program has ended, however long that takes. When this object goes, programs
    /// go on.
    virtual void run(const Command &command, Done done) = 0;
};

} // namespace velmora
