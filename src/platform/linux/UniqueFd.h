#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace velmora
{

/// A file descriptor that is closed by itself; -1 for none.
class UniqueFd
{
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd)
        : m_fd(fd)
    {
    }
    UniqueFd(UniqueFd &&other) noexcept
        : m_fd(std::exchange(other.m_fd, -1))
    {
    }
    UniqueFd &operator=(UniqueFd &&other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    UniqueFd(const UniqueFd &) = delete;
    UniqueFd &operator=(const UniqueFd &) = delete;
    ~UniqueFd()
    {
        if (m_fd >= 0) {
            close(m_fd);
        }
    }

    [[nodiscard]] int get() const { return m_fd; }
    [[nodiscard]] bool isOpen() const { return m_fd >= 0; }
    [[nodiscard]] int release() { return std::exchange(m_fd, -1); }

private:
    int m_fd = -1;
};

/// Opens a file to read from; none unless it is a plain one: a pipe would keep us waiting.
[[nodiscard]] inline UniqueFd openPlainFile(const char *path)
{
    UniqueFd fd(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat info = {};
    return fd.isOpen() && fstat(fd.get(), &info) == 0 && S_ISREG(info.st_mode) ? std::move(fd)
                                                                               : UniqueFd();
}

} // namespace velmora
