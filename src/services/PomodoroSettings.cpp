#include "services/PomodoroSettings.h"

#include <array>
#include <limits>
#include <nlohmann/json.hpp>

namespace velmora
{

namespace
{

using Json = nlohmann::ordered_json;

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

std::optional<qint64> integerAt(const Json &object, const char *key)
{
    const auto found = object.find(key);
    if (found == object.end() || !found->is_number_integer()) {
        return std::nullopt;
    }
    // What lies beyond the signed range would come out of the conversion as something else.
    if (found->is_number_unsigned() &&
        found->get<quint64>() > quint64{std::numeric_limits<qint64>::max()}) {
        return std::nullopt;
    }
    return found->get<qint64>();
}

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
    Json object;
    for (const Field &field : fields) {
        object[field.key] = settings.*field.member;
    }
    return QByteArray::fromStdString(object.dump());
}

std::optional<PomodoroSettings> decodePomodoroSettings(const QByteArray &data)
{
    const Json object = Json::parse(data.begin(), data.end(), nullptr, false);
    if (!object.is_object()) {
        return std::nullopt;
    }
    PomodoroSettings settings;
    for (const Field &field : fields) {
        const auto value = integerAt(object, field.key);
        if (!value || !field.isUsable(*value)) {
            return std::nullopt;
        }
        settings.*field.member = *value;
    }
    return settings;
}

} // namespace velmora
