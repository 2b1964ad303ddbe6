#pragma once

#include "support/BusPeer.h"

#include <QDBusContext>
#include <QDBusError>
#include <QObject>
#include <QStringList>

namespace velmora::test
{

/// A tray host that comes, goes and refuses as the test likes.
class FakeTray : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")

public:
    explicit FakeTray(const QString &name)
        : m_peer(name)
    {
    }

    void start()
    {
        m_peer.connection().registerObject(path(), this, QDBusConnection::ExportScriptableSlots);
        m_peer.connection().registerService(service());
    }
    void stop()
    {
        m_peer.connection().unregisterService(service());
        m_peer.connection().unregisterObject(path());
        items.clear();
    }

    [[nodiscard]] BusPeer &peer() { return m_peer; }

    QStringList items;
    int refusals = 0; ///< that many registrations are still to be refused

public Q_SLOTS:
    Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString &item)
    {
        if (refusals > 0) {
            --refusals;
            sendErrorReply(QDBusError::UnknownObject, QStringLiteral("not yet"));
            return;
        }
        if (!items.contains(item)) // real ones take a second call for the same thing, too
            items.append(item);
    }

private:
    static QString service() { return QStringLiteral("org.kde.StatusNotifierWatcher"); }
    static QString path() { return QStringLiteral("/StatusNotifierWatcher"); }

    BusPeer m_peer;
};

} // namespace velmora::test
