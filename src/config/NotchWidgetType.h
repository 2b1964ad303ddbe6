#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <array>
#include <optional>

namespace velmora
{

/// What one zone of the panel can show.
///
/// The cases stand in the order in which they are offered; the stored form is `rawValue`, so cases
/// may be added but a raw value never changes its meaning.
namespace NotchWidgetTypes
{
Q_NAMESPACE
QML_NAMED_ELEMENT(NotchWidgetType)

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
Q_ENUM_NS(NotchWidgetType)

} // namespace NotchWidgetTypes

using NotchWidgetTypes::NotchWidgetType;

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
