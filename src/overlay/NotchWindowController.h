#pragma once

#include "config/NotchServices.h"
#include "config/OverlayController.h"
#include "overlay/NotchGeometry.h"
#include "overlay/NotchWindow.h"
#include "overlay/StatusMenu.h"
#include "platform/Clock.h"
#include "platform/FileDrags.h"
#include "platform/OverlayShell.h"
#include "platform/Pointer.h"

#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariantAnimation>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <memory>
#include <optional>

class QMimeData;

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
    Q_PROPERTY(bool isExpanded READ isExpanded NOTIFY isExpandedChanged FINAL)
    Q_PROPERTY(velmora::NotchServices *services READ services CONSTANT FINAL)
    Q_PROPERTY(velmora::NotchGeometry geometry READ geometry CONSTANT FINAL)
    Q_PROPERTY(QRectF frame READ frame NOTIFY frameChanged FINAL)
    Q_PROPERTY(bool isPointerOver READ isPointerOver NOTIFY isPointerOverChanged FINAL)
    /// The open menu over the notch, in window coordinates; empty if there is none. Set by the view
    /// that shows it.
    Q_PROPERTY(QRectF menuFrame MEMBER m_menuFrame NOTIFY menuChanged FINAL)
    /// Likewise its open submenu.
    Q_PROPERTY(QRectF submenuFrame MEMBER m_submenuFrame NOTIFY menuChanged FINAL)
    /// The part of the strip over which the pointer does not open the panel, in window coordinates.
    /// Set by the strip's view.
    Q_PROPERTY(QRectF quietArea MEMBER m_quietArea NOTIFY quietAreaChanged FINAL)
    /// The choice of an application for files that were dropped here, as long as it is open.
    Q_PROPERTY(bool isOpenWithShown READ isOpenWithShown NOTIFY openWithChanged FINAL)
    Q_PROPERTY(QList<velmora::StatusMenuEntry> openWithEntries READ openWithEntries NOTIFY
                   openWithChanged FINAL)
    /// Where they were dropped, in window coordinates.
    Q_PROPERTY(QPointF dropPosition READ dropPosition NOTIFY openWithChanged FINAL)
    /// What was told of dropped files while the strip was away; empty if nothing was.
    Q_PROPERTY(QString missedStatus READ missedStatus NOTIFY missedStatusChanged FINAL)
    /// The widgets of the zones from left to right, by their stored names.
    Q_PROPERTY(QStringList widgets READ widgets CONSTANT FINAL)

public:
    NotchWindowController(const std::shared_ptr<Screen> &screen, const NotchSettings &settings,
                          NotchServices &services, const OverlayEnvironment &environment,
                          const OverlayContent &content);
    ~NotchWindowController() override;

    void showWindow() override;
    void close() override;

    [[nodiscard]] bool isExpanded() const { return m_isExpanded; }
    [[nodiscard]] NotchServices *services() const { return &m_services; }
    [[nodiscard]] const NotchGeometry &geometry() const { return m_geometry; }

    /// The notch as it is drawn at present, in window coordinates.
    [[nodiscard]] QRectF frame() const { return m_frame; }
    [[nodiscard]] bool isPointerOver() const { return m_isPointerOver; }
    [[nodiscard]] QRectF menuFrame() const { return m_menuFrame; }
    [[nodiscard]] QRectF submenuFrame() const { return m_submenuFrame; }
    [[nodiscard]] QRectF quietArea() const { return m_quietArea; }

    [[nodiscard]] bool isOpenWithShown() const { return m_isOpenWithShown; }
    [[nodiscard]] QList<StatusMenuEntry> openWithEntries() const;
    [[nodiscard]] QPointF dropPosition() const { return m_dropPosition.value_or(QPointF()); }
    [[nodiscard]] QString missedStatus() const { return m_missedStatus; }

    [[nodiscard]] QStringList widgets() const { return m_widgets; }

    // What the pointer does over the window, which tells of it; positions are those in the window.
    void mouseEntered(const QPointF &position);
    void mouseMoved(const QPointF &position); ///< with no button pressed
    /// Whether the press has had its effect, and is not for the views.
    [[nodiscard]] bool mousePressed(const QPointF &position);
    void mouseExited();

    /// Whether the drag can be dropped here, as a copy: only what is or promises files. One that
    /// can is updated any number of times, and then it leaves or is dropped.
    [[nodiscard]] bool dragEntered(const QMimeData &data);
    void dragUpdated(const QPointF &position);
    void dragExited();
    void dragPerformed(const QMimeData &data, const QPointF &position);

Q_SIGNALS:
    void isExpandedChanged();
    void frameChanged();
    void isPointerOverChanged();
    void menuChanged();
    void quietAreaChanged();
    void openWithChanged();
    void missedStatusChanged();
    /// A press elsewhere than in an open menu, as far as the window system tells of it. Menus
    /// close.
    void pressedElsewhere();

private:
    using Milliseconds = std::chrono::milliseconds;

    /// What a notch has to do with a drag of files. One of all notches has, at a time.
    enum class DragPart {
        None,
        Opened, ///< it has opened, for a drag that has not reached it
        Entered ///< the drag is over it
    };

    void setupWindow(const OverlayContent &content);
    void setPointerOver(bool over);
    void hoverProbe(const QPointF &location);
    void expand();
    void openPanel(Milliseconds duration);
    void collapse();
    void setExpanded(bool expanded);
    void scheduleCollapse();
    void collapseWorkFired();
    void animateWindow(const QRectF &target, Milliseconds duration);
    void animationStep();
    void setFrame(const QRectF &frame);
    void menuMoved();
    void closeMenus();
    void updateShape();
    void updateMotion();
    void updateKeyboard();
    void wishesChanged(Wish wish);
    [[nodiscard]] bool isInMenu(const QPointF &position) const;
    [[nodiscard]] bool isInside(const QPointF &position) const;
    [[nodiscard]] bool isPointerInside() const;

    void setupDragMonitors();
    void observeDropState();
    [[nodiscard]] DropActionsService &dropService() const;
    void globalDragBegan(const QList<QUrl> &files);
    void globalMouseUp();
    [[nodiscard]] QList<QUrl> filesOf(const QMimeData &data) const;
    [[nodiscard]] std::optional<DropActionID> actionAt(const QPointF &position) const;
    void beginDrag(const QList<QUrl> &files, DragPart part);
    void endDrag();
    void isDraggingChanged();
    void openWithMenuChanged();
    void dismissOpenWith();
    void setMissedStatus(const QString &status);

    std::weak_ptr<Screen> m_screen;
    const NotchGeometry m_geometry;
    QStringList m_widgets;
    NotchServices &m_services;
    OverlayEnvironment m_environment;
    bool m_isExpanded = false;
    bool m_isPointerOver = false; ///< by the last that was heard of it
    TimerHandle m_collapseWork;
    QRectF m_frame;
    QRectF m_menuFrame;
    QRectF m_submenuFrame;
    QRectF m_quietArea;
    QVariantAnimation m_animation; ///< of the frame, stepped by hand
    std::chrono::nanoseconds m_animationBegan{0};
    TimerHandle m_frameTimer;
    DragPart m_dragPart = DragPart::None;
    std::optional<QPointF> m_dropPosition; ///< of the last drop, if it was here
    TimerHandle m_dropWait;
    bool m_isOpenWithShown = false;
    QString m_missedStatus;
    std::unique_ptr<NotchWindow> m_window;
    std::unique_ptr<OverlaySurface> m_surface; ///< goes before the window
};

} // namespace velmora
