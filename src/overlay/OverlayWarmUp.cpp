#include "overlay/OverlayWarmUp.h"

#include <QFontDatabase>
#include <QQmlEngine>
#include <QQuickItem>
#include <QtConcurrent>

namespace velmora
{

namespace
{

/// The overlay is there, and what came with it has settled.
constexpr std::chrono::milliseconds startDelay(2000);
/// Between two steps, so that nothing else waits for more than one of them.
constexpr std::chrono::milliseconds pause(20);
constexpr int sliceMilliseconds = 4;

} // namespace

OverlayWarmUp::OverlayWarmUp(QQmlEngine &engine, Clock &clock)
    : QQmlIncubator(Asynchronous)
    , m_engine(engine)
    , m_clock(clock)
{
    m_engine.setIncubationController(this);
}

OverlayWarmUp::~OverlayWarmUp()
{
    dropView();
}

void OverlayWarmUp::useFor(NotchWindow &window, NotchWindowController &controller)
{
    if (m_isFinished) {
        return;
    }
    dropView();
    if (m_window) {
        m_window->disconnect(this);
    }
    m_window = &window;
    m_controller = &controller;
    // The views ask the controller while they exist, and it is about to go with its window.
    connect(&window, &QObject::destroyed, this, &OverlayWarmUp::dropView);
    m_step = m_clock.after(startDelay, [this] { findFonts(); });
}

/// All of them are asked about when the first text is set. That reads the settings of the desktop's
/// fonts, and can mean to look at each of them.
void OverlayWarmUp::findFonts()
{
    QtConcurrent::run([] { return QFontDatabase::families().size(); }).then(this, [this](auto) {
        loadView();
    });
}

void OverlayWarmUp::loadView()
{
    dropView(); // begun for an overlay that has gone
    m_component = std::make_unique<QQmlComponent>(&m_engine);
    connect(m_component.get(), &QQmlComponent::statusChanged, this, [this] {
        if (!m_component->isLoading()) {
            m_step = m_clock.after(pause, [this] { buildView(); });
        }
    });
    m_component->loadUrl(QUrl(QStringLiteral("qrc:/qt/qml/Velmora/Overlay/DropActionsOverlay.qml")),
                         QQmlComponent::Asynchronous);
}

void OverlayWarmUp::buildView()
{
    if (!m_window) {
        return;
    }
    if (m_component->isError()) {
        statusChanged(Error); // whoever shows it will say so
        return;
    }
    setInitialProperties(
        {{QStringLiteral("controller"), QVariant::fromValue(m_controller.data())}});
    m_component->create(*this);
}

/// Begun by `buildView`, a view goes on here.
void OverlayWarmUp::incubatingObjectCountChanged(int count)
{
    if (count > 0) {
        m_step = m_clock.every(pause, [this] { incubateFor(sliceMilliseconds); });
    }
}

/// Texts are measured by the window's screen, and broken by their room.
void OverlayWarmUp::setInitialState(QObject *view)
{
    m_view = view;
    auto *item = qobject_cast<QQuickItem *>(view);
    if (item != nullptr && m_window && m_controller) {
        item->setVisible(false);
        item->setSize(m_controller->geometry().panel.size());
        item->setParentItem(m_window->contentItem());
    }
}

void OverlayWarmUp::statusChanged(Status status)
{
    if (status == Ready || status == Error) {
        m_step = m_clock.after(pause, [this] {
            m_isFinished = true;
            dropView();
        });
    }
}

void OverlayWarmUp::dropView()
{
    m_step.reset();
    QQmlIncubator::clear();
    delete m_view; // at once: what it shows is about to go
    m_component.reset();
}

} // namespace velmora
