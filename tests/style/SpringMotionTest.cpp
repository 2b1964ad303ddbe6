#include "style/SpringMotion.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

using namespace velmora;

class SpringMotionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void restsAtItsFirstTarget();
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

void SpringMotionTest::followsTheEquationOfMotion()
{
    const struct {
        double response;
        double dampingFraction;
        double overshoot; // percent: 100 exp(-πz / √(1 - z²))
    } rows[]{{0.3, 0.82, 1.111}, {0.8, 0.5, 16.303}, {0.05, 0.82, 1.111}};
    for (const auto &[response, dampingFraction, overshoot] : rows) {
        SpringMotion spring;
        spring.setProperty("response", response);
        spring.setProperty("dampingFraction", dampingFraction);
        spring.componentComplete();
        spring.setTarget(100);
        std::vector values{spring.value()};
        for (int ms = 1; ms < spring.duration(); ++ms) {
            spring.setCurrentTime(ms);
            values.push_back(spring.value());
        }
        QCOMPARE(values.front(), 0.0); // no jump at the start
        QVERIFY(values.at(1) < 2);     // nor a start at full speed
        const double w = 2 * std::numbers::pi / response;
        for (std::size_t i = 1; i + 1 < values.size(); ++i) {
            const double velocity = (values[i + 1] - values[i - 1]) / 0.002;
            const double acceleration = (values[i + 1] - 2 * values[i] + values[i - 1]) / 1e-6;
            const double force = -w * w * (values[i] - 100) - 2 * dampingFraction * w * velocity;
            QVERIFY2(std::abs(acceleration - force) < w * w, qPrintable(QString::number(i)));
        }
        const double highest = *std::max_element(values.begin(), values.end());
        QVERIFY2(std::abs(highest - 100 - overshoot) < 0.05, qPrintable(QString::number(highest)));
        // What is left to jump at the end cannot be seen, and the motion does not drag on either.
        QVERIFY(std::abs(values.back() - 100) < 0.2);
        QVERIFY(spring.duration() < 2500 * response);
        spring.setCurrentTime(100'000); // after a stall of the main loop
        QCOMPARE(spring.value(), 100.0);
        QCOMPARE(spring.state(), QAbstractAnimation::Stopped);
        // Nothing of the old velocity is left.
        spring.setTarget(0);
        spring.setCurrentTime(1);
        QVERIFY(100 - spring.value() < 2 && spring.value() < 100);
    }
}

void SpringMotionTest::newTargetsInFlightKeepTheVelocity()
{
    SpringMotion spring;
    spring.componentComplete();
    double last = 0;
    double step = 0; // in the last millisecond
    // On towards the first target, back again, and forth within the same millisecond.
    const std::vector<std::pair<double, int>> flights{{100, 70}, {0, 30}, {100, 0}, {-50, 90}};
    for (const auto &[target, milliseconds] : flights) {
        spring.setTarget(target);
        QCOMPARE(spring.value(), last);
        for (int ms = 1; ms <= milliseconds; ++ms) {
            spring.setCurrentTime(ms);
            QVERIFY(std::abs(spring.value() - last - step) < 0.15);
            step = spring.value() - std::exchange(last, spring.value());
        }
    }
    spring.setCurrentTime(spring.duration());
    QCOMPARE(spring.value(), -50.0);
}

QTEST_GUILESS_MAIN(SpringMotionTest)
#include "SpringMotionTest.moc"
