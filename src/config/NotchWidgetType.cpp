#include "config/NotchWidgetType.h"

#include <algorithm>

namespace velmora
{

namespace
{

struct Names {
    NotchWidgetType type;
    const char *rawValue;
    const char *displayName;
    const char *iconName;
};

using enum NotchWidgetType;

constexpr std::array<Names, 16> catalogue{{
    {none, "none", "Empty", "minus"},
    {media, "media", "Media", "music.note"},
    {clock, "clock", "Clock", "clock"},
    {volume, "volume", "Volume", "speaker.wave.2"},
    {network, "network", "Network", "network"},
    {weather, "weather", "Weather", "cloud.sun.fill"},
    {dayProgress, "dayProgress", "Day Progress", "sun.horizon"},
    {quote, "quote", "Quote", "quote.bubble"},
    {appLauncher, "appLauncher", "App Launcher", "square.grid.2x2"},
    {quickToggle, "quickToggle", "Quick Toggles", "switch.2"},
    {calendar, "calendar", "Calendar", "calendar"},
    {todo, "todo", "Todo", "checklist"},
    {pomodoro, "pomodoro", "Pomodoro", "timer"},
    {bluetooth, "bluetooth", "Bluetooth", "wave.3.right"},
    {systemMonitor, "systemMonitor", "System Monitor", "gauge.medium"},
    {dropActions, "dropActions", "Drop Actions", "tray.fill"},
}};

const Names &namesOf(NotchWidgetType type)
{
    return catalogue.at(static_cast<std::size_t>(type));
}

} // namespace

const std::array<NotchWidgetType, 16> &allWidgetTypes()
{
    static const auto types = [] {
        std::array<NotchWidgetType, 16> all{};
        std::transform(catalogue.begin(), catalogue.end(), all.begin(),
                       [](const Names &names) { return names.type; });
        return all;
    }();
    return types;
}

QString rawValue(NotchWidgetType type)
{
    return QString::fromLatin1(namesOf(type).rawValue);
}

std::optional<NotchWidgetType> widgetTypeFromRawValue(const QString &rawValue)
{
    const auto *const found =
        std::find_if(catalogue.begin(), catalogue.end(), [&rawValue](const Names &names) {
            return rawValue == QLatin1String(names.rawValue);
        });
    return found == catalogue.end() ? std::nullopt : std::optional(found->type);
}

QString displayName(NotchWidgetType type)
{
    return QString::fromLatin1(namesOf(type).displayName);
}

QString iconName(NotchWidgetType type)
{
    return QString::fromLatin1(namesOf(type).iconName);
}

} // namespace velmora
