#include "platform/linux/system/KernelFile.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace velmora
{

namespace
{

constexpr std::size_t initialCapacity = 8UL * 1024;
constexpr std::size_t largestFile =
    4UL * 1024 * 1024; // /proc/stat with thousands of cores and IRQs

} // namespace

KernelFile::KernelFile(std::string path)
    : m_path(std::move(path))
{
}

KernelFile::~KernelFile()
{
    close();
}

std::optional<std::string_view> KernelFile::read()
{
    if (m_descriptor < 0) {
        // Non-blocking, so that not even a pipe in the file's place can hold up the main loop.
        m_descriptor = ::open(m_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (m_descriptor < 0)
            return std::nullopt;
    }
    if (!fill()) {
        close();
        return std::nullopt;
    }
    return std::string_view(m_buffer).substr(0, m_size);
}

bool KernelFile::fill()
{
    if (m_buffer.empty())
        m_buffer.resize(initialCapacity);
    // The kernel hands out such a file in pieces of whole records, so one short read is no end.
    m_size = 0;
    while (true) {
        if (m_size == m_buffer.size()) {
            if (m_size >= largestFile)
                return false;
            m_buffer.resize(m_size * 2);
        }
        const ssize_t count = ::pread(m_descriptor, m_buffer.data() + m_size,
                                      m_buffer.size() - m_size, static_cast<off_t>(m_size));
        if (count > 0)
            m_size += static_cast<std::size_t>(count);
        else if (count == 0)
            return true;
        else if (errno != EINTR)
            return false;
    }
}

void KernelFile::close()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = -1;
}

} // namespace velmora
