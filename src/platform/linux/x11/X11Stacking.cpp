#include "platform/linux/x11/X11Stacking.h"

#include <algorithm>
#include <chrono>
#include <ranges>

namespace velmora
{
namespace
{

using namespace std::chrono_literals;

/// Window managers restack in several steps; one look after the last of them is enough.
constexpr auto settleTime = 20ms;
/// A window that insists on the top place as well gets it after so many rounds, until the period
/// is over.
constexpr auto contestPeriod = 10s;
constexpr int contestRounds = 8;

bool isViewable(const xcb_get_window_attributes_reply_t *attributes)
{
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

} // namespace

X11Stacking::X11Stacking(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
    , m_clientList(m_connection->atom("_NET_CLIENT_LIST"))
    , m_clientListStacking(m_connection->atom("_NET_CLIENT_LIST_STACKING"))
    , m_activeWindow(m_connection->atom("_NET_ACTIVE_WINDOW"))
    , m_wmState(m_connection->atom("WM_STATE"))
{
    m_checkTimer.setSingleShot(true);
    m_checkTimer.setInterval(settleTime);
    connect(&m_checkTimer, &QTimer::timeout, this, &X11Stacking::check);
    connect(m_connection.get(), &X11Connection::eventArrived, this, &X11Stacking::handleEvent);
    m_connection->selectOnRoot(XCB_EVENT_MASK_PROPERTY_CHANGE);
}

X11Stacking::~X11Stacking() = default;

void X11Stacking::watch(xcb_window_t window)
{
    m_watched.push_back(window);
    const std::uint32_t mask = XCB_EVENT_MASK_VISIBILITY_CHANGE;
    xcb_change_window_attributes(m_connection->xcb(), window, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(m_connection->xcb());
}

void X11Stacking::unwatch(xcb_window_t window)
{
    std::erase(m_watched, window);
}

void X11Stacking::handleEvent(const xcb_generic_event_t *event)
{
    switch (event->response_type & 0x7f) {
    case XCB_PROPERTY_NOTIFY: {
        const auto atom = reinterpret_cast<const xcb_property_notify_event_t *>(event)->atom;
        if (atom == m_clientList || atom == m_clientListStacking || atom == m_activeWindow)
            checkLater();
        break;
    }
    case XCB_VISIBILITY_NOTIFY: {
        const auto *change = reinterpret_cast<const xcb_visibility_notify_event_t *>(event);
        if (change->state != XCB_VISIBILITY_UNOBSCURED)
            checkLater();
        break;
    }
    default:
        break;
    }
}

void X11Stacking::checkLater()
{
    if (!m_watched.empty())
        m_checkTimer.start();
}

void X11Stacking::check()
{
    xcb_connection_t *xcb = m_connection->xcb();
    const XcbPtr<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(xcb, xcb_query_tree(xcb, m_connection->root()), nullptr));
    if (!tree)
        return;
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    const std::vector<xcb_window_t> stack(children, children + tree->children_len);

    const auto lowest = std::ranges::find_if(stack, [this](xcb_window_t window) {
        return std::ranges::find(m_watched, window) != m_watched.end();
    });
    if (lowest != stack.end()) {
        const xcb_window_t managed = topmostManaged({lowest, stack.end()});
        if (managed != XCB_NONE && mayRaise()) {
            const auto place = std::ranges::find(stack, managed);
            for (auto window = lowest; window != place; ++window) {
                if (std::ranges::find(m_watched, *window) == m_watched.end())
                    continue;
                const std::uint32_t values[] = {managed, XCB_STACK_MODE_ABOVE};
                xcb_configure_window(
                    xcb, *window, XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE, values);
            }
            xcb_flush(xcb);
        }
    }
    m_connection->dispatch();
}

bool X11Stacking::mayRaise()
{
    if (m_period.hasExpired()) {
        m_period.setRemainingTime(contestPeriod);
        m_raises = 0;
    }
    return ++m_raises <= contestRounds;
}

/// The topmost visible one of these children of the root that the window manager manages. It may
/// be the client itself or a frame around it, and some managers make their frames override-redirect
/// as well; the clients inside carry WM_STATE.
xcb_window_t X11Stacking::topmostManaged(const std::vector<xcb_window_t> &windows) const
{
    xcb_connection_t *xcb = m_connection->xcb();
    std::vector<xcb_get_window_attributes_cookie_t> questions;
    questions.reserve(windows.size());
    for (const xcb_window_t window : windows)
        questions.push_back(xcb_get_window_attributes(xcb, window));

    xcb_window_t topmost = XCB_NONE;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        const XcbPtr<xcb_get_window_attributes_reply_t> attributes(
            xcb_get_window_attributes_reply(xcb, questions[i], nullptr));
        if (!isViewable(attributes.get()) ||
            std::ranges::find(m_watched, windows[i]) != m_watched.end())
            continue;
        if (attributes->override_redirect == 0) {
            topmost = windows[i];
            continue;
        }
        const XcbPtr<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(xcb, xcb_query_tree(xcb, windows[i]), nullptr));
        if (!tree)
            continue;
        const std::span inside(xcb_query_tree_children(tree.get()), tree->children_len);
        const bool frame = std::ranges::any_of(inside, [&](xcb_window_t client) {
            const auto cookie = xcb_get_property(xcb, 0, client, m_wmState, XCB_ATOM_ANY, 0, 0);
            const XcbPtr<xcb_get_property_reply_t> state(
                xcb_get_property_reply(xcb, cookie, nullptr));
            return state && state->type != XCB_ATOM_NONE;
        });
        if (frame)
            topmost = windows[i];
    }
    return topmost;
}

} // namespace velmora
