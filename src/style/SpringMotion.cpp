#include "style/SpringMotion.h"

#include <cmath>
#include <numbers>

namespace velmora
{

namespace
{

constexpr double restEnvelope = 0.001;

double frequency(double response)
{
    return 2 * std::numbers::pi / response;
}

} // namespace

int SpringMotion::duration() const
{
    const double decay = m_dampingFraction * frequency(m_response);
    return static_cast<int>(std::ceil(-std::log(restEnvelope) / decay * 1000));
}

void SpringMotion::componentComplete()
{
    // The first target is where the spring rests, not where it moves to.
    m_complete = true;
    setValue(m_target);
}

void SpringMotion::setTarget(qreal target)
{
    if (target == m_target) {
        return;
    }
    m_target = target;
    Q_EMIT targetChanged();
    if (!m_complete) {
        return;
    }
    m_startDisplacement = m_value - target;
    m_startVelocity = m_velocity;
    stop();
    start();
}

void SpringMotion::updateCurrentTime(int milliseconds)
{
    if (milliseconds >= duration()) {
        m_velocity = 0;
        setValue(m_target);
        return;
    }
    const double t = milliseconds / 1000.0;
    const double w = frequency(m_response);
    const double decay = m_dampingFraction * w;
    const double d = w * std::sqrt(1 - m_dampingFraction * m_dampingFraction);
    const double envelope = std::exp(-decay * t);
    const double y0 = m_startDisplacement;
    const double v0 = m_startVelocity;
    m_velocity =
        envelope * (v0 * std::cos(d * t) - (w * w * y0 + decay * v0) / d * std::sin(d * t));
    setValue(m_target +
             envelope * (y0 * std::cos(d * t) + (v0 + decay * y0) / d * std::sin(d * t)));
}

void SpringMotion::setValue(qreal value)
{
    if (value != m_value) {
        m_value = value;
        Q_EMIT valueChanged();
    }
}

} // namespace velmora
