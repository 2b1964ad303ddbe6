#include "platform/linux/dbus/BusObjects.h"

#include "platform/linux/dbus/BusValue.h"

#include <utility>

namespace velmora
{

namespace
{

QString managerInterface()
{
    return QStringLiteral("org.freedesktop.DBus.ObjectManager");
}

} // namespace

BusObjects::BusObjects(const QDBusConnection &bus, Clock &clock, const QString &service,
                       QString root)
    : m_bus(bus)
    , m_root(std::move(root))
    , m_inquiry(bus, clock,
                [this](const QDBusMessage &answer) {
                    m_objects = toObjects(answer.arguments().value(0));
                    Q_EMIT changed();
                })
    , m_watch(bus, service)
{
    connect(&m_watch, &OwnerWatch::appeared, this,
            [this](const QString &, const QString &owner) { setOwner(owner); });
    connect(&m_watch, &OwnerWatch::vanished, this, [this] { setOwner(QString()); });
}

void BusObjects::setOwner(const QString &owner)
{
    const struct {
        QString path, interface;
        const char *slot;
    } subscriptions[] = {
        {m_root, managerInterface(), SLOT(listAnew())},
        {QString(), QStringLiteral("org.freedesktop.DBus.Properties"),
         SLOT(takeChange(QDBusMessage))},
    };
    // By unique names: for any other, QtDBus would wait for the bus to tell the owner.
    for (const auto &[path, interface, slot] : subscriptions) {
        if (!m_owner.isEmpty())
            m_bus.disconnect(m_owner, path, interface, QString(), this, slot);
        if (!owner.isEmpty())
            m_bus.connect(owner, path, interface, QString(), this, slot);
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
