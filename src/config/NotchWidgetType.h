#pragma once

#include <QString>

#include <array>
#include <optional>

namespace velmora
{

/// What one zone of the panel can show.
///
/// The cases stand in the order in which they are offered; the stored form is `rawValue`, so cases
/// may be added but a raw value never changes its meaning.
enum class NotchWidgetType {
    none,
    media,
    clock,
    volume,
    network,
    weather,
    dayProgress,
    quote,
    appLauncher,
    quickToggle,
    calendar,
    todo,
    pomodoro,
    bluetooth,
    systemMonitor,
    dropActions,
};

/// Of the five zones, from left to right.
using ZoneWidgets = std::array<NotchWidgetType, 5>;

/// The keys under which they are stored, in settings and profiles.
inline constexpr std::array<const char *, 5> widgetKeys{
    "farLeftWidget", "leftWidget", "centerWidget", "rightWidget", "farRightWidget"};

/// All cases in order.
[[nodiscard]] const std::array<NotchWidgetType, 16> &allWidgetTypes();

/// The stored text.
[[nodiscard]] QString rawValue(NotchWidgetType type);

/// Exact, case-sensitive match against the stored texts.
[[nodiscard]] std::optional<NotchWidgetType> widgetTypeFromRawValue(const QString &rawValue);

/// The label shown to the user.
[[nodiscard]] QString displayName(NotchWidgetType type);

/// The symbol that stands for the type.
[[nodiscard]] QString iconName(NotchWidgetType type);

} // namespace velmora
