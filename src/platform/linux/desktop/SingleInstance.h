#pragma once

#include "platform/linux/dbus/BusConnection.h"

#include <QDBusContext>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <chrono>

namespace velmora
{

/// Sees to it that the program runs once in a session, by its name on the session bus, and takes
/// what later starts of it ask for: the interface org.freedesktop.Application. A bus that comes
/// late, or again, is asked for the name then.
class SingleInstance : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    enum class Role {
        Unknown, ///< the bus, or the other instance, has not answered yet
        First,   ///< the name is ours
        Second,  ///< another instance runs and has been told to come forward: leave
        NoBus,   ///< nobody can tell; run
    };

    /// Waits for an answer of the bus, and of the other instance, no longer than `limit` each.
    explicit SingleInstance(BusConnection &bus,
                            std::chrono::milliseconds limit = std::chrono::seconds(1));
    SingleInstance(const SingleInstance &) = delete;
    SingleInstance &operator=(const SingleInstance &) = delete;
    ~SingleInstance() override;

    [[nodiscard]] Role role() const { return m_role; }

public Q_SLOTS:
    Q_SCRIPTABLE void Activate(const QVariantMap &platformData);
    Q_SCRIPTABLE void Open(const QStringList &uris, const QVariantMap &platformData);
    Q_SCRIPTABLE void ActivateAction(const QString &name, const QVariantList &parameter,
                                     const QVariantMap &platformData);

Q_SIGNALS:
    /// `role` is known, once for each bus.
    void decided();
    /// The user has started the program again, or asked for its preferences from outside.
    void activated();

private:
    void claim();
    void requestName();
    void activateOwner();
    void decide(Role role);
    void withdraw();

    BusConnection &m_bus;
    std::chrono::milliseconds m_limit;
    QDeadlineTimer m_deadline;
    Role m_role = Role::NoBus;
};

} // namespace velmora
