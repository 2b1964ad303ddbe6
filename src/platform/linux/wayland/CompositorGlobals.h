#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace velmora
{

/// The names of what the Wayland compositor offers, asked over a short connection of its own.
/// Nothing if there is no compositor to reach or it does not answer within `limit`; this call
/// blocks for that long at most. Needs no application object.
[[nodiscard]] std::optional<std::vector<std::string>>
compositorGlobals(std::chrono::milliseconds limit);

} // namespace velmora
