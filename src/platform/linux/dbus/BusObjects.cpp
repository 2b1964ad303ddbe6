#include "platform/linux/dbus/BusObjects.h"

#include "platform/linux/dbus/BusValue.h"

#include <utility>

namespace velmora
{

namespace
{

constexpr qsizetype maximumObjects = 4096; // a service that lies is not to fill the memory

QString managerInterface()
{
    return QStringLiteral("org.freedesktop.DBus.ObjectManager");
}

} // namespace

BusObjects::BusObjects(const QDBusConnection &bus, Clock &clock, const QString &service,
                       QString root)
    : m_bus(bus)
    , m_root(std::move(root))
    , m_inquiry(bus, clock, [this](const QDBusMessage &answer) { takeAll(answer); })
    , m_watch(bus, service)
{
    connect(&m_watch, &OwnerWatch::appeared, this,
            [this](const QString &, const QString &owner) { setOwner(owner); });
    connect(&m_watch, &OwnerWatch::vanished, this, [this] { setOwner(QString()); });
}

void BusObjects::setOwner(const QString &owner)
{
    const struct {
        QString path, interface, name;
        const char *slot;
    } subscriptions[] = {
        {m_root, managerInterface(), QStringLiteral("InterfacesAdded"),
         SLOT(takeAdded(QDBusMessage))},
        {m_root, managerInterface(), QStringLiteral("InterfacesRemoved"),
         SLOT(takeRemoved(QDBusMessage))},
        {QString(), QStringLiteral("org.freedesktop.DBus.Properties"),
         QStringLiteral("PropertiesChanged"), SLOT(takeChange(QDBusMessage))},
    };
    // By unique names: for any other, QtDBus would wait for the bus to tell the owner.
    for (const auto &[path, interface, name, slot] : subscriptions) {
        if (!m_owner.isEmpty())
            m_bus.disconnect(m_owner, path, interface, name, this, slot);
        if (!owner.isEmpty())
            m_bus.connect(owner, path, interface, name, this, slot);
    }
    m_owner = owner;
    if (owner.isEmpty()) {
        m_inquiry.setQuestion({});
        m_objects.clear();
        Q_EMIT changed();
        return;
    }
    m_inquiry.setQuestion(QDBusMessage::createMethodCall(owner, m_root, managerInterface(),
                                                         QStringLiteral("GetManagedObjects")));
    m_inquiry.request();
}

void BusObjects::takeAll(const QDBusMessage &answer)
{
    m_objects = toObjects(answer.arguments().value(0));
    Q_EMIT changed();
}

void BusObjects::takeAdded(const QDBusMessage &signal)
{
    const QString path = toText(signal.arguments().value(0));
    const Interfaces added = toInterfaces(signal.arguments().value(1));
    if (path.isEmpty() || added.isEmpty() ||
        (m_objects.size() >= maximumObjects && !m_objects.contains(path)))
        return;
    m_objects[path].insert(added);
    Q_EMIT changed();
}

void BusObjects::takeRemoved(const QDBusMessage &signal)
{
    const auto object = m_objects.find(toText(signal.arguments().value(0)));
    if (object == m_objects.end())
        return;
    const QStringList removed = signal.arguments().value(1).toStringList();
    for (const QString &interface : removed)
        object->remove(interface);
    if (object->isEmpty())
        m_objects.erase(object);
    Q_EMIT changed();
}

void BusObjects::takeChange(const QDBusMessage &signal)
{
    const QVariantList arguments = signal.arguments();
    const auto object = m_objects.find(signal.path());
    if (object == m_objects.end())
        return;
    const auto interface = object->find(toText(arguments.value(0)));
    if (interface == object->end())
        return;
    interface->insert(toDictionary(arguments.value(1)).value_or(QVariantMap()));
    const QStringList invalidated = arguments.value(2).toStringList();
    for (const QString &name : invalidated)
        interface->remove(name);
    Q_EMIT changed();
}

} // namespace velmora
