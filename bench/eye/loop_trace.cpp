/// loop_trace PID SECONDS
///
/// Asks the tray item of a program on the session bus for a property, every five milliseconds. Its
/// main loop has to answer, so that no answer comes while it is blocked. The bus itself is asked at
/// the same moment, to tell what the machine and the bus add. Prints JSON, in milliseconds:
///   loop_ms      the longest time until the program's answer
///   loop_p99_ms  99 of 100 answers came sooner
///   bus_ms       the longest time until the answer of the bus
///   over         how many answers of the program took longer than a frame of 16 ms
///   starved      how many of these the machine explains: the bus was as late, or those who had a
///                part in the answer had to wait so long for a processor
///   worked_ms    the longest time that the main thread computed during one question
///   asked        how many questions there were
#include "eye/BusPlayer.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <unistd.h>
#include <vector>

namespace
{

using namespace velmora::bench;
using namespace std::chrono_literals;

constexpr double frame = 16;
constexpr int patience = 10'000; // milliseconds

struct PendingRelease {
    void operator()(DBusPendingCall *call) const { dbus_pending_call_unref(call); }
};

/// One question that is under way.
class Question
{
public:
    Question(DBusConnection *connection, DBusMessage *call)
    {
        DBusPendingCall *pending = nullptr;
        if (!dbus_connection_send_with_reply(connection, call, &pending, patience) || !pending)
            throw std::runtime_error("a question cannot be sent");
        m_pending.reset(pending);
        dbus_pending_call_set_notify(
            pending,
            [](DBusPendingCall *, void *self) {
                static_cast<Question *>(self)->m_answered = SteadyClock::now();
            },
            this, nullptr);
    }
    Question(const Question &) = delete;
    Question &operator=(const Question &) = delete;
    ~Question() = default;

    [[nodiscard]] bool isAnswered() const
    {
        return dbus_pending_call_get_completed(m_pending.get());
    }

    [[nodiscard]] double time() const
    {
        const BusMessage reply(dbus_pending_call_steal_reply(m_pending.get()));
        if (dbus_message_get_type(reply.get()) == DBUS_MESSAGE_TYPE_ERROR)
            throw std::runtime_error(dbus_message_get_error_name(reply.get()));
        return millisecondsBetween(m_sent, m_answered);
    }

private:
    SteadyClock::time_point m_sent = SteadyClock::now();
    SteadyClock::time_point m_answered;
    std::unique_ptr<DBusPendingCall, PendingRelease> m_pending;
};

BusMessage propertyCall(const std::string &name)
{
    BusMessage call(dbus_message_new_method_call(name.c_str(), "/StatusNotifierItem",
                                                 "org.freedesktop.DBus.Properties", "Get"));
    const char *interface = "org.kde.StatusNotifierItem";
    const char *property = "Status";
    dbus_message_append_args(call.get(), DBUS_TYPE_STRING, &interface, DBUS_TYPE_STRING, &property,
                             DBUS_TYPE_INVALID);
    return call;
}

struct Times {
    double loop;
    double bus;
    double worked; ///< by the main thread
    double waited; ///< for a processor, by all who had a part in the answer

    [[nodiscard]] bool isLate() const { return loop > frame; }
    [[nodiscard]] bool isStarved() const
    {
        return isLate() && (bus > frame || loop - waited <= frame);
    }
};

/// What the scheduler has counted for a thread so far, in milliseconds.
struct Share {
    double ran = 0;
    double waited = 0;
};

Share shareOf(const std::string &thread)
{
    long long ran = 0;
    long long waited = 0;
    std::ifstream file(thread + "/schedstat");
    if (!(file >> ran >> waited))
        throw std::runtime_error("the scheduler tells nothing about " + thread);
    return {static_cast<double>(ran) / 1e6, static_cast<double>(waited) / 1e6};
}

std::string processFolder(long pid)
{
    return "/proc/" + std::to_string(pid);
}

/// The threads that have a part in an answer.
class Threads
{
public:
    Threads(long program, long bus)
        : m_main(processFolder(program) + "/task/" + std::to_string(program))
        , m_others{processFolder(bus), processFolder(getpid())}
    {
        for (const auto &entry :
             std::filesystem::directory_iterator(processFolder(program) + "/task")) {
            std::string name;
            std::ifstream(entry.path() / "comm") >> name;
            if (name.starts_with("QDBusConn"))
                m_others.push_back(entry.path());
        }
    }

