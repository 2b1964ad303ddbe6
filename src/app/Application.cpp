#include "app/Application.h"

#include "app/AppDelegate.h"
#include "app/LoginPrompt.h"
#include "overlay/OverlayScene.h"
#include "overlay/OverlayWarmUp.h"
#include "platform/linux/calendar/CalendarStores.h"
#include "platform/linux/dbus/BusConnection.h"
#include "platform/linux/desktop/AutostartLoginItem.h"
#include "platform/linux/desktop/DesktopNotifications.h"
#include "platform/linux/desktop/SettingsStore.h"
#include "platform/linux/desktop/SingleInstance.h"
#include "platform/linux/desktop/SystemClock.h"
#include "platform/linux/desktop/TrayItem.h"
#include "platform/linux/desktop/UnixSignals.h"
#include "platform/linux/files/GioApplications.h"
#include "platform/linux/files/GioVolumes.h"
#include "platform/linux/files/KdeConnectSharing.h"
#include "platform/linux/files/LinuxChildProcesses.h"
#include "platform/linux/files/LinuxFileActions.h"
#include "platform/linux/files/LinuxImageConverter.h"
#include "platform/linux/http/QtHttpGetter.h"
#include "platform/linux/media/MprisMediaRemote.h"
#include "platform/linux/system/ProcStatistics.h"
#include "platform/linux/system/PulseSoundOutput.h"
#include "platform/linux/windowing/Windowing.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(Velmora_AppPlugin)

namespace velmora
{

namespace
{

Platform makePlatform(BusConnection &bus)
{
    Platform platform;
    platform.clock = std::make_unique<SystemClock>();
    platform.store = std::make_unique<SettingsStore>();
    Windowing windowing = makeWindowing();
    platform.screens = std::move(windowing.screens);
    platform.pointer = std::move(windowing.pointer);
    platform.drags = std::move(windowing.drags);
    platform.shell = std::move(windowing.shell);
    platform.statistics = std::make_unique<ProcStatistics>();
    platform.sound = std::make_unique<PulseSoundOutput>(*platform.clock);
    platform.http = std::make_unique<QtHttpGetter>(*platform.clock);
    platform.media = std::make_unique<MprisMediaRemote>(bus, *platform.clock, *platform.http);
    CalendarStores calendars = makeCalendarStores(
        bus, platform.store->string(QStringLiteral("calendarFolders")).value_or(QString()));
    platform.calendar = std::move(calendars.events);
    platform.reminders = std::move(calendars.reminders);
    platform.notifications = std::make_unique<DesktopNotifications>(bus);
    platform.files = std::make_unique<LinuxFileActions>();
    platform.images = std::make_unique<LinuxImageConverter>();
    platform.processes = std::make_unique<LinuxChildProcesses>();
    platform.applications = std::make_unique<GioApplications>(ownEnvironment());
    platform.volumes = std::make_unique<GioVolumes>();
    platform.sharing = std::make_unique<KdeConnectSharing>(bus);
    platform.loginItem =
        std::make_unique<AutostartLoginItem>(QCoreApplication::applicationFilePath());
    platform.statusItem = std::make_unique<TrayItem>(bus, *platform.clock);
    return platform;
}

/// Runs the main loop until it is clear whether another instance is running, where there is a bus
/// to tell it. False if this one is to end, for that reason or because it is asked to.
bool mayStart(const SingleInstance &instance, const UnixSignals &signals)
{
    if (instance.role() == SingleInstance::Role::Unknown) {
        QEventLoop loop;
        bool isEnding = false;
        QObject::connect(&instance, &SingleInstance::decided, &loop, &QEventLoop::quit);
        QObject::connect(&signals, &UnixSignals::terminationRequested, &loop, [&] {
            isEnding = true;
            loop.quit();
        });
        loop.exec();
        if (isEnding) {
            return false;
        }
    }
    return instance.role() != SingleInstance::Role::Second;
}

} // namespace

int runApplication(BusConnection &bus)
{
    const UnixSignals signals;
    SingleInstance instance(bus);
    if (!mayStart(instance, signals)) {
        return 0;
    }
    QObject::connect(&signals, &UnixSignals::terminationRequested, qApp, &QCoreApplication::quit);
    QObject::connect(&instance, &SingleInstance::decided, qApp, [&instance] {
        if (instance.role() == SingleInstance::Role::Second) { // by a bus that came late
            QCoreApplication::quit();
        }
    });

    const Platform platform = makePlatform(bus);
    StatusMenu sceneMenu(*platform.clock);
    OverlayScene scene(sceneMenu);
    OverlayWarmUp warmUp(scene.engine(), *platform.clock);
    LoginPrompt loginPrompt(scene.engine());
    const OverlayEnvironment environment{*platform.clock, *platform.pointer, *platform.drags,
                                         *platform.shell};
    const auto makeController = [&](const std::shared_ptr<Screen> &screen,
                                    const NotchSettings &settings, NotchServices &services) {
        return std::make_unique<NotchWindowController>(
            screen, settings, services, environment,
            [&scene, &warmUp](NotchWindow &window, NotchWindowController &controller) {
                scene.populate(window, controller);
                warmUp.useFor(window, controller);
            });
    };
    AppActions actions;
    actions.askForLoginItem = [&loginPrompt](const std::function<void()> &accepted) {
        loginPrompt.ask(accepted);
    };
    actions.terminate = [] { QCoreApplication::quit(); };
    AppDelegate delegate(platform, makeController, {platform.statusItem.get(), &sceneMenu},
                         std::move(actions));
    QObject::connect(&instance, &SingleInstance::activated, &delegate,
                     &AppDelegate::openPreferences);
    delegate.applicationDidFinishLaunching();
    return QCoreApplication::exec();
}

} // namespace velmora
