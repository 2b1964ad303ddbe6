#pragma once

#include <QString>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace velmora
{

/// Tick counters of one processor core since start: user, system, idle, nice. They may wrap.
using CoreTicks = std::array<std::uint32_t, 4>;

struct MemoryPages {
    std::uint64_t active = 0;   ///< pages in use by programs
    std::uint64_t wired = 0;    ///< pages that the kernel itself holds
    std::uint64_t pageSize = 0; ///< bytes
};

/// Byte counters of one network interface since it came up.
struct InterfaceBytes {
    QString name; ///< "en0", "en1", … for physical interfaces
    std::uint64_t sent = 0;
    std::uint64_t received = 0;
};

struct FileSystemSize {
    std::optional<double> freeBytes;
    std::optional<double> totalBytes;
};

/// Counters of the machine. All reads are immediate and cheap (kernel files kept open).
class SystemStatistics
{
public:
    SystemStatistics() = default;
    SystemStatistics(const SystemStatistics &) = delete;
    SystemStatistics &operator=(const SystemStatistics &) = delete;
    virtual ~SystemStatistics() = default;

    /// One entry a core; nothing if the counters cannot be read.
    [[nodiscard]] virtual std::optional<std::vector<CoreTicks>> processorTicks() = 0;
    [[nodiscard]] virtual std::optional<MemoryPages> memoryPages() = 0;
    /// Bytes of memory in the machine.
    [[nodiscard]] virtual std::uint64_t physicalMemory() = 0;
    /// All interfaces, in the kernel's order; nothing if they cannot be listed.
    [[nodiscard]] virtual std::optional<std::vector<InterfaceBytes>> interfaces() = 0;
    /// The file system of the home directory.
    [[nodiscard]] virtual FileSystemSize homeFileSystem() = 0;
};

} // namespace velmora
