#include "platform/linux/x11/X11OverlayShell.h"

#include "platform/linux/x11/MotionSelection.h"

#include <QGuiApplication>
#include <QPointer>
#include <QWindow>
#include <QtGui/qguiapplication_platform.h>
#include <qpa/qplatformnativeinterface.h>
#include <qpa/qplatformwindow.h>

#include <cstring>
#include <optional>
#include <utility>
#include <xcb/xcb.h>

namespace velmora
{
namespace
{

xcb_connection_t *qtConnection()
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

xcb_atom_t internAtom(xcb_connection_t *xcb, const char *name)
{
    const auto cookie =
        xcb_intern_atom(xcb, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const XcbPtr<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(xcb, cookie, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

/// Asked for once: each question waits for the server, and windows are made anew at every change of
/// a setting.
struct WindowAtoms {
    explicit WindowAtoms(xcb_connection_t *xcb)
        : windowType(internAtom(xcb, "_NET_WM_WINDOW_TYPE"))
        , dock(internAtom(xcb, "_NET_WM_WINDOW_TYPE_DOCK"))
        , desktop(internAtom(xcb, "_NET_WM_DESKTOP"))
    {
    }
    xcb_atom_t windowType;
    xcb_atom_t dock;
    xcb_atom_t desktop;
};

/// Qt sends what it has gathered when it next handles an event of the server, and that may be late.
void flush()
{
    if (xcb_connection_t *xcb = qtConnection())
        xcb_flush(xcb);
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
        : m_window(&window)
        , m_stacking(std::move(stacking))
    {
    }

    ~X11OverlaySurface() override
    {
        if (m_stacking && m_id != XCB_NONE)
            m_stacking->unwatch(m_id);
        X11OverlaySurface::setKeyboardWanted(false);
        if (!m_window)
            return;
        m_window->destroy();
        flush();
    }
    Q_DISABLE_COPY_MOVE(X11OverlaySurface)

    void orderFront() override
    {
        if (!m_window)
            return;
        if (m_id == XCB_NONE)
            prepare();
        m_window->show();
        m_window->raise();
        flush();
    }

    /// What has grown is to be there before it is drawn, and what has shrunk only goes when the
    /// frame without it has been sent: never does the desktop show where the notch still is.
    void setShape(const OverlayShape &shape) override
    {
        if (!m_window)
            return;
        m_shape = shape(m_window->devicePixelRatio(), isBlended());
        if (m_id == XCB_NONE)
            return;
        cutTo(m_cut + m_shape);
        m_window->requestUpdate();
    }

    void setMotionWanted(bool wanted) override
    {
        m_motionWanted = wanted;
        if (m_motion)
            m_motion->setSelected(wanted);
    }

    void setKeyboardWanted(bool wanted) override
    {
        xcb_connection_t *xcb = qtConnection();
        if (wanted == m_focusBefore.has_value() || m_id == XCB_NONE || !xcb)
            return;
        const xcb_window_t focus = focusedWindow(xcb);
        if (wanted) {
            m_focusBefore = focus;
            setFocus(xcb, m_id);
        } else {
            const xcb_window_t before = *std::exchange(m_focusBefore, std::nullopt);
            if (focus == m_id)
                setFocus(xcb, before);
        }
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::UpdateRequest && m_cut != m_shape) {
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
        return QGuiApplication::platformNativeInterface()->nativeResourceForScreen(
                   "compositingenabled", m_window->screen()) != nullptr;
    }

    void cutTo(const QRegion &pixels)
    {
        if (!m_window || m_cut == pixels)
            return;
        m_cut = pixels;
        // An empty mask means no mask to Qt; a spot outside of the window hides all of it.
        m_window->handle()->setMask(pixels.isEmpty() ? QRegion(-1, -1, 1, 1) : pixels);
        flush();
    }

    /// Creates the X window and tells pagers and compositors what it is.
    void prepare()
    {
        m_window->create();
        m_id = static_cast<xcb_window_t>(m_window->winId());
        m_window->installEventFilter(this);
        cutTo(m_shape);
        xcb_connection_t *xcb = qtConnection();
        if (!xcb)
            return;
        static const WindowAtoms atoms(xcb);
        // Compositors draw no shadow around a dock, do not fade it, and keep it in overviews.
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, m_id, atoms.windowType, XCB_ATOM_ATOM, 32,
                            1, &atoms.dock);
        const std::uint32_t allDesktops = 0xffffffff;
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, m_id, atoms.desktop, XCB_ATOM_CARDINAL, 32,
                            1, &allDesktops);
        m_motion.emplace(xcb, m_id);
        m_motion->setSelected(m_motionWanted);
        if (m_stacking)
            m_stacking->watch(m_id);
    }

    QPointer<QWindow> m_window;
    std::shared_ptr<X11Stacking> m_stacking;
    xcb_window_t m_id = XCB_NONE;
    std::optional<xcb_window_t> m_focusBefore; ///< while the keyboard is wanted
    QRegion m_shape;                           ///< as it is wanted, in pixels
    QRegion m_cut = QRect(-1, -1, 1, 1);       ///< as the server has it
    std::optional<MotionSelection> m_motion;
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
