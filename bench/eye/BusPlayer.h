#pragma once

#include "eye/Ticker.h"

#include <dbus/dbus.h>
#include <memory>
#include <optional>
#include <string>

namespace velmora::bench
{

/// Connects to the session bus. Throws std::runtime_error where there is none.
struct BusDisconnect {
    void operator()(DBusConnection *connection) const
    {
        dbus_connection_close(connection);
        dbus_connection_unref(connection);
    }
};
using BusConnection = std::unique_ptr<DBusConnection, BusDisconnect>;
[[nodiscard]] BusConnection connectToSessionBus();

struct MessageRelease {
    void operator()(DBusMessage *message) const { dbus_message_unref(message); }
};
using BusMessage = std::unique_ptr<DBusMessage, MessageRelease>;

/// What a player plays. `seconds` is its length; the address of the cover may be empty.
struct Track {
    std::string title;
    std::string artist;
    double seconds = 0;
    std::string cover;
};

/// A player on the session bus without any toolkit, so that it shares no memory with the program
/// that is measured and adds nothing of its own to the times. It plays from the moment it exists.
class BusPlayer
{
public:
    BusPlayer(const std::string &name, Track track);

    /// Another track begins, and the bus is told before this returns.
    void play(Track track);

    /// Answers what comes in until `end`; returns early, with the moment, when this method of the
    /// player is called.
    std::optional<SteadyClock::time_point> serve(SteadyClock::time_point end,
                                                 const std::string &awaited = {});

private:
    void answer(DBusMessage *call);
    void appendMetadata(DBusMessageIter &target) const;
    void appendProperties(DBusMessageIter &target) const;
    void appendProperty(DBusMessageIter &target, const std::string &name) const;

    BusConnection m_connection;
    Track m_track;
    int m_number = 1;
    SteadyClock::time_point m_began = SteadyClock::now();
};

} // namespace velmora::bench
