#pragma once

#include "platform/Clock.h"

#include <QtGlobal>

#include <algorithm>
#include <map>
#include <utility>

namespace velmora
{

/// Time that stands still until a test advances it. Due tasks run inside `advance`, in the order of
/// their times and, at the same time, in the order in which they were asked for.
class VirtualClock final : public Clock
{
public:
    static constexpr std::chrono::nanoseconds frameInterval{16'666'667};

    [[nodiscard]] QDateTime now() const override
    {
        const auto passed =
            std::chrono::duration_cast<std::chrono::milliseconds>(bootTime() - m_wallSet);
        return m_wall.addMSecs(passed.count());
    }

    [[nodiscard]] std::chrono::nanoseconds uptime() const override { return m_uptime; }

    [[nodiscard]] std::chrono::nanoseconds bootTime() const override { return m_uptime + m_slept; }

    [[nodiscard]] TimerHandle every(std::chrono::milliseconds interval, Task task) override
    {
        return schedule(std::max(interval, std::chrono::milliseconds{1}), Repeat::Yes,
                        std::move(task));
    }

    [[nodiscard]] TimerHandle after(std::chrono::milliseconds delay, Task task) override
    {
        return schedule(std::max(delay, std::chrono::milliseconds{0}), Repeat::No, std::move(task));
    }

    [[nodiscard]] TimerHandle everyFrame(Task task) override
    {
        return schedule(frameInterval, Repeat::Yes, std::move(task));
    }

    /// Lets time pass; `advance(0ms)` runs what is due now.
    void advance(std::chrono::nanoseconds span)
    {
        const auto end = m_uptime + span;
        for (int run = 0; runNext(end); ++run) {
            if (run > 10'000'000)
                qFatal("VirtualClock: a task re-arms itself without letting time pass");
        }
        m_uptime = end;
    }

    /// The machine sleeps: the wall clock goes on, timers stand still.
    void suspend(std::chrono::nanoseconds span) { m_slept += span; }

    /// Sets the wall clock without letting time pass.
    void setNow(const QDateTime &wall)
    {
        m_wall = wall;
        m_wallSet = bootTime();
    }

    /// Timers that would still fire.
    [[nodiscard]] int runningTimers() const
    {
        return static_cast<int>(std::count_if(m_queue.begin(), m_queue.end(), [](const auto &item) {
            return !item.second->isCancelled;
        }));
    }

private:
    enum class Repeat { No, Yes };

    struct Entry {
        std::chrono::nanoseconds interval;
        Repeat repeat;
        Task task;
        bool isCancelled = false;
    };

    /// Shares the entry rather than naming the clock, so that either may die first.
    class Handle final : public Timer
    {
    public:
        explicit Handle(std::shared_ptr<Entry> entry)
            : m_entry(std::move(entry))
        {
        }
        ~Handle() override { m_entry->isCancelled = true; }

    private:
        std::shared_ptr<Entry> m_entry;
    };

    TimerHandle schedule(std::chrono::nanoseconds interval, Repeat repeat, Task task)
    {
        auto entry = std::make_shared<Entry>(Entry{interval, repeat, std::move(task)});
        enqueue(m_uptime + interval, entry);
        return std::make_unique<Handle>(std::move(entry));
    }

    void enqueue(std::chrono::nanoseconds due, std::shared_ptr<Entry> entry)
    {
        m_queue.emplace(std::pair{due, m_sequence++}, std::move(entry));
    }

    bool runNext(std::chrono::nanoseconds end)
    {
        const auto first = m_queue.begin();
        if (first == m_queue.end() || first->first.first > end)
            return false;
        const auto due = first->first.first;
        const auto entry = std::move(first->second);
        m_queue.erase(first);
        if (entry->isCancelled)
            return true;
        m_uptime = due;
        if (entry->repeat == Repeat::Yes)
            enqueue(due + entry->interval, entry);
        entry->task();
        return true;
    }

    std::map<std::pair<std::chrono::nanoseconds, quint64>, std::shared_ptr<Entry>> m_queue;
    quint64 m_sequence = 0;
    std::chrono::nanoseconds m_uptime{0};
    std::chrono::nanoseconds m_slept{0};
    std::chrono::nanoseconds m_wallSet{0};
    QDateTime m_wall{QDate(2024, 5, 15), QTime(10, 0)};
};

} // namespace velmora
