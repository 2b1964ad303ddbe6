#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>

namespace velmora
{

/// Tick counters of one processor core since start: user, system, idle, nice.
using CoreTicks = std::array<std::uint64_t, 4>;

/// In bytes.
struct MemorySize {
    std::uint64_t used = 0;
    std::uint64_t total = 0;
};

/// Byte counters of the physical network interfaces, all together.
struct NetworkBytes {
    std::uint64_t sent = 0;
    std::uint64_t received = 0;
};

struct FileSystemSize {
    double freeBytes = 0;
    double totalBytes = 0;
};

/// Counters of the machine. All reads are immediate and cheap (kernel files kept open).
class SystemStatistics
{
public:
    SystemStatistics() = default;
    SystemStatistics(const SystemStatistics &) = delete;
    SystemStatistics &operator=(const SystemStatistics &) = delete;
    virtual ~SystemStatistics() = default;

    /// By the numbers of the cores that are running; empty if the counters cannot be read.
    [[nodiscard]] virtual std::map<std::uint64_t, CoreTicks> processorTicks() = 0;
    [[nodiscard]] virtual std::optional<MemorySize> memory() = 0;
    /// Zeros if the counters cannot be read.
    [[nodiscard]] virtual NetworkBytes networkBytes() = 0;
    /// The file system of the home directory; zeros if it cannot be asked.
    [[nodiscard]] virtual FileSystemSize homeFileSystem() = 0;
};

} // namespace velmora
