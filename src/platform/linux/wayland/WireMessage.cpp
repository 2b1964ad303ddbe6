#include "platform/linux/wayland/WireMessage.h"

#include <cstring>

namespace velmora
{

namespace
{

constexpr std::size_t wordSize = sizeof(std::uint32_t);
constexpr std::size_t headerSize = 2 * wordSize;

std::uint32_t wordAt(Bytes bytes, std::size_t index)
{
    std::uint32_t word = 0;
    std::memcpy(&word, bytes.data() + index * wordSize, wordSize);
    return word;
}

} // namespace

std::uint32_t WireMessage::word(std::size_t index) const
{
    return (index + 1) * wordSize <= arguments.size() ? wordAt(arguments, index) : 0;
}

void WireReader::add(Bytes more)
{
    m_bytes.insert(m_bytes.end(), more.begin(), more.end());
}

std::optional<WireMessage> WireReader::next()
{
    const Bytes rest = Bytes(m_bytes).subspan(m_taken);
    if (m_isLost || rest.size() < headerSize)
        return std::nullopt;
    const std::uint32_t sizeAndOpcode = wordAt(rest, 1);
    const std::size_t size = sizeAndOpcode >> 16;
    m_isLost = size < headerSize;
    if (m_isLost || size > rest.size())
        return std::nullopt;
    m_taken += size;
    return WireMessage{wordAt(rest, 0), static_cast<std::uint16_t>(sizeAndOpcode),
                       rest.subspan(headerSize, size - headerSize)};
}

void WireReader::drop()
{
    m_bytes.erase(m_bytes.begin(), m_bytes.begin() + static_cast<std::ptrdiff_t>(taken()));
    m_taken = 0;
}

} // namespace velmora
