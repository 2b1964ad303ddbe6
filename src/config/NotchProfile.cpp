#include "config/NotchProfile.h"

#include <QRegularExpression>

#include <array>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

namespace velmora
{

namespace
{

using Json = nlohmann::ordered_json;
using WidgetField = std::pair<const char *, NotchWidgetType NotchProfile::*>;

constexpr std::array<WidgetField, 5> widgetFields{{
    {"farLeftWidget", &NotchProfile::farLeftWidget},
    {"leftWidget", &NotchProfile::leftWidget},
    {"centerWidget", &NotchProfile::centerWidget},
    {"rightWidget", &NotchProfile::rightWidget},
    {"farRightWidget", &NotchProfile::farRightWidget},
}};

/// The text under a key; throws where there is none.
QString textAt(const Json &object, const char *key)
{
    return QString::fromStdString(object.at(key).get_ref<const std::string &>());
}

std::optional<QUuid> uuidFromText(const QString &text)
{
    static const QRegularExpression canonical(
        QStringLiteral("\\A[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}\\z"));
    return canonical.match(text).hasMatch() ? std::optional(QUuid::fromString(text)) : std::nullopt;
}

Json toJson(const NotchProfile &profile)
{
    Json object;
    object["id"] = profile.id.toString(QUuid::WithoutBraces).toUpper().toStdString();
    object["name"] = profile.name.toStdString();
    for (const auto &[key, field] : widgetFields) {
        object[key] = rawValue(profile.*field).toStdString();
    }
    return object;
}

std::optional<NotchProfile> fromJson(const Json &object)
{
    NotchProfile profile;
    const auto id = uuidFromText(textAt(object, "id"));
    if (!id) {
        return std::nullopt;
    }
    profile.id = *id;
    profile.name = textAt(object, "name");
    for (const auto &[key, field] : widgetFields) {
        profile.*field =
            widgetTypeFromRawValue(textAt(object, key)).value_or(NotchWidgetType::none);
    }
    return profile;
}

} // namespace

const std::vector<NotchProfile> &NotchProfile::builtIn()
{
    using enum NotchWidgetType;
    static const std::vector<NotchProfile> profiles{
        {QUuid::createUuid(), QStringLiteral("Default"), media, pomodoro, weather, systemMonitor,
         dropActions},
        {QUuid::createUuid(), QStringLiteral("Focus"), clock, pomodoro, dayProgress, todo,
         bluetooth},
        {QUuid::createUuid(), QStringLiteral("System"), clock, network, volume, systemMonitor,
         bluetooth},
        {QUuid::createUuid(), QStringLiteral("Minimal"), none, quote, clock, dayProgress, none},
    };
    return profiles;
}

std::optional<QByteArray> encodeProfiles(const std::vector<NotchProfile> &profiles)
{
    try {
        Json array = Json::array();
        for (const NotchProfile &profile : profiles) {
            array.push_back(toJson(profile));
        }
        return QByteArray::fromStdString(array.dump());
    } catch (const Json::exception &) {
        return std::nullopt;
    }
}

std::optional<std::vector<NotchProfile>> decodeProfiles(const QByteArray &data)
{
    try {
        const Json array = Json::parse(data.begin(), data.end());
        if (!array.is_array()) {
            return std::nullopt;
        }
        std::vector<NotchProfile> profiles;
        for (const Json &element : array) {
            auto profile = fromJson(element);
            if (!profile) {
                return std::nullopt;
            }
            profiles.push_back(*std::move(profile));
        }
        return profiles;
    } catch (const Json::exception &) {
        return std::nullopt;
    }
}

} // namespace velmora
