#include "overlay/FrameAnimation.h"

#include <algorithm>

namespace velmora
{

namespace
{

/// The usual curve for "ease in and ease out": cubic with control points (0.42, 0), (0.58, 1). Its
/// parameter is found by bisection, since time rises with it all the way.
double easeInEaseOut(double progress)
{
    double low = 0;
    double high = 1;
    double t = progress;
    for (int i = 0; i < 24; ++i) {
        t = (low + high) / 2;
        const double time = 3 * (1 - t) * t * ((1 - t) * 0.42 + t * 0.58) + t * t * t;
        (time < progress ? low : high) = t;
    }
    return t * t * (3 - 2 * t);
}

} // namespace

FrameAnimation::FrameAnimation(const QRectF &frame)
    : m_from(frame)
    , m_to(frame)
{
}

FrameAnimation::FrameAnimation(const QRectF &from, const QRectF &to, Time start, Time duration)
    : m_from(from)
    , m_to(to)
    , m_start(start)
    , m_duration(duration)
{
}

QRectF FrameAnimation::at(Time now) const
{
    if (isFinished(now)) {
        return m_to;
    }
    const double elapsed = std::chrono::duration<double>(now - m_start).count();
    const double total = std::chrono::duration<double>(m_duration).count();
    const double eased = easeInEaseOut(std::max(elapsed / total, 0.0));
    const auto between = [eased](double from, double to) { return from + (to - from) * eased; };
    return {between(m_from.x(), m_to.x()), between(m_from.y(), m_to.y()),
            between(m_from.width(), m_to.width()), between(m_from.height(), m_to.height())};
}

} // namespace velmora
