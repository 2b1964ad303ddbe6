#include "platform/linux/x11/RandrWatch.h"

#include "platform/linux/x11/X11Connection.h"

#include <QGuiApplication>
#include <QtGui/qguiapplication_platform.h>

#include <cstring>
#include <xcb/xcb.h>

namespace velmora
{
namespace
{

constexpr const char extensionName[] = "RANDR";
constexpr int eventKinds = 2; // a changed screen, and a changed output or monitor

} // namespace

RandrWatch::RandrWatch(std::function<void()> notice)
    : m_notice(std::move(notice))
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11)
        return;
    const auto cookie =
        xcb_query_extension(x11->connection(), std::strlen(extensionName), extensionName);
    const XcbPtr<xcb_query_extension_reply_t> extension(
        xcb_query_extension_reply(x11->connection(), cookie, nullptr));
    if (!extension || extension->present == 0)
        return;
    m_firstEvent = extension->first_event;
    m_root = xcb_setup_roots_iterator(xcb_get_setup(x11->connection())).data->root;
    qGuiApp->installNativeEventFilter(this); // Qt has selected the events already
}

RandrWatch::~RandrWatch()
{
    if (qGuiApp)
        qGuiApp->removeNativeEventFilter(this);
}

bool RandrWatch::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const int kind = static_cast<const xcb_generic_event_t *>(message)->response_type & 0x7f;
    const bool ofOutputs = kind >= m_firstEvent && kind < m_firstEvent + eventKinds;
    // Whenever the root window is configured, Qt reads the monitors anew.
    const bool ofRoot = kind == XCB_CONFIGURE_NOTIFY &&
                        static_cast<const xcb_configure_notify_event_t *>(message)->event == m_root;
    if (ofOutputs || ofRoot)
        m_notice();
    return false;
}

} // namespace velmora
