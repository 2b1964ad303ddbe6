#pragma once

#include "platform/ChildProcesses.h"

#include <QObject>

namespace velmora
{

/// Child processes in a session of their own, with /dev/null for input and output.
class LinuxChildProcesses final : public QObject, public ChildProcesses
{
    Q_OBJECT

public:
    void run(const QByteArray &executable, const QList<QByteArray> &arguments, Done done) override;
};

} // namespace velmora
