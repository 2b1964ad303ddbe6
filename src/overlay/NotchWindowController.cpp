#include "overlay/NotchWindowController.h"

#include "overlay/NotchGeometry.h"
#include "style/BottomRoundedShape.h"

#include <QLoggingCategory>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcWindowController, "com.velmora.app.WindowController", QtInfoMsg)

constexpr std::chrono::milliseconds expandDuration(280);
constexpr std::chrono::milliseconds collapseDuration(220);
constexpr std::chrono::milliseconds collapseDelay(300);
constexpr std::chrono::milliseconds frameInterval(16);

} // namespace

NotchWindowController::NotchWindowController(const std::shared_ptr<Screen> &screen,
                                             const NotchSettings &settings, NotchServices &services,
                                             const OverlayEnvironment &environment,
                                             const OverlayContent &content)
    : m_screen(screen)
    , m_settings(settings)
    , m_services(services)
    , m_environment(environment)
    , m_frame(NotchGeometry::collapsed(screen->frame(), settings))
    , m_windowBounds(NotchGeometry::window(screen->frame(), settings))
    , m_animation(m_frame)
{
    setupTracking();
    setupWindow(content);
    connect(&environment.pointer, &Pointer::movedElsewhere, this,
            &NotchWindowController::hoverProbe);
    setupDragMonitors();
    observeDropState();
}

NotchWindowController::~NotchWindowController()
{
    NotchWindowController::close();
}

void NotchWindowController::setupTracking()
{
    m_trackingView.onMouseEntered = [this] { mouseEntered(); };
    m_trackingView.onMouseExited = [this] { mouseExited(); };
    setupDragTracking();
}

void NotchWindowController::setupWindow(const OverlayContent &content)
{
    m_window = std::make_unique<NotchWindow>(
        m_trackingView, [this](const QPointF &position) { return position - panelOrigin(); });
    m_surface = m_environment.shell.adopt(*m_window, *m_screen.lock(), m_windowBounds);
    updateShape();
    updateMotion();
    if (content) {
        content(*m_window, *this);
    }
}

/// Where the panel begins in the window, or will begin once it has grown.
QPointF NotchWindowController::panelOrigin() const
{
    return NotchGeometry::expanded(m_windowBounds, m_settings).topLeft() - m_windowBounds.topLeft();
}

void NotchWindowController::showWindow()
{
    if (m_surface) {
        m_surface->orderFront();
    }
}

void NotchWindowController::close()
{
    m_collapseWork.reset();
    m_frameTimer.reset();
    m_surface.reset();
    m_window.reset();
}

QRectF NotchWindowController::frameInWindow() const
{
    return m_frame.translated(-m_windowBounds.topLeft());
}

double NotchWindowController::cornerRadius() const
{
    return NotchGeometry::cornerRadius(m_settings);
}

double NotchWindowController::zoneWidth(int zone, double panelWidth) const
{
    return NotchGeometry::zoneWidths(m_settings.zoneWidths, panelWidth).value(zone);
}

void NotchWindowController::mouseEntered()
{
    qCDebug(lcWindowController, "mouse entered \u2014 expanding");
    m_pointerOverWindow = true;
    m_collapseWork.reset();
    if (m_window && !m_screen.expired() && !m_notchState.isExpanded()) {
        expand();
    }
}

void NotchWindowController::mouseExited()
{
    qCDebug(lcWindowController, "mouse exited \u2014 scheduling collapse");
    m_pointerOverWindow = false;
    if (m_window) {
        scheduleCollapse();
    }
}

void NotchWindowController::hoverProbe(const QPointF &location)
{
    const auto screen = m_screen.lock();
    if (!m_window || !screen) {
        return;
    }
    // No window is told of this move, or of where it ends.
    m_pointerOverWindow = isInside(location);
    if (NotchGeometry::collapsed(screen->frame(), m_settings).contains(location)) {
        m_collapseWork.reset();
        if (!m_notchState.isExpanded()) {
            expand();
        }
    } else if (!m_pointerOverWindow && m_notchState.isExpanded() && !dropService().isDragging()) {
        scheduleCollapse();
    }
}

