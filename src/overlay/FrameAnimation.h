#pragma once

#include <QRectF>

#include <chrono>

namespace velmora
{

/// A rectangle on its way to another one, easing in and out. Times are those of a monotonic clock.
class FrameAnimation
{
public:
    using Time = std::chrono::nanoseconds;

    FrameAnimation() = default;
    FrameAnimation(const QRectF &from, const QRectF &to, Time start, Time duration);

    [[nodiscard]] QRectF at(Time now) const;
    [[nodiscard]] bool isFinished(Time now) const { return now >= m_start + m_duration; }

private:
    QRectF m_from;
    QRectF m_to;
    Time m_start{};
    Time m_duration{};
};

} // namespace velmora
