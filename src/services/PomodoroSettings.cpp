#include "services/PomodoroSettings.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <array>
#include <limits>

namespace velmora
{

namespace
{

struct Field {
    const char *key;
    qint64 PomodoroSettings::*member;
    bool (*isUsable)(qint64);
};

constexpr std::array<Field, 4> fields{{
    {"workMinutes", &PomodoroSettings::workMinutes, isPhaseLength},
    {"shortBreakMinutes", &PomodoroSettings::shortBreakMinutes, isPhaseLength},
    {"longBreakMinutes", &PomodoroSettings::longBreakMinutes, isPhaseLength},
    {"sessionsBeforeLongBreak", &PomodoroSettings::sessionsBeforeLongBreak, isSessionCount},
}};

} // namespace

bool isPhaseLength(qint64 minutes)
{
    return minutes >= 0 && minutes <= std::numeric_limits<qint64>::max() / 60;
}

bool isSessionCount(qint64 sessions)
{
    return sessions >= 0;
}

QByteArray encodePomodoroSettings(const PomodoroSettings &settings)
{
    QByteArrayList members; // in their order, which an object of Qt's would not keep
    for (const Field &field : fields) {
        members << '"' + QByteArray(field.key) + "\":" + QByteArray::number(settings.*field.member);
    }
    return '{' + members.join(',') + '}';
}

std::optional<PomodoroSettings> decodePomodoroSettings(const QByteArray &data)
{
    const QJsonObject object = QJsonDocument::fromJson(data).object();
    PomodoroSettings settings;
    for (const Field &field : fields) {
        const qint64 value = object.value(QLatin1String(field.key)).toInteger(-1);
        if (!field.isUsable(value)) {
            return std::nullopt;
        }
        settings.*field.member = value;
    }
    return settings;
}

} // namespace velmora
