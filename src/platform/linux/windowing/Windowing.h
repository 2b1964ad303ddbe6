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

/// The names of the variables that it has set. They are meant for this process: a program that is
/// started from here should not inherit them.
[[nodiscard]] const std::vector<QByteArray> &ownEnvironment();

/// The implementations for the platform that QGuiApplication runs on. Call it once, after the
/// application object; the result has to go before that object does.
[[nodiscard]] Windowing makeWindowing();

} // namespace velmora
