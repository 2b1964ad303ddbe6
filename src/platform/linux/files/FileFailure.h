#pragma once

#include "platform/LocalPath.h"

#include <system_error>

namespace velmora
{

/// What goes wrong with a file, thrown inside a worker thread and turned into text at its border.
struct FileFailure {
    QString text; ///< "name: reason"
    int code = 0; ///< errno value; 0 where the reason is none of the system's

    FileFailure(const QByteArray &path, const QString &reason)
        : text(readableName(path) + QStringLiteral(": ") + reason)
    {
    }
    FileFailure(const QByteArray &path, int errorCode)
        : FileFailure(path, QString::fromStdString(std::generic_category().message(errorCode)))
    {
        code = errorCode;
    }
};

} // namespace velmora
