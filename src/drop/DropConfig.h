#pragma once

#include "drop/DropActionID.h"

#include <QByteArray>
#include <QUrl>

#include <optional>
#include <vector>

namespace velmora
{

/// What the user has chosen about drops.
struct DropConfig {
    std::vector<DropActionID> enabledActions{DropActionID::airDrop, DropActionID::zip,
                                             DropActionID::unzip}; ///< in the order of the buttons
    QUrl shelfFolder;
    QUrl copyFolder;
    QUrl moveFolder;
    QString imageConvertFormat = QStringLiteral("png");
};

/// One JSON object; nothing if a path is no text, which JSON cannot tell.
[[nodiscard]] std::optional<QByteArray> encodeDropConfig(const DropConfig &config);

/// Nothing unless every field is there, of its type, and every action is known.
[[nodiscard]] std::optional<DropConfig> decodeDropConfig(const QByteArray &data);

} // namespace velmora
