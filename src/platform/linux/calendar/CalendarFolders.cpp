#include "platform/linux/calendar/CalendarFolders.h"

#include "platform/linux/calendar/CalendarItem.h"
#include "platform/linux/calendar/ItemFile.h"
#include "platform/linux/calendar/TaskEdits.h"

#include <QTimeZone>
#include <QUuid>

#include <algorithm>
#include <filesystem>
#include <malloc.h>
#include <unistd.h>
#include <utility>

namespace velmora
{

namespace fs = std::filesystem;

namespace
{

constexpr qint64 day = 86400;

bool isFolder(const std::string &path)
{
    std::error_code error;
    return fs::is_directory(path, error);
}

/// The names in a folder, without hidden ones.
std::vector<std::string> namesIn(const std::string &folder)
{
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::string name = entry->path().filename();
        if (name.front() != '.') {
            names.push_back(std::move(name));
        }
    }
    return names;
}

/// What the file "color" of a calendar says; invalid without one.
QColor colorOf(const std::string &calendar)
{
    QByteArray name = readFile(calendar + "/color").value_or(QByteArray()).trimmed().left(64);
    if (name.startsWith('#')) {
        name.truncate(7); // some add an opacity
    }
    return QColor(QString::fromLatin1(name));
}

} // namespace

CalendarFolders::CalendarFolders(std::vector<std::string> roots,
                                 std::shared_ptr<const std::atomic<bool>> cancelled)
    : m_roots(std::move(roots))
    , m_cancelled(std::move(cancelled))
    , m_watch([this](const FolderWatch::Change &change) { noteChange(change); })
{
    icalerror_set_errors_are_fatal(0);
}

CalendarFolders::~CalendarFolders()
{
    icalmemory_free_ring(); // this thread's
}

bool CalendarFolders::isUsable()
{
    std::error_code error;
    fs::create_directories(m_roots.front(), error);
    return std::any_of(m_roots.begin(), m_roots.end(), [](const std::string &root) {
        return isFolder(root) && access(root.c_str(), R_OK | X_OK) == 0;
    });
}

std::optional<std::vector<TimedEvent>> CalendarFolders::events(const TimeWindow &window)
{
    if (!isUsable()) {
        return std::nullopt;
    }
    if (!m_window.covers(window)) {
        m_window = window.widened();
        m_isRead = false;
    }
    update();
    std::vector<TimedEvent> found;
    for (const auto &[path, contents] : m_contents) {
        found.insert(found.end(), contents.events.begin(), contents.events.end());
    }
    return found;
}

std::optional<std::vector<Reminder>> CalendarFolders::reminders()
{
    if (!isUsable()) {
        return std::nullopt;
    }
    update();
    std::vector<Reminder> found;
    for (const auto &[path, contents] : m_contents) {
        found.insert(found.end(), contents.reminders.begin(), contents.reminders.end());
    }
    return found;
}

/// Brings what is in memory up to date.
void CalendarFolders::update()
{
    m_watch.read();
    const bool isWatched =
        std::all_of(m_calendars.begin(), m_calendars.end(),
                    [](const Calendar &calendar) { return calendar.watch >= 0; });
    if (!m_isRead || !isWatched || presentRoots() != m_presentRoots ||
        m_zone != QTimeZone::systemTimeZoneId()) {
        readAll();
        return;
    }
    for (const auto &[watch, name] : std::exchange(m_changedFiles, {})) {
        const auto calendar =
            std::find_if(m_calendars.begin(), m_calendars.end(),
                         [watch = watch](const Calendar &one) { return one.watch == watch; });
        if (calendar != m_calendars.end()) {
            readItem(*calendar, name);
        }
    }
}

std::size_t CalendarFolders::presentRoots() const
{
    return static_cast<std::size_t>(std::count_if(m_roots.begin(), m_roots.end(), &isFolder));
}

void CalendarFolders::readAll()
{
    if (m_window.to == 0) {
        const qint64 now = QDateTime::currentSecsSinceEpoch();
        m_window = TimeWindow{now, now + day}.widened();
    }
    for (const Calendar &calendar : m_calendars) {
        m_watch.remove(calendar.watch);
    }
    m_calendars.clear();
    m_contents.clear();
    m_changedFiles.clear();
    m_presentRoots = presentRoots();
    m_zone = QTimeZone::systemTimeZoneId();
    m_isRead = true;
    // Each folder once, even where links lead to it or in circles.
    std::set<fs::path> seen;
    const auto read = [&](const std::string &path) {
        std::error_code error;
        const fs::path real = fs::canonical(path, error);
        if (!error && isFolder(path) && seen.insert(real).second) {
            readCalendar(path);
        }
    };
    for (const std::string &root : m_roots) {
        read(root);
        for (const std::string &name : namesIn(root)) {
            if (!name.ends_with(".ics")) {
                read(fs::path(root) / name);
            }
        }
    }
    malloc_trim(0);
}

