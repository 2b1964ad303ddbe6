#pragma once

#include "platform/SoundOutput.h"
#include "platform/SystemStatistics.h"

#include <vector>

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

/// A sound server that says what a test wants, and remembers what it was told.
struct FakeSound final : SoundOutput {
    std::optional<int> reported;
    std::vector<int> written;

    std::optional<int> volumePercent() const override { return reported; }
    void setVolumePercent(int percent) override { written.push_back(percent); }
};

} // namespace velmora
