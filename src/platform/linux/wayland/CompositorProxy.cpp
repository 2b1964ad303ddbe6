#include "platform/linux/wayland/CompositorProxy.h"

#include "platform/linux/wayland/CompositorSocket.h"
#include "platform/linux/wayland/MotionFilter.h"
#include "platform/linux/wayland/SocketTransfer.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <system_error>

namespace velmora
{

namespace
{

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

/// Half a frame: nobody sees motion more often, and nothing that waits for it misses its frame.
constexpr auto motionInterval = 8ms;

/// A socket that is neither to be read nor to be written is not looked at, since its end would be
/// told again and again.
pollfd watch(const UniqueFd &socket, bool isReading, bool isWriting)
{
    const int events = (isReading ? POLLIN : 0) | (isWriting ? POLLOUT : 0);
    return {events == 0 ? -1 : socket.get(), static_cast<short>(events), 0};
}

/// The thread's own state.
class Passage
{
public:
    Passage(UniqueFd compositor, UniqueFd client, int stop, const SharedSurfaces &quietSurfaces)
        : m_compositor(std::move(compositor))
        , m_client(std::move(client))
        , m_stop(stop)
        , m_quietSurfaces(quietSurfaces)
        , m_requests(m_client.get(), m_compositor.get())
        , m_events(m_compositor.get(), m_client.get())
    {
    }

    void run()
    {
        constexpr int readable = POLLIN | POLLHUP | POLLERR;
        bool isOpen = true;
        while (isOpen) {
            const int restLeft = millisecondsOfRest();
            const bool isReading = restLeft == 0 && m_events.canReceive();
            std::array<pollfd, 3> watched{{
                watch(m_compositor, isReading, m_requests.canSend()),
                watch(m_client, m_requests.canReceive(), m_events.canSend()),
                {m_stop, POLLIN, 0},
            }};
            poll(watched.data(), watched.size(), restLeft == 0 ? -1 : restLeft);
            isOpen = watched[2].revents == 0;
            if (watched[1].revents & readable)
                isOpen &= receiveRequests();
            if (watched[0].revents & readable)
                isOpen &= receiveEvents();
            isOpen &= m_requests.send() && m_events.send();
        }
    }

private:
    [[nodiscard]] int millisecondsOfRest() const
    {
        const auto left = m_restEnd - SteadyClock::now();
        return left > 0ms ? static_cast<int>(ceil<std::chrono::milliseconds>(left).count()) : 0;
    }

    bool receiveRequests()
    {
        return m_requests.receive([this](Bytes requests) {
            m_filter.observe(requests);
            return requests;
        });
    }

    bool receiveEvents()
    {
        MotionFilter::Passed passed{};
        return m_events.receive([this, &passed](Bytes events) {
            m_filter.setQuietSurfaces(m_quietSurfaces.copy());
            passed = m_filter.filter(events);
            if (passed.hasMotion)
                m_restEnd = SteadyClock::now() + motionInterval;
            return Bytes(passed.bytes);
        });
    }

    UniqueFd m_compositor;
    UniqueFd m_client;
    int m_stop;
    const SharedSurfaces &m_quietSurfaces;
    MotionFilter m_filter;
    SocketTransfer m_requests;
    SocketTransfer m_events;
    SteadyClock::time_point m_restEnd{};
};

/// Signals are for the main thread alone.
class SignalsBlocked
{
public:
    SignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    SignalsBlocked(const SignalsBlocked &) = delete;
    SignalsBlocked &operator=(const SignalsBlocked &) = delete;
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

private:
    sigset_t m_before{};
};

} // namespace

CompositorProxy::CompositorProxy(UniqueFd compositor, UniqueFd client)
    : m_stop(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    const SignalsBlocked blocked;
    auto passage = std::make_unique<Passage>(std::move(compositor), std::move(client), m_stop.get(),
                                             m_quietSurfaces);
    m_thread = std::thread([passage = std::move(passage)]() mutable {
        passage->run();
        passage.reset(); // closes both ends, for the sides to see
    });
}

CompositorProxy::~CompositorProxy()
{
    eventfd_write(m_stop.get(), 1);
    m_thread.join();
}

void CompositorProxy::setMotionWanted(std::uint32_t surface, bool wanted)
{
    if (wanted)
        m_quietSurfaces.erase(surface);
    else
        m_quietSurfaces.insert(surface);
}

std::shared_ptr<CompositorProxy> CompositorProxy::interpose()
{
    UniqueFd compositor = connectToCompositor();
    std::array<int, 2> pair{-1, -1};
    if (!compositor.isOpen() ||
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, pair.data()) != 0)
        return nullptr;
    UniqueFd qtsEnd(pair[1]);
    try {
        auto proxy = std::make_shared<CompositorProxy>(std::move(compositor), UniqueFd(pair[0]));
        setenv("WAYLAND_SOCKET", std::to_string(qtsEnd.release()).c_str(), 1);
        return proxy;
    } catch (const std::system_error &) { // no more threads
        return nullptr;
    }
}

} // namespace velmora
