#pragma once

#include "platform/linux/desktop/BusStructure.h"

#include <QDBusVariant>
#include <QList>
#include <QMetaType>
#include <QStringList>
#include <QVariantMap>

namespace velmora
{

// The structures of the interface com.canonical.dbusmenu, as they travel.

/// Signature (ia{sv}av): an entry and, each in a variant, the same for its children.
struct DBusMenuLayout {
    int id = 0;
    QVariantMap properties;
    QList<QDBusVariant> children;

    static auto members(auto &self) { return std::tie(self.id, self.properties, self.children); }
};

/// Signature (ia{sv}).
struct DBusMenuProperties {
    int id = 0;
    QVariantMap properties;

    static auto members(auto &self) { return std::tie(self.id, self.properties); }
};

/// Signature (isvu).
struct DBusMenuEvent {
    int id = 0;
    QString name;
    QDBusVariant data;
    uint timestamp = 0;

    static auto members(auto &self)
    {
        return std::tie(self.id, self.name, self.data, self.timestamp);
    }
};

/// Signature aas: key presses, each the modifiers and then the key.
using DBusMenuShortcut = QList<QStringList>;

} // namespace velmora

Q_DECLARE_METATYPE(velmora::DBusMenuLayout)
Q_DECLARE_METATYPE(velmora::DBusMenuProperties)
Q_DECLARE_METATYPE(velmora::DBusMenuEvent)
