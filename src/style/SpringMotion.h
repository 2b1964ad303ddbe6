#pragma once

#include <QAbstractAnimation>
#include <QObject>
#include <QQmlParserStatus>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// A value that follows its target as a damped spring does. A new target in mid-flight keeps the
/// velocity, so that nothing jerks.
///
/// With the natural frequency w = 2π / response, the damping fraction z (below 1) and
/// d = w √(1 − z²), a displacement y₀ with velocity v₀ becomes, after t seconds,
/// y(t) = e^(−zwt) (y₀ cos(dt) + (v₀ + zw y₀) / d · sin(dt)).
class SpringMotion : public QAbstractAnimation, public QQmlParserStatus
{
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(qreal response MEMBER m_response NOTIFY shapeChanged FINAL) ///< seconds
    Q_PROPERTY(qreal dampingFraction MEMBER m_dampingFraction NOTIFY shapeChanged FINAL) ///< 0 to 1
    Q_PROPERTY(qreal target READ target WRITE setTarget NOTIFY targetChanged FINAL)
    Q_PROPERTY(qreal value READ value NOTIFY valueChanged FINAL)

public:
    using QAbstractAnimation::QAbstractAnimation;

    [[nodiscard]] qreal target() const { return m_target; }
    void setTarget(qreal target);
    [[nodiscard]] qreal value() const { return m_value; }

    /// Milliseconds until the spring has come to rest, to a thousandth of its way.
    [[nodiscard]] int duration() const override;

    void classBegin() override {}
    void componentComplete() override;

Q_SIGNALS:
    void shapeChanged();
    void targetChanged();
    void valueChanged();

protected:
    void updateCurrentTime(int milliseconds) override;

private:
    void setValue(qreal value);

    qreal m_response = 0.3;
    qreal m_dampingFraction = 0.82;
    qreal m_target = 0;
    qreal m_value = 0;
    qreal m_velocity = 0;          ///< per second, at the last step
    qreal m_startDisplacement = 0; ///< from the target, as the flight began
    qreal m_startVelocity = 0;
    bool m_complete = false;
};

} // namespace velmora
