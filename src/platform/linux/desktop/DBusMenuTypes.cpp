#include "platform/linux/desktop/DBusMenuTypes.h"

#include <QDBusMetaType>

namespace velmora
{

QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuLayout &value)
{
    argument.beginStructure();
    argument << value.id << value.properties << value.children;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuLayout &value)
{
    argument.beginStructure();
    argument >> value.id >> value.properties >> value.children;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuProperties &value)
{
    argument.beginStructure();
    argument << value.id << value.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuProperties &value)
{
    argument.beginStructure();
    argument >> value.id >> value.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuEvent &value)
{
    argument.beginStructure();
    argument << value.id << value.name << value.data << value.timestamp;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuEvent &value)
{
    argument.beginStructure();
    argument >> value.id >> value.name >> value.data >> value.timestamp;
    argument.endStructure();
    return argument;
}

void registerDBusMenuTypes()
{
    qDBusRegisterMetaType<DBusMenuLayout>();
    qDBusRegisterMetaType<DBusMenuProperties>();
    qDBusRegisterMetaType<QList<DBusMenuProperties>>();
    qDBusRegisterMetaType<DBusMenuEvent>();
    qDBusRegisterMetaType<QList<DBusMenuEvent>>();
    qDBusRegisterMetaType<DBusMenuShortcut>();
}

} // namespace velmora
