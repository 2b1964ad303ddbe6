#pragma once

#include <QColor>
#include <QString>

#include <array>
#include <optional>

namespace velmora
{

/// What can be done with files that are dropped on the notch.
///
/// The stored form is `rawValue`: cases may be added, but a raw value never changes its meaning.
enum class DropActionID {
    shelf,
    airDrop,
    zip,
    unzip,
    imageConvert,
    copy,
    move,
    openWith,
    music,
    trash,
    eject,
};

/// All cases in order.
[[nodiscard]] const std::array<DropActionID, 11> &allDropActions();

/// The stored text, which also identifies the action in lists.
[[nodiscard]] QString rawValue(DropActionID action);

/// Exact, case-sensitive match against the stored texts.
[[nodiscard]] std::optional<DropActionID> dropActionFromRawValue(const QString &rawValue);

/// The name shown to the user.
[[nodiscard]] QString label(DropActionID action);

/// The name of the symbol that stands for it.
[[nodiscard]] QString symbol(DropActionID action);

/// Its colour, opaque, sRGB.
[[nodiscard]] QColor color(DropActionID action);

} // namespace velmora
