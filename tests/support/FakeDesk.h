#pragma once

#include "overlay/NotchWindowController.h"
#include "support/FakeDesktop.h"
#include "support/FakePlatform.h"

namespace velmora
{

/// All that overlays stand on, made of doubles. The screens are the test's to add.
struct FakeDesk {
    using Controller = std::unique_ptr<NotchWindowController>;

    [[nodiscard]] Controller makeController(const std::shared_ptr<FakeScreen> &screen,
                                            const NotchSettings &settings = {},
                                            const OverlayContent &content = {})
    {
        const OverlayEnvironment environment{clock, pointer, drags, shell};
        return std::make_unique<NotchWindowController>(screen, settings, services, environment,
                                                       content);
    }

    FakePlatform platform;
    VirtualClock &clock = platform.clock;
    FakeScreens &screens = platform.screens;
    FakePointer pointer;
    FakeFileDrags drags;
    FakeShell shell;
    NotchServices services{platform.roles};
};

} // namespace velmora
