#include "overlay/NotchWindowController.h"

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
    , m_geometry(screen->frame(), settings)
    , m_services(services)
    , m_environment(environment)
    , m_frame(m_geometry.collapsed)
{
    for (const NotchWidgetType type : settings.widgets) {
        m_widgets << rawValue(type);
    }
    QEasingCurve easeInEaseOut(QEasingCurve::BezierSpline);
    easeInEaseOut.addCubicBezierSegment({0.42, 0}, {0.58, 1}, {1, 1});
    m_animation.setEasingCurve(easeInEaseOut);
    connect(this, &NotchWindowController::menuChanged, this, &NotchWindowController::menuMoved);
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

void NotchWindowController::setupWindow(const OverlayContent &content)
{
    m_window = std::make_unique<NotchWindow>(*this);
    m_surface = m_environment.shell.adopt(*m_window, *m_screen.lock(), m_geometry.window);
    connect(m_window.get(), &NotchWindow::wishesChanged, this,
            &NotchWindowController::wishesChanged);
    updateShape();
    updateMotion();
    if (content) {
        content(*m_window, *this);
    }
}

void NotchWindowController::showWindow()
{
    if (m_surface) {
        m_surface->orderFront();
    }
}

void NotchWindowController::close()
{
    dismissOpenWith();
    m_collapseWork.reset();
    m_frameTimer.reset();
    m_surface.reset();
    m_window.reset();
    // Nobody else would see the end of the drag.
    if (m_dragPart != DragPart::None) {
        endDrag();
    }
}

void NotchWindowController::mouseEntered(const QPointF &position)
{
    setPointerOver(true);
    m_collapseWork.reset();
    mouseMoved(position);
}

void NotchWindowController::mouseMoved(const QPointF &position)
{
    if (m_window && !m_screen.expired() && !m_isExpanded && !m_quietArea.contains(position)) {
        qCDebug(lcWindowController, "mouse entered \u2014 expanding");
        expand();
    }
}

bool NotchWindowController::mousePressed(const QPointF &position)
{
    if (isInMenu(position)) {
        return false;
    }
    const bool hadMenu = !m_menuFrame.isEmpty();
    closeMenus();
    return hadMenu;
}

void NotchWindowController::mouseExited()
{
    qCDebug(lcWindowController, "mouse exited \u2014 scheduling collapse");
    setPointerOver(false);
    if (m_window) {
        scheduleCollapse();
    }
}

void NotchWindowController::setPointerOver(bool over)
{
    m_isPointerOver = over;
    updateMotion();
    Q_EMIT isPointerOverChanged();
}

void NotchWindowController::hoverProbe(const QPointF &location)
{
    const QPointF position = location - m_geometry.window.topLeft();
    // No window is told of this move, or of where it ends.
    const bool isOver = isInside(position);
    if (!m_menuFrame.isEmpty() && !isOver) {
        closeMenus();
    }
    if (!m_window || m_screen.expired()) {
        return;
    }
    if (isOver != m_isPointerOver) {
        setPointerOver(isOver);
    }
    if (m_geometry.collapsed.contains(position) && !m_quietArea.contains(position)) {
        m_collapseWork.reset();
        if (!m_isExpanded) {
            expand();
        }
    } else if (!isOver && m_isExpanded && !dropService().isDragging()) {
        scheduleCollapse();
    }
}

void NotchWindowController::expand()
{
    qCInfo(lcWindowController, "expand \u2192 %f\u00d7%f", m_geometry.panel.width(),
           m_geometry.panel.height());
    openPanel(expandDuration);
}

void NotchWindowController::openPanel(Milliseconds duration)
{
    setMissedStatus({});
    // The flag comes first, so that the views change while the window grows.
    setExpanded(true);
    animateWindow(m_geometry.panel, duration);
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
    if (isPointerInside() || m_window->has(Wish::Stay)) {
        qCDebug(lcWindowController, "collapse guard: still in use \u2014 aborting");
    } else {
        collapse();
    }
}

bool NotchWindowController::isPointerInside() const
{
    const auto location = m_environment.pointer.location();
    return location ? isInside(*location - m_geometry.window.topLeft()) : m_isPointerOver;
}

bool NotchWindowController::isInside(const QPointF &position) const
{
    return m_frame.contains(position) || isInMenu(position);
}

bool NotchWindowController::isInMenu(const QPointF &position) const
{
    return m_menuFrame.contains(position) || m_submenuFrame.contains(position);
}

void NotchWindowController::collapse()
{
    qCInfo(lcWindowController, "collapse \u2192 %f\u00d7%f", m_geometry.collapsed.width(),
           m_geometry.collapsed.height());
    setExpanded(false);
    dismissOpenWith();
    animateWindow(m_geometry.collapsed, collapseDuration);
}

void NotchWindowController::setExpanded(bool expanded)
{
    if (expanded != m_isExpanded) {
        m_isExpanded = expanded;
        Q_EMIT isExpandedChanged();
        updateMotion();
        updateKeyboard();
    }
}

void NotchWindowController::animateWindow(const QRectF &target, Milliseconds duration)
{
    qCDebug(lcWindowController, "animate to %f\u00d7%f in %fs", target.width(), target.height(),
            std::chrono::duration<double>(duration).count());
    m_animation.setDuration(static_cast<int>(duration.count()));
    m_animation.setStartValue(m_frame);
    m_animation.setEndValue(target);
    m_animationBegan = m_environment.clock.uptime();
    m_frameTimer = m_environment.clock.everyFrame([this] { animationStep(); });
    animationStep();
}

void NotchWindowController::animationStep()
{
    const auto passed = m_environment.clock.uptime() - m_animationBegan;
    const Milliseconds duration(m_animation.duration());
    if (passed >= duration) {
        m_frameTimer.reset();
    }
    // What is drawn now is seen with the next frame.
    const auto seen = std::chrono::duration_cast<Milliseconds>(passed + frameInterval);
    m_animation.setCurrentTime(static_cast<int>(seen.count()));
    setFrame((seen < duration ? m_animation.currentValue() : m_animation.endValue()).toRectF());
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

/// Views may still have their say while the window is taken down.
void NotchWindowController::menuMoved()
{
    if (m_surface) {
        updateShape();
        updateMotion();
    }
}

void NotchWindowController::closeMenus()
{
    dropService().openWithMenu()->dismiss();
    Q_EMIT pressedElsewhere();
}

void NotchWindowController::wishesChanged(Wish wish)
{
    switch (wish) {
    case Wish::Motion:
        updateMotion();
        break;
    case Wish::Keyboard:
        updateKeyboard();
        break;
    case Wish::Stay:
        if (m_window && m_isExpanded) {
            scheduleCollapse(); // unless there is another reason not to
        }
        break;
    }
}

/// Views that fade out with the panel have no use for it any more.
void NotchWindowController::updateKeyboard()
{
    if (m_surface) {
        m_surface->setKeyboardWanted(m_isExpanded && m_window->has(Wish::Keyboard));
    }
}

void NotchWindowController::updateMotion()
{
    if (!m_surface) {
        return;
    }
    // The menu, and the strip as long as it has not opened, follow the pointer; to most else
    // entering, leaving and pressing is enough, and a pointer that merely moves costs nothing.
    const bool wanted =
        !m_menuFrame.isEmpty() || m_window->has(Wish::Motion) || (m_isPointerOver && !m_isExpanded);
    m_surface->setMotionWanted(wanted);
    m_window->setMotionWanted(wanted);
}

void NotchWindowController::updateShape()
{
    const double radius = m_isExpanded ? m_geometry.panelCornerRadius : m_geometry.cornerRadius;
    m_surface->setShape([=, notch = m_frame, menu = m_menuFrame, submenu = m_submenuFrame,
                         cardRadius = m_geometry.menuCornerRadius](double scale, bool isBlended) {
        const auto inPixels = [scale](const QRectF &rect) {
            return QRectF(rect.topLeft() * scale, rect.size() * scale);
        };
        QRegion region = bottomRoundedRegion(inPixels(notch), radius * scale,
                                             isBlended ? PixelRule::Touched : PixelRule::Centre);
        for (const QRectF &card : {menu, submenu}) {
            region += roundedRegion(inPixels(card), cardRadius * scale);
        }
        return region;
    });
}

} // namespace velmora
