#include "platform/linux/x11/X11Pointer.h"

#include <QCursor>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QScreen>
#include <QtGui/private/qhighdpiscaling_p.h>
#include <qpa/qplatformscreen.h>

#include <xcb/xinput.h>

namespace velmora
{
namespace
{

Q_LOGGING_CATEGORY(lcPointer, "com.velmora.app.Pointer", QtInfoMsg)

constexpr std::chrono::milliseconds pollInterval{33};
constexpr std::uint16_t anyButton = XCB_KEY_BUT_MASK_BUTTON_1 | XCB_KEY_BUT_MASK_BUTTON_2 |
                                    XCB_KEY_BUT_MASK_BUTTON_3 | XCB_KEY_BUT_MASK_BUTTON_4 |
                                    XCB_KEY_BUT_MASK_BUTTON_5;

/// Buttons 4 to 7 are the directions of a wheel, and what lies above does not drag anything.
bool canDrag(std::uint32_t button)
{
    return button >= XCB_BUTTON_INDEX_1 && button <= XCB_BUTTON_INDEX_3;
}

/// Qt keeps every screen at its place in pixels and scales what is inside of it.
std::optional<QPointF> toPoints(const QPoint &pixels)
{
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens) {
        if (screen->handle()->geometry().contains(pixels))
            return QHighDpi::fromNativePixels(QPointF(pixels), screen);
    }
    return std::nullopt;
}

} // namespace

X11Pointer::X11Pointer(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
    , m_isXWayland(m_connection && isXWayland(m_connection->xcb()))
{
    m_timer.setInterval(pollInterval);
    connect(&m_timer, &QTimer::timeout, this, &X11Pointer::ask);
    if (m_connection)
        selectRawPresses();
}

X11Pointer::~X11Pointer() = default;

std::optional<QPointF> X11Pointer::location() const
{
    if (m_isXWayland || !QGuiApplication::primaryScreen())
        return std::nullopt;
    return QPointF(QCursor::pos());
}

void X11Pointer::selectRawPresses()
{
    xcb_connection_t *xcb = m_connection->xcb();
    const auto *extension = xcb_get_extension_data(xcb, &xcb_input_id);
    // From 2.1 on raw events ignore grabs, for clients that ask for that version.
    const XcbPtr<xcb_input_xi_query_version_reply_t> version(
        extension && extension->present
            ? xcb_input_xi_query_version_reply(xcb, xcb_input_xi_query_version(xcb, 2, 2), nullptr)
            : nullptr);
    if (!version || version->major_version < 2) {
        qCInfo(lcPointer, "no XInput 2: drags of other programs are not followed");
        return;
    }
    m_inputOpcode = extension->major_opcode;

    struct {
        xcb_input_event_mask_t header{XCB_INPUT_DEVICE_ALL_MASTER, 1};
        std::uint32_t events =
            XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE |
            XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_BEGIN | XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_END;
    } selection;
    xcb_input_xi_select_events(xcb, m_connection->root(), 1, &selection.header);
    xcb_flush(xcb);

    connect(m_connection.get(), &X11Connection::eventArrived, this, &X11Pointer::handleEvent);
    connect(m_connection.get(), &X11Connection::dispatched, this, &X11Pointer::takeAnswer);
}

void X11Pointer::handleEvent(const xcb_generic_event_t *event)
{
    if ((event->response_type & 0x7f) != XCB_GE_GENERIC)
        return;
    const auto *generic = reinterpret_cast<const xcb_ge_generic_event_t *>(event);
    if (generic->extension != m_inputOpcode)
        return;
    switch (generic->event_type) {
    case XCB_INPUT_RAW_BUTTON_PRESS:
        if (!canDrag(reinterpret_cast<const xcb_input_raw_button_press_event_t *>(event)->detail))
            break;
        [[fallthrough]];
    case XCB_INPUT_RAW_TOUCH_BEGIN:
        if (!m_timer.isActive())
            m_timer.start();
        break;
    case XCB_INPUT_RAW_BUTTON_RELEASE:
    case XCB_INPUT_RAW_TOUCH_END:
        if (m_timer.isActive())
            ask(); // the answer tells whether that was the last button
        break;
    default:
        break;
    }
}

void X11Pointer::ask()
{
    // Asked without waiting: a window manager may hold the whole server for as long as a drag.
    if (m_question)
        return;
    m_question = xcb_query_pointer(m_connection->xcb(), m_connection->root()).sequence;
    xcb_flush(m_connection->xcb());
}

void X11Pointer::takeAnswer()
{
    XcbPtr<xcb_query_pointer_reply_t> pointer;
    if (!m_connection->takeReply(m_question, pointer))
        return;
    // The state of the buttons decides, not a count of events: no lost release keeps this running.
    const bool isHeld = pointer && (pointer->mask & anyButton) != 0;
    const auto last = m_last;
    m_last.reset();
    if (pointer && (isHeld || last)) { // a mere click is no move
        m_last = QPoint(pointer->root_x, pointer->root_y);
        // With the button pressed in a window of ours, that window hears of every move.
        const auto points = m_last != last && QGuiApplication::mouseButtons() == Qt::NoButton
                                ? toPoints(*m_last)
                                : std::nullopt;
        if (points)
            Q_EMIT movedElsewhere(*points);
    }
    if (!isHeld) {
        m_timer.stop();
        m_last.reset();
        Q_EMIT released();
    }
}

} // namespace velmora
