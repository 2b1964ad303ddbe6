#pragma once

#include "platform/Clock.h"

namespace velmora
{

/// A clock with one timer, which fires when the test says, whatever time it is then.
struct HandClock final : Clock {
    std::chrono::nanoseconds time{0};
    Task task;

    QDateTime now() const override { return {}; }
    std::chrono::nanoseconds uptime() const override { return time; }
    std::chrono::nanoseconds bootTime() const override { return time; }
    TimerHandle every(std::chrono::milliseconds, Task repeated) override
    {
        task = std::move(repeated);
        return std::make_unique<Timer>();
    }
    TimerHandle after(std::chrono::milliseconds, Task) override { return {}; }
    TimerHandle everyFrame(Task) override { return {}; }

    void fireAt(std::chrono::nanoseconds moment)
    {
        time = moment;
        const Task copy = task;
        copy();
    }
};

} // namespace velmora
