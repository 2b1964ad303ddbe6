#include "drop/DropConfig.h"

#include "platform/LocalPath.h"

#include <QDir>
#include <QFile>

#include <nlohmann/json.hpp>
#include <string>

namespace velmora
{

namespace
{

using Json = nlohmann::ordered_json;

std::string pathOf(const QUrl &folder)
{
    return localPath(folder).value_or(QByteArray()).toStdString();
}

QUrl folderAt(const std::string &stored)
{
    QByteArray path = QByteArray::fromStdString(stored);
    if (!path.startsWith('/')) {
        path.prepend(QFile::encodeName(QDir::currentPath()) + '/');
    }
    return fileUrl(localPath(fileUrl(path)).value_or(path)); // no slash at the end
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
        object["shelfFolderPath"] = pathOf(config.shelfFolder);
        object["copyFolderPath"] = pathOf(config.copyFolder);
        object["moveFolderPath"] = pathOf(config.moveFolder);
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
        const auto text = [&object](const char *key) { return object.at(key).get<std::string>(); };
        return DropConfig{actions, folderAt(text("shelfFolderPath")),
                          folderAt(text("copyFolderPath")), folderAt(text("moveFolderPath")),
                          QString::fromStdString(text("imageConvertFormat"))};
    } catch (const Json::exception &) {
        return std::nullopt;
    }
}

} // namespace velmora
