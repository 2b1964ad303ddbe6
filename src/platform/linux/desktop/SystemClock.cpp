#include "platform/linux/desktop/SystemClock.h"

#include <QAbstractAnimation>
#include <QTimer>

#include <ctime>
#include <utility>

namespace velmora
{

namespace
{

/// The task is copied before it runs, since it may destroy the timer that holds it.
void run(const Clock::Task &task)
{
    const Clock::Task copy = task;
    copy();
}

class QtTimer final : public Timer
{
public:
    QtTimer(std::chrono::milliseconds interval, bool repeating, Clock::Task task)
        : m_task(std::move(task))
    {
        m_timer.setSingleShot(!repeating);
        m_timer.setTimerType(repeating ? Qt::CoarseTimer : Qt::PreciseTimer);
        m_timer.callOnTimeout([this] { run(m_task); });
        m_timer.start(interval);
    }

private:
    Clock::Task m_task;
    QTimer m_timer;
};

/// An endless animation: it is driven by the same ticker as the animations of the views, so that
/// both change in the same frame.
class FrameTicker final : public QAbstractAnimation
{
public:
    explicit FrameTicker(Clock::Task task)
        : m_task(std::move(task))
    {
    }

    [[nodiscard]] int duration() const override { return -1; }

protected:
    void updateCurrentTime(int) override
    {
        // Starting an animation reports its first moment from inside start().
        if (m_started) {
            run(m_task);
        }
        m_started = true;
    }

private:
    Clock::Task m_task;
    bool m_started = false;
};

class FrameTimer final : public Timer
{
public:
    explicit FrameTimer(Clock::Task task)
        : m_ticker(new FrameTicker(std::move(task)))
    {
        m_ticker->start();
    }
    FrameTimer(const FrameTimer &) = delete;
    FrameTimer &operator=(const FrameTimer &) = delete;

    // The task that ends the timer runs inside the ticker, which must not be deleted under its
    // feet.
    ~FrameTimer() override
    {
        m_ticker->stop();
        m_ticker->deleteLater();
    }

private:
    FrameTicker *m_ticker;
};

} // namespace

QDateTime SystemClock::now() const
{
    return QDateTime::currentDateTime();
}

std::chrono::nanoseconds SystemClock::uptime() const
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

std::chrono::nanoseconds SystemClock::bootTime() const
{
    timespec time{};
    clock_gettime(CLOCK_BOOTTIME, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

TimerHandle SystemClock::every(std::chrono::milliseconds interval, Task task)
{
    return std::make_unique<QtTimer>(interval, true, std::move(task));
}

TimerHandle SystemClock::after(std::chrono::milliseconds delay, Task task)
{
    return std::make_unique<QtTimer>(delay, false, std::move(task));
}

TimerHandle SystemClock::everyFrame(Task task)
{
    return std::make_unique<FrameTimer>(std::move(task));
}

} // namespace velmora
