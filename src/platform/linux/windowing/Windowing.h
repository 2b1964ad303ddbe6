#pragma once

#include "platform/FileDrags.h"
#include "platform/OverlayShell.h"
#include "platform/Pointer.h"
#include "platform/Screens.h"

#include <QByteArray>

#include <memory>
#include <vector>

namespace velmora
{

class CompositorProxy;

/// The window-system side of the program.
struct Windowing {
    std::unique_ptr<Screens> screens;
    std::unique_ptr<Pointer> pointer;
    std::unique_ptr<FileDrags> drags;
    std::unique_ptr<OverlayShell> shell;
};

/// Sets the environment in which the application object chooses its platform and its way of
/// drawing; what the user has set stays. Call it first thing in `main`, before QGuiApplication.
/// Takes half a second at most, against a compositor that does not answer.
void chooseWindowSystem();

/// Has the pointer's motion over our own windows cost little where the window system reports every
/// move. Call it between `chooseWindowSystem` and QGuiApplication, and keep what it returns until
/// that is gone; null where there is nothing to be spared.
[[nodiscard]] std::shared_ptr<CompositorProxy> sparePointerMotion();

/// The names of the variables that the functions above have set. They are meant for this process:
/// a program that is started from here should not inherit them.
[[nodiscard]] const std::vector<QByteArray> &ownEnvironment();

/// The implementations for the platform that QGuiApplication runs on. Call it once, after the
/// application object; the result has to go before that object does. `proxy` is what
/// `sparePointerMotion` gave.
[[nodiscard]] Windowing makeWindowing(std::shared_ptr<CompositorProxy> proxy = nullptr);

} // namespace velmora
