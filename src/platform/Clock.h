#pragma once

#include <QDateTime>
#include <QObject>

#include <chrono>
#include <functional>
#include <memory>

namespace velmora
{

/// A running timer. Destroying it cancels it; its task does not run again after that.
class Timer
{
public:
    Timer() = default;
    Timer(const Timer &) = delete;
    Timer &operator=(const Timer &) = delete;
    virtual ~Timer() = default;
};

using TimerHandle = std::unique_ptr<Timer>;

/// Time as the rest of the program knows it. Tasks run on the main loop, never inside the call that
/// asks for them. A task may destroy its own timer.
class Clock : public QObject
{
    Q_OBJECT

public:
    using Task = std::function<void()>;

    /// Wall clock in the local time zone.
    [[nodiscard]] virtual QDateTime now() const = 0;

    /// Monotonic time since an arbitrary origin. It stands still while the machine sleeps, and so
    /// do all timers.
    [[nodiscard]] virtual std::chrono::nanoseconds uptime() const = 0;

    /// Monotonic time since an arbitrary origin, the machine's sleep included.
    [[nodiscard]] virtual std::chrono::nanoseconds bootTime() const = 0;

    /// Repeats with a tolerance of some 5 % of the interval, so that wake-ups can be shared.
    [[nodiscard]] virtual TimerHandle every(std::chrono::milliseconds interval, Task task) = 0;

    /// Runs the task once, to the millisecond.
    [[nodiscard]] virtual TimerHandle after(std::chrono::milliseconds delay, Task task) = 0;

    /// Runs the task once for each frame of animation (about 60 a second) in step with the views.
    [[nodiscard]] virtual TimerHandle everyFrame(Task task) = 0;
};

} // namespace velmora
