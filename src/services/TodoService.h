#pragma once

#include "platform/Clock.h"
#include "platform/ReminderStore.h"
#include "services/StoreAccess.h"
#include "services/TodoItem.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <map>
#include <vector>

namespace velmora
{

class KeyValueStore;

/// Whether a title has nothing but blanks and tabs.
[[nodiscard]] bool isBlank(const QString &title);

/// One list of tasks: local ones first, then mirrors of the open reminders by their due date; and a
/// trash that keeps deleted ones for seven days. Both lists are stored. What is done to a mirror is
/// done to its reminder, whose store answers later: the list never waits for it. Main thread only.
class TodoService : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made once by the program")

public:
    /// What is handed in has to outlive the service.
    TodoService(Clock &clock, KeyValueStore &store, ReminderStore &reminders,
                QObject *parent = nullptr);

    [[nodiscard]] const std::vector<TodoItem> &items() const { return m_items; }
    /// The latest first.
    [[nodiscard]] const std::vector<TrashedItem> &trash() const { return m_trash; }
    /// Without, reminders are neither read nor changed, and all tasks are local.
    [[nodiscard]] bool isAuthorized() const { return m_access.isGranted(); }

    /// A title that is being typed. Not stored; it outlives the view.
    [[nodiscard]] QString draft() const { return m_draft; }
    void setDraft(const QString &title) { m_draft = title; }

    /// Puts a new task to the top, and into the default list of reminders. Nothing but blanks is no
    /// title.
    void add(const QString &title);
    /// Marks a task, which goes after 0.7 seconds.
    void complete(const TodoItem &item);
    /// Moves a task to the trash, and removes its reminder.
    void deleteItem(const TodoItem &item);
    /// Moves a task from the trash back to the top, with a new reminder.
    void restore(const TodoItem &item);

    /// Asks the user, once in the life of an installation.
    void requestAccess() { m_access.request(); }
    /// Takes the store's present answer, without a question.
    void checkAccess() { m_access.check(); }

    /// Reads the reminders anew.
    void refresh();

Q_SIGNALS:
    void isAuthorizedChanged();
    void itemsChanged();
    void trashChanged();

private:
    template<typename Item>
    std::vector<Item> load(const QString &key,
                           std::optional<std::vector<Item>> (*decode)(const QByteArray &));
    void save(const QString &key, const QByteArray &data);
    void saveItems();
    void saveTrash();

    void purgeTrash();
    void putOnTop(const TodoItem &item);
    void addReminder(const TodoItem &item);
    void reminderAdded(const QUuid &item, const QString &reminderID);
    void forgetCompleted(const QUuid &id);
    void take(const std::vector<Reminder> &reminders);

    Clock &m_clock;
    KeyValueStore &m_store;
    ReminderStore &m_reminders;
    StoreAccess m_access;
    std::vector<TodoItem> m_items;
    std::vector<TrashedItem> m_trash;
    QString m_draft;
    std::map<QUuid, TimerHandle> m_completions;
    int m_changes = 0; ///< asked of the reminders so far
    TimerHandle m_timer;
};

} // namespace velmora
