#pragma once

#include "platform/UserNotifications.h"
#include "platform/linux/dbus/BusConnection.h"

#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>

#include <chrono>
#include <list>
#include <memory>
#include <optional>

namespace velmora
{

/// Notifications by way of org.freedesktop.Notifications on the session bus. Nothing blocks; a call
/// may start the desktop's daemon, and without any daemon, or a bus, nothing is shown.
class DesktopNotifications : public QObject, public UserNotifications
{
    Q_OBJECT

public:
    /// Within `limit` the daemon has to answer a call, for which it may have to be started first.
    explicit DesktopNotifications(BusConnection &bus,
                                  std::chrono::milliseconds limit = std::chrono::seconds(10));

    void requestAuthorization() override {} // desktops know no such thing
    void add(const UserNotification &notification) override;

private Q_SLOTS:
    void handleClosed(const QDBusMessage &signal);

private:
    /// What the daemon knows of one identifier.
    struct Entry {
        QString identifier;
        uint serverId = 0; ///< 0: none that is on show
        bool isCalling = false;
        std::optional<UserNotification> next = {}; ///< the last word that is still to be sent
    };
    enum class Markup { Unknown, Asking, Escaped, Plain };

    void start();
    Entry &entryFor(const QString &identifier);
    void sendWhatIsReady();
    void send(const std::shared_ptr<Entry> &entry);
    void handleAnswer(Entry &entry, const QDBusMessage &answer);
    void askForMarkup();
    void handleCapabilities(const QDBusMessage &answer);
    void handleOwnerChange(const QString &newOwner);

    BusConnection &m_bus;
    std::chrono::milliseconds m_limit;
    QDBusServiceWatcher m_ownerWatch;
    QString m_owner; ///< unique name; empty as long as it is not known
    Markup m_markup = Markup::Unknown;
    quint64 m_round = 0; ///< of owners: earlier ones say nothing about the present one
    std::list<std::shared_ptr<Entry>> m_entries; ///< the latest comes last
};

} // namespace velmora
