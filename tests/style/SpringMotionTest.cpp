#include "style/SpringMotion.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace velmora;

namespace
{

/// A spring, and what its equation of motion makes of it in small steps: no use of the solution
/// under test.
struct Flight {
    SpringMotion spring;
    double frequency;
    double damping;
    double value = 0;
    double velocity = 0;

    Flight(double response, double dampingFraction)
        : frequency(2 * std::numbers::pi / response)
        , damping(dampingFraction)
    {
        spring.setProperty("response", response);
        spring.setProperty("dampingFraction", dampingFraction);
        spring.componentComplete();
    }

    /// Lets both fly on by a millisecond; whether they are as one, to a millionth of the way.
    bool advance(int milliseconds)
    {
        constexpr int steps = 200;
        const double dt = 0.001 / steps;
        const auto acceleration = [this](double at, double speed) {
            return -frequency * frequency * (at - spring.target()) -
                   2 * damping * frequency * speed;
        };
        for (int i = 0; i < steps; ++i) {
            const double middle = velocity + acceleration(value, velocity) * dt / 2;
            velocity += acceleration(value + velocity * dt / 2, middle) * dt;
            value += middle * dt;
        }
        spring.setCurrentTime(milliseconds);
        return std::abs(spring.value() - value) < 1e-4;
    }
};

} // namespace

class SpringMotionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void restsAtItsFirstTarget();
    void followsTheEquationOfMotion_data();
    void followsTheEquationOfMotion();
    void newTargetsInFlightKeepTheVelocity();
};

void SpringMotionTest::restsAtItsFirstTarget()
{
    SpringMotion spring;
    spring.setTarget(40);
    spring.setTarget(200);
    spring.componentComplete();
    QCOMPARE(spring.value(), 200.0);
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
    Flight flight(response, dampingFraction);
    SpringMotion &spring = flight.spring;
    spring.setTarget(100);
    QCOMPARE(spring.value(), 0.0); // no jump at the start
    double highest = 0;
    for (int ms = 1; ms < spring.duration(); ++ms) {
        QVERIFY2(flight.advance(ms), qPrintable(QString::number(ms)));
        highest = std::max(highest, spring.value());
    }
    QVERIFY2(std::abs(highest - 100 - overshoot) < 0.05, qPrintable(QString::number(highest)));
    // What is left to jump at the end cannot be seen, and the motion does not drag on either.
    QVERIFY(std::abs(spring.value() - 100) < 0.2);
    QVERIFY(spring.duration() < 2500 * response);
    spring.setCurrentTime(100'000); // after a stall of the main loop
    QCOMPARE(spring.value(), 100.0);
    QCOMPARE(spring.state(), QAbstractAnimation::Stopped);

    // Nothing of the old velocity is left.
    spring.setTarget(0);
    flight.value = 100;
    flight.velocity = 0;
    QVERIFY(flight.advance(1));
}

void SpringMotionTest::newTargetsInFlightKeepTheVelocity()
{
    Flight flight(0.3, 0.82);
    // On towards the first target, back again, and forth within the same millisecond.
    const std::vector<std::pair<double, int>> flights{{100, 70}, {0, 30}, {100, 0}, {-50, 90}};
    for (const auto &[target, milliseconds] : flights) {
        const double before = flight.spring.value();
        flight.spring.setTarget(target);
        QCOMPARE(flight.spring.value(), before);
        for (int ms = 1; ms <= milliseconds; ++ms) {
            QVERIFY2(flight.advance(ms), qPrintable(QString::number(ms)));
        }
    }
    flight.spring.setCurrentTime(flight.spring.duration());
    QCOMPARE(flight.spring.value(), -50.0);
}

QTEST_GUILESS_MAIN(SpringMotionTest)
#include "SpringMotionTest.moc"
