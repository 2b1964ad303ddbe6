#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velmora
{

/// A text file of the kernel that is read again and again: opened at the first reading, kept open,
/// and read from its beginning into a buffer that is kept too.
class KernelFile
{
public:
    explicit KernelFile(std::string path);
    KernelFile(const KernelFile &) = delete;
    KernelFile &operator=(const KernelFile &) = delete;
    ~KernelFile();

    /// The whole text, valid until the next reading; nothing if it cannot be read or is larger than
    /// any such file is. A file that failed is opened anew the next time.
    [[nodiscard]] std::optional<std::string_view> read();

private:
    [[nodiscard]] bool fill();
    void close();

    std::string m_path;
    std::string m_buffer;
    std::size_t m_size = 0;
    int m_descriptor = -1;
};

} // namespace velmora
