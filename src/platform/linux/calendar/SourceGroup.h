#pragma once

#include "platform/linux/calendar/CalendarStores.h"
#include "platform/linux/calendar/SourceThread.h"

#include <QTimer>

#include <chrono>
#include <tuple>

namespace velmora
{

/// Several sources as one. A source that is much slower than another holds it up no longer than a
/// moment: what it said last takes the place of its answer, and `changed` tells when that was
/// wrong.
class SourceGroup : public QObject
{
    Q_OBJECT

public:
    /// At any time.
    void add(SourceFactory factory);
    [[nodiscard]] std::size_t size() const { return m_members.size(); }

    /// Whether one of the sources says yes; with the first one that does.
    void askAny(const std::function<bool(CalendarSource &source)> &question,
                const std::function<void(bool isYes)> &done);

    /// What all sources answer, one after the other; nothing if none of them ever answered.
    template<typename Value>
    void collect(const std::function<std::optional<std::vector<Value>>(CalendarSource &)> &question,
                 const std::function<void(std::optional<std::vector<Value>>)> &done);

    /// Into the source that was added last or, where that fails, the one before it.
    void addReminder(const QString &title, const ReminderStore::AddAnswer &done);

Q_SIGNALS:
    void changed();

private:
    template<typename Value>
    using Values = std::optional<std::vector<Value>>;

    struct Member {
        std::unique_ptr<SourceThread> thread;
        std::tuple<Values<TimedEvent>, Values<Reminder>> last{}; ///< what it said
    };

    void addTo(std::size_t member, const QString &title, const ReminderStore::AddAnswer &done);

    std::vector<std::unique_ptr<Member>> m_members;
};

template<typename Value>
void SourceGroup::collect(
    const std::function<std::optional<std::vector<Value>>(CalendarSource &)> &question,
    const std::function<void(std::optional<std::vector<Value>>)> &done)
{
    static constexpr auto patience = std::chrono::milliseconds(300);
    struct Round {
        std::size_t missing = 0;
        bool isDone = false;
    };
    const auto round = std::make_shared<Round>(Round{m_members.size()});
    const auto finish = [this, round, done] {
        if (std::exchange(round->isDone, true)) {
            return;
        }
        Values<Value> all;
        for (const auto &member : m_members) {
            if (const auto &last = std::get<Values<Value>>(member->last)) {
                all = all ? std::move(all) : std::vector<Value>();
                all->insert(all->end(), last->begin(), last->end());
            }
        }
        done(std::move(all));
    };
    for (const auto &member : m_members) {
        member->thread->ask(question, [this, round, finish, &member = *member](auto values) {
            auto &last = std::get<Values<Value>>(member.last);
            const bool isNews = values && values != last;
            if (isNews) {
                last = std::move(values);
            }
            --round->missing;
            if (round->isDone && isNews) {
                Q_EMIT changed();
            } else if (round->missing == 0) {
                finish();
            } else {
                QTimer::singleShot(patience, this, finish);
            }
        });
    }
}

/// Both roles over a group, which lives as long as one of the two.
[[nodiscard]] CalendarStores storesOver(const std::shared_ptr<SourceGroup> &group);

} // namespace velmora
