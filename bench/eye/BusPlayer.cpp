#include "eye/BusPlayer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace velmora::bench
{

namespace
{

constexpr auto *objectPath = "/org/mpris/MediaPlayer2";
constexpr auto *playerInterface = "org.mpris.MediaPlayer2.Player";
constexpr auto *propertiesInterface = "org.freedesktop.DBus.Properties";

/// A container inside a message, open as long as this exists.
class Container
{
public:
    Container(DBusMessageIter &parent, int type, const char *contents)
        : m_parent(parent)
    {
        dbus_message_iter_open_container(&parent, type, contents, &m_inner);
    }
    Container(const Container &) = delete;
    Container &operator=(const Container &) = delete;
    ~Container() { dbus_message_iter_close_container(&m_parent, &m_inner); }

    DBusMessageIter &operator*() { return m_inner; }

private:
    DBusMessageIter &m_parent;
    DBusMessageIter m_inner{};
};

void appendText(DBusMessageIter &target, const std::string &text, int type = DBUS_TYPE_STRING)
{
    const char *bytes = text.c_str();
    dbus_message_iter_append_basic(&target, type, &bytes);
}

void appendTextVariant(DBusMessageIter &target, const std::string &text,
                       int type = DBUS_TYPE_STRING)
{
    Container variant(target, DBUS_TYPE_VARIANT, type == DBUS_TYPE_STRING ? "s" : "o");
    appendText(*variant, text, type);
}

void appendMicroseconds(DBusMessageIter &target, double seconds)
{
    Container variant(target, DBUS_TYPE_VARIANT, "x");
    const auto count = static_cast<dbus_int64_t>(seconds * 1e6);
    dbus_message_iter_append_basic(&*variant, DBUS_TYPE_INT64, &count);
}

template<typename Append>
void appendEntry(Container &dictionary, const char *name, Append append)
{
    Container entry(*dictionary, DBUS_TYPE_DICT_ENTRY, nullptr);
    appendText(*entry, name);
    append(*entry);
}

} // namespace

BusConnection connectToSessionBus()
{
    DBusError error = DBUS_ERROR_INIT;
    BusConnection connection(dbus_bus_get_private(DBUS_BUS_SESSION, &error));
    if (!connection)
        throw std::runtime_error("no session bus");
    dbus_connection_set_exit_on_disconnect(connection.get(), FALSE);
    return connection;
}

BusPlayer::BusPlayer(const std::string &name, Track track)
    : m_connection(connectToSessionBus())
    , m_track(std::move(track))
{
    const auto busName = "org.mpris.MediaPlayer2." + name;
    DBusError error = DBUS_ERROR_INIT;
    const int result = dbus_bus_request_name(m_connection.get(), busName.c_str(),
                                             DBUS_NAME_FLAG_DO_NOT_QUEUE, &error);
    if (result != DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER)
        throw std::runtime_error("the name " + busName + " cannot be had");
}

void BusPlayer::play(Track track)
{
    m_track = std::move(track);
    m_began = SteadyClock::now();
    ++m_number;
    const BusMessage signal(
        dbus_message_new_signal(objectPath, propertiesInterface, "PropertiesChanged"));
    DBusMessageIter arguments;
    dbus_message_iter_init_append(signal.get(), &arguments);
    appendText(arguments, playerInterface);
    {
        Container changed(arguments, DBUS_TYPE_ARRAY, "{sv}");
        appendEntry(changed, "Metadata",
                    [this](DBusMessageIter &entry) { appendProperty(entry, "Metadata"); });
    }
    {
        const Container invalidated(arguments, DBUS_TYPE_ARRAY, "s"); // none
    }
    dbus_connection_send(m_connection.get(), signal.get(), nullptr);
    dbus_connection_flush(m_connection.get());
}

std::optional<SteadyClock::time_point> BusPlayer::serve(SteadyClock::time_point end,
                                                        const std::string &awaited)
{
    for (;;) {
        // What was read while something was sent does not wake anybody.
        const bool isWaiting =
            dbus_connection_get_dispatch_status(m_connection.get()) == DBUS_DISPATCH_DATA_REMAINS;
        const double rest = isWaiting ? 0 : millisecondsBetween(SteadyClock::now(), end);
        if (!dbus_connection_read_write(m_connection.get(), std::max(0, static_cast<int>(rest))))
            throw std::runtime_error("the session bus is gone");
        const auto moment = SteadyClock::now();
        bool isCalled = false;
        while (const BusMessage message{dbus_connection_pop_message(m_connection.get())}) {
            if (dbus_message_get_type(message.get()) != DBUS_MESSAGE_TYPE_METHOD_CALL)
                continue;
            isCalled |= !awaited.empty() && dbus_message_get_member(message.get()) == awaited;
            answer(message.get());
        }
        dbus_connection_flush(m_connection.get());
        if (isCalled)
            return moment;
        if (moment >= end)
            return std::nullopt;
    }
}

void BusPlayer::answer(DBusMessage *call)
{
    if (dbus_message_get_no_reply(call))
        return;
    const BusMessage reply(dbus_message_new_method_return(call));
    DBusMessageIter arguments;
    dbus_message_iter_init_append(reply.get(), &arguments);
    const char *interface = nullptr;
    const char *name = nullptr;
    if (dbus_message_is_method_call(call, propertiesInterface, "GetAll"))
        appendProperties(arguments);
    else if (dbus_message_is_method_call(call, propertiesInterface, "Get") &&
             dbus_message_get_args(call, nullptr, DBUS_TYPE_STRING, &interface, DBUS_TYPE_STRING,
                                   &name, DBUS_TYPE_INVALID))
        appendProperty(arguments, name);
    dbus_connection_send(m_connection.get(), reply.get(), nullptr);
}

void BusPlayer::appendProperties(DBusMessageIter &target) const
{
    Container dictionary(target, DBUS_TYPE_ARRAY, "{sv}");
    for (const auto *name : {"PlaybackStatus", "Metadata", "Position"})
        appendEntry(dictionary, name, [&](DBusMessageIter &entry) { appendProperty(entry, name); });
}

void BusPlayer::appendProperty(DBusMessageIter &target, const std::string &name) const
{
    if (name == "Metadata") {
        Container variant(target, DBUS_TYPE_VARIANT, "a{sv}");
        appendMetadata(*variant);
    } else if (name == "Position") {
        const double seconds = millisecondsBetween(m_began, SteadyClock::now()) / 1000;
        appendMicroseconds(target, std::min(seconds, m_track.seconds));
    } else {
        appendTextVariant(target, name == "PlaybackStatus" ? "Playing" : "");
    }
}

void BusPlayer::appendMetadata(DBusMessageIter &target) const
{
    Container dictionary(target, DBUS_TYPE_ARRAY, "{sv}");
    const auto text = [&](const char *name, const std::string &value, int type) {
        appendEntry(dictionary, name,
                    [&](DBusMessageIter &entry) { appendTextVariant(entry, value, type); });
    };
    text("mpris:trackid", "/track/" + std::to_string(m_number), DBUS_TYPE_OBJECT_PATH);
    text("xesam:title", m_track.title, DBUS_TYPE_STRING);
    text("mpris:artUrl", m_track.cover, DBUS_TYPE_STRING);
    appendEntry(dictionary, "mpris:length",
                [&](DBusMessageIter &entry) { appendMicroseconds(entry, m_track.seconds); });
    appendEntry(dictionary, "xesam:artist", [&](DBusMessageIter &entry) {
        Container variant(entry, DBUS_TYPE_VARIANT, "as");
        Container artists(*variant, DBUS_TYPE_ARRAY, "s");
        appendText(*artists, m_track.artist);
    });
}

} // namespace velmora::bench
