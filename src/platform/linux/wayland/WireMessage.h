#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace velmora
{

using Bytes = std::span<const std::byte>;

/// One message of the Wayland wire format: the object's number, then size in bytes (header
/// included) and opcode in one word, then the arguments. All words are in the host's byte order.
struct WireMessage {
    std::uint32_t object;
    std::uint16_t opcode;
    Bytes arguments;

    /// The word at this place among the arguments; 0 beyond their end.
    [[nodiscard]] std::uint32_t word(std::size_t index) const;
};

/// Puts the messages of one direction together, however the connection cuts them.
class WireReader
{
public:
    void add(Bytes more);

    /// All that has come since the last `drop`.
    [[nodiscard]] Bytes bytes() const { return m_bytes; }

    /// The next message, good until more is added; none while it is not whole.
    [[nodiscard]] std::optional<WireMessage> next();

    /// Where the last message ends that `next` has told of. After anything that is no message at
    /// all no more are told apart, and this is the end of what has come.
    [[nodiscard]] std::size_t taken() const { return m_isLost ? m_bytes.size() : m_taken; }

    /// Forgets what has been taken.
    void drop();

private:
    std::vector<std::byte> m_bytes;
    std::size_t m_taken = 0;
    bool m_isLost = false;
};

} // namespace velmora
