#pragma once

#include "platform/Clock.h"

namespace velmora
{

/// The machine's time, with timers on the Qt event loop.
class SystemClock final : public Clock
{
public:
    [[nodiscard]] QDateTime now() const override;
    [[nodiscard]] std::chrono::nanoseconds uptime() const override;
    [[nodiscard]] std::chrono::nanoseconds bootTime() const override;
    [[nodiscard]] TimerHandle every(std::chrono::milliseconds interval, Task task) override;
    [[nodiscard]] TimerHandle after(std::chrono::milliseconds delay, Task task) override;
    [[nodiscard]] TimerHandle everyFrame(Task task) override;
};

} // namespace velmora
