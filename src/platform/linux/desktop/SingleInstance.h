#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDeadlineTimer>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <chrono>
#include <optional>

namespace velmora
{

/// Sees to it that the program runs once in a session, by its name on the session bus, and takes
/// what later starts of it ask for: the interface org.freedesktop.Application.
class SingleInstance : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    enum class Role {
        First,  ///< the name is ours until this object is destroyed
        Second, ///< another instance runs and has been told to come forward: leave
        NoBus,  ///< nobody can tell; run
    };

    explicit SingleInstance(const QDBusConnection &connection);
    SingleInstance(const SingleInstance &) = delete;
    SingleInstance &operator=(const SingleInstance &) = delete;
    ~SingleInstance() override;

    /// For the start of the program, before the main loop: waits for the bus, and for the other
    /// instance, no longer than `timeout` altogether. Whoever connects to `activated` before the
    /// main loop runs misses nothing.
    Role claim(std::chrono::milliseconds timeout = std::chrono::seconds(1));

public Q_SLOTS:
    Q_SCRIPTABLE void Activate(const QVariantMap &platformData);
    Q_SCRIPTABLE void Open(const QStringList &uris, const QVariantMap &platformData);
    Q_SCRIPTABLE void ActivateAction(const QString &name, const QVariantList &parameter,
                                     const QVariantMap &platformData);

Q_SIGNALS:
    /// The user has started the program again, or asked for its preferences from outside.
    void activated();

private:
    [[nodiscard]] std::optional<bool> requestName(const QDeadlineTimer &deadline);
    [[nodiscard]] bool activateOwner(const QDeadlineTimer &deadline);
    void withdraw();

    QDBusConnection m_connection;
    bool m_ownsName = false;
};

} // namespace velmora
