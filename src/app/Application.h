#pragma once

namespace velmora
{

/// Builds the program, runs it to its end and takes it down again. Needs the application object.
/// Returns the exit status: 0 also when another instance is running and has been told to come
/// forward.
[[nodiscard]] int runApplication();

} // namespace velmora