    /// `ran` by the main thread, `waited` by all of them.
    [[nodiscard]] Share share() const
    {
        Share sum = shareOf(m_main);
        for (const auto &thread : m_others)
            sum.waited += shareOf(thread).waited;
        return sum;
    }

private:
    std::string m_main;
    std::vector<std::string> m_others;
};

long processOfBus(DBusConnection *connection)
{
    const BusMessage call(dbus_message_new_method_call(
        DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "GetConnectionUnixProcessID"));
    const char *name = DBUS_SERVICE_DBUS;
    dbus_message_append_args(call.get(), DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID);
    const BusMessage reply(
        dbus_connection_send_with_reply_and_block(connection, call.get(), patience, nullptr));
    dbus_uint32_t pid = 0;
    if (!reply ||
        !dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_UINT32, &pid, DBUS_TYPE_INVALID))
        throw std::runtime_error("the bus does not tell its process");
    return static_cast<long>(pid);
}

Times askOnce(DBusConnection *connection, const std::string &name, const Threads &threads)
{
    const Share before = threads.share();
    const BusMessage toProgram = propertyCall(name);
    const BusMessage toBus(dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS,
                                                        DBUS_INTERFACE_DBUS, "GetId"));
    const Question bus(connection, toBus.get());
    const Question program(connection, toProgram.get());
    dbus_connection_flush(connection);
    while (!program.isAnswered() || !bus.isAnswered()) {
        if (!dbus_connection_read_write_dispatch(connection, patience))
            throw std::runtime_error("the session bus is gone");
    }
    const Share after = threads.share();
    return {program.time(), bus.time(), after.ran - before.ran, after.waited - before.waited};
}

void print(std::vector<Times> all)
{
    double bus = 0;
    double worked = 0;
    for (const auto &times : all) {
        bus = std::max(bus, times.bus);
        worked = std::max(worked, times.worked);
    }
    const auto over = std::count_if(all.begin(), all.end(), std::mem_fn(&Times::isLate));
    const auto starved = std::count_if(all.begin(), all.end(), std::mem_fn(&Times::isStarved));
    std::sort(all.begin(), all.end(),
              [](const Times &a, const Times &b) { return a.loop < b.loop; });
    std::printf("{\"loop_ms\": %.2f, \"loop_p99_ms\": %.2f, \"bus_ms\": %.2f, \"over\": %ld, "
                "\"starved\": %ld, \"worked_ms\": %.2f, \"asked\": %zu}\n",
                all.back().loop, all[all.size() * 99 / 100].loop, bus, over, starved, worked,
                all.size());
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: loop_trace PID SECONDS\n");
        return 2;
    }
    try {
        const auto connection = connectToSessionBus();
        const long pid = std::atol(argv[1]);
        const auto name = "org.kde.StatusNotifierItem-" + std::to_string(pid) + "-1";
        const Threads threads(pid, processOfBus(connection.get()));
        const auto seconds = std::clamp(std::atof(argv[2]), 0.1, 3600.0);
        const auto start = SteadyClock::now();
        std::vector<Times> all;
        for (auto next = start; millisecondsBetween(start, next) < seconds * 1000;
             next = std::max(next + 5ms, SteadyClock::now())) {
            sleepUntil(next);
            all.push_back(askOnce(connection.get(), name, threads));
        }
        print(std::move(all));
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "loop_trace: %s\n", error.what());
        return 1;
    }
}
