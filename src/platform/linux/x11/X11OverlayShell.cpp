#include "platform/linux/x11/X11OverlayShell.h"

#include "platform/linux/x11/WindowMotion.h"

#include <QGuiApplication>
#include <QWindow>
#include <QtGui/qguiapplication_platform.h>
#include <qpa/qplatformnativeinterface.h>
#include <qpa/qplatformwindow.h>
#include <qpa/qplatformwindow_p.h>

#include <optional>
#include <utility>
#include <xcb/xcb.h>

namespace velmora
{
namespace
{

xcb_connection_t *qtConnection()
{
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

xcb_window_t focusedWindow(xcb_connection_t *xcb)
{
    const XcbPtr<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
    return reply ? reply->focus : xcb_window_t(XCB_INPUT_FOCUS_POINTER_ROOT);
}

/// To whichever window the pointer is in if that one is gone; window managers then choose another.
void setFocus(xcb_connection_t *xcb, xcb_window_t window)
{
    const XcbPtr<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(xcb, xcb_get_window_attributes(xcb, window), nullptr));
    const bool isThere = attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    xcb_set_input_focus(xcb, XCB_INPUT_FOCUS_POINTER_ROOT,
                        isThere ? window : xcb_window_t(XCB_INPUT_FOCUS_POINTER_ROOT),
                        XCB_CURRENT_TIME);
    xcb_flush(xcb);
}

class X11OverlaySurface final : public QObject, public OverlaySurface
{
public:
    X11OverlaySurface(QWindow &window, std::shared_ptr<X11Stacking> stacking)
        : m_window(window)
        , m_stacking(std::move(stacking))
    {
    }

    ~X11OverlaySurface() override
    {
        if (m_stacking && m_id != XCB_NONE)
            m_stacking->unwatch(m_id);
        X11OverlaySurface::setKeyboardWanted(false);
        m_window.destroy();
        flush();
    }
    Q_DISABLE_COPY_MOVE(X11OverlaySurface)

    void orderFront() override
    {
        if (m_id == XCB_NONE)
            prepare();
        m_window.show();
        m_window.raise();
        flush();
    }

    /// What has grown is to be there before it is drawn, and what has shrunk only goes when the
    /// frame without it has been sent: never does the desktop show where the notch still is.
    void setShape(const OverlayShape &shape) override
    {
        m_shape = shape(m_window.devicePixelRatio(), isBlended());
        cutTo(m_cut + m_shape);
        m_window.requestUpdate();
    }

    void setMotionWanted(bool wanted) override
    {
        m_motionWanted = wanted;
        if (m_motion)
            m_motion->setWanted(wanted);
    }

    void setKeyboardWanted(bool wanted) override
    {
        if (wanted == m_focusBefore.has_value() || m_id == XCB_NONE)
            return;
        const xcb_window_t focus = focusedWindow(m_xcb);
        const auto before = std::exchange(m_focusBefore, std::nullopt);
        if (wanted) {
            m_focusBefore = focus;
            setFocus(m_xcb, m_id);
        } else if (focus == m_id && isXWayland(m_xcb)) {
            // A Wayland window may have had it, of which the server knows nothing. When this one
            // goes, the compositor chooses the window that was used last.
            QMetaObject::invokeMethod(this, &X11OverlaySurface::reappear, Qt::QueuedConnection);
        } else if (focus == m_id) {
            setFocus(m_xcb, *before);
        }
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Enter || event->type() == QEvent::Leave) {
            m_motion->setPointerOver(event->type() == QEvent::Enter);
        } else if (event->type() == QEvent::UpdateRequest && m_cut != m_shape) {
            // Once the window has drawn. By then the next shape may be wanted already.
            QMetaObject::invokeMethod(
                this, [this, drawn = m_shape] { cutTo(drawn + m_shape); }, Qt::QueuedConnection);
        }
        return false;
    }

private:
    /// By a compositor, of which there may be none.
    [[nodiscard]] bool isBlended() const
    {
        QScreen *screen = m_window.screen();
        return screen && QGuiApplication::platformNativeInterface()->nativeResourceForScreen(
                             "compositingenabled", screen);
    }

    void reappear()
    {
        if (m_focusBefore) // wanted again
            return;
        m_window.hide();
        flush();
        m_window.show();
        flush();
    }

    /// Qt sends what it has gathered when it next handles an event of the server, which may be
    /// late.
    void flush() const { xcb_flush(m_xcb); }

    void cutTo(const QRegion &pixels)
    {
        if (m_id == XCB_NONE || !m_window.handle() || m_cut == pixels)
            return;
        m_cut = pixels;
        // An empty mask means no mask to Qt; a spot outside of the window hides all of it.
        m_window.handle()->setMask(pixels.isEmpty() ? QRegion(-1, -1, 1, 1) : pixels);
        flush();
    }

    void prepare()
    {
        m_window.create();
        m_id = static_cast<xcb_window_t>(m_window.winId());
        cutTo(m_shape);
        // Compositors draw no shadow around a dock, do not fade it, and keep it in overviews.
        using Native = QNativeInterface::Private::QXcbWindow;
        m_window.nativeInterface<Native>()->setWindowType(Native::Dock);
        m_motion.emplace(m_window, m_xcb);
        m_motion->setWanted(m_motionWanted);
        m_window.installEventFilter(this);
        if (m_stacking)
            m_stacking->watch(m_id);
    }

    QWindow &m_window;
    std::shared_ptr<X11Stacking> m_stacking;
    xcb_connection_t *m_xcb = qtConnection();
    xcb_window_t m_id = XCB_NONE;
    std::optional<xcb_window_t> m_focusBefore; ///< while the keyboard is wanted
    QRegion m_shape;                           ///< as it is wanted, in pixels
    QRegion m_cut = QRect(-1, -1, 1, 1);       ///< as the server has it
    std::optional<WindowMotion> m_motion;
    bool m_motionWanted = true;
};

} // namespace

X11OverlayShell::X11OverlayShell(std::shared_ptr<X11Connection> connection)
    : m_stacking(connection ? std::make_shared<X11Stacking>(std::move(connection)) : nullptr)
{
}

X11OverlayShell::~X11OverlayShell() = default;

std::unique_ptr<OverlaySurface> X11OverlayShell::adopt(QWindow &window, const Screen &screen,
                                                       const QRect &bounds)
{
    window.setFlags(Qt::FramelessWindowHint | Qt::BypassWindowManagerHint |
                    Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus);
    window.setScreen(screen.handle());
    window.setGeometry(bounds);
    return std::make_unique<X11OverlaySurface>(window, m_stacking);
}

} // namespace velmora