void NotchWindowController::expand()
{
    const QRectF target = NotchGeometry::expanded(m_screen.lock()->frame(), m_settings);
    qCInfo(lcWindowController, "expand \u2192 %f\u00d7%f", NotchGeometry::expandedWidth,
           m_settings.expandedTopPadding + NotchGeometry::expandedContentHeight);
    // The flag comes first, so that the views change while the window grows.
    m_notchState.setExpanded(true);
    animateWindow(target, expandDuration);
}

void NotchWindowController::scheduleCollapse()
{
    // A pending collapse keeps its deadline.
    if (!m_collapseWork) {
        m_collapseWork = m_environment.clock.after(collapseDelay, [this] { collapseWorkFired(); });
    }
}

void NotchWindowController::collapseWorkFired()
{
    if (!m_window || m_screen.expired()) {
        return;
    }
    m_collapseWork.reset();
    if (isPointerInside()) {
        qCDebug(lcWindowController, "collapse guard: mouse still inside \u2014 aborting");
    } else {
        collapse();
    }
}

bool NotchWindowController::isPointerInside() const
{
    const auto location = m_environment.pointer.location();
    return location ? isInside(*location) : m_pointerOverWindow;
}

bool NotchWindowController::isInside(const QPointF &location) const
{
    const QPointF inWindow = location - m_windowBounds.topLeft();
    return m_frame.contains(location) || m_menuFrame.contains(inWindow) ||
           m_submenuFrame.contains(inWindow);
}

void NotchWindowController::collapse()
{
    qCInfo(lcWindowController, "collapse \u2192 %f\u00d7%f", m_settings.notchWidth,
           m_settings.notchHeight);
    m_notchState.setExpanded(false);
    animateWindow(NotchGeometry::collapsed(m_screen.lock()->frame(), m_settings), collapseDuration);
}

void NotchWindowController::animateWindow(const QRectF &target, Milliseconds duration)
{
    qCDebug(lcWindowController, "animate to %f\u00d7%f in %fs", target.width(), target.height(),
            std::chrono::duration<double>(duration).count());
    m_animation = FrameAnimation(m_frame, target, m_environment.clock.uptime(), duration);
    m_frameTimer = m_environment.clock.everyFrame([this] { animationStep(); });
    animationStep();
}

void NotchWindowController::animationStep()
{
    const auto now = m_environment.clock.uptime();
    if (m_animation.isFinished(now)) {
        m_frameTimer.reset();
    }
    // What is drawn now is seen with the next frame.
    setFrame(m_animation.at(now + frameInterval));
}

void NotchWindowController::setFrame(const QRectF &frame)
{
    if (frame == m_frame) {
        return;
    }
    m_frame = frame;
    updateShape();
    Q_EMIT frameChanged();
}

void NotchWindowController::setMenuFrame(const QRectF &frame)
{
    setMenuPart(m_menuFrame, frame);
}

void NotchWindowController::setSubmenuFrame(const QRectF &frame)
{
    setMenuPart(m_submenuFrame, frame);
}

void NotchWindowController::setMenuPart(QRectF &part, const QRectF &frame)
{
    if (frame == part) {
        return;
    }
    part = frame;
    // Views may still have their say while the window is taken down.
    if (m_surface) {
        updateShape();
        updateMotion();
    }
    Q_EMIT menuChanged();
}

void NotchWindowController::updateMotion()
{
    // Only the menu follows the pointer; to everything else entering, leaving and pressing is
    // enough, and a pointer that merely moves costs nothing.
    const bool wanted = !m_menuFrame.isEmpty();
    m_surface->setMotionWanted(wanted);
    m_window->setMotionWanted(wanted);
}

void NotchWindowController::updateShape()
{
    const double radius =
        m_notchState.isExpanded() ? NotchGeometry::panelCornerRadius : cornerRadius();
    m_surface->setShape([=, notch = frameInWindow(), menu = m_menuFrame,
                         submenu = m_submenuFrame](double scale, bool isBlended) {
        const auto inPixels = [scale](const QRectF &rect) {
            return QRectF(rect.topLeft() * scale, rect.size() * scale);
        };
        QRegion region = bottomRoundedRegion(inPixels(notch), radius * scale,
                                             isBlended ? PixelRule::Touched : PixelRule::Centre);
        for (const QRectF &card : {menu, submenu}) {
            region += roundedRegion(inPixels(card), NotchGeometry::menuCornerRadius * scale);
        }
        return region;
    });
}

} // namespace velmora
