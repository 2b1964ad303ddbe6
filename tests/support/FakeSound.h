#pragma once

#include "platform/SoundOutput.h"

#include <vector>

namespace velmora
{

/// A sound server that says what a test wants, and remembers what it was told.
struct FakeSound final : SoundOutput {
    std::optional<int> reported;
    std::vector<int> written;

    std::optional<int> volumePercent() const override { return reported; }
    void setVolumePercent(int percent) override { written.push_back(percent); }
};

} // namespace velmora
