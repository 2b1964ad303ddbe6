#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QTimer>

namespace velmora
{

/// Tells the tray of this session about the item that its connection exports, whenever there is a
/// tray: one that comes later, and each that follows after a restart. Nothing blocks.
class StatusNotifierRegistration : public QObject
{
    Q_OBJECT

public:
    explicit StatusNotifierRegistration(const QDBusConnection &connection);
    StatusNotifierRegistration(const StatusNotifierRegistration &) = delete;
    StatusNotifierRegistration &operator=(const StatusNotifierRegistration &) = delete;
    ~StatusNotifierRegistration() override;

private:
    void requestName();
    void registerWithWatcher();
    void handleAnswer(const QDBusMessage &answer);
    void handleOwnerChange(const QString &newOwner);

    QDBusConnection m_connection;
    QString m_serviceName;   ///< what we asked the bus to call us
    QString m_announcedName; ///< what the watcher is told; empty until the bus has answered
    QDBusServiceWatcher m_watcherOwner;
    QTimer m_retry;
    int m_failures = 0;
    quint64 m_round = 0; ///< answers of an earlier owner are of no interest
};

} // namespace velmora
