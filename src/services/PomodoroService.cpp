#include "services/PomodoroService.h"

#include "platform/KeyValueStore.h"
#include "platform/UserNotifications.h"

#include <QUuid>

#include <algorithm>

namespace velmora
{

using namespace std::chrono_literals;

namespace
{

constexpr std::chrono::milliseconds tickInterval = 1s;
/// The timer's tolerance makes some ticks come a little early. They count all the same.
constexpr std::chrono::nanoseconds leastTick = 500ms;

QString settingsKey()
{
    return QStringLiteral("pomodoro_settings_v1");
}

qint64 minutesOf(PomodoroPhase phase, const PomodoroSettings &settings)
{
    switch (phase) {
    case PomodoroPhase::shortBreak:
        return settings.shortBreakMinutes;
    case PomodoroPhase::longBreak:
        return settings.longBreakMinutes;
    case PomodoroPhase::work:
        break;
    }
    return settings.workMinutes;
}

UserNotification announcementOf(PomodoroPhase phase, const PomodoroSettings &settings)
{
    UserNotification notification;
    notification.identifier = QUuid::createUuid().toString(QUuid::WithoutBraces);
    notification.hasSound = true;
    const QString minutes = QString::number(minutesOf(phase, settings));
    switch (phase) {
    case PomodoroPhase::work:
        notification.title = QStringLiteral("Break over \u2014 back to work!");
        notification.body = QStringLiteral("Start your %1-minute focus session.").arg(minutes);
        break;
    case PomodoroPhase::shortBreak:
        notification.title = QStringLiteral("Pomodoro complete!");
        notification.body = QStringLiteral("Take a %1-minute break.").arg(minutes);
        break;
    case PomodoroPhase::longBreak:
        notification.title = QStringLiteral("4 sessions done \u2014 great work!");
        notification.body = QStringLiteral("Take a %1-minute long break.").arg(minutes);
        break;
    }
    return notification;
}

} // namespace

QString rawValue(PomodoroPhase phase)
{
    switch (phase) {
    case PomodoroPhase::shortBreak:
        return QStringLiteral("shortBreak");
    case PomodoroPhase::longBreak:
        return QStringLiteral("longBreak");
    case PomodoroPhase::work:
        break;
    }
    return QStringLiteral("work");
}

PomodoroService::PomodoroService(Clock &clock, KeyValueStore &store,
                                 UserNotifications &notifications, QObject *parent)
    : QObject(parent)
    , m_clock(clock)
    , m_store(store)
    , m_notifications(notifications)
{
    loadSettings();
    m_state.secondsRemaining = phaseDuration();
    m_notifications.requestAuthorization();
}

QString PomodoroService::phaseLabel() const
{
    switch (phase()) {
    case PomodoroPhase::shortBreak:
        return tr("BREAK");
    case PomodoroPhase::longBreak:
        return tr("LONG");
    case PomodoroPhase::work:
        break;
    }
    return tr("WORK");
}

QColor PomodoroService::phaseColor() const
{
    switch (phase()) {
    case PomodoroPhase::shortBreak:
        return QColor::fromRgbF(0.3F, 0.9F, 0.5F);
    case PomodoroPhase::longBreak:
        return QColor::fromRgbF(0.3F, 0.7F, 1.0F);
    case PomodoroPhase::work:
        break;
    }
    return QColor::fromRgbF(1.0F, 0.38F, 0.28F);
}

QString PomodoroService::timeString() const
{
    const QLatin1Char zero('0');
    return QStringLiteral("%1:%2")
        .arg(secondsRemaining() / 60, 2, 10, zero)
        .arg(secondsRemaining() % 60, 2, 10, zero);
}

qint64 PomodoroService::durationOf(const State &state)
{
    return minutesOf(state.phase, state.settings) * 60;
}

double PomodoroService::progressOf(const State &state)
{
    const qint64 duration = durationOf(state);
    if (duration < 1) {
        return 0;
    }
    return 1 - static_cast<double>(state.secondsRemaining) / static_cast<double>(duration);
}

void PomodoroService::loadSettings()
{
    const auto data = m_store.data(settingsKey());
    const auto stored = data ? decodePomodoroSettings(*data) : std::nullopt;
    if (stored) {
        setWorkMinutes(stored->workMinutes);
        setShortBreakMinutes(stored->shortBreakMinutes);
        setLongBreakMinutes(stored->longBreakMinutes);
        setSessionsBeforeLongBreak(stored->sessionsBeforeLongBreak);
    }
}

void PomodoroService::setWorkMinutes(qint64 minutes)
{
    assignLength(&PomodoroSettings::workMinutes, PomodoroPhase::work, minutes);
}

void PomodoroService::setShortBreakMinutes(qint64 minutes)
{
    assignLength(&PomodoroSettings::shortBreakMinutes, PomodoroPhase::shortBreak, minutes);
}

void PomodoroService::setLongBreakMinutes(qint64 minutes)
{
    assignLength(&PomodoroSettings::longBreakMinutes, PomodoroPhase::longBreak, minutes);
}

void PomodoroService::setSessionsBeforeLongBreak(qint64 sessions)
{
    if (!isSessionCount(sessions)) {
        return;
    }
    const State before = m_state;
    m_state.settings.sessionsBeforeLongBreak = sessions;
    save();
    publish(before);
}

/// A length that is assigned while its phase stands still begins anew, even where it is the same.
void PomodoroService::assignLength(qint64 PomodoroSettings::*length, PomodoroPhase timed,
                                   qint64 minutes)
{
    if (!isPhaseLength(minutes)) {
        return;
    }
    const State before = m_state;
    m_state.settings.*length = minutes;
    save();
    if (phase() == timed && !isRunning()) {
        m_state.secondsRemaining = phaseDuration();
    }
    publish(before);
}

void PomodoroService::save()
{
    m_store.setData(settingsKey(), encodePomodoroSettings(m_state.settings));
}

void PomodoroService::start()
{
    if (isRunning()) {
        return;
    }
    const State before = m_state;
    m_state.isRunning = true;
    m_countedUntil = m_clock.bootTime();
    m_timer = m_clock.every(tickInterval, [this] { countWhatPassed(leastTick); });
    publish(before);
}

void PomodoroService::pause()
{
    if (!isRunning()) {
        return;
    }
    // The machine may have slept since the last tick.
    countWhatPassed(tickInterval);
    const State before = m_state;
    stop();
    publish(before);
}

void PomodoroService::reset()
{
    const State before = m_state;
    stop();
    m_state.phase = PomodoroPhase::work;
    m_state.sessionsCompleted = 0;
    m_state.secondsRemaining = phaseDuration();
    publish(before);
}

void PomodoroService::skip()
{
    const State before = m_state;
    advancePhase();
    publish(before);
}

void PomodoroService::stop()
{
    m_state.isRunning = false;
    m_timer.reset();
}

/// Ticks are counted by time rather than one by one: a tick that was late, or kept back by the
/// machine's sleep, brings all the seconds that it missed, and no fraction is ever lost.
void PomodoroService::countWhatPassed(std::chrono::nanoseconds leastForOne)
{
    const auto passed = m_clock.bootTime() - m_countedUntil;
    if (passed < leastForOne) {
        return;
    }
    const auto seconds = std::max(std::chrono::floor<std::chrono::seconds>(passed), 1s);
    m_countedUntil += seconds;
    count(seconds.count());
}

/// The display rests on 00:00 for a second: the phase ends with the second after its last.
void PomodoroService::count(qint64 seconds)
{
    const State before = m_state;
    if (seconds <= m_state.secondsRemaining) {
        m_state.secondsRemaining -= seconds;
    } else {
        advancePhase();
    }
    publish(before);
}

void PomodoroService::advancePhase()
{
    stop();
    if (phase() != PomodoroPhase::work) {
        m_state.phase = PomodoroPhase::work;
    } else if (++m_state.sessionsCompleted >= sessionsBeforeLongBreak()) {
        m_state.phase = PomodoroPhase::longBreak;
        m_state.sessionsCompleted = 0;
    } else {
        m_state.phase = PomodoroPhase::shortBreak;
    }
    m_state.secondsRemaining = phaseDuration();
    m_notifications.add(announcementOf(phase(), m_state.settings));
}

/// Tells of what differs from before, once all of it is in place.
void PomodoroService::publish(const State &before)
{
    const State now = m_state;
    const auto tell = [this](bool hasChanged, void (PomodoroService::*signal)()) {
        if (hasChanged) {
            Q_EMIT(this->*signal)();
        }
    };
    const auto tellLength = [&](qint64 PomodoroSettings::*member,
                                void (PomodoroService::*signal)()) {
        tell(now.settings.*member != before.settings.*member, signal);
    };
    tellLength(&PomodoroSettings::workMinutes, &PomodoroService::workMinutesChanged);
    tellLength(&PomodoroSettings::shortBreakMinutes, &PomodoroService::shortBreakMinutesChanged);
    tellLength(&PomodoroSettings::longBreakMinutes, &PomodoroService::longBreakMinutesChanged);
    tellLength(&PomodoroSettings::sessionsBeforeLongBreak,
               &PomodoroService::sessionsBeforeLongBreakChanged);
    tell(now.phase != before.phase, &PomodoroService::phaseChanged);
    tell(durationOf(now) != durationOf(before), &PomodoroService::phaseDurationChanged);
    tell(now.sessionsCompleted != before.sessionsCompleted,
         &PomodoroService::sessionsCompletedChanged);
    tell(now.secondsRemaining != before.secondsRemaining,
         &PomodoroService::secondsRemainingChanged);
    tell(progressOf(now) != progressOf(before), &PomodoroService::progressChanged);
    tell(now.isRunning != before.isRunning, &PomodoroService::isRunningChanged);
}

} // namespace velmora
