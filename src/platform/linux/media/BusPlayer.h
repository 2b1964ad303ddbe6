#pragma once

#include "platform/linux/dbus/BusInquiry.h"
#include "platform/linux/dbus/BusProperties.h"
#include "platform/linux/media/MprisPlayer.h"

namespace velmora
{

/// An MPRIS player of a bus. Its state comes from what it tells by itself; it is only asked for
/// what it leaves out. Everything arrives in the order in which the player sent it.
class BusPlayer : public QObject
{
    Q_OBJECT

public:
    /// `owner`: the unique name of the player's connection. The clock has to outlive the object.
    BusPlayer(const QDBusConnection &bus, Clock &clock, const QString &owner);

    [[nodiscard]] const MprisPlayer &state() const { return m_state; }

    /// Asks for the position if the last word about it is old; the answer is told as a change.
    void refreshPosition();
    /// Calls a method without arguments, and forgets about it.
    void send(const QString &method) const;

Q_SIGNALS:
    /// The player has said something, be it new or not.
    void told();

private Q_SLOTS:
    void takeSeeked(const QDBusMessage &signal);

private:
    void tell();

    QDBusConnection m_bus;
    Clock &m_clock;
    QString m_owner;
    MprisPlayer m_state;
    BusProperties m_properties;
    BusInquiry m_position;
    std::chrono::nanoseconds m_positionAsked{0};
};

} // namespace velmora
