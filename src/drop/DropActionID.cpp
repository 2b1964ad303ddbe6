#include "drop/DropActionID.h"

#include <algorithm>

namespace velmora
{

namespace
{

struct Entry {
    DropActionID action;
    const char *rawValue;
    const char *label;
    const char *symbol;
    std::array<float, 3> color;
};

using enum DropActionID;

constexpr std::array<Entry, 11> catalogue{{
    {shelf, "shelf", "Shelf", "tray.fill", {0.4F, 0.7F, 1.0F}},
    {airDrop, "airDrop", "AirDrop", "airplayaudio", {0.3F, 0.9F, 0.5F}},
    {zip, "zip", "Zip", "archivebox.fill", {1.0F, 0.75F, 0.3F}},
    {unzip, "unzip", "Unzip", "archivebox", {1.0F, 0.6F, 0.2F}},
    {imageConvert, "imageConvert", "Convert", "photo.fill", {0.6F, 0.4F, 1.0F}},
    {copy, "copy", "Copy", "doc.on.doc.fill", {0.3F, 0.7F, 1.0F}},
    {move, "move", "Move", "arrow.right.square.fill", {0.3F, 0.85F, 0.8F}},
    {openWith, "openWith", "Open With", "arrow.up.forward.app.fill", {1.0F, 0.5F, 0.5F}},
    {music, "music", "Music", "music.note", {1.0F, 0.3F, 0.5F}},
    {trash, "trash", "Trash", "trash.fill", {1.0F, 0.35F, 0.3F}},
    {eject, "eject", "Eject", "eject.fill", {0.8F, 0.8F, 0.8F}},
}};

const Entry &entryOf(DropActionID action)
{
    return catalogue.at(static_cast<std::size_t>(action));
}

} // namespace

const std::array<DropActionID, 11> &allDropActions()
{
    static const auto actions = [] {
        std::array<DropActionID, 11> all{};
        std::transform(catalogue.begin(), catalogue.end(), all.begin(),
                       [](const Entry &entry) { return entry.action; });
        return all;
    }();
    return actions;
}

QString rawValue(DropActionID action)
{
    return QString::fromLatin1(entryOf(action).rawValue);
}

std::optional<DropActionID> dropActionFromRawValue(const QString &rawValue)
{
    const auto *const found =
        std::find_if(catalogue.begin(), catalogue.end(), [&rawValue](const Entry &entry) {
            return rawValue == QLatin1String(entry.rawValue);
        });
    return found == catalogue.end() ? std::nullopt : std::optional(found->action);
}

QString label(DropActionID action)
{
    return QString::fromLatin1(entryOf(action).label);
}

QString symbol(DropActionID action)
{
    return QString::fromLatin1(entryOf(action).symbol);
}

QColor color(DropActionID action)
{
    const auto &[red, green, blue] = entryOf(action).color;
    return QColor::fromRgbF(red, green, blue);
}

} // namespace velmora
