#pragma once

#include "platform/SoundOutput.h"
#include "platform/SystemStatistics.h"

#include <vector>

namespace velmora
{

/// Counters of a machine that a test makes up.
struct FakeStatistics final : SystemStatistics {
    std::map<std::uint64_t, CoreTicks> ticks;
    std::optional<MemorySize> memorySize;
    NetworkBytes network;
    FileSystemSize disk;

    std::map<std::uint64_t, CoreTicks> processorTicks() override { return ticks; }
    std::optional<MemorySize> memory() override { return memorySize; }
    NetworkBytes networkBytes() override { return network; }
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
