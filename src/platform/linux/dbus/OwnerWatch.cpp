#include "platform/linux/dbus/OwnerWatch.h"

#include "platform/linux/dbus/BusCall.h"
#include "platform/linux/dbus/BusValue.h"

#include <utility>

namespace velmora
{

OwnerWatch::OwnerWatch(const QDBusConnection &bus, QString name)
    : m_bus(bus)
{
    if (!m_bus.isConnected())
        return;
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &changed, const QString &, const QString &owner) {
                m_asked.remove(changed); // this is newer than any answer
                setOwner(changed, owner);
            });
    m_watcher.setConnection(m_bus);
    m_watcher.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    m_watcher.addWatchedService(name);
    m_bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                  QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                  this, SLOT(forgetAll()));
    if (!name.endsWith(u'*')) {
        askOwner(name);
        return;
    }
    name.back() = u'.';
    callBus(m_bus, busMethod(QStringLiteral("ListNames")), this,
            [this, prefix = std::move(name)](const QDBusMessage &answer) {
                const QStringList names = answer.arguments().value(0).toStringList();
                for (const QString &each : names) {
                    if (each.startsWith(prefix) && !m_owners.contains(each))
                        askOwner(each);
                }
            });
}

void OwnerWatch::forgetAll()
{
    m_asked.clear();
    const QStringList names = m_owners.keys();
    for (const QString &name : names)
        setOwner(name, QString());
}

void OwnerWatch::askOwner(const QString &name)
{
    m_asked.insert(name);
    callBus(m_bus, busMethod(QStringLiteral("GetNameOwner"), {name}), this,
            [this, name](const QDBusMessage &answer) {
                if (m_asked.remove(name) && isReply(answer))
                    setOwner(name, toText(answer.arguments().value(0)));
            });
}

void OwnerWatch::setOwner(const QString &name, const QString &owner)
{
    const QString previous = m_owners.take(name);
    if (!owner.isEmpty())
        m_owners.insert(name, owner);
    if (previous == owner)
        return;
    if (!previous.isEmpty())
        Q_EMIT vanished(name, previous);
    if (!owner.isEmpty())
        Q_EMIT appeared(name, owner);
}

} // namespace velmora
