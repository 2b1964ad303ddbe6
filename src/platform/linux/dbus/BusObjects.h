#pragma once

#include "platform/linux/dbus/BusInquiry.h"

#include <QMap>
#include <QVariantMap>

namespace velmora
{

/// All objects of a program that lists them (org.freedesktop.DBus.ObjectManager), with their
/// properties, followed for as long as the program is there. With each change all are asked for
/// again, at most every 30 ms.
class BusObjects : public QObject
{
    Q_OBJECT

public:
    using Interfaces = QMap<QString, QVariantMap>;

    /// `owner`: the unique name of the program's connection; `root`: the path of its object
    /// manager. The clock has to outlive the object.
    BusObjects(QDBusConnection bus, Clock &clock, const QString &owner, const QString &root);

    /// By path; none as long as the program has not answered.
    [[nodiscard]] const QMap<QString, Interfaces> &all() const { return m_objects; }

Q_SIGNALS:
    /// Objects have come, have gone, or have changed.
    void changed();

private Q_SLOTS:
    void listAnew() { m_inquiry.request(); }

private:
    QMap<QString, Interfaces> m_objects;
    BusInquiry m_inquiry;
};

} // namespace velmora
