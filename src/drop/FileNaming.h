#pragma once

#include <QByteArray>

namespace velmora
{

/// How drop actions name what they make. Names and paths are bytes.

/// The path extension of the last component, without its point. A point at the beginning or the
/// end of a name makes no extension.
[[nodiscard]] QByteArray pathExtension(const QByteArray &path);

[[nodiscard]] QByteArray withoutPathExtension(const QByteArray &path);

/// The one rule for names that are taken: "a.txt", "a 1.txt", "a 2.txt" and so on.
[[nodiscard]] QByteArray uniqueURL(const QByteArray &name, int attempt);

/// How an archive is named to unzip, which takes wildcards in it: the path itself, except where
/// "a[1].zip" would mean a1.zip.
[[nodiscard]] QByteArray unzipArgument(const QByteArray &path);

} // namespace velmora
