#pragma once

#include <QByteArray>
#include <QPoint>
#include <QRect>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace velmora
{

/// Another program on the X server, and the hand on the mouse. Every call has taken effect in the
/// server when it returns.
class XPeer
{
public:
    template<typename T>
    using Reply = std::unique_ptr<T, decltype([](T *p) { std::free(p); })>;

    /// Of the display in DISPLAY unless another one is named.
    explicit XPeer(const char *display = nullptr)
        : m_xcb(xcb_connect(display, nullptr))
        , m_root(xcb_setup_roots_iterator(xcb_get_setup(m_xcb)).data->root)
    {
    }
    ~XPeer() { xcb_disconnect(m_xcb); }
    XPeer(const XPeer &) = delete;
    XPeer &operator=(const XPeer &) = delete;

    void sync() { static_cast<void>(focus()); }

    [[nodiscard]] xcb_window_t focus()
    {
        const auto cookie = xcb_get_input_focus(m_xcb);
        return Reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus_reply(m_xcb, cookie, nullptr))
            ->focus;
    }

    /// Moves with the mouse, as far as anybody can tell.
    void move(const QPoint &to) { fake(XCB_MOTION_NOTIFY, 0, to); }
    void press(std::uint8_t button = 1) { fake(XCB_BUTTON_PRESS, button, {}); }
    void release(std::uint8_t button = 1) { fake(XCB_BUTTON_RELEASE, button, {}); }

    /// The child of the root that the pointer is in, as the server's shapes have it.
    [[nodiscard]] xcb_window_t windowAt(const QPoint &point)
    {
        move(point);
        const auto cookie = xcb_query_pointer(m_xcb, m_root);
        return Reply<xcb_query_pointer_reply_t>(xcb_query_pointer_reply(m_xcb, cookie, nullptr))
            ->child;
    }

    [[nodiscard]] bool grabPointer()
    {
        const auto cookie =
            xcb_grab_pointer(m_xcb, 0, m_root, XCB_EVENT_MASK_BUTTON_RELEASE, XCB_GRAB_MODE_ASYNC,
                             XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME);
        const Reply<xcb_grab_pointer_reply_t> reply(xcb_grab_pointer_reply(m_xcb, cookie, nullptr));
        return reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
    }

    void ungrabPointer()
    {
        xcb_ungrab_pointer(m_xcb, XCB_CURRENT_TIME);
        sync();
    }

    /// A window on top of all, past the window manager: a locker's, or with a client inside the
    /// frame that a window manager would make.
    xcb_window_t coverWith(const QRect &place, bool asFrameOfAClient)
    {
        const xcb_window_t window = createWindow(m_root, place);
        if (asFrameOfAClient) {
            const xcb_window_t client = createWindow(window, {QPoint(), place.size()});
            const std::uint32_t normal[] = {1, XCB_NONE};
            const xcb_atom_t state = atom("WM_STATE");
            xcb_change_property(m_xcb, XCB_PROP_MODE_REPLACE, client, state, state, 32, 2, normal);
            xcb_map_window(m_xcb, client);
        }
        xcb_map_window(m_xcb, window);
        sync();
        return window;
    }

    void raise(xcb_window_t window)
    {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(m_xcb, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        sync();
    }

    /// A window that the window manager manages, and gives the focus to.
    xcb_window_t openWindow(const QRect &place)
    {
        const xcb_window_t window = createWindow(m_root, place, false);
        xcb_map_window(m_xcb, window);
        sync();
        return window;
    }

    void setFocus(xcb_window_t window)
    {
        xcb_set_input_focus(m_xcb, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
        sync();
    }

    void type(std::uint8_t keycode)
    {
        fake(XCB_KEY_PRESS, keycode, {});
        fake(XCB_KEY_RELEASE, keycode, {});
    }

    /// Begins a drag, as far as others can tell; `answer` tells them of what.
    void offerFiles(const QByteArray &uriList)
    {
        m_offer = uriList;
        xcb_set_selection_owner(m_xcb, createWindow(m_root, {0, 0, 1, 1}), atom("XdndSelection"),
                                XCB_CURRENT_TIME);
        sync();
    }

    void answer()
    {
        while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(m_xcb)}) {
            if ((event->response_type & 0x7f) != XCB_SELECTION_REQUEST)
                continue;
            const auto &request = reinterpret_cast<xcb_selection_request_event_t &>(*event);
            xcb_change_property(m_xcb, XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                                request.target, 8, std::uint32_t(m_offer.size()), m_offer.data());
            xcb_selection_notify_event_t notice{};
            notice.response_type = XCB_SELECTION_NOTIFY;
            notice.time = request.time;
            notice.requestor = request.requestor;
            notice.selection = request.selection;
            notice.target = request.target;
            notice.property = request.property;
            xcb_send_event(m_xcb, 0, request.requestor, 0, reinterpret_cast<char *>(&notice));
        }
        sync();
    }

    void remove(xcb_window_t window)
    {
        xcb_destroy_window(m_xcb, window);
        sync();
    }

    [[nodiscard]] bool isAbove(xcb_window_t upper, xcb_window_t lower)
    {
        const auto stack = children();
        const auto at = [&stack](xcb_window_t w) { return std::ranges::find(stack, w); };
        return at(upper) != stack.end() && at(lower) != stack.end() && at(upper) > at(lower);
    }

    /// Closes the window of this name as a window manager does; false if there is none.
    bool close(const QByteArray &name)
    {
        for (const xcb_window_t window : children()) {
            if (this->name(window) != name)
                continue;
            xcb_client_message_event_t message{};
            message.response_type = XCB_CLIENT_MESSAGE;
            message.format = 32;
            message.window = window;
            message.type = atom("WM_PROTOCOLS");
            message.data.data32[0] = atom("WM_DELETE_WINDOW");
            xcb_send_event(m_xcb, 0, window, 0, reinterpret_cast<const char *>(&message));
            sync();
            return true;
        }
        return false;
    }

    [[nodiscard]] QRect geometry(xcb_window_t window)
    {
        const Reply<xcb_get_geometry_reply_t> reply(
            xcb_get_geometry_reply(m_xcb, xcb_get_geometry(m_xcb, window), nullptr));
        return reply ? QRect(reply->x, reply->y, reply->width, reply->height) : QRect();
    }

private:
    /// Of the root, the topmost last.
    std::vector<xcb_window_t> children()
    {
        const auto cookie = xcb_query_tree(m_xcb, m_root);
        const Reply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(m_xcb, cookie, nullptr));
        const xcb_window_t *first = xcb_query_tree_children(tree.get());
        return {first, first + tree->children_len};
    }

    QByteArray name(xcb_window_t window)
    {
        const auto cookie = xcb_get_property(m_xcb, 0, window, atom("_NET_WM_NAME"),
                                             XCB_GET_PROPERTY_TYPE_ANY, 0, 64);
        const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_xcb, cookie, nullptr));
        return reply ? QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())),
                                  xcb_get_property_value_length(reply.get()))
                     : QByteArray();
    }

    void fake(std::uint8_t type, std::uint8_t detail, const QPoint &at)
    {
        xcb_test_fake_input(m_xcb, type, detail, 0, m_root, std::int16_t(at.x()),
                            std::int16_t(at.y()), 0);
        sync();
    }

    xcb_atom_t atom(const char *name)
    {
        const auto cookie = xcb_intern_atom(m_xcb, 0, std::uint16_t(std::strlen(name)), name);
        return Reply<xcb_intern_atom_reply_t>(xcb_intern_atom_reply(m_xcb, cookie, nullptr))->atom;
    }

    xcb_window_t createWindow(xcb_window_t parent, const QRect &place, bool bypasses = true)
    {
        const xcb_window_t window = xcb_generate_id(m_xcb);
        const std::uint32_t overrideRedirect = bypasses;
        xcb_create_window(m_xcb, XCB_COPY_FROM_PARENT, window, parent, std::int16_t(place.x()),
                          std::int16_t(place.y()), std::uint16_t(place.width()),
                          std::uint16_t(place.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, &overrideRedirect);
        return window;
    }

    xcb_connection_t *m_xcb;
    xcb_window_t m_root;
    QByteArray m_offer;
};

} // namespace velmora
