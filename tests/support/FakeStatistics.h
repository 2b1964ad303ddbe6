#pragma once

#include "platform/SystemStatistics.h"

namespace velmora
{

/// Counters of a machine that a test makes up.
struct FakeStatistics final : SystemStatistics {
    std::optional<std::vector<CoreTicks>> ticks = std::vector<CoreTicks>{};
    std::optional<MemoryPages> pages;
    std::uint64_t memory = 0;
    std::optional<std::vector<InterfaceBytes>> network = std::vector<InterfaceBytes>{};
    FileSystemSize disk;

    std::optional<std::vector<CoreTicks>> processorTicks() override { return ticks; }
    std::optional<MemoryPages> memoryPages() override { return pages; }
    std::uint64_t physicalMemory() override { return memory; }
    std::optional<std::vector<InterfaceBytes>> interfaces() override { return network; }
    FileSystemSize homeFileSystem() override { return disk; }
};

} // namespace velmora
