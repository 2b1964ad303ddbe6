#include "app/AppDelegate.h"

#include <QLoggingCategory>

#include <utility>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcAppDelegate, "com.velmora.app.AppDelegate", QtInfoMsg)

constexpr std::chrono::milliseconds loginPromptDelay(500);
constexpr std::chrono::milliseconds permissionDelay(2000);

const QString hasPromptedLoginItemKey = QStringLiteral("hasPromptedLoginItem");
const QString hasRequestedPermissionsKey = QStringLiteral("hasRequestedPermissions");

MenuItem separator()
{
    MenuItem item;
    item.kind = MenuItem::Kind::Separator;
    return item;
}

MenuItem actionItem(const QString &title, std::function<void()> action,
                    const QString &keyEquivalent = {})
{
    MenuItem item;
    item.title = title;
    item.keyEquivalent = keyEquivalent;
    item.action = std::move(action);
    return item;
}

MenuItem::Mark mark(bool on)
{
    return on ? MenuItem::Mark::On : MenuItem::Mark::Off;
}

} // namespace

AppDelegate::AppDelegate(const Platform &platform, OverlayControllerFactory makeController,
                         std::vector<StatusItem *> menus, AppActions actions)
    : m_platform(platform)
    , m_makeController(std::move(makeController))
    , m_menus(std::move(menus))
    , m_actions(std::move(actions))
{
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching()
{
    qCInfo(lcAppDelegate, "applicationDidFinishLaunching");
    m_notchManager = std::make_unique<NotchManager>(m_platform, m_makeController);
    // The menu follows the manager, whoever changes it.
    connect(m_notchManager.get(), &NotchManager::isEnabledChanged, this, &AppDelegate::rebuildMenu);
    connect(m_notchManager.get(), &NotchManager::profilesChanged, this, &AppDelegate::rebuildMenu);
    rebuildMenu();
    m_notchManager->apply();
    connect(m_platform.screens.get(), &Screens::changed, this, &AppDelegate::screensDidChange);
    promptForLoginItem();
    requestPermissions();
}

void AppDelegate::rebuildMenu()
{
    const Menu menu = statusMenu();
    for (StatusItem *item : m_menus) {
        item->setMenu(menu);
    }
}

Menu AppDelegate::statusMenu()
{
    MenuItem enable = actionItem(QStringLiteral("Enable Notch"), [this] { toggleNotch(); });
    enable.mark = mark(m_notchManager->isEnabled());
    MenuItem profile;
    profile.kind = MenuItem::Kind::Submenu;
    profile.title = QStringLiteral("Profile");
    profile.submenu = profileMenu();
    return {enable,
            separator(),
            profile,
            separator(),
            actionItem(
                QStringLiteral("Preferences\u2026"), [this] { openPreferences(); },
                QStringLiteral(",")),
            separator(),
            actionItem(
                QStringLiteral("Quit Velmora"), [this] { quitApp(); }, QStringLiteral("q"))};
}

Menu AppDelegate::profileMenu()
{
    Menu menu;
    for (const NotchProfile &profile : m_notchManager->profiles()) {
        const int index = static_cast<int>(menu.size());
        MenuItem item = actionItem(profile.name, [this, index] { switchProfile(index); });
        item.tag = index;
        item.mark = mark(index == m_notchManager->activeProfileIndex());
        item.isChoice = true;
        menu.push_back(std::move(item));
    }
    return menu;
}

void AppDelegate::toggleNotch()
{
    const bool wasEnabled = m_notchManager->isEnabled();
    qCInfo(lcAppDelegate, "toggleNotch \u2192 %s", wasEnabled ? "disabled" : "enabled");
    m_notchManager->setEnabled(!wasEnabled);
}

void AppDelegate::switchProfile(int tag)
{
    qCInfo(lcAppDelegate, "switchProfile \u2192 index %d", tag);
    m_notchManager->switchProfile(tag);
}

void AppDelegate::openPreferences()
{
    qCInfo(lcAppDelegate, "openPreferences");
}

void AppDelegate::quitApp() const
{
    qCInfo(lcAppDelegate, "quitApp");
    m_actions.terminate();
}

void AppDelegate::screensDidChange()
{
    qCInfo(lcAppDelegate, "screensDidChange \u2014 reapplying notch");
    m_notchManager->apply();
}

void AppDelegate::promptForLoginItem()
{
    KeyValueStore &store = *m_platform.store;
    if (store.boolean(hasPromptedLoginItemKey).value_or(false)) {
        return;
    }
    // Before anything is shown: the question is put once, even to somebody who quits before it.
    store.setBoolean(hasPromptedLoginItemKey, true);
    m_loginPrompt = m_platform.clock->after(
        loginPromptDelay, [this] { m_actions.askForLoginItem([this] { registerLoginItem(); }); });
}

void AppDelegate::registerLoginItem()
{
    if (const auto error = m_platform.loginItem->registerItem()) {
        qCCritical(lcAppDelegate, "Failed to register login item: %s", qUtf8Printable(*error));
    } else {
        qCInfo(lcAppDelegate, "Registered as login item");
    }
}

void AppDelegate::requestPermissions()
{
    KeyValueStore &store = *m_platform.store;
    NotchServices &services = m_notchManager->services();
    if (store.boolean(hasRequestedPermissionsKey).value_or(false)) {
        services.calendarService()->checkAccess();
        services.todoService()->checkAccess();
        return;
    }
    store.setBoolean(hasRequestedPermissionsKey, true);
    m_permissionPrompt = m_platform.clock->after(permissionDelay, [&services] {
        services.calendarService()->requestAccess();
        services.todoService()->requestAccess();
    });
}

} // namespace velmora
