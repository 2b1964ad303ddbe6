#pragma once

#include "overlay/NotchWindowController.h"
#include "support/FakeDesktop.h"
#include "support/FakePlatform.h"

namespace velmora
{

/// All that overlays stand on, made of doubles. The screens are the test's to add.
struct FakeDesk {
    [[nodiscard]] OverlayEnvironment environment() { return {clock, pointer, drags, shell}; }

    FakePlatform platform;
    VirtualClock &clock = platform.clock;
    FakeScreens &screens = platform.screens;
    FakePointer pointer;
    FakeFileDrags drags;
    FakeShell shell;
    NotchServices services{platform.roles};
};

} // namespace velmora
