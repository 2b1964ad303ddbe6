#pragma once

#include "platform/linux/UniqueFd.h"
#include "platform/linux/wayland/WireMessage.h"

#include <vector>

namespace velmora
{

/// One direction between two stream sockets, with the file descriptors that travel in it. Holds up
/// to a megabyte while the receiver is busy; then the sender has to wait.
class SocketTransfer
{
public:
    SocketTransfer(int from, int to);

    [[nodiscard]] bool canReceive() const;
    [[nodiscard]] bool canSend() const { return m_sent < m_held.size(); }

    /// Hands what has come, if anything has, to `queue(bytes)`, which returns what is to be sent.
    /// False if no more will ever come.
    template<typename Queue>
    [[nodiscard]] bool receive(Queue queue)
    {
        const bool isOpen = receive();
        if (!m_chunk.empty())
            hold(queue(Bytes(m_chunk)));
        return isOpen;
    }

    /// Sends what the receiver takes now; false if it never takes any more.
    [[nodiscard]] bool send();

private:
    bool receive();
    void hold(Bytes bytes);

    int m_from;
    int m_to;
    std::vector<std::byte> m_chunk; ///< the last that came
    std::vector<std::byte> m_held;
    std::size_t m_sent = 0;              ///< of what is held
    std::vector<UniqueFd> m_descriptors; ///< go with the next byte
};

} // namespace velmora
