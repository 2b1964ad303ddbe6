#include "eye/XdndSource.h"

#include <algorithm>
#include <cstdlib>
#include <poll.h>
#include <stdexcept>

namespace velmora::bench
{

namespace
{

template<typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> own(Reply *reply)
{
    return {reply, &std::free};
}

constexpr uint32_t version = 5;
constexpr size_t largestPiece = 262'144;

} // namespace

XdndSource::XdndSource(const std::string &display, std::string uriList)
    : m_connection(xcb_connect(display.empty() ? nullptr : display.c_str(), nullptr))
    , m_uriList(std::move(uriList))
{
    auto *xcb = m_connection.get();
    if (xcb_connection_has_error(xcb) != 0)
        throw std::runtime_error("no X server at display '" + display + "'");
    constexpr size_t header = 64;
    m_pieceSize = std::min(largestPiece, size_t{xcb_get_maximum_request_length(xcb)} * 4 - header);
    m_aware = atom("XdndAware");
    m_enter = atom("XdndEnter");
    m_position = atom("XdndPosition");
    m_status = atom("XdndStatus");
    m_leave = atom("XdndLeave");
    m_drop = atom("XdndDrop");
    m_finished = atom("XdndFinished");
    m_selection = atom("XdndSelection");
    m_copy = atom("XdndActionCopy");
    m_uriListType = atom("text/uri-list");

    const auto *screen = xcb_setup_roots_iterator(xcb_get_setup(xcb)).data;
    m_root = screen->root;
    m_window = xcb_generate_id(xcb);
    // The window manager would put the window where it likes.
    const uint32_t values[] = {screen->white_pixel, 1,
                               XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                   XCB_EVENT_MASK_BUTTON_MOTION};
    constexpr int margin = 30;
    xcb_create_window(xcb, XCB_COPY_FROM_PARENT, m_window, m_root, x - margin, y - margin,
                      2 * margin, 2 * margin, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
    xcb_map_window(xcb, m_window);
    m_incremental = atom("INCR"); // with its answer, the window is there
}

xcb_atom_t XdndSource::atom(const std::string &name) const
{
    const auto cookie =
        xcb_intern_atom(m_connection.get(), 0, static_cast<uint16_t>(name.size()), name.c_str());
    const auto reply = own(xcb_intern_atom_reply(m_connection.get(), cookie, nullptr));
    if (!reply)
        throw std::runtime_error("the X server refused a request or is gone");
    return reply->atom;
}

bool XdndSource::serveUntil(SteadyClock::time_point end, const std::function<bool()> &isDone)
{
    for (;;) {
        while (const auto event = own(xcb_poll_for_event(m_connection.get())))
            handle(*event);
        xcb_flush(m_connection.get());
        if (xcb_connection_has_error(m_connection.get()) != 0)
            throw std::runtime_error("the X server is gone");
        if (isDone && isDone())
            return true;
        const auto left = std::chrono::nanoseconds(end - SteadyClock::now()).count();
        if (left <= 0)
            return false;
        const timespec patience{left / 1'000'000'000, left % 1'000'000'000};
        pollfd socket{xcb_get_file_descriptor(m_connection.get()), POLLIN, 0};
        ppoll(&socket, 1, &patience, nullptr);
    }
}

void XdndSource::handle(const xcb_generic_event_t &event)
{
    switch (event.response_type & 0x7f) {
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE:
    case XCB_MOTION_NOTIFY: { // these three are alike
        m_time = reinterpret_cast<const xcb_button_press_event_t &>(event).time;
        if ((event.response_type & 0x7f) != XCB_MOTION_NOTIFY)
            m_isButtonDown = (event.response_type & 0x7f) == XCB_BUTTON_PRESS;
        break;
    }
    case XCB_SELECTION_REQUEST:
        handOver(reinterpret_cast<const xcb_selection_request_event_t &>(event));
        break;
    case XCB_PROPERTY_NOTIFY:
        continueWith(reinterpret_cast<const xcb_property_notify_event_t &>(event));
        break;
    case XCB_CLIENT_MESSAGE: {
        const auto &message = reinterpret_cast<const xcb_client_message_event_t &>(event);
        if (message.type == m_status) {
            m_answer.isKnown = true;
            m_answer.isAccepted = (message.data.data32[1] & 1U) != 0;
        } else if (message.type == m_finished) {
            m_answer.isFinished = true;
        }
        break;
    }
    default:
        break;
    }
}

void XdndSource::takeSelection()
{
    xcb_set_selection_owner(m_connection.get(), m_window, m_selection, m_time);
    xcb_flush(m_connection.get());
}

void XdndSource::handOver(const xcb_selection_request_event_t &request)
{
    ++m_asked;
    auto *xcb = m_connection.get();
    xcb_selection_notify_event_t notice{};
    notice.response_type = XCB_SELECTION_NOTIFY;
    notice.time = request.time;
    notice.requestor = request.requestor;
    notice.selection = request.selection;
    notice.target = request.target;
    if (request.target != m_uriListType) {
        notice.property = XCB_NONE;
    } else if (m_uriList.size() > m_pieceSize) {
        const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        const auto size = static_cast<uint32_t>(m_uriList.size());
        notice.property = request.property;
        xcb_change_window_attributes(xcb, request.requestor, XCB_CW_EVENT_MASK, &events);
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                            m_incremental, 32, 1, &size);
        std::erase_if(m_transfers, [&](const auto &old) {
            return old.requestor == request.requestor && old.property == request.property;
        });
        m_transfers.push_back({request.requestor, request.property, 0});
    } else {
        notice.property = request.property;
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                            m_uriListType, 8, static_cast<uint32_t>(m_uriList.size()),
                            m_uriList.data());
    }
    xcb_send_event(xcb, 0, request.requestor, 0, reinterpret_cast<const char *>(&notice));
}

