#pragma once

#include "platform/Clock.h"
#include "platform/linux/Throttle.h"
#include "platform/linux/dbus/BusCall.h"

namespace velmora
{

/// One question to a service that is asked whenever its answer may have changed: one at a time, and
/// at most every 30 ms. Until the first reply, failures are repeated after 0.25, 0.5, … 4 s, since
/// services own their name a moment before they export what is behind it, or are slow to start.
class BusInquiry : public QObject
{
    Q_OBJECT

public:
    /// `replied` gets replies only. The clock has to outlive the object.
    BusInquiry(const QDBusConnection &bus, Clock &clock, BusAnswerHandler replied);

    /// The question from now on; replies to an earlier one are dropped.
    void setQuestion(const QDBusMessage &call);
    void request() { m_throttle.request(); }
    [[nodiscard]] bool isAnswered() const { return m_isAnswered; }

private:
    void ask();
    void take(const QDBusMessage &answer);

    QDBusConnection m_bus;
    Clock &m_clock;
    BusAnswerHandler m_replied;
    QDBusMessage m_question;
    int m_round = 0; ///< counts the questions that were set
    int m_failures = 0;
    bool m_isUnderWay = false;
    bool m_isWantedAgain = false;
    bool m_isAnswered = false;
    TimerHandle m_retry;
    Throttle m_throttle;
};

} // namespace velmora
