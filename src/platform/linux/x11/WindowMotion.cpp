#include "platform/linux/x11/WindowMotion.h"

#include "platform/linux/x11/X11Connection.h"

#include <QGuiApplication>
#include <QWindow>
#include <qpa/qwindowsysteminterface.h>

#include <chrono>
#include <cstring>
#include <utility>
#include <vector>
#include <xcb/xinput.h>

namespace velmora
{
namespace
{

using namespace std::chrono_literals;

constexpr auto hoverInterval = 33ms;
constexpr auto dragInterval = 16ms;
constexpr auto restInterval = 66ms; // where the pointer stands still

/// Deselects on one device. All words of the mask are sent: the server refuses a part of what
/// belongs together, such as the gestures.
void deselectOnDevice(xcb_connection_t *connection, xcb_window_t window,
                      const xcb_input_event_mask_t &mask)
{
    std::vector<std::uint32_t> selection(1 + mask.mask_len);
    std::memcpy(selection.data(), &mask, selection.size() * sizeof selection.front());
    selection[1] &= ~std::uint32_t(XCB_INPUT_XI_EVENT_MASK_MOTION);
    xcb_input_xi_select_events(connection, window, 1,
                               reinterpret_cast<const xcb_input_event_mask_t *>(selection.data()));
}

/// Takes the moves out of what Qt has selected. Everything else, the pointer's coming and going
/// too, stays.
void deselectMotion(xcb_connection_t *connection, xcb_window_t window)
{
    const auto *extension = xcb_get_extension_data(connection, &xcb_input_id);
    if (extension && extension->present) {
        const XcbPtr<xcb_input_xi_get_selected_events_reply_t> devices(
            xcb_input_xi_get_selected_events_reply(
                connection, xcb_input_xi_get_selected_events(connection, window), nullptr));
        auto mask = devices ? xcb_input_xi_get_selected_events_masks_iterator(devices.get())
                            : xcb_input_event_mask_iterator_t{};
        for (; mask.rem > 0; xcb_input_event_mask_next(&mask)) {
            if (mask.data->mask_len > 0)
                deselectOnDevice(connection, window, *mask.data);
        }
    }
    // What is not selected by the input extension would come as a core event.
    const XcbPtr<xcb_get_window_attributes_reply_t> core(xcb_get_window_attributes_reply(
        connection, xcb_get_window_attributes(connection, window), nullptr));
    if (!core)
        return;
    const std::uint32_t events =
        core->your_event_mask &
        ~std::uint32_t(XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_BUTTON_MOTION);
    xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &events);
    xcb_flush(connection);
}

} // namespace

WindowMotion::WindowMotion(QWindow &window, xcb_connection_t *connection)
    : m_window(window)
    , m_connection(connection)
    , m_id(xcb_window_t(window.winId()))
{
    deselectMotion(connection, m_id);
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.callOnTimeout([this] { look(); });
}

void WindowMotion::setWanted(bool wanted)
{
    m_isWanted = wanted;
    update();
}

void WindowMotion::setPointerOver(bool over)
{
    m_isOver = over;
    update();
}

void WindowMotion::update()
{
    if (m_isWanted && m_isOver && !m_timer.isActive())
        m_timer.start(hoverInterval);
}

void WindowMotion::look()
{
    const Qt::MouseButtons buttons = QGuiApplication::mouseButtons();
    if (!m_isWanted || (!m_isOver && buttons == Qt::NoButton)) {
        m_timer.stop();
        return;
    }
    const XcbPtr<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(m_connection, xcb_query_pointer(m_connection, m_id), nullptr));
    if (!pointer)
        return;
    const QPoint position(pointer->win_x, pointer->win_y);
    const bool isMoved = std::exchange(m_last, position) != position;
    m_timer.setInterval(buttons != Qt::NoButton ? dragInterval
                        : isMoved               ? hoverInterval
                                                : restInterval);
    if (isMoved) {
        QWindowSystemInterface::handleMouseEvent(
            &m_window, position, QPoint(pointer->root_x, pointer->root_y), buttons, Qt::NoButton,
            QEvent::MouseMove, QGuiApplication::keyboardModifiers());
    }
}

} // namespace velmora
