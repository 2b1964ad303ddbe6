#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

namespace velmora
{

/// A file's path is a string of bytes, and need not be text: these keep every byte, which the
/// toolkit's own conversions do not.

/// The absolute path that a file URL names, without slashes at its end; nothing for a URL that
/// names no file of this machine.
[[nodiscard]] std::optional<QByteArray> localPath(const QUrl &url);

/// The URL of an absolute path.
[[nodiscard]] QUrl fileUrl(const QByteArray &path);

/// What follows the last slash.
[[nodiscard]] QByteArray fileName(const QByteArray &path);

/// What precedes the last slash; "/" for what lies at the top.
[[nodiscard]] QByteArray parentFolder(const QByteArray &path);

/// A name that nobody has, for what is not complete yet.
[[nodiscard]] QByteArray hiddenName();

/// The last component on one line, for messages. What is not text is replaced.
[[nodiscard]] QString readableName(const QByteArray &path);

} // namespace velmora
