#pragma once

#include "config/NotchWidgetType.h"

#include <QByteArray>
#include <QString>
#include <QUuid>

#include <optional>
#include <vector>

namespace velmora
{

/// A named assignment of one widget to each of the five zones.
struct NotchProfile {
    QUuid id;
    QString name;
    ZoneWidgets widgets{};

    bool operator==(const NotchProfile &) const = default;

    /// The four profiles that everybody starts with. Made once a process: the identifiers are
    /// random, and stable until it ends.
    [[nodiscard]] static const std::vector<NotchProfile> &builtIn();
};

/// The stored form: one compact JSON array in UTF-8.
[[nodiscard]] QByteArray encodeProfiles(const std::vector<NotchProfile> &profiles);

/// Reads the stored form. Nothing for anything that is no array of complete profiles; keys that are
/// not known are passed over, and a widget of a later version reads as an empty zone.
[[nodiscard]] std::optional<std::vector<NotchProfile>> decodeProfiles(const QByteArray &data);

} // namespace velmora
