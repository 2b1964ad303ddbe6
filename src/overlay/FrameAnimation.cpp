#include "overlay/FrameAnimation.h"

#include <QEasingCurve>

namespace velmora
{

namespace
{

/// The usual curve for "ease in and ease out".
double easeInEaseOut(double progress)
{
    static const QEasingCurve curve = [] {
        QEasingCurve cubic(QEasingCurve::BezierSpline);
        cubic.addCubicBezierSegment({0.42, 0}, {0.58, 1}, {1, 1});
        return cubic;
    }();
    return curve.valueForProgress(progress);
}

} // namespace

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
    const double eased = easeInEaseOut(elapsed / total);
    const auto between = [eased](double from, double to) { return from + (to - from) * eased; };
    return {between(m_from.x(), m_to.x()), between(m_from.y(), m_to.y()),
            between(m_from.width(), m_to.width()), between(m_from.height(), m_to.height())};
}

} // namespace velmora
