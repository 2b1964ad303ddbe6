#pragma once

#include "platform/Clock.h"

#include <functional>
#include <memory>

struct pa_context;
struct pa_glib_mainloop;

namespace velmora
{

/// A connection to the user's sound server on the GLib main loop (which is Qt's). There may be no
/// server, and it may come and go: an attempt is made at start, then 2, 5, 10, 30 and at last every
/// 60 seconds until one holds. Nothing here blocks, and no server is ever started.
class PulseConnection
{
public:
    struct Events {
        std::function<void()> ready; ///< `context()` can be used from now on
        std::function<void()> lost;  ///< everything known of the server is void
    };

    /// The clock has to outlive the connection. Events are sent from the main loop only.
    PulseConnection(Clock &clock, Events events);
    PulseConnection(const PulseConnection &) = delete;
    PulseConnection &operator=(const PulseConnection &) = delete;
    ~PulseConnection();

    /// Null while there is no connection.
    [[nodiscard]] pa_context *context() const;

private:
    struct ContextDeleter {
        void operator()(pa_context *context) const;
    };

    static void onStateChanged(pa_context *context, void *self);
    void connectToServer();
    void retryLater();

    Clock &m_clock;
    Events m_events;
    std::unique_ptr<pa_glib_mainloop, void (*)(pa_glib_mainloop *)> m_loop;
    std::unique_ptr<pa_context, ContextDeleter> m_context;
    bool m_isReady = false;
    std::size_t m_failures = 0;
    TimerHandle m_retry;
};

} // namespace velmora
