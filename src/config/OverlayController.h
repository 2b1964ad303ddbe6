#pragma once

#include "config/NotchSettings.h"
#include "platform/Screens.h"

#include <functional>
#include <memory>

namespace velmora
{

/// The overlay of one screen, as far as its owner knows it.
class OverlayController
{
public:
    OverlayController() = default;
    OverlayController(const OverlayController &) = delete;
    OverlayController &operator=(const OverlayController &) = delete;
    virtual ~OverlayController() = default;

    /// Puts the overlay on screen without activating the program.
    virtual void showWindow() = 0;

    /// Takes it off the screen for good.
    virtual void close() = 0;
};

class NotchServices;

/// Builds the overlay of one screen from a snapshot of the settings.
using OverlayControllerFactory = std::function<std::unique_ptr<OverlayController>(
    const std::shared_ptr<Screen> &, const NotchSettings &, NotchServices &)>;

} // namespace velmora
