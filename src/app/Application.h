#pragma once

#include <memory>

namespace velmora
{

class BusConnection;
class CompositorProxy;

/// Builds the program, runs it to its end and takes it down again. Needs the application object.
/// `bus` is the session bus, `proxy` what stands between us and a Wayland compositor, if anything
/// does. Returns the exit status: 0 also when another instance is running and has been told to come
/// forward.
[[nodiscard]] int runApplication(BusConnection &bus, const std::shared_ptr<CompositorProxy> &proxy);

} // namespace velmora
