#pragma once

#include "platform/Clock.h"
#include "services/PomodoroSettings.h"

#include <QColor>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

class KeyValueStore;
class UserNotifications;

enum class PomodoroPhase { work, shortBreak, longBreak };

/// The focus timer: work sessions and breaks, counted down in whole seconds. Each phase is started
/// by hand; its end is told by a notification. Only the lengths are stored, so a new process begins
/// with the first work session. Main thread only.
class PomodoroService : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made once by the program")

    // Counts are doubles to the views: their language knows no integers of 64 bits.
    Q_PROPERTY(QString phaseLabel READ phaseLabel NOTIFY phaseChanged FINAL)
    Q_PROPERTY(QColor phaseColor READ phaseColor NOTIFY phaseChanged FINAL)
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY isRunningChanged FINAL)
    Q_PROPERTY(double secondsRemaining READ secondsRemaining NOTIFY secondsRemainingChanged FINAL)
    /// Minutes and seconds, "25:00"; minutes are not wrapped into hours.
    Q_PROPERTY(QString timeString READ timeString NOTIFY secondsRemainingChanged FINAL)
    /// The whole length of the phase in seconds.
    Q_PROPERTY(double phaseDuration READ phaseDuration NOTIFY progressChanged FINAL)
    /// The part of the phase that is over: 0 to 1, or below 0 where its length was cut meanwhile.
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged FINAL)
    /// Work sessions since the last long break.
    Q_PROPERTY(
        double sessionsCompleted READ sessionsCompleted NOTIFY sessionsCompletedChanged FINAL)

    Q_PROPERTY(double workMinutes READ workMinutes NOTIFY settingsChanged FINAL)
    Q_PROPERTY(double shortBreakMinutes READ shortBreakMinutes NOTIFY settingsChanged FINAL)
    Q_PROPERTY(double longBreakMinutes READ longBreakMinutes NOTIFY settingsChanged FINAL)
    Q_PROPERTY(
        double sessionsBeforeLongBreak READ sessionsBeforeLongBreak NOTIFY settingsChanged FINAL)

public:
    /// What is handed in has to outlive the service.
    PomodoroService(Clock &clock, KeyValueStore &store, UserNotifications &notifications,
                    QObject *parent = nullptr);

    [[nodiscard]] PomodoroPhase phase() const { return m_state.phase; }
    [[nodiscard]] QString phaseLabel() const;
    [[nodiscard]] QColor phaseColor() const;
    [[nodiscard]] bool isRunning() const { return m_state.isRunning; }
    [[nodiscard]] qint64 secondsRemaining() const { return m_state.secondsRemaining; }
    [[nodiscard]] QString timeString() const;
    [[nodiscard]] qint64 phaseDuration() const { return durationOf(m_state); }
    [[nodiscard]] double progress() const { return progressOf(m_state); }
    [[nodiscard]] qint64 sessionsCompleted() const { return m_state.sessionsCompleted; }

    [[nodiscard]] qint64 workMinutes() const { return m_state.settings.workMinutes; }
    [[nodiscard]] qint64 shortBreakMinutes() const { return m_state.settings.shortBreakMinutes; }
    [[nodiscard]] qint64 longBreakMinutes() const { return m_state.settings.longBreakMinutes; }
    [[nodiscard]] qint64 sessionsBeforeLongBreak() const
    {
        return m_state.settings.sessionsBeforeLongBreak;
    }
    /// Assigning one of these stores all four. A value that cannot be used is ignored.
    void setWorkMinutes(qint64 minutes);
    void setShortBreakMinutes(qint64 minutes);
    void setLongBreakMinutes(qint64 minutes);
    void setSessionsBeforeLongBreak(qint64 sessions);

    /// Begins or continues the countdown.
    Q_INVOKABLE void start();
    /// Stops the countdown where it is.
    Q_INVOKABLE void pause();
    /// Back to the beginning of the first work session.
    Q_INVOKABLE void reset();
    /// Ends the phase now, as if it had run out.
    Q_INVOKABLE void skip();

Q_SIGNALS:
    void phaseChanged();
    void isRunningChanged();
    void secondsRemainingChanged();
    void progressChanged();
    void sessionsCompletedChanged();
    void settingsChanged();

private:
    struct State {
        PomodoroSettings settings;
        PomodoroPhase phase = PomodoroPhase::work;
        qint64 secondsRemaining = 1500;
        bool isRunning = false;
        qint64 sessionsCompleted = 0;
    };

    [[nodiscard]] static qint64 durationOf(const State &state);
    [[nodiscard]] static double progressOf(const State &state);

    void loadSettings();
    void assignLength(qint64 PomodoroSettings::*length, PomodoroPhase timed, qint64 minutes);
    void save();
    void stop();
    void count(qint64 seconds);
    void countWhatPassed(std::chrono::nanoseconds leastForOne);
    void advancePhase();
    void publish(const State &before);

    Clock &m_clock;
    KeyValueStore &m_store;
    UserNotifications &m_notifications;
    State m_state;
    std::chrono::nanoseconds m_countedUntil{0}; ///< on the clock that goes on in sleep
    TimerHandle m_timer;
};

} // namespace velmora
