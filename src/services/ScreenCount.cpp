#include "services/ScreenCount.h"

#include "platform/Screens.h"

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

constexpr auto settleTime = 300ms;

int count(const Screens &screens)
{
    return static_cast<int>(screens.all().size());
}

} // namespace

ScreenCount::ScreenCount(Clock &clock, Screens &screens, QObject *parent)
    : QObject(parent)
    , m_clock(clock)
    , m_screens(screens)
    , m_value(count(screens))
{
    connect(&screens, &Screens::changed, this, [this] {
        m_settling = m_clock.after(settleTime, [this] {
            m_value = count(m_screens);
            Q_EMIT settled();
        });
    });
}

} // namespace velmora
