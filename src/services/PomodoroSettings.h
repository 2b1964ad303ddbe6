#pragma once

#include <QByteArray>

#include <optional>

namespace velmora
{

/// The lengths of the focus timer, as they are stored.
struct PomodoroSettings {
    qint64 workMinutes = 25;
    qint64 shortBreakMinutes = 5;
    qint64 longBreakMinutes = 15;
    qint64 sessionsBeforeLongBreak = 4;

    friend bool operator==(const PomodoroSettings &, const PomodoroSettings &) = default;
};

/// Whether a phase can last that long: not negative, and its seconds can be counted.
[[nodiscard]] bool isPhaseLength(qint64 minutes);
[[nodiscard]] bool isSessionCount(qint64 sessions);

[[nodiscard]] QByteArray encodePomodoroSettings(const PomodoroSettings &settings);

/// Nothing unless all four are there and each can be used.
[[nodiscard]] std::optional<PomodoroSettings> decodePomodoroSettings(const QByteArray &data);

} // namespace velmora
