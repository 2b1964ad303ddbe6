#include "services/TodoService.h"

#include "platform/KeyValueStore.h"

#include <QHash>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <tuple>
#include <utility>

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds remindersInterval = 60s;
constexpr std::chrono::milliseconds completionDelay = 700ms;
constexpr double retentionDays = 7.0;

const QString trashKey = QStringLiteral("todo_trash_v1");
const QString localKey = QStringLiteral("todo_local_v1");

TodoItem mirrorOf(const Reminder &reminder)
{
    return {.id = {},
            .title = reminder.title,
            .isCompleted = false,
            .dueDate = reminder.due && reminder.due->isValid() ? reminder.due : std::nullopt,
            .reminderID = reminder.id};
}

bool areSameButForIds(const TodoItem &one, const TodoItem &other)
{
    TodoItem copy = one;
    copy.id = other.id;
    return copy == other;
}

} // namespace

bool isBlank(const QString &title)
{
    return std::all_of(title.begin(), title.end(), [](QChar character) {
        return character == u'\t' || character.category() == QChar::Separator_Space;
    });
}

TodoService::TodoService(Clock &clock, KeyValueStore &store, ReminderStore &reminders,
                         QObject *parent)
    : QObject(parent)
    , m_clock(clock)
    , m_store(store)
    , m_reminders(reminders)
    , m_access(clock, reminders)
    , m_items(load(localKey, decodeTodoItems))
    , m_trash(load(trashKey, decodeTrashedItems))
    , m_timer(clock.every(remindersInterval, [this] {
        purgeTrash();
        m_access.retry();
        refresh();
    }))
{
    // Completed when the program ended; nothing would take them away any more.
    std::erase_if(m_items, [](const auto &item) { return item.isCompleted; });
    connect(&m_access, &StoreAccess::isGrantedChanged, this, &TodoService::isAuthorizedChanged);
    connect(&m_access, &StoreAccess::readWanted, this, &TodoService::refresh);
}

/// A list that cannot be read is empty, and is kept under another key before it is overwritten.
template<typename Item>
std::vector<Item> TodoService::load(const QString &key,
                                    std::optional<std::vector<Item>> (*decode)(const QByteArray &))
{
    const QByteArray data = m_store.data(key).value_or(QByteArray());
    if (auto items = decode(data)) {
        return *std::move(items);
    }
    for (int number = 1; !data.isEmpty(); ++number) {
        const QString aside = key + QStringLiteral(".unreadable-%1").arg(number);
        const auto kept = m_store.data(aside);
        if (!kept) {
            m_store.setData(aside, data);
        }
        if (!kept || *kept == data) {
            break;
        }
    }
    return {};
}

/// Writes what differs from what is stored: the lists are saved every minute.
void TodoService::save(const QString &key, const QByteArray &data)
{
    if (m_store.data(key) != data) {
        m_store.setData(key, data);
    }
}

void TodoService::saveItems()
{
    save(localKey, encodeTodoItems(m_items));
}

void TodoService::saveTrash()
{
    save(trashKey, encodeTrashedItems(m_trash));
}

void TodoService::purgeTrash()
{
    const QDateTime cutoff = m_clock.now().addSecs(-static_cast<qint64>(retentionDays * 86400));
    const auto purged = std::erase_if(
        m_trash, [&cutoff](const TrashedItem &each) { return each.deletedDate < cutoff; });
    saveTrash();
    if (purged > 0) {
        Q_EMIT trashChanged();
    }
}

void TodoService::refresh()
{
    if (!isAuthorized()) {
        return;
    }
    m_reminders.fetchOpen(this, [this, changes = m_changes](const auto &reminders) {
        if (!reminders) {
            m_access.check();
        } else if (changes != m_changes) {
            refresh(); // what was read meanwhile does not know of the latest change
        } else {
            take(*reminders);
        }
    });
}

