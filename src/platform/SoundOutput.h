#pragma once

#include <optional>

namespace velmora
{

/// The volume of the default sound output. Both calls return at once: reading gives the last word
/// of the sound server, writing is sent and forgotten.
class SoundOutput
{
public:
    SoundOutput() = default;
    SoundOutput(const SoundOutput &) = delete;
    SoundOutput &operator=(const SoundOutput &) = delete;
    virtual ~SoundOutput() = default;

    /// Percent of full volume; nothing while there is no sound server or no output.
    [[nodiscard]] virtual std::optional<int> volumePercent() const = 0;

    /// 0 to 100. Without a sound server or output nothing happens.
    virtual void setVolumePercent(int percent) = 0;
};

} // namespace velmora
