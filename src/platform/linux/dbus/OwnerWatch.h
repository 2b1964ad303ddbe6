#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>

namespace velmora
{

/// Tells who owns a bus name, first and at every change, without ever waiting for the bus.
class OwnerWatch : public QObject
{
    Q_OBJECT

public:
    /// `name`: one name, or "org.example*" for all names below org.example. Without a connection
    /// nobody ever appears.
    OwnerWatch(const QDBusConnection &bus, QString name);

Q_SIGNALS:
    /// `owner` is the unique name of a connection. A change of owner is both, in this order.
    void vanished(const QString &name, const QString &owner);
    void appeared(const QString &name, const QString &owner);

private Q_SLOTS:
    void forgetAll();

private:
    void askOwner(const QString &name);
    void setOwner(const QString &name, const QString &owner);

    QDBusConnection m_bus;
    QDBusServiceWatcher m_watcher;
    QHash<QString, QString> m_owners;
    QSet<QString> m_asked; ///< names whose owner is being asked for
};

} // namespace velmora
