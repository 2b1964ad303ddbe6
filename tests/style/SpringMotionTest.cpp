#include "style/SpringMotion.h"

#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace velmora;

namespace
{

/// The spring by its equation of motion, in small steps: no use of the solution under test.
class Simulation
{
public:
    Simulation(double response, double dampingFraction)
        : m_frequency(2 * std::numbers::pi / response)
        , m_dampingFraction(dampingFraction)
    {
    }

    double target = 0;
    double value = 0;
    double velocity = 0;

    void advance(int milliseconds)
    {
        constexpr int steps = 200; // a millisecond
        const double dt = 0.001 / steps;
        for (int i = 0; i < milliseconds * steps; ++i) {
            const double middle = velocity + acceleration(value, velocity) * dt / 2;
            const double at = value + velocity * dt / 2;
            velocity += acceleration(at, middle) * dt;
            value += middle * dt;
        }
    }

private:
    [[nodiscard]] double acceleration(double at, double speed) const
    {
        return -m_frequency * m_frequency * (at - target) -
               2 * m_dampingFraction * m_frequency * speed;
    }

    double m_frequency;
    double m_dampingFraction;
};

/// Within a millionth of the way of 100 that the tests use.
bool isNear(double value, double expected)
{
    return std::abs(value - expected) < 1e-4;
}

} // namespace

class SpringMotionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void restsAtItsFirstTarget();
    void followsTheEquationOfMotion_data();
    void followsTheEquationOfMotion();
    void newTargetsInFlightKeepTheVelocity();
    void endsAtRest();
};

void SpringMotionTest::restsAtItsFirstTarget()
{
    SpringMotion spring;
    spring.setTarget(40);
    spring.setTarget(200);
    QCOMPARE(spring.state(), QAbstractAnimation::Stopped);
    spring.componentComplete();
    QCOMPARE(spring.value(), 200.0);
    QCOMPARE(spring.state(), QAbstractAnimation::Stopped);
    spring.setTarget(200); // no news, no motion
    QCOMPARE(spring.state(), QAbstractAnimation::Stopped);
}

void SpringMotionTest::followsTheEquationOfMotion_data()
{
    QTest::addColumn<double>("response");
    QTest::addColumn<double>("dampingFraction");
    QTest::addColumn<double>("overshoot"); // percent: 100 exp(-πz / √(1 - z²))
    QTest::newRow("as the notch moves") << 0.3 << 0.82 << 1.111;
    QTest::newRow("slow and loose") << 0.8 << 0.5 << 16.303;
    QTest::newRow("quick") << 0.05 << 0.82 << 1.111;
}

void SpringMotionTest::followsTheEquationOfMotion()
{
    QFETCH(const double, response);
    QFETCH(const double, dampingFraction);
    QFETCH(const double, overshoot);
    SpringMotion spring;
    QVERIFY(spring.setProperty("response", response));
    QVERIFY(spring.setProperty("dampingFraction", dampingFraction));
    spring.componentComplete();
    Simulation simulation(response, dampingFraction);
    simulation.target = 100;
    spring.setTarget(100);
    QCOMPARE(spring.state(), QAbstractAnimation::Running);
    QCOMPARE(spring.value(), 0.0); // no jump at the start

    double highest = 0;
    for (int ms = 1; ms < spring.duration(); ++ms) {
        simulation.advance(1);
        spring.setCurrentTime(ms);
        highest = std::max(highest, spring.value());
        QVERIFY2(isNear(spring.value(), simulation.value),
                 qPrintable(QString::asprintf("%f instead of %f after %d ms", spring.value(),
                                              simulation.value, ms)));
    }
    QVERIFY2(std::abs(highest - 100 - overshoot) < 0.05, qPrintable(QString::number(highest)));
    // What is left to jump at the end cannot be seen, and the motion does not drag on either.
    QVERIFY(std::abs(spring.value() - 100) < 0.2);
    QVERIFY(spring.duration() < 2500 * response);
    spring.setCurrentTime(spring.duration());
    QCOMPARE(spring.value(), 100.0);
    QCOMPARE(spring.state(), QAbstractAnimation::Stopped);
}

void SpringMotionTest::newTargetsInFlightKeepTheVelocity()
{
    SpringMotion spring;
    spring.componentComplete();
    Simulation simulation(0.3, 0.82);
    // On towards the first target, back again, and forth within the same millisecond.
    const std::vector<std::pair<double, int>> flights{{100, 70}, {0, 30}, {100, 0}, {-50, 90}};
    for (const auto &[target, milliseconds] : flights) {
        const double before = spring.value();
        spring.setTarget(target);
        simulation.target = target;
        QCOMPARE(spring.value(), before);
        for (int ms = 1; ms <= milliseconds; ++ms) {
            simulation.advance(1);
            spring.setCurrentTime(ms);
            QVERIFY2(isNear(spring.value(), simulation.value),
                     qPrintable(QString::asprintf("%f instead of %f, %d ms towards %f",
                                                  spring.value(), simulation.value, ms, target)));
        }
    }
    spring.setCurrentTime(spring.duration());
    QCOMPARE(spring.value(), -50.0);
}

void SpringMotionTest::endsAtRest()
{
    SpringMotion spring;
    spring.componentComplete();
    spring.setTarget(100);
    spring.setCurrentTime(60);
    spring.setCurrentTime(100'000); // a stall of the main loop
    QCOMPARE(spring.value(), 100.0);

    // Nothing of the old velocity is left.
    Simulation simulation(0.3, 0.82);
    simulation.value = 100;
    spring.setTarget(0);
    const QSignalSpy changes(&spring, &SpringMotion::valueChanged);
    spring.setCurrentTime(50);
    simulation.advance(50);
    QVERIFY(isNear(spring.value(), simulation.value));
    QCOMPARE(changes.size(), 1);
}

QTEST_GUILESS_MAIN(SpringMotionTest)
#include "SpringMotionTest.moc"
