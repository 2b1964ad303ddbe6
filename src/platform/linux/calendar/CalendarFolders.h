#pragma once

#include "platform/linux/calendar/CalendarSource.h"
#include "platform/linux/calendar/FolderWatch.h"

#include <atomic>
#include <map>
#include <set>
#include <string>

namespace velmora
{

/// Calendars and task lists that are folders of iCalendar files, in the layout of vdirsyncer. Keeps
/// in memory what the files hold for the day that is asked about and the next one, and reads all of
/// them again once that time is over. Watched folders are not read while they stay as they are.
class CalendarFolders final : public CalendarSource
{
public:
    /// Each of the folders may be a calendar, or hold calendars. The first one is made if it is
    /// missing; new reminders go there, unless another one has tasks. Reading is given up when the
    /// flag is set.
    CalendarFolders(std::vector<std::string> roots,
                    std::shared_ptr<const std::atomic<bool>> cancelled);
    CalendarFolders(const CalendarFolders &) = delete;
    CalendarFolders &operator=(const CalendarFolders &) = delete;
    ~CalendarFolders() override;

    /// Whether there is a folder that can be read.
    [[nodiscard]] bool isUsable() override;

    [[nodiscard]] std::optional<std::vector<TimedEvent>> events(const TimeWindow &window) override;
    [[nodiscard]] std::optional<std::vector<Reminder>> reminders() override;
    [[nodiscard]] std::optional<QString> add(const QString &title) override;
    [[nodiscard]] bool complete(const QString &id) override;
    [[nodiscard]] bool remove(const QString &id) override;

private:
    struct Calendar {
        std::string path;
        QColor color;
        int watch = -1;
        bool hasTasks = false;
    };
    struct Contents {
        std::vector<TimedEvent> events; ///< in the time that is kept
        std::vector<Reminder> reminders;
    };

    void update();
    void readAll();
    void readCalendar(const std::string &path);
    void readItem(Calendar &calendar, const std::string &name);
    void noteChange(const FolderWatch::Change &change);
    [[nodiscard]] std::size_t presentRoots() const;
    [[nodiscard]] std::string listForNew();
    using Edit = std::optional<QByteArray>(const QByteArray &text, const QByteArray &uid);
    [[nodiscard]] bool edit(const QString &id, const std::function<Edit> &edit);

    std::vector<std::string> m_roots;
    std::shared_ptr<const std::atomic<bool>> m_cancelled;
    bool m_isRead = false;
    TimeWindow m_window; ///< the time that is kept
    QByteArray m_zone;   ///< of the machine, when that was read
    std::size_t m_presentRoots = 0;
    std::vector<Calendar> m_calendars;                    ///< in the order of the roots
    std::map<std::string, Contents> m_contents;           ///< by path; of files that have any
    std::set<std::pair<int, std::string>> m_changedFiles; ///< watch and name
    FolderWatch m_watch;
};

} // namespace velmora
