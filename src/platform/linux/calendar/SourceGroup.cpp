#include "platform/linux/calendar/SourceGroup.h"

#include <QPointer>

#include <algorithm>
#include <set>

namespace velmora
{

void SourceGroup::add(SourceFactory factory)
{
    auto thread = std::make_unique<SourceThread>(std::move(factory));
    connect(thread.get(), &SourceThread::changed, this, &SourceGroup::changed);
    m_members.push_back(std::make_unique<Member>(Member{std::move(thread)}));
    Q_EMIT changed();
}

void SourceGroup::askAny(const std::function<bool(CalendarSource &source)> &question,
                         const std::function<void(bool isYes)> &done)
{
    const auto missing = std::make_shared<std::size_t>(m_members.size()); // 0: answered
    for (const auto &member : m_members) {
        member->thread->ask(question, [missing, done](bool isYes) {
            if (*missing > 0) {
                *missing = isYes ? 0 : *missing - 1;
                if (*missing == 0) {
                    done(isYes);
                }
            }
        });
    }
}

void SourceGroup::addReminder(const QString &title, const ReminderStore::AddAnswer &done)
{
    addTo(m_members.size() - 1, title, done);
}

void SourceGroup::addTo(std::size_t member, const QString &title,
                        const ReminderStore::AddAnswer &done)
{
    m_members[member]->thread->ask([title](CalendarSource &source) { return source.add(title); },
                                   [=, this](const std::optional<QString> &id) {
                                       if (!id && member > 0) {
                                           addTo(member - 1, title, done);
                                       } else {
                                           done(id);
                                       }
                                   });
}

namespace
{

/// What lies in the window, each once, by start.
std::vector<CalendarEvent> merged(std::vector<TimedEvent> events, const TimeWindow &window)
{
    std::set<std::pair<QString, qint64>> seen;
    std::erase_if(events, [&](const TimedEvent &one) {
        return !window.overlaps(one.start, one.end) ||
               (!one.event.id.isEmpty() && !seen.emplace(one.event.id, one.start).second);
    });
    std::stable_sort(events.begin(), events.end(),
                     [](const auto &a, const auto &b) { return a.start < b.start; });
    std::vector<CalendarEvent> sorted;
    sorted.reserve(events.size());
    for (TimedEvent &one : events) {
        sorted.push_back(std::move(one.event));
    }
    return sorted;
}

/// The role and whoever asked have to be there still.
template<typename Answer>
auto guarded(QObject *role, QObject *context, Answer done)
{
    return [role = QPointer<QObject>(role), context = QPointer<QObject>(context),
            done = std::move(done)](const auto &answer) {
        if (role && context) {
            done(answer);
        }
    };
}

/// What both roles have.
template<typename Role>
class GroupRole : public Role
{
public:
    explicit GroupRole(std::shared_ptr<SourceGroup> group)
        : m_group(std::move(group))
    {
        QObject::connect(m_group.get(), &SourceGroup::changed, this, &Role::changed);
    }

    void requestAccess(QObject *context, typename Role::AccessAnswer done) override
    {
        checkAccess(context, std::move(done)); // there is nobody to ask
    }
    void checkAccess(QObject *context, typename Role::AccessAnswer done) override
    {
        m_group->askAny([](CalendarSource &source) { return source.isUsable(); },
                        guarded(this, context, std::move(done)));
    }

protected:
    SourceGroup &group() { return *m_group; }

private:
    std::shared_ptr<SourceGroup> m_group;
};

class GroupCalendar final : public GroupRole<CalendarStore>
{
public:
    using GroupRole::GroupRole;

    void fetchEvents(const QDateTime &from, const QDateTime &to, QObject *context,
                     EventsAnswer done) override
    {
        const TimeWindow window{from.toSecsSinceEpoch(), to.toSecsSinceEpoch()};
        const auto merge = [window, answer = guarded(this, context, std::move(done))](auto events) {
            answer(events ? std::optional(merged(std::move(*events), window)) : std::nullopt);
        };
        group().collect<TimedEvent>(
            [window](CalendarSource &source) { return source.events(window); }, merge);
    }
};

class GroupReminders final : public GroupRole<ReminderStore>
{
public:
    using GroupRole::GroupRole;

    void fetchOpen(QObject *context, RemindersAnswer done) override
    {
        const auto merge = [answer = guarded(this, context, std::move(done))](auto reminders) {
            if (reminders) {
                std::set<QString> seen;
                std::erase_if(*reminders, [&seen](const Reminder &reminder) {
                    return !seen.insert(reminder.id).second;
                });
            }
            answer(reminders);
        };
        group().collect<Reminder>([](CalendarSource &source) { return source.reminders(); }, merge);
    }
    void add(const QString &title, QObject *context, AddAnswer done) override
    {
        group().addReminder(title, guarded(this, context, std::move(done)));
    }
    void complete(const QString &id, QObject *context, DoneAnswer done) override
    {
        group().askAny([id](CalendarSource &source) { return source.complete(id); },
                       guarded(this, context, std::move(done)));
    }
    void remove(const QString &id, QObject *context, DoneAnswer done) override
    {
        group().askAny([id](CalendarSource &source) { return source.remove(id); },
                       guarded(this, context, std::move(done)));
    }
};

} // namespace

CalendarStores storesOver(const std::shared_ptr<SourceGroup> &group)
{
    return {std::make_unique<GroupCalendar>(group), std::make_unique<GroupReminders>(group)};
}

} // namespace velmora
