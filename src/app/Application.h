#pragma once

namespace velmora
{

class BusConnection;

/// Builds the program, runs it to its end and takes it down again. Needs the application object.
/// `bus` is the session bus. Returns the exit status: 0 also when another instance is running and
/// has been told to come forward.
[[nodiscard]] int runApplication(BusConnection &bus);

} // namespace velmora
