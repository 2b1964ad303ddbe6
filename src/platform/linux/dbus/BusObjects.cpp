#include "platform/linux/dbus/BusObjects.h"

#include "platform/linux/dbus/BusValue.h"

namespace velmora
{

BusObjects::BusObjects(QDBusConnection bus, Clock &clock, const QString &owner, const QString &root)
    : m_inquiry(bus, clock, [this](const QDBusMessage &answer) {
        m_objects = toObjects(answer.arguments().value(0));
        Q_EMIT changed();
    })
{
    const auto manager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
    bus.connect(owner, root, manager, QString(), this, SLOT(listAnew()));
    bus.connect(owner, QString(), QStringLiteral("org.freedesktop.DBus.Properties"), QString(),
                this, SLOT(listAnew()));
    m_inquiry.setQuestion(
        QDBusMessage::createMethodCall(owner, root, manager, QStringLiteral("GetManagedObjects")));
    m_inquiry.request();
}

} // namespace velmora
