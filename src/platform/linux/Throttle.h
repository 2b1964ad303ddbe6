#pragma once

#include "platform/Clock.h"

#include <optional>
#include <utility>

namespace velmora
{

/// Runs a task when it is requested: at once, or, if it ran less than the interval ago, one time at
/// the end of the interval for all requests in between. The last request is never lost.
class Throttle
{
public:
    Throttle(Clock &clock, std::chrono::milliseconds interval, Clock::Task task)
        : m_clock(clock)
        , m_interval(interval)
        , m_task(std::move(task))
    {
    }

    void request()
    {
        if (m_timer)
            return;
        const auto now = m_clock.uptime();
        if (!m_lastRun || now - *m_lastRun >= m_interval) {
            m_lastRun = now; // first, so that a request by the task itself has to wait
            m_task();
            return;
        }
        const auto rest =
            std::chrono::ceil<std::chrono::milliseconds>(*m_lastRun + m_interval - now);
        m_timer = m_clock.after(rest, [this] {
            m_timer.reset();
            m_lastRun = m_clock.uptime();
            m_task();
        });
    }

private:
    Clock &m_clock;
    std::chrono::milliseconds m_interval;
    Clock::Task m_task;
    std::optional<std::chrono::nanoseconds> m_lastRun;
    TimerHandle m_timer;
};

} // namespace velmora
