#pragma once

#include <unistd.h>
#include <utility>

namespace velmora
{

/// A file descriptor that is closed with its owner.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int number)
        : m_number(number)
    {
    }
    Descriptor(Descriptor &&other) noexcept
        : m_number(other.release())
    {
    }
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor()
    {
        if (m_number >= 0)
            close(m_number);
    }

    [[nodiscard]] bool isValid() const { return m_number >= 0; }
    [[nodiscard]] int get() const { return m_number; }
    [[nodiscard]] int release() { return std::exchange(m_number, -1); }

private:
    int m_number = -1;
};

/// A connection to the compositor that the environment names, made without ever waiting, and not
/// inherited by child processes. Invalid if that fails.
[[nodiscard]] Descriptor connectToCompositor();

} // namespace velmora
