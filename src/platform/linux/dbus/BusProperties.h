#pragma once

#include "platform/linux/dbus/BusInquiry.h"
#include "platform/linux/dbus/OwnerWatch.h"

#include <QVariantMap>

#include <optional>

namespace velmora
{

/// The properties of one interface of one object, followed for as long as the object lives, through
/// restarts of the service that exports it.
class BusProperties : public QObject
{
    Q_OBJECT

public:
    struct Source {
        QString service; ///< a unique name, or one whose owner may change
        QString path;
        QString interface;
    };

    BusProperties(const QDBusConnection &bus, Clock &clock, Source source);

Q_SIGNALS:
    /// All properties; one that is not among them does not exist. Empty when the service has gone.
    void loaded(const QVariantMap &properties);
    void changed(const QVariantMap &properties);

private Q_SLOTS:
    void takeChange(const QDBusMessage &signal);

private:
    void setOwner(const QString &owner);

    QDBusConnection m_bus;
    Source m_source;
    QString m_owner; ///< unique name; empty while there is none
    BusInquiry m_inquiry;
    std::optional<OwnerWatch> m_watch; ///< of names that are not unique
};

} // namespace velmora
