#pragma once

#include <QByteArray>

#include <functional>
#include <optional>
#include <string>

namespace velmora
{

/// The text of a regular file of at most 16 MB, following links; nothing for all else. Never waits
/// for what is no file.
[[nodiscard]] std::optional<QByteArray> readFile(const std::string &path);

/// Writes a file as a whole: it comes up complete, or not at all.
[[nodiscard]] bool writeFile(const std::string &path, const QByteArray &text);

/// Changes a file by replacing it as a whole. What another program writes meanwhile is read again.
/// `edit` gives the new text, an empty one to remove the file, or nothing to leave it. A link to
/// the file stays.
[[nodiscard]] bool
editFile(const std::string &path,
         const std::function<std::optional<QByteArray>(const QByteArray &)> &edit);

} // namespace velmora
