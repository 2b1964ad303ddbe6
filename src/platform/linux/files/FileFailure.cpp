#include "platform/linux/files/FileFailure.h"

#include "platform/LocalPath.h"

#include <system_error>

namespace velmora
{

FileFailure::FileFailure(const QByteArray &path, int code)
    : FileFailure(path, QString::fromStdString(std::generic_category().message(code)))
{
}

FileFailure::FileFailure(const QByteArray &path, const QString &reason)
    : m_text(readableName(path) + QStringLiteral(": ") + reason)
{
}

} // namespace velmora
