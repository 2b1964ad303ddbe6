#pragma once

#include <QByteArray>
#include <QString>

#include <ctime>
#include <optional>

namespace velmora
{

/// The text of a new file with one open task.
[[nodiscard]] QByteArray newTask(const QByteArray &uid, const QString &title, time_t now);

/// The text with the task, or its occurrence that is open, completed. Every other line stays as it
/// is. Nothing if there is no such open task.
[[nodiscard]] std::optional<QByteArray> withCompleted(const QByteArray &text, const QByteArray &uid,
                                                      time_t now);

/// The text without the task and all its occurrences; empty if it held nothing else. Nothing if
/// there is no such task.
[[nodiscard]] std::optional<QByteArray> withoutTask(const QByteArray &text, const QByteArray &uid);

} // namespace velmora
