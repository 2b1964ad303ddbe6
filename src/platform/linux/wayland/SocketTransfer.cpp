#include "platform/linux/wayland/SocketTransfer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <sys/socket.h>

namespace velmora
{

namespace
{

constexpr std::size_t maximumChunk = 16384;
constexpr std::size_t maximumHeld = 1'048'576;
constexpr std::size_t maximumDescriptors = 253; // the kernel's own limit for one message

using ControlBuffer = std::array<std::byte, CMSG_SPACE(maximumDescriptors * sizeof(int))>;

std::vector<UniqueFd> descriptorsIn(msghdr &header)
{
    std::vector<UniqueFd> descriptors;
    for (cmsghdr *part = CMSG_FIRSTHDR(&header); part; part = CMSG_NXTHDR(&header, part)) {
        if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS)
            continue;
        const std::size_t count = (part->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t i = 0; i < count; ++i) {
            int number = -1;
            std::memcpy(&number, CMSG_DATA(part) + i * sizeof(int), sizeof number);
            descriptors.emplace_back(number);
        }
    }
    return descriptors;
}

void putDescriptors(msghdr &header, ControlBuffer &buffer, const std::vector<UniqueFd> &descriptors)
{
    if (descriptors.empty())
        return;
    header.msg_control = buffer.data();
    header.msg_controllen = CMSG_SPACE(descriptors.size() * sizeof(int));
    cmsghdr *const part = CMSG_FIRSTHDR(&header);
    part->cmsg_level = SOL_SOCKET;
    part->cmsg_type = SCM_RIGHTS;
    part->cmsg_len = CMSG_LEN(descriptors.size() * sizeof(int));
    for (std::size_t i = 0; i < descriptors.size(); ++i) {
        const int number = descriptors[i].get();
        std::memcpy(CMSG_DATA(part) + i * sizeof(int), &number, sizeof number);
    }
}

bool isOpenAfterError()
{
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}

} // namespace

SocketTransfer::SocketTransfer(int from, int to)
    : m_from(from)
    , m_to(to)
{
}

bool SocketTransfer::canReceive() const
{
    // Descriptors are not to pile up: a receiver takes in as many at once as a sender sends.
    return !canSend() || (m_held.size() - m_sent < maximumHeld && m_descriptors.empty());
}

bool SocketTransfer::receive()
{
    alignas(cmsghdr) ControlBuffer control;
    m_chunk.resize(maximumChunk);
    iovec part{m_chunk.data(), m_chunk.size()};
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    header.msg_control = control.data();
    header.msg_controllen = control.size();
    const ssize_t size = recvmsg(m_from, &header, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    const bool isOpen = size < 0 ? isOpenAfterError() : size > 0;
    m_chunk.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    if (size > 0)
        std::ranges::move(descriptorsIn(header), std::back_inserter(m_descriptors));
    return isOpen;
}

void SocketTransfer::hold(Bytes bytes)
{
    m_held.erase(m_held.begin(), m_held.begin() + static_cast<std::ptrdiff_t>(m_sent));
    m_sent = 0;
    m_held.insert(m_held.end(), bytes.begin(), bytes.end());
}

bool SocketTransfer::send()
{
    while (canSend()) {
        alignas(cmsghdr) ControlBuffer control{};
        iovec part{m_held.data() + m_sent, m_held.size() - m_sent};
        msghdr header{};
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        putDescriptors(header, control, m_descriptors);
        const ssize_t size = sendmsg(m_to, &header, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (size < 0)
            return isOpenAfterError();
        m_descriptors.clear();
        m_sent += static_cast<std::size_t>(size);
    }
    return true;
}

} // namespace velmora
