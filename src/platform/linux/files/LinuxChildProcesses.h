#pragma once

#include "platform/ChildProcesses.h"

#include <QObject>

namespace velmora
{

/// Child processes in a session of their own, with /dev/null for output, and for input if there is
/// none.
class LinuxChildProcesses final : public QObject, public ChildProcesses
{
    Q_OBJECT

public:
    void run(const Command &command, Done done) override;
};

} // namespace velmora