void CalendarFolders::readCalendar(const std::string &path)
{
    // Watched before it is read, so that nothing slips through.
    const int watch = m_watch.add(path);
    m_calendars.push_back({path, colorOf(path), watch, false});
    for (const std::string &name : namesIn(path)) {
        if (name.ends_with(".ics") && !*m_cancelled) {
            readItem(m_calendars.back(), name);
        }
    }
}

void CalendarFolders::readItem(Calendar &calendar, const std::string &name)
{
    const std::string path = calendar.path + '/' + name;
    const CalendarItem item(readFile(path).value_or(QByteArray()));
    Contents contents{item.events(m_window), {}};
    for (TimedEvent &event : contents.events) {
        event.event.color = calendar.color;
    }
    for (OpenTask &task : item.openTasks()) {
        contents.reminders.push_back(std::move(task.reminder));
    }
    calendar.hasTasks = calendar.hasTasks || item.hasTasks();
    if (contents.events.empty() && contents.reminders.empty()) {
        m_contents.erase(path);
    } else {
        m_contents[path] = std::move(contents);
    }
}

void CalendarFolders::noteChange(const FolderWatch::Change &change)
{
    const auto isIt = [&](const Calendar &one) { return one.watch == change.watch; };
    const auto calendar = std::find_if(m_calendars.begin(), m_calendars.end(), isIt);
    if (change.watch >= 0 && calendar == m_calendars.end()) {
        return; // it was watched once
    }
    if (change.watch < 0 || change.name.empty() || change.name == "color") {
        m_isRead = false;
    } else if (change.name.ends_with(".ics")) {
        m_changedFiles.insert({change.watch, change.name});
    } else {
        // Perhaps a calendar that comes or goes.
        const std::string path = calendar->path + '/' + change.name;
        const bool isKnown = std::any_of(m_calendars.begin(), m_calendars.end(),
                                         [&path](const Calendar &one) { return one.path == path; });
        const bool isInRoot =
            std::find(m_roots.begin(), m_roots.end(), calendar->path) != m_roots.end();
        if (change.name.front() == '.' || !isInRoot || isKnown == isFolder(path)) {
            return;
        }
        m_isRead = false;
    }
    if (changed) {
        changed();
    }
}

/// Where a new task goes: the first list of the user's that holds tasks, else one of our own.
std::string CalendarFolders::listForNew()
{
    for (const Calendar &calendar : m_calendars) {
        if (calendar.hasTasks && !calendar.path.starts_with(m_roots.front()) &&
            access(calendar.path.c_str(), W_OK | X_OK) == 0) {
            return calendar.path;
        }
    }
    std::string list = m_roots.front() + "/tasks";
    std::error_code error;
    if (fs::create_directories(list, error)) {
        static_cast<void>(writeFile(list + "/displayname", "Tasks"));
    }
    return list;
}

std::optional<QString> CalendarFolders::add(const QString &title)
{
    update();
    const std::string list = listForNew();
    const QByteArray uid = QUuid::createUuid().toByteArray(QUuid::WithoutBraces);
    const std::string name = uid.toStdString() + ".ics";
    if (!writeFile(list + '/' + name, newTask(uid, title, std::time(nullptr)))) {
        return std::nullopt;
    }
    return QString::fromLatin1(uid);
}

bool CalendarFolders::complete(const QString &id)
{
    return edit(id, [](const QByteArray &text, const QByteArray &uid) {
        return withCompleted(text, uid, std::time(nullptr));
    });
}

bool CalendarFolders::remove(const QString &id)
{
    return edit(id, &withoutTask);
}

bool CalendarFolders::edit(const QString &id, const std::function<Edit> &edit)
{
    update();
    const auto has = [&id](const auto &one) {
        const auto &reminders = one.second.reminders;
        return std::any_of(reminders.begin(), reminders.end(),
                           [&id](const Reminder &reminder) { return reminder.id == id; });
    };
    const auto found = std::find_if(m_contents.begin(), m_contents.end(), has);
    if (found == m_contents.end()) {
        return false;
    }
    const fs::path path = found->first;
    const bool isDone =
        editFile(path, [&](const QByteArray &text) { return edit(text, id.toUtf8()); });
    for (Calendar &calendar : m_calendars) {
        if (calendar.path == path.parent_path()) {
            readItem(calendar, path.filename()); // a link's target is not watched
        }
    }
    return isDone;
}

} // namespace velmora
