#include "platform/linux/dbus/BusInquiry.h"

#include <utility>

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

constexpr auto shortestInterval = 30ms;
constexpr auto firstRetryDelay = 250ms;
constexpr int maximumRetries = 5;

} // namespace

BusInquiry::BusInquiry(const QDBusConnection &bus, Clock &clock, BusAnswerHandler replied)
    : m_bus(bus)
    , m_clock(clock)
    , m_replied(std::move(replied))
    , m_throttle(clock, shortestInterval, [this] { ask(); })
{
}

void BusInquiry::setQuestion(const QDBusMessage &call)
{
    m_question = call;
    ++m_round;
    m_failures = 0;
    m_isUnderWay = m_isWantedAgain = m_isAnswered = false;
    m_retry.reset();
}

void BusInquiry::ask()
{
    if (m_question.type() != QDBusMessage::MethodCallMessage)
        return;
    m_isWantedAgain = m_isUnderWay;
    if (m_isUnderWay)
        return;
    m_isUnderWay = true;
    callBus(m_bus, m_question, this, [this, round = m_round](const QDBusMessage &answer) {
        if (round == m_round)
            take(answer);
    });
}

void BusInquiry::take(const QDBusMessage &answer)
{
    m_isUnderWay = false;
    if (std::exchange(m_isWantedAgain, false))
        request();
    else if (!isReply(answer) && !m_isAnswered && m_failures < maximumRetries)
        m_retry = m_clock.after(firstRetryDelay * (1 << m_failures++), [this] { request(); });
    if (!isReply(answer))
        return;
    m_isAnswered = true;
    m_replied(answer);
}

} // namespace velmora
