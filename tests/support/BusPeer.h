#pragma once

#include "platform/linux/dbus/BusConnection.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDebug>
#include <QSignalSpy>
#include <QString>
#include <QVariantList>

namespace velmora::test
{

/// A connection to the test's session bus that shares nothing with others of the process, as
/// another program's would.
class BusPeer
{
public:
    explicit BusPeer(const QString &name)
        : m_connection(
              QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), name))
    {
    }
    BusPeer(const BusPeer &) = delete;
    BusPeer &operator=(const BusPeer &) = delete;
    ~BusPeer() { QDBusConnection::disconnectFromBus(m_connection.name()); }

    [[nodiscard]] QDBusConnection &connection() { return m_connection; }
    [[nodiscard]] BusConnection &bus() { return m_bus; }

    /// Calls while the main loop runs on, since the one that is called may live on it.
    QDBusMessage call(const QString &service, const QString &path, const QString &interface,
                      const QString &method, const QVariantList &arguments = {})
    {
        QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
        message.setArguments(arguments);
        QDBusPendingCallWatcher pending(m_connection.asyncCall(message, 10000));
        QSignalSpy finished(&pending, &QDBusPendingCallWatcher::finished);
        const QDBusMessage answer = finished.wait(15000) ? pending.reply() : QDBusMessage();
        // An answer that never came is no refusal, though it looks like one to the caller.
        if (answer.type() == QDBusMessage::InvalidMessage ||
            QDBusError(answer).type() == QDBusError::NoReply)
            qWarning() << "No answer to" << method;
        return answer;
    }

private:
    QDBusConnection m_connection;
    BusConnection m_bus{m_connection};
};

} // namespace velmora::test
