#pragma once

#include <chrono>
#include <ctime>

namespace velmora::bench
{

using SteadyClock = std::chrono::steady_clock;

/// Milliseconds, with fractions, from one moment to another.
[[nodiscard]] inline double millisecondsBetween(SteadyClock::time_point from,
                                                SteadyClock::time_point to)
{
    return std::chrono::duration<double, std::milli>(to - from).count();
}

/// Sleeps until a moment that is given in absolute terms, so that lateness does not add up.
inline void sleepUntil(SteadyClock::time_point moment)
{
    const auto since = moment.time_since_epoch();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(since);
    const auto rest = std::chrono::duration_cast<std::chrono::nanoseconds>(since - seconds);
    const timespec when{static_cast<time_t>(seconds.count()), static_cast<long>(rest.count())};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &when, nullptr) != 0) {
    }
}

} // namespace velmora::bench
