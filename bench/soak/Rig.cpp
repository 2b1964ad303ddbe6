#include "soak/Rig.h"

#include "platform/linux/desktop/SettingsStore.h"
#include "platform/linux/system/ProcStatistics.h"
#include "platform/linux/system/PulseSoundOutput.h"
#include "platform/linux/windowing/Windowing.h"
#include "support/FakeCalendar.h"
#include "support/FakeHttpGetter.h"
#include "support/FakeMediaRemote.h"
#include "support/FakeNotifications.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEnterEvent>
#include <QGuiApplication>
#include <QProcess>
#include <QScreen>

#include <set>

namespace velmora::bench
{

namespace
{

constexpr std::chrono::milliseconds frame(16);

Platform makePlatform(FakeDropRoles &drops)
{
    Platform platform;
    platform.clock = std::make_unique<VirtualClock>();
    platform.store = std::make_unique<SettingsStore>();
    Windowing windowing = makeWindowing();
    platform.screens = std::move(windowing.screens);
    platform.pointer = std::move(windowing.pointer);
    platform.drags = std::move(windowing.drags);
    platform.shell = std::move(windowing.shell);
    platform.statistics = std::make_unique<ProcStatistics>();
    platform.sound = std::make_unique<PulseSoundOutput>(*platform.clock);
    platform.http = std::make_unique<FakeHttpGetter>();
    platform.media = std::make_unique<FakeMediaRemote>();
    platform.calendar = std::make_unique<FakeCalendarStore>();
    platform.reminders = std::make_unique<FakeReminderStore>();
    platform.notifications = std::make_unique<FakeNotifications>();
    drops.install(platform);
    return platform;
}

bool xrandr(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral("xrandr"), arguments);
    return process.waitForFinished(5000) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

QString monitorName(int index)
{
    return QStringLiteral("M%1").arg(index + 1);
}

/// Runs the main loop until something is so.
template<typename Condition>
bool waitFor(std::chrono::milliseconds limit, Condition condition)
{
    const QDeadlineTimer deadline(limit);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    }
    return true;
}

} // namespace

/// Drives the animations of Qt Quick by hand.
class Rig::FrameDriver : public QAnimationDriver
{
public:
    void advance() override
    {
        m_elapsed += frame.count();
        advanceAnimation();
    }
    [[nodiscard]] qint64 elapsed() const override { return m_elapsed; }

private:
    qint64 m_elapsed = 0;
};

Rig::Rig()
    : m_driver(std::make_unique<FrameDriver>())
    , m_platform(makePlatform(m_drops))
    , m_clock(static_cast<VirtualClock *>(m_platform.clock.get()))
    , m_menu(*m_clock)
    , m_scene(m_menu)
{
    m_driver->install();
    const OverlayEnvironment environment{*m_clock, *m_platform.pointer, *m_platform.drags,
                                         *m_platform.shell};
    m_manager = std::make_unique<NotchManager>(
        m_platform, [this, environment](const auto &screen, const auto &settings, auto &services) {
            return std::make_unique<NotchWindowController>(
                screen, settings, services, environment,
                [this](NotchWindow &window, NotchWindowController &controller) {
                    m_scene.populate(window, controller);
                });
        });
    m_manager->apply();
    connect(m_platform.screens.get(), &Screens::changed, this, [this] { m_manager->apply(); });
}

Rig::~Rig()
{
    m_manager.reset();
    m_driver->uninstall();
}

QWindowList Rig::overlays() const
{
    QWindowList overlays;
    for (QWindow *window : QGuiApplication::topLevelWindows()) {
        if (qobject_cast<NotchWindow *>(window) != nullptr)
            overlays.append(window);
    }
    return overlays;
}

bool Rig::setScreens(int count)
{
    const QSize size = QGuiApplication::primaryScreen()->virtualSize();
    if (m_slotWidth == 0)
        m_slotWidth = size.width() / maximumScreens;
    // A monitor cannot be set again: those that stay are left alone.
    for (; m_monitors < count; ++m_monitors) {
        const auto geometry = QStringLiteral("%1/200x%2/200+%3+0")
                                  .arg(m_slotWidth)
                                  .arg(size.height())
                                  .arg(m_monitors * m_slotWidth);
        const auto output = m_monitors == 0 ? QStringLiteral("screen") : QStringLiteral("none");
        if (!xrandr({QStringLiteral("--setmonitor"), monitorName(m_monitors), geometry, output}))
            return false;
    }
    for (; m_monitors > count; --m_monitors) {
        if (!xrandr({QStringLiteral("--delmonitor"), monitorName(m_monitors - 1)}))
            return false;
    }
    return waitFor(std::chrono::seconds(5), [this, count] {
        m_clock->advance(frame);
        const auto wanted = static_cast<size_t>(count);
        return m_platform.screens->all().size() == wanted &&
               m_manager->controllers().size() == wanted;
    });
}

void Rig::pass(std::chrono::milliseconds span)
{
    for (auto passed = frame; passed <= span; passed += frame) {
        m_clock->advance(frame);
        m_driver->advance();
        QCoreApplication::processEvents();
        // Outside of a running loop these would wait for its start.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

bool Rig::draw()
{
    std::set<QWindow *> waiting;
    QObject guard;
    for (QWindow *overlay : overlays()) {
        auto *window = static_cast<QQuickWindow *>(overlay);
        waiting.insert(window);
        connect(window, &QQuickWindow::frameSwapped, &guard,
                [&waiting, window] { waiting.erase(window); });
        connect(window, &QObject::destroyed, &guard, [&waiting, window] { waiting.erase(window); });
        window->update();
    }
    return waitFor(std::chrono::seconds(1), [&waiting] { return waiting.empty(); });
}

void Rig::tidy()
{
    pass(std::chrono::milliseconds(100));
    // What a collection lets go of may have been all that held something else.
    for (int i = 0; i < 3; ++i) {
        m_scene.engine().collectGarbage();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    static_cast<void>(draw());
}

void Rig::enter() const
{
    for (QWindow *window : overlays()) {
        const QPointF position(window->width() / 2.0, 5);
        QEnterEvent event(position, position, window->position() + position);
        QCoreApplication::sendEvent(window, &event);
    }
}

void Rig::leave() const
{
    for (QWindow *window : overlays()) {
        QEvent event(QEvent::Leave);
        QCoreApplication::sendEvent(window, &event);
    }
}

} // namespace velmora::bench
