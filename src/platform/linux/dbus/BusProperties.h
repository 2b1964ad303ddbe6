#pragma once

#include "platform/linux/dbus/BusInquiry.h"

#include <QVariantMap>

namespace velmora
{

/// The properties of one interface of one object, followed for as long as the object lives.
class BusProperties : public QObject
{
    Q_OBJECT

public:
    struct Source {
        QString owner; ///< the unique name of a connection
        QString path;
        QString interface;
    };

    BusProperties(QDBusConnection bus, Clock &clock, const Source &source);

Q_SIGNALS:
    /// All properties; one that is not among them does not exist.
    void loaded(const QVariantMap &properties);
    void changed(const QVariantMap &properties);

private Q_SLOTS:
    void takeChange(const QDBusMessage &signal);

private:
    QString m_interface;
    BusInquiry m_inquiry;
};

} // namespace velmora
