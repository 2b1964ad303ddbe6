#pragma once

#include "config/NotchServices.h"
#include "config/OverlayController.h"
#include "overlay/FrameAnimation.h"
#include "overlay/NotchState.h"
#include "overlay/NotchWindow.h"
#include "overlay/TrackingView.h"
#include "platform/Clock.h"
#include "platform/FileDrags.h"
#include "platform/OverlayShell.h"
#include "platform/Pointer.h"

#include <QList>
#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <memory>
#include <optional>

namespace velmora
{

/// What a controller needs of the desktop. All of it outlives every controller.
struct OverlayEnvironment {
    Clock &clock;
    Pointer &pointer;
    FileDrags &drags;
    OverlayShell &shell;
};

class NotchWindowController;

/// Puts the views into a controller's window.
using OverlayContent = std::function<void(NotchWindow &, NotchWindowController &)>;

/// The overlay of one screen: a window that holds the notch, which grows into the panel when the
/// pointer comes and shrinks back when it leaves. A snapshot: what it gets at construction stays
/// fixed for its life. The window never changes its size; `frame` says what part of it is the
/// notch.
class NotchWindowController : public QObject, public OverlayController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made for each screen")
    Q_PROPERTY(velmora::NotchState *notchState READ notchState CONSTANT FINAL)
    Q_PROPERTY(velmora::NotchServices *services READ services CONSTANT FINAL)
    Q_PROPERTY(QRectF frame READ frameInWindow NOTIFY frameChanged FINAL)
    /// The status menu while it is open over the notch, in window coordinates; empty otherwise. Set
    /// by the view that shows it.
    Q_PROPERTY(QRectF menuFrame READ menuFrame WRITE setMenuFrame NOTIFY menuChanged FINAL)
    /// Likewise its open submenu.
    Q_PROPERTY(QRectF submenuFrame READ submenuFrame WRITE setSubmenuFrame NOTIFY menuChanged FINAL)
    /// Whether the last drop was on this notch, and where: in window coordinates.
    Q_PROPERTY(bool wasDroppedHere READ wasDroppedHere NOTIFY dropped FINAL)
    Q_PROPERTY(QPointF dropPosition READ dropPosition NOTIFY dropped FINAL)
    Q_PROPERTY(double cornerRadius READ cornerRadius CONSTANT FINAL)
    Q_PROPERTY(double expandedTopPadding READ expandedTopPadding CONSTANT FINAL)
    /// The widgets of the zones, by their stored names.
    Q_PROPERTY(QString farLeftWidget READ farLeftWidget CONSTANT FINAL)
    Q_PROPERTY(QString leftWidget READ leftWidget CONSTANT FINAL)
    Q_PROPERTY(QString centerWidget READ centerWidget CONSTANT FINAL)
    Q_PROPERTY(QString rightWidget READ rightWidget CONSTANT FINAL)
    Q_PROPERTY(QString farRightWidget READ farRightWidget CONSTANT FINAL)

public:
    NotchWindowController(const std::shared_ptr<Screen> &screen, const NotchSettings &settings,
                          NotchServices &services, const OverlayEnvironment &environment,
                          const OverlayContent &content);
    ~NotchWindowController() override;

    void showWindow() override;
    void close() override;

    [[nodiscard]] NotchState *notchState() { return &m_notchState; }
    [[nodiscard]] NotchServices *services() const { return &m_services; }
    [[nodiscard]] TrackingView &trackingView() { return m_trackingView; }

    /// The notch as it is drawn at present: global, in points.
    [[nodiscard]] QRectF frame() const { return m_frame; }
    [[nodiscard]] QRectF frameInWindow() const;
    [[nodiscard]] QRectF menuFrame() const { return m_menuFrame; }
    void setMenuFrame(const QRectF &frame);
    [[nodiscard]] QRectF submenuFrame() const { return m_submenuFrame; }
    void setSubmenuFrame(const QRectF &frame);

    [[nodiscard]] bool wasDroppedHere() const { return m_dropPosition.has_value(); }
    [[nodiscard]] QPointF dropPosition() const { return m_dropPosition.value_or(QPointF()); }

    [[nodiscard]] double cornerRadius() const;
    [[nodiscard]] double expandedTopPadding() const { return m_settings.expandedTopPadding; }
    [[nodiscard]] QString farLeftWidget() const { return rawValue(m_settings.widgets[0]); }
    [[nodiscard]] QString leftWidget() const { return rawValue(m_settings.widgets[1]); }
    [[nodiscard]] QString centerWidget() const { return rawValue(m_settings.widgets[2]); }
    [[nodiscard]] QString rightWidget() const { return rawValue(m_settings.widgets[3]); }
    [[nodiscard]] QString farRightWidget() const { return rawValue(m_settings.widgets[4]); }

    /// Width of a zone, from 0 at the left to 4, in a panel of this width, in points.
    Q_INVOKABLE [[nodiscard]] double zoneWidth(int zone, double panelWidth) const;

    /// The action of a drag at `x` points from the left edge of the panel.
    [[nodiscard]] std::optional<DropActionID> actionAt(double x) const;

Q_SIGNALS:
    void frameChanged();
    void menuChanged();
    void dropped();

private:
    using Milliseconds = std::chrono::milliseconds;

    void setupWindow(const OverlayContent &content);
    void setupTracking();
    [[nodiscard]] QPointF panelOrigin() const;
    void mouseEntered();
    void mouseExited();
    void hoverProbe(const QPointF &location);
    void expand();
    void collapse();
    void scheduleCollapse();
    void collapseWorkFired();
    void animateWindow(const QRectF &target, Milliseconds duration);
    void animationStep();
    void setFrame(const QRectF &frame);
    void setMenuPart(QRectF &part, const QRectF &frame);
    void updateShape();
    void updateMotion();

    void setupDragTracking();
    void setupDragMonitors();
    void observeDropState();
    [[nodiscard]] DropActionsService &dropService() const;
    void globalDragBegan(const QList<QUrl> &files);
    void globalMouseUp();
    void dragEntered(const QList<QUrl> &files);
    void dragUpdated(const QPointF &position);
    void dragExited();
    void dragPerformed(const QList<QUrl> &given, const QPointF &position);
    void beginDrag(const QList<QUrl> &files);
    void endDrag();
    void setDropPosition(const std::optional<QPointF> &position);
    [[nodiscard]] bool isPointerInside() const;
    [[nodiscard]] bool isInside(const QPointF &location) const;

    std::weak_ptr<Screen> m_screen;
    NotchSettings m_settings;
    NotchServices &m_services;
    OverlayEnvironment m_environment;
    NotchState m_notchState;
    TrackingView m_trackingView;
    bool m_pointerOverWindow = false;   ///< by the last that was heard of it
    bool m_proactivelyExpanded = false; ///< for a drag that has not reached the notch
    bool m_isDragInside = false;
    std::optional<QPointF> m_dropPosition; ///< of the last drop, if it was here
    TimerHandle m_dropWait;
    TimerHandle m_collapseWork;
    QRectF m_frame;
    QRectF m_menuFrame;
    QRectF m_submenuFrame;
    const QRect m_windowBounds; ///< global
    FrameAnimation m_animation;
    TimerHandle m_frameTimer;
    std::unique_ptr<NotchWindow> m_window;
    std::unique_ptr<OverlaySurface> m_surface; ///< goes before the window
};

} // namespace velmora