/// The property was taken away: the next piece is wanted, and an empty one after the last.
void XdndSource::continueWith(const xcb_property_notify_event_t &notice)
{
    if (notice.state != XCB_PROPERTY_DELETE)
        return;
    const auto found = std::find_if(m_transfers.begin(), m_transfers.end(), [&](const auto &one) {
        return one.requestor == notice.window && one.property == notice.atom;
    });
    if (found == m_transfers.end())
        return;
    const size_t size = std::min(m_pieceSize, m_uriList.size() - found->offset);
    xcb_change_property(m_connection.get(), XCB_PROP_MODE_REPLACE, found->requestor,
                        found->property, m_uriListType, 8, static_cast<uint32_t>(size),
                        m_uriList.data() + found->offset);
    found->offset += size;
    if (size == 0)
        m_transfers.erase(found);
}

xcb_window_t XdndSource::targetAt(int16_t rootX, int16_t rootY) const
{
    auto *xcb = m_connection.get();
    for (xcb_window_t window = m_root; window != XCB_NONE;) {
        const auto place = own(xcb_translate_coordinates_reply(
            xcb, xcb_translate_coordinates(xcb, m_root, window, rootX, rootY), nullptr));
        window = place ? place->child : XCB_NONE;
        if (window == XCB_NONE)
            break;
        const auto aware = own(xcb_get_property_reply(
            xcb, xcb_get_property(xcb, 0, window, m_aware, XCB_GET_PROPERTY_TYPE_ANY, 0, 1),
            nullptr));
        if (aware && aware->type != XCB_NONE)
            return window;
    }
    return XCB_NONE;
}

void XdndSource::enter(xcb_window_t target)
{
    m_answer = {};
    tell(target, m_enter, version << 24U, m_uriListType);
}

void XdndSource::moveOver(xcb_window_t target, int16_t rootX, int16_t rootY)
{
    const auto place = static_cast<uint32_t>(rootX) << 16U | static_cast<uint16_t>(rootY);
    tell(target, m_position, 0, place, m_time, m_copy);
}

void XdndSource::leave(xcb_window_t target)
{
    tell(target, m_leave, 0);
}

void XdndSource::drop(xcb_window_t target)
{
    tell(target, m_drop, 0, m_time);
}

void XdndSource::tell(xcb_window_t target, xcb_atom_t type, uint32_t flags, uint32_t first,
                      uint32_t second, uint32_t third)
{
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = target;
    message.type = type;
    message.data.data32[0] = m_window;
    message.data.data32[1] = flags;
    message.data.data32[2] = first;
    message.data.data32[3] = second;
    message.data.data32[4] = third;
    xcb_send_event(m_connection.get(), 0, target, 0, reinterpret_cast<const char *>(&message));
    xcb_flush(m_connection.get());
}

} // namespace velmora::bench
