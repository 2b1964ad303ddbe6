#include "config/NotchProfile.h"

#include <nlohmann/json.hpp>
#include <string>
#include <utility>

namespace velmora
{

namespace
{

using Json = nlohmann::ordered_json;

/// The text under a key; throws where there is none.
QString textAt(const Json &object, const char *key)
{
    return QString::fromStdString(object.at(key).get_ref<const std::string &>());
}

QString canonicalText(const QUuid &id)
{
    return id.toString(QUuid::WithoutBraces).toUpper();
}

Json toJson(const NotchProfile &profile)
{
    Json object;
    object["id"] = canonicalText(profile.id).toStdString();
    object["name"] = profile.name.toStdString();
    for (std::size_t zone = 0; zone < widgetKeys.size(); ++zone) {
        object[widgetKeys.at(zone)] = rawValue(profile.widgets.at(zone)).toStdString();
    }
    return object;
}

std::optional<NotchProfile> fromJson(const Json &object)
{
    const QString id = textAt(object, "id");
    NotchProfile profile{QUuid::fromString(id), textAt(object, "name")};
    if (canonicalText(profile.id) != id.toUpper()) {
        return std::nullopt;
    }
    for (std::size_t zone = 0; zone < widgetKeys.size(); ++zone) {
        profile.widgets.at(zone) = widgetTypeFromRawValue(textAt(object, widgetKeys.at(zone)))
                                       .value_or(NotchWidgetType::none);
    }
    return profile;
}

} // namespace

const std::vector<NotchProfile> &NotchProfile::builtIn()
{
    using enum NotchWidgetType;
    static const std::vector<NotchProfile> profiles{
        {QUuid::createUuid(),
         QStringLiteral("Default"),
         {media, pomodoro, weather, systemMonitor, dropActions}},
        {QUuid::createUuid(),
         QStringLiteral("Focus"),
         {clock, pomodoro, dayProgress, todo, bluetooth}},
        {QUuid::createUuid(),
         QStringLiteral("System"),
         {clock, network, volume, systemMonitor, bluetooth}},
        {QUuid::createUuid(), QStringLiteral("Minimal"), {none, quote, clock, dayProgress, none}},
    };
    return profiles;
}

QByteArray encodeProfiles(const std::vector<NotchProfile> &profiles)
{
    Json array = Json::array();
    for (const NotchProfile &profile : profiles) {
        array.push_back(toJson(profile));
    }
    return QByteArray::fromStdString(array.dump());
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
