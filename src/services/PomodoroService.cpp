#include "services/PomodoroService.h"

#include "platform/KeyValueStore.h"
#include "platform/UserNotifications.h"
#include "style/Accents.h"

#include <QUuid>

#include <algorithm>
#include <array>

namespace velmora
{

using namespace std::chrono_literals;

namespace
{

constexpr std::chrono::milliseconds tickInterval = 1s;
/// The timer's tolerance makes some ticks come a little early. They count all the same.
constexpr std::chrono::nanoseconds leastTick = 500ms;

const QString settingsKey = QStringLiteral("pomodoro_settings_v1");

struct PhaseTraits {
    const char *label;
    const QColor &color;
    qint64 PomodoroSettings::*minutes;
    QString title; ///< of the notification when it begins
    QString body;
};

/// By the order of the phases.
const PhaseTraits &traitsOf(PomodoroPhase phase)
{
    static const std::array<PhaseTraits, 3> traits{{
        {QT_TRANSLATE_NOOP("velmora::PomodoroService", "WORK"), accent::red,
         &PomodoroSettings::workMinutes, QStringLiteral("Break over \u2014 back to work!"),
         QStringLiteral("Start your %1-minute focus session.")},
        {QT_TRANSLATE_NOOP("velmora::PomodoroService", "BREAK"), accent::green,
         &PomodoroSettings::shortBreakMinutes, QStringLiteral("Pomodoro complete!"),
         QStringLiteral("Take a %1-minute break.")},
        {QT_TRANSLATE_NOOP("velmora::PomodoroService", "LONG"), accent::blue,
         &PomodoroSettings::longBreakMinutes, QStringLiteral("4 sessions done \u2014 great work!"),
         QStringLiteral("Take a %1-minute long break.")},
    }};
    return traits.at(static_cast<std::size_t>(phase));
}

UserNotification announcementOf(PomodoroPhase phase, const PomodoroSettings &settings)
{
    const PhaseTraits &traits = traitsOf(phase);
    return {.identifier = QUuid::createUuid().toString(QUuid::WithoutBraces),
            .title = traits.title,
            .body = traits.body.arg(settings.*traits.minutes),
            .hasSound = true};
}

} // namespace

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
    return tr(traitsOf(phase()).label);
}

QColor PomodoroService::phaseColor() const
{
    return traitsOf(phase()).color;
}

QString PomodoroService::timeString() const
{
    return QString::asprintf("%02lld:%02lld", secondsRemaining() / 60, secondsRemaining() % 60);
}

qint64 PomodoroService::durationOf(const State &state)
{
    return state.settings.*traitsOf(state.phase).minutes * 60;
}

double PomodoroService::progressOf(const State &state)
{
    const auto duration = static_cast<double>(durationOf(state));
    return duration < 1 ? 0 : 1 - static_cast<double>(state.secondsRemaining) / duration;
}

void PomodoroService::loadSettings()
{
    const auto data = m_store.data(settingsKey);
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
    m_store.setData(settingsKey, encodePomodoroSettings(m_state.settings));
}

void PomodoroService::start()
{
    if (!isRunning()) {
        const State before = m_state;
        m_state.isRunning = true;
        m_countedUntil = m_clock.bootTime();
        m_timer = m_clock.every(tickInterval, [this] { countWhatPassed(leastTick); });
        publish(before);
    }
}

void PomodoroService::pause()
{
    if (isRunning()) {
        countWhatPassed(tickInterval); // the machine may have slept since the last tick
        const State before = m_state;
        stop();
        publish(before);
    }
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
    if (passed >= leastForOne) {
        const auto seconds = std::max(std::chrono::floor<std::chrono::seconds>(passed), 1s);
        m_countedUntil += seconds;
        count(seconds.count());
    }
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
    tell(now.settings != before.settings, &PomodoroService::settingsChanged);
    tell(now.phase != before.phase, &PomodoroService::phaseChanged);
    tell(now.sessionsCompleted != before.sessionsCompleted,
         &PomodoroService::sessionsCompletedChanged);
    tell(now.secondsRemaining != before.secondsRemaining,
         &PomodoroService::secondsRemainingChanged);
    tell(durationOf(now) != durationOf(before) || progressOf(now) != progressOf(before),
         &PomodoroService::progressChanged);
    tell(now.isRunning != before.isRunning, &PomodoroService::isRunningChanged);
}

} // namespace velmora
