#include "widgets/MarqueeMotion.h"

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

constexpr auto measureDelay = 100ms; // the text is laid out by then
constexpr auto firstRest = 1200ms;
constexpr auto rest = 800ms;
constexpr double pointsPerSecond = 36;
constexpr double toleratedOverflow = 2;
constexpr double spaceAfterText = 16;

} // namespace

void MarqueeMotion::componentComplete()
{
    connect(this, &MarqueeMotion::changed, this, &MarqueeMotion::restart);
    restart();
}

void MarqueeMotion::restart()
{
    setOffset(0);
    m_timer = m_clock->after(measureDelay, [this] { measure(); });
}

void MarqueeMotion::measure()
{
    const double overflow = m_textWidth - m_frameWidth;
    if (overflow <= toleratedOverflow) {
        m_timer.reset();
        return;
    }
    m_distance = overflow + spaceAfterText;
    m_timer = m_clock->after(firstRest, [this] { slide(); });
}

void MarqueeMotion::slide()
{
    m_slideBegan = m_clock->uptime();
    m_timer = m_clock->everyFrame([this] { slideStep(); });
}

void MarqueeMotion::slideStep()
{
    const std::chrono::duration<double> passed = m_clock->uptime() - m_slideBegan;
    const double way = passed.count() * pointsPerSecond;
    if (way >= m_distance) {
        m_timer = m_clock->after(rest, [this] { jumpBack(); });
    }
    setOffset(-qMin(way, m_distance));
}

void MarqueeMotion::jumpBack()
{
    m_timer = m_clock->after(rest, [this] { slide(); });
    setOffset(0);
}

void MarqueeMotion::setOffset(qreal offset)
{
    if (offset != m_offset) {
        m_offset = offset;
        Q_EMIT offsetChanged();
    }
}

} // namespace velmora
