#include "style/SpringMotion.h"

#include <cmath>
#include <numbers>

namespace velmora
{

namespace
{
constexpr double restEnvelope = 0.001;
constexpr int segments = 16;
} // namespace

double SpringMotion::frequency() const { return 2 * std::numbers::pi / m_response; }

double SpringMotion::position(double seconds) const
{
    const double w = frequency();
    const double z = m_dampingFraction;
    const double d = w * std::sqrt(1 - z * z);
    return 1 - std::exp(-z * w * seconds) *
                   (std::cos(d * seconds) + z * w / d * std::sin(d * seconds));
}

double SpringMotion::velocity(double seconds) const
{
    const double w = frequency();
    const double z = m_dampingFraction;
    const double d = w * std::sqrt(1 - z * z);
    return w * w / d * std::exp(-z * w * seconds) * std::sin(d * seconds);
}

int SpringMotion::duration() const
{
    return static_cast<int>(
        std::ceil(-std::log(restEnvelope) / (m_dampingFraction * frequency()) * 1000));
}

QList<qreal> SpringMotion::curve() const
{
    // Each piece is the cubic with the spring's own positions and velocities at both ends.
    const double total = duration() / 1000.0;
    const double step = 1.0 / segments;
    QList<qreal> points;
    for (int i = 0; i < segments; ++i) {
        const double from = i * step;
        const double to = from + step;
        const double end = i == segments - 1 ? 1.0 : position(to * total);
        points << from + step / 3 << position(from * total) + velocity(from * total) * total * step / 3
               << to - step / 3 << end - velocity(to * total) * total * step / 3 << to << end;
    }
    return points;
}

} // namespace velmora
