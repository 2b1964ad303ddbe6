#include "platform/linux/x11/X11Connection.h"

#include <QGuiApplication>
#include <QScreen>
#include <QSocketNotifier>

#include <cstdlib>
#include <cstring>
#include <xcb/xcbext.h>

namespace velmora
{

void XcbFree::operator()(void *pointer) const noexcept
{
    std::free(pointer); // NOLINT: xcb allocates with malloc
}

bool isXWayland(xcb_connection_t *connection)
{
    const auto *screen = QGuiApplication::primaryScreen();
    if (screen && screen->name().startsWith(u"XWAYLAND"))
        return true;
    const auto cookie = xcb_query_extension(connection, 8, "XWAYLAND");
    const XcbPtr<xcb_query_extension_reply_t> extension(
        xcb_query_extension_reply(connection, cookie, nullptr));
    return extension && extension->present != 0;
}

std::shared_ptr<X11Connection> X11Connection::open()
{
    int screenNumber = 0;
    xcb_connection_t *connection = xcb_connect(nullptr, &screenNumber);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        return nullptr;
    }
    return std::shared_ptr<X11Connection>(new X11Connection(connection, screenNumber));
}

X11Connection::X11Connection(xcb_connection_t *connection, int screenNumber)
    : m_connection(connection)
{
    auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screen.rem > 1 && screenNumber > 0; --screenNumber)
        xcb_screen_next(&screen);
    m_root = screen.data->root;

    m_notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection),
                                                   QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &X11Connection::dispatch);
}

X11Connection::~X11Connection()
{
    m_notifier.reset();
    xcb_disconnect(m_connection);
}

xcb_atom_t X11Connection::atom(const char *name) const
{
    const auto cookie =
        xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const XcbPtr<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(m_connection, cookie, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

void X11Connection::selectOnRoot(std::uint32_t eventMask)
{
    m_rootMask |= eventMask;
    xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &m_rootMask);
    xcb_flush(m_connection);
}

bool X11Connection::pollReply(unsigned int sequence, void *&answer) const
{
    xcb_generic_error_t *failure = nullptr;
    const bool hasCome = xcb_poll_for_reply(m_connection, sequence, &answer, &failure) != 0;
    const XcbPtr<xcb_generic_error_t> error(failure);
    return hasCome;
}

void X11Connection::dispatch()
{
    while (const XcbPtr<xcb_generic_event_t> event{xcb_poll_for_event(m_connection)})
        Q_EMIT eventArrived(event.get());

    // A dead connection stays readable for ever. Qt notices the loss by its own connection and
    // ends the program; until then there is nothing left to do here.
    if (xcb_connection_has_error(m_connection) != 0)
        m_notifier->setEnabled(false);
    else
        Q_EMIT dispatched();
}

} // namespace velmora
