#pragma once

#include "platform/Sharing.h"

#include <QDBusConnection>
#include <QObject>

namespace velmora
{

/// Sends to the first device that KDE Connect is paired with and can reach. A daemon that does not
/// run is not started.
class KdeConnectSharing final : public QObject, public Sharing
{
    Q_OBJECT

public:
    explicit KdeConnectSharing(const QDBusConnection &bus);

    void send(const QList<QUrl> &files) override;

private:
    void sendTo(const QString &device, const QList<QUrl> &files);

    QDBusConnection m_bus;
};

} // namespace velmora
