#pragma once

#include "drop/DropActionID.h"

#include <QByteArray>

#include <optional>
#include <vector>

namespace velmora
{

/// The stored form of what the user has chosen about drops.
struct DropConfig {
    std::vector<DropActionID> enabledActions;
    QByteArray shelfFolderPath; ///< absolute, like the other two
    QByteArray copyFolderPath;
    QByteArray moveFolderPath;
    QString imageConvertFormat;
};

/// One JSON object; nothing if a path is no text, which JSON cannot tell.
[[nodiscard]] std::optional<QByteArray> encodeDropConfig(const DropConfig &config);

/// Nothing unless every field is there, of its type, and every action is known.
[[nodiscard]] std::optional<DropConfig> decodeDropConfig(const QByteArray &data);

} // namespace velmora
