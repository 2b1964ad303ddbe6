#pragma once

#include "platform/Sharing.h"
#include "platform/linux/dbus/BusConnection.h"

#include <QObject>

namespace velmora
{

/// Sends to the first device that KDE Connect is paired with and can reach. A daemon that does not
/// run is not started.
class KdeConnectSharing final : public QObject, public Sharing
{
    Q_OBJECT

public:
    explicit KdeConnectSharing(BusConnection &bus);

    void send(const QList<QUrl> &files) override;

private:
    void sendTo(const QString &device, const QList<QUrl> &files);

    BusConnection &m_bus;
};

} // namespace velmora
