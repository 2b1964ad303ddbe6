#include "platform/linux/wayland/CompositorGlobals.h"

#include <memory>
#include <poll.h>
#include <wayland-client.h>

namespace velmora
{
namespace
{

using SteadyClock = std::chrono::steady_clock;

struct Disconnect {
    void operator()(wl_display *display) const { wl_display_disconnect(display); }
};
using DisplayPtr = std::unique_ptr<wl_display, Disconnect>;

void addGlobal(void *names, wl_registry *, std::uint32_t, const char *interface, std::uint32_t)
{
    static_cast<std::vector<std::string> *>(names)->emplace_back(interface);
}

void ignoreRemoval(void *, wl_registry *, std::uint32_t) {}

void noteDone(void *done, wl_callback *, std::uint32_t)
{
    *static_cast<bool *>(done) = true;
}

/// Reads and handles what comes until `done`; false if the time is over or the connection lost.
bool dispatchUntil(wl_display *display, const bool &done, SteadyClock::time_point deadline)
{
    while (!done) {
        while (wl_display_prepare_read(display) != 0) {
            if (wl_display_dispatch_pending(display) < 0)
                return false;
        }
        wl_display_flush(display);

        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock::now());
        pollfd readable{wl_display_get_fd(display), POLLIN, 0};
        if (left.count() <= 0 || poll(&readable, 1, static_cast<int>(left.count())) <= 0) {
            wl_display_cancel_read(display);
            return false;
        }
        if (wl_display_read_events(display) < 0 || wl_display_dispatch_pending(display) < 0)
            return false;
    }
    return true;
}

} // namespace

std::optional<std::vector<std::string>> compositorGlobals(std::chrono::milliseconds limit)
{
    const auto deadline = SteadyClock::now() + limit;
    const DisplayPtr display(wl_display_connect(nullptr));
    if (!display)
        return std::nullopt;

    static constexpr wl_registry_listener registryListener{addGlobal, ignoreRemoval};
    static constexpr wl_callback_listener doneListener{noteDone};
    std::vector<std::string> names;
    bool done = false;
    wl_registry *registry = wl_display_get_registry(display.get());
    wl_registry_add_listener(registry, &registryListener, &names);
    wl_callback *callback = wl_display_sync(display.get());
    wl_callback_add_listener(callback, &doneListener, &done);

    const bool complete = dispatchUntil(display.get(), done, deadline);
    wl_callback_destroy(callback);
    wl_registry_destroy(registry);
    return complete ? std::optional(names) : std::nullopt;
}

} // namespace velmora
