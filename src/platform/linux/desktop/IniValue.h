#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <variant>

namespace velmora::ini
{

/// What one value of an INI file holds. Kinds of values that nobody here writes (lists, serialised
/// objects) read as nothing; they are never decoded.
using Value = std::variant<QString, QByteArray>;

/// The text right of the equals sign, in the notation of QSettings.
[[nodiscard]] std::optional<Value> parseValue(const QByteArray &text);
[[nodiscard]] QByteArray formatString(const QString &value);
[[nodiscard]] QByteArray formatData(const QByteArray &value);

/// The text left of it, and the names of sections. A group's "/" is "\" in a key.
[[nodiscard]] QString parseKey(const QByteArray &text);
[[nodiscard]] QByteArray formatKey(const QString &key);

} // namespace velmora::ini
