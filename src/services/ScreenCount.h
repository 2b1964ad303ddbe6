#pragma once

#include "platform/Clock.h"

#include <QObject>

namespace velmora
{

class Screens;

/// How many screens there are, once they have come to rest: a plug moves the others about for a
/// while, and each move rebuilds the overlays, which therefore cannot count for themselves.
class ScreenCount : public QObject
{
    Q_OBJECT

public:
    /// Both have to outlive it.
    ScreenCount(Clock &clock, Screens &screens, QObject *parent = nullptr);

    [[nodiscard]] int value() const { return m_value; }

Q_SIGNALS:
    /// The screens changed, not necessarily their number.
    void settled();

private:
    Clock &m_clock;
    Screens &m_screens;
    int m_value;
    TimerHandle m_settling;
};

} // namespace velmora
