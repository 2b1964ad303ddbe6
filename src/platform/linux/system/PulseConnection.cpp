#include "platform/linux/system/PulseConnection.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <algorithm>
#include <array>
#include <pulse/glib-mainloop.h>
#include <pulse/pulseaudio.h>
#include <utility>

Q_LOGGING_CATEGORY(lcSound, "com.velmora.app.SoundOutput", QtInfoMsg)

namespace velmora
{

using namespace std::chrono_literals;

namespace
{

constexpr std::array<std::chrono::milliseconds, 5> retryDelays = {2s, 5s, 10s, 30s, 60s};

} // namespace

PulseConnection::PulseConnection(Clock &clock, Events events)
    : m_clock(clock)
    , m_events(std::move(events))
    , m_loop(pa_glib_mainloop_new(nullptr), pa_glib_mainloop_free)
{
    // Not within the constructor: whoever owns us is not complete yet.
    m_retry = m_clock.after(0ms, [this] { connectToServer(); });
}

PulseConnection::~PulseConnection() = default;

pa_context *PulseConnection::context() const
{
    return m_isReady ? m_context.get() : nullptr;
}

void PulseConnection::connectToServer()
{
    m_context.reset(pa_context_new(pa_glib_mainloop_get_api(m_loop.get()), "Velmora"));
    if (!m_context) {
        retryLater();
        return;
    }
    pa_context_set_state_callback(m_context.get(), &PulseConnection::onStateChanged, this);
    // A failure is told by the callback, within this call or later.
    pa_context_connect(m_context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
}

void PulseConnection::onStateChanged(pa_context *context, void *self)
{
    auto *const connection = static_cast<PulseConnection *>(self);
    switch (pa_context_get_state(context)) {
    case PA_CONTEXT_READY:
        connection->m_isReady = true;
        connection->m_failures = 0;
        connection->m_events.ready();
        break;
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED:
        qCDebug(lcSound) << "No sound server:" << pa_strerror(pa_context_errno(context));
        // The dead context is still in use by our caller; the next attempt replaces it.
        connection->retryLater();
        break;
    default:
        break;
    }
}

void PulseConnection::retryLater()
{
    const auto delay = retryDelays[std::min(m_failures, retryDelays.size() - 1)];
    ++m_failures;
    m_retry = m_clock.after(delay, [this] { connectToServer(); });
    if (std::exchange(m_isReady, false))
        m_events.lost();
}

void PulseConnection::ContextDeleter::operator()(pa_context *context) const
{
    // Disconnecting cancels what is under way, so that no callback comes after this.
    pa_context_set_state_callback(context, nullptr, nullptr);
    pa_context_set_subscribe_callback(context, nullptr, nullptr);
    pa_context_disconnect(context);
    pa_context_unref(context);
}

} // namespace velmora
