#pragma once

#include <QByteArray>
#include <QString>

namespace velmora
{

/// The content type whose default application plays the part of a well-known application, given by
/// its bundle identifier; empty for one that is not known.
[[nodiscard]] QByteArray contentTypeForRole(const QString &identifier);

} // namespace velmora
