#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

namespace velmora
{

struct ProcessOutcome {
    QString launchError; ///< why it could not be started, for the user to read; else empty
    int status = 0;      ///< exit status, or the number of the signal that ended it
};

/// Programs that run beside this one, without input, output or terminal.
class ChildProcesses
{
public:
    using Done = std::function<void(const ProcessOutcome &outcome)>;

    ChildProcesses() = default;
    ChildProcesses(const ChildProcesses &) = delete;
    ChildProcesses &operator=(const ChildProcesses &) = delete;
    virtual ~ChildProcesses() = default;

    /// Starts a program and returns. The answer comes once, on the main loop, never inside the
    /// call, when the program has ended, however long that takes. Arguments are bytes, as paths
    /// are. A program that is still running when this object goes is left to finish its work.
    virtual void run(const QByteArray &executable, const QList<QByteArray> &arguments,
                     Done done) = 0;
};

} // namespace velmora
