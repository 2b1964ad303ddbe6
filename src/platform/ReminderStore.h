#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace velmora
{

/// A task that is still to be done.
struct Reminder {
    QString id;
    QString title;                ///< in one line; may be empty
    std::optional<QDateTime> due; ///< local time; of a date, its first moment

    bool operator==(const Reminder &) const = default;
};

/// The user's reminders. Used on the main thread; all calls return at once and are carried out in
/// their order, so that what is fetched after a change has it. Each is answered once, on the main
/// loop and never inside the call, unless `context` or the store is destroyed before; a change is
/// made all the same. An answer may take seconds.
class ReminderStore : public QObject
{
    Q_OBJECT

public:
    using AccessAnswer = std::function<void(bool granted)>;
    /// Nothing where no list can be read at present.
    using RemindersAnswer = std::function<void(const std::optional<std::vector<Reminder>> &)>;
    /// The identifier of the new reminder; nothing where it could not be stored.
    using AddAnswer = std::function<void(const std::optional<QString> &id)>;
    /// False: not stored, or there is no such open reminder.
    using DoneAnswer = std::function<void(bool succeeded)>;

    /// Asks for permission. May be asked again after a refusal.
    virtual void requestAccess(QObject *context, AccessAnswer done) = 0;
    /// The present answer, without a question.
    virtual void checkAccess(QObject *context, AccessAnswer done) = 0;

    /// The open reminders of all lists, in no order. A recurring one stands there once, with the
    /// occurrence that is open.
    virtual void fetchOpen(QObject *context, RemindersAnswer done) = 0;

    /// Puts a new reminder into the default list. Answered when it is stored for good.
    virtual void add(const QString &title, QObject *context, AddAnswer done) = 0;
    /// Of a recurring reminder, completes the occurrence that is open.
    virtual void complete(const QString &id, QObject *context, DoneAnswer done) = 0;
    /// Of a recurring reminder, removes all of it.
    virtual void remove(const QString &id, QObject *context, DoneAnswer done) = 0;

Q_SIGNALS:
    /// Reminders or access may differ from what was answered last. Comes on the main loop; changes
    /// in quick succession come as one.
    void changed();
};

} // namespace velmora
