#pragma once

#include "platform/linux/UniqueFd.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_set>

namespace velmora
{

/// A set of Wayland surfaces that two threads share.
class SharedSurfaces
{
public:
    void insert(std::uint32_t surface)
    {
        const std::scoped_lock lock(m_mutex);
        m_surfaces.insert(surface);
    }
    void erase(std::uint32_t surface)
    {
        const std::scoped_lock lock(m_mutex);
        m_surfaces.erase(surface);
    }
    [[nodiscard]] std::unordered_set<std::uint32_t> copy() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_surfaces;
    }

private:
    mutable std::mutex m_mutex;
    std::unordered_set<std::uint32_t> m_surfaces;
};

/// Stands between this process and the Wayland compositor, and thins out the pointer's motion.
///
/// A compositor reports each move of a mouse over our windows, thousands in a second, and no client
/// can ask it for fewer; taking in one costs Qt some 50 microseconds on two threads. Here what
/// comes within 8 milliseconds after a motion is gathered, and only the newest of the motions is
/// passed on. Without motion nothing waits. It all happens on a thread of its own, since Qt blocks
/// while it waits for the compositor's answers.
class CompositorProxy
{
public:
    /// Passes on between two connected sockets, both of which do not block, until either of them
    /// ends; then it closes both.
    CompositorProxy(UniqueFd compositor, UniqueFd client);
    CompositorProxy(const CompositorProxy &) = delete;
    CompositorProxy &operator=(const CompositorProxy &) = delete;
    /// Passes on what the client has sent so far, without waiting for more.
    ~CompositorProxy();

    /// Whether this surface, an object's number, has to hear of the pointer's moves, as all do at
    /// first. Else it is told where the pointer is only right before that does something, such as
    /// pressing a button.
    void setMotionWanted(std::uint32_t surface, bool wanted);

    /// Connects to the compositor, and has the next Wayland connection that this process makes
    /// (Qt's) lead through the proxy. Null, with all as it was, if that cannot be.
    [[nodiscard]] static std::shared_ptr<CompositorProxy> interpose();

private:
    SharedSurfaces m_quietSurfaces;
    UniqueFd m_stop;
    std::thread m_thread;
};

} // namespace velmora
