#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QObject>
#include <QString>
#include <QUuid>
#include <QtQml/qqmlregistration.h>

#include <optional>
#include <vector>

namespace velmora
{

/// A task: a local one, or the mirror of a reminder.
struct TodoItem {
    Q_GADGET
    QML_VALUE_TYPE(todoItem)
    Q_PROPERTY(QString title READ line)
    Q_PROPERTY(bool isCompleted MEMBER isCompleted)

public:
    QUuid id;
    QString title; ///< as it was typed
    bool isCompleted = false;
    std::optional<QDateTime> dueDate;
    std::optional<QString> reminderID;

    /// The title on one line.
    [[nodiscard]] QString line() const { return title.simplified(); }

    friend bool operator==(const TodoItem &, const TodoItem &) = default;
};

struct TrashedItem {
    TodoItem item;
    QDateTime deletedDate;

    friend bool operator==(const TrashedItem &, const TrashedItem &) = default;
};

/// Their stored form. Decoding gives nothing unless all of the list can be read.
[[nodiscard]] QByteArray encodeTodoItems(const std::vector<TodoItem> &items);
[[nodiscard]] QByteArray encodeTrashedItems(const std::vector<TrashedItem> &trash);
[[nodiscard]] std::optional<std::vector<TodoItem>> decodeTodoItems(const QByteArray &data);
[[nodiscard]] std::optional<std::vector<TrashedItem>> decodeTrashedItems(const QByteArray &data);

} // namespace velmora
