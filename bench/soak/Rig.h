#pragma once

#include "config/NotchManager.h"
#include "overlay/OverlayScene.h"
#include "overlay/StatusMenu.h"
#include "platform/Platform.h"
#include "support/FakeDropRoles.h"
#include "support/VirtualClock.h"

#include <QAnimationDriver>

#include <chrono>
#include <memory>

namespace velmora::bench
{

/// The program without its entry point: real windows, screens, views and services, but time that
/// passes only when told to, so that thousands of hovers need no thousands of seconds. The
/// animations of the views follow the same time.
class Rig : public QObject
{
    Q_OBJECT

public:
    Rig();
    ~Rig() override;

    [[nodiscard]] NotchManager &manager() { return *m_manager; }

    static constexpr int maximumScreens = 4;

    /// Plugs or unplugs screens until there are so many, side by side, and lets the program follow.
    /// False if it has not followed within five seconds.
    [[nodiscard]] bool setScreens(int count);

    /// Lets time pass, frame by frame.
    void pass(std::chrono::milliseconds span);

    /// Waits, in real time, until every overlay has drawn once more. False after a second.
    [[nodiscard]] bool draw();

    /// Lets go of all that the program is done with but may keep for a while: what only waits for
    /// the script engine's next collection is no leak.
    void tidy();

    /// The pointer comes to the overlay, respectively leaves it, as its window hears of it.
    void enter() const;
    void leave() const;

private:
    class FrameDriver;

    [[nodiscard]] QWindowList overlays() const;

    std::unique_ptr<FrameDriver> m_driver;
    FakeDropRoles m_drops; ///< has to outlive the platform
    Platform m_platform;
    VirtualClock *m_clock; ///< owned by the platform
    StatusMenu m_menu;
    OverlayScene m_scene;
    std::unique_ptr<NotchManager> m_manager;
    int m_monitors = 0; ///< set by us; before that the server has one of its own
    int m_slotWidth = 0;
};

} // namespace velmora::bench
