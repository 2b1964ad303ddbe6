#pragma once

#include "config/NotchManager.h"
#include "platform/Platform.h"

#include <QObject>

#include <functional>
#include <memory>
#include <vector>

namespace velmora
{

/// What the application itself can ask of the user or of Qt.
struct AppActions {
    /// Asks whether to start at login; calls back only if the user agrees.
    std::function<void(const std::function<void()> &accepted)> askForLoginItem;
    std::function<void()> terminate;
};

/// The process: the launch order, the status menu and the questions of a first launch.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    /// `menus` are the places where the status menu is on offer. What is handed in has to outlive
    /// the delegate.
    AppDelegate(const Platform &platform, OverlayControllerFactory makeController,
                std::vector<StatusItem *> menus, AppActions actions);
    ~AppDelegate() override;

    /// Runs once, as soon as the application is up.
    void applicationDidFinishLaunching();

    void openPreferences();

    /// Absent until the launch.
    [[nodiscard]] NotchManager *notchManager() const { return m_notchManager.get(); }

private:
    void rebuildMenu();
    [[nodiscard]] Menu statusMenu();
    [[nodiscard]] Menu profileMenu();
    void toggleNotch();
    void switchProfile(int tag);
    void quitApp() const;
    void screensDidChange();
    void promptForLoginItem();
    void registerLoginItem();
    void requestPermissions();

    const Platform &m_platform;
    OverlayControllerFactory m_makeController;
    std::vector<StatusItem *> m_menus;
    AppActions m_actions;
    TimerHandle m_loginPrompt;
    TimerHandle m_permissionPrompt;
    std::unique_ptr<NotchManager> m_notchManager;
};

} // namespace velmora
