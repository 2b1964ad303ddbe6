#include "platform/linux/windowing/LinuxScreens.h"

#include "platform/linux/x11/RandrWatch.h"

#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <qpa/qplatformscreen.h>

#include <algorithm>

namespace velmora
{

/// Follows one QScreen; after its removal it has no name and an empty frame.
class LinuxScreen final : public Screen
{
public:
    explicit LinuxScreen(QScreen *screen)
        : m_screen(screen)
    {
    }

    [[nodiscard]] QString localizedName() const override
    {
        return m_screen ? m_screen->name() : QString();
    }
    [[nodiscard]] QRectF frame() const override
    {
        return m_screen ? QRectF(m_screen->geometry()) : QRectF();
    }
    [[nodiscard]] QScreen *handle() const override { return m_screen; }

    void forget() { m_screen = nullptr; }

private:
    QPointer<QScreen> m_screen;
};

namespace
{

/// Qt has to have one screen at all times. With every output gone it makes one up: a placeholder,
/// or, on X11, a screen without an output that is named for the display (":0.0").
bool isReal(const QScreen *screen)
{
    return !screen->geometry().isEmpty() && !screen->handle()->isPlaceholder() &&
           !screen->name().startsWith(u':');
}

} // namespace

LinuxScreens::LinuxScreens()
{
    const auto screens = QGuiApplication::screens();
    for (QScreen *screen : screens)
        add(screen);
    m_announced = state();

    connect(qGuiApp, &QGuiApplication::screenAdded, this, &LinuxScreens::add);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &LinuxScreens::remove);
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &LinuxScreens::announceLater);
    if (QGuiApplication::platformName() == u"xcb")
        m_outputs = std::make_unique<RandrWatch>([this] { announceLater(); });
}

LinuxScreens::~LinuxScreens() = default;

std::vector<std::shared_ptr<Screen>> LinuxScreens::all() const
{
    std::vector<std::shared_ptr<Screen>> screens;
    for (const auto &screen : m_screens) {
        if (screen->handle() && isReal(screen->handle()))
            screens.push_back(screen);
    }
    std::stable_partition(screens.begin(), screens.end(), [](const auto &screen) {
        return screen->handle() == QGuiApplication::primaryScreen();
    });
    return screens;
}

void LinuxScreens::add(QScreen *screen)
{
    m_screens.push_back(std::make_shared<LinuxScreen>(screen));
    connect(screen, &QScreen::geometryChanged, this, &LinuxScreens::announceLater);
    // The scale has no signal of its own; it moves together with one of these.
    connect(screen, &QScreen::physicalDotsPerInchChanged, this, &LinuxScreens::announceLater);
    connect(screen, &QScreen::logicalDotsPerInchChanged, this, &LinuxScreens::announceLater);
    announceLater();
}

void LinuxScreens::remove(QScreen *screen)
{
    const auto gone = std::ranges::find_if(
        m_screens, [screen](const auto &candidate) { return candidate->handle() == screen; });
    if (gone == m_screens.end())
        return;
    (*gone)->forget();
    m_screens.erase(gone);
    // At once: Qt would move the windows of this screen to another one when this call is over.
    announce();
}

void LinuxScreens::announceLater()
{
    if (m_announcing)
        return;
    m_announcing = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_announcing = false;
            announce();
        },
        Qt::QueuedConnection);
}

/// Qt tells of more than there is: of its stand-in's coming, or twice of the same change.
void LinuxScreens::announce()
{
    auto present = state();
    if (present == m_announced)
        return;
    m_announced = std::move(present);
    Q_EMIT changed();
}

std::vector<LinuxScreens::State> LinuxScreens::state() const
{
    std::vector<State> state;
    for (const auto &screen : all())
        state.push_back({screen->handle(), screen->frame(), screen->handle()->devicePixelRatio()});
    return state;
}

} // namespace velmora
