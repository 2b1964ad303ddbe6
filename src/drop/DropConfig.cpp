#include "drop/DropConfig.h"

#include <nlohmann/json.hpp>
#include <string>

namespace velmora
{

namespace
{

using Json = nlohmann::ordered_json;

/// The text under a key; throws where there is none.
const std::string &textAt(const Json &object, const char *key)
{
    return object.at(key).get_ref<const std::string &>();
}

} // namespace

std::optional<QByteArray> encodeDropConfig(const DropConfig &config)
{
    try {
        Json object;
        Json &actions = object["enabledActions"] = Json::array();
        for (const DropActionID action : config.enabledActions) {
            actions.push_back(rawValue(action).toStdString());
        }
        object["shelfFolderPath"] = config.shelfFolderPath.toStdString();
        object["copyFolderPath"] = config.copyFolderPath.toStdString();
        object["moveFolderPath"] = config.moveFolderPath.toStdString();
        object["imageConvertFormat"] = config.imageConvertFormat.toStdString();
        return QByteArray::fromStdString(object.dump());
    } catch (const Json::exception &) {
        return std::nullopt;
    }
}

std::optional<DropConfig> decodeDropConfig(const QByteArray &data)
{
    try {
        const Json object = Json::parse(data.begin(), data.end());
        std::vector<DropActionID> actions;
        for (const auto &text : object.at("enabledActions").get<std::vector<std::string>>()) {
            const auto action = dropActionFromRawValue(QString::fromStdString(text));
            if (!action) {
                return std::nullopt;
            }
            actions.push_back(*action);
        }
        return DropConfig{actions, QByteArray::fromStdString(textAt(object, "shelfFolderPath")),
                          QByteArray::fromStdString(textAt(object, "copyFolderPath")),
                          QByteArray::fromStdString(textAt(object, "moveFolderPath")),
                          QString::fromStdString(textAt(object, "imageConvertFormat"))};
    } catch (const Json::exception &) {
        return std::nullopt;
    }
}

} // namespace velmora