/// Local tasks stay, in their order; mirrors are made anew. Among those due at the same time, the
/// order on show holds.
void TodoService::take(const std::vector<Reminder> &reminders)
{
    QHash<QString, int> places;
    std::vector<TodoItem> items;
    for (const TodoItem &item : m_items) {
        if (item.reminderID) {
            places.insert(*item.reminderID, static_cast<int>(places.size()));
        } else {
            items.push_back(item);
        }
    }
    const auto locals = static_cast<std::ptrdiff_t>(items.size());
    for (const Reminder &reminder : reminders) {
        if (!reminder.title.isEmpty()) {
            items.push_back(mirrorOf(reminder));
        }
    }
    // By date and time of day: to ask for the time zone takes long where there are thousands.
    const auto rank = [&places](const TodoItem &mirror) {
        constexpr auto never = std::numeric_limits<qint64>::max();
        return std::tuple(mirror.dueDate ? mirror.dueDate->date().toJulianDay() : never,
                          mirror.dueDate ? mirror.dueDate->time() : QTime(),
                          places.value(*mirror.reminderID, std::numeric_limits<int>::max()));
    };
    std::stable_sort(
        items.begin() + locals, items.end(),
        [&rank](const auto &one, const auto &other) { return rank(one) < rank(other); });
    // With the same tasks again nothing has to be drawn or written.
    if (std::equal(items.begin(), items.end(), m_items.begin(), m_items.end(), areSameButForIds)) {
        return;
    }
    for (TodoItem &item : items) {
        item.id = item.reminderID ? QUuid::createUuid() : item.id;
    }
    m_items = std::move(items);
    Q_EMIT itemsChanged();
    saveItems();
}

void TodoService::add(const QString &title)
{
    if (!isBlank(title)) {
        TodoItem item;
        item.id = QUuid::createUuid();
        item.title = title;
        putOnTop(item);
    }
}

void TodoService::putOnTop(const TodoItem &item)
{
    m_items.insert(m_items.begin(), item);
    Q_EMIT itemsChanged();
    saveItems();
    if (isAuthorized()) {
        addReminder(item);
    }
}

/// The task is a local one until its reminder is stored, and stays one if that fails.
void TodoService::addReminder(const TodoItem &item)
{
    ++m_changes;
    m_reminders.add(item.title, this, [this, id = item.id](const auto &reminderID) {
        if (reminderID) {
            reminderAdded(id, *reminderID);
        }
    });
}

void TodoService::reminderAdded(const QUuid &item, const QString &reminderID)
{
    const auto isItem = [&item](const auto &each) { return each.id == item; };
    const auto found = std::find_if(m_items.begin(), m_items.end(), isItem);
    if (found != m_items.end() && !found->isCompleted) {
        // Its mirror may have come first.
        std::erase_if(m_items, [&](const auto &each) { return each.reminderID == reminderID; });
        std::find_if(m_items.begin(), m_items.end(), isItem)->reminderID = reminderID;
        saveItems();
        return;
    }
    // What the user did to the task meanwhile.
    ++m_changes;
    const bool isInTrash = std::any_of(m_trash.begin(), m_trash.end(),
                                       [&](const auto &each) { return isItem(each.item); });
    if (isInTrash) {
        m_reminders.remove(reminderID, this, [](bool) {});
    } else {
        m_reminders.complete(reminderID, this, [](bool) {});
    }
}

void TodoService::complete(const TodoItem &item)
{
    const auto found = std::find_if(m_items.begin(), m_items.end(),
                                    [&item](const auto &each) { return each.id == item.id; });
    if (found == m_items.end() || found->isCompleted) {
        return;
    }
    found->isCompleted = true;
    const QUuid id = found->id;
    if (isAuthorized() && found->reminderID) {
        ++m_changes;
        m_reminders.complete(*found->reminderID, this, [](bool) {});
    }
    m_completions[id] = m_clock.after(completionDelay, [this, id] { forgetCompleted(QUuid(id)); });
    Q_EMIT itemsChanged();
}

void TodoService::forgetCompleted(const QUuid &id)
{
    std::erase_if(m_items, [&id](const auto &each) { return each.id == id; });
    Q_EMIT itemsChanged();
    saveItems();
    m_completions.erase(id);
}

void TodoService::deleteItem(const TodoItem &item)
{
    const TodoItem deleted = item; // it may be one of those that go
    std::erase_if(m_items, [&deleted](const auto &each) { return each.id == deleted.id; });
    m_trash.insert(m_trash.begin(), {.item = deleted, .deletedDate = m_clock.now()});
    if (isAuthorized() && deleted.reminderID) {
        ++m_changes;
        m_reminders.remove(*deleted.reminderID, this, [](bool) {});
    }
    saveItems();
    saveTrash();
    Q_EMIT itemsChanged();
    Q_EMIT trashChanged();
}

void TodoService::restore(const TodoItem &item)
{
    TodoItem restored = item;
    std::erase_if(m_trash, [&restored](const auto &each) { return each.item.id == restored.id; });
    restored.isCompleted = false;
    if (isAuthorized()) {
        restored.id = QUuid::createUuid();
        restored.reminderID.reset();
    }
    putOnTop(restored);
    saveTrash();
    Q_EMIT trashChanged();
}

} // namespace velmora
