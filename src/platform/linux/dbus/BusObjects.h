#pragma once

#include "platform/linux/dbus/BusInquiry.h"
#include "platform/linux/dbus/OwnerWatch.h"

#include <QMap>
#include <QVariantMap>

namespace velmora
{

/// All objects of a service that lists them (org.freedesktop.DBus.ObjectManager), with their
/// properties, followed through restarts of the service.
class BusObjects : public QObject
{
    Q_OBJECT

public:
    using Interfaces = QMap<QString, QVariantMap>;

    /// `root`: the path of the object manager. The clock has to outlive the object.
    BusObjects(const QDBusConnection &bus, Clock &clock, const QString &service, QString root);

    /// By path; none while the service is not there.
    [[nodiscard]] const QMap<QString, Interfaces> &all() const { return m_objects; }

Q_SIGNALS:
    /// Objects have come, have gone, or have changed.
    void changed();

private Q_SLOTS:
    void listAnew() { m_inquiry.request(); }
    void takeChange(const QDBusMessage &signal);

private:
    void setOwner(const QString &owner);

    QDBusConnection m_bus;
    QString m_root;
    QString m_owner; ///< unique name; empty while there is none
    QMap<QString, Interfaces> m_objects;
    BusInquiry m_inquiry;
    OwnerWatch m_watch;
};

} // namespace velmora
