#pragma once

#include "platform/linux/UniqueFd.h"

namespace velmora
{

/// A connection to the compositor that the environment names, made without ever waiting, and not
/// inherited by child processes. Invalid if that fails.
[[nodiscard]] UniqueFd connectToCompositor();

} // namespace velmora
