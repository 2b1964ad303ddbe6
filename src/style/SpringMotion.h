#pragma once

#include <QList>
#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// A damped spring from 0 to 1, at rest at its start, as an easing curve for ordinary animations.
///
/// With the natural frequency w = 2π / response and the damping fraction z (below 1), the spring
/// stands at x(t) = 1 − e^(−zwt) (cos(dt) + (zw / d) sin(dt)), where d = w √(1 − z²).
/// The curve ends where the envelope has fallen to a thousandth.
class SpringMotion : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(qreal response MEMBER m_response NOTIFY changed FINAL)               ///< seconds
    Q_PROPERTY(qreal dampingFraction MEMBER m_dampingFraction NOTIFY changed FINAL) ///< 0 to 1
    Q_PROPERTY(int duration READ duration NOTIFY changed FINAL)                     ///< ms
    /// Control points for Easing.BezierSpline.
    Q_PROPERTY(QList<qreal> curve READ curve NOTIFY changed FINAL)

public:
    using QObject::QObject;

    /// Position at `seconds` after the start.
    [[nodiscard]] double position(double seconds) const;
    [[nodiscard]] int duration() const;
    [[nodiscard]] QList<qreal> curve() const;

Q_SIGNALS:
    void changed();

private:
    [[nodiscard]] double frequency() const;
    [[nodiscard]] double velocity(double seconds) const;

    qreal m_response = 0.3;
    qreal m_dampingFraction = 0.82;
};

} // namespace velmora
