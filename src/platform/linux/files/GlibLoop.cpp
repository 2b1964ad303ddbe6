#include "platform/linux/files/GlibLoop.h"

#include <QAbstractEventDispatcher>
#include <QLoggingCategory>

#include <chrono>
#include <glib.h>
#include <utility>

namespace velmora
{

using namespace std::chrono_literals;

namespace
{

Q_LOGGING_CATEGORY(lcFiles, "com.velmora.app.Files", QtInfoMsg)

constexpr auto lookInterval = 50ms;

} // namespace

GlibLoop::GlibLoop()
{
    const QAbstractEventDispatcher *const dispatcher = QAbstractEventDispatcher::instance();
    m_isServed = dispatcher != nullptr && dispatcher->inherits("QEventDispatcherGlib");
    static bool isTold = false;
    if (!m_isServed && !std::exchange(isTold, true)) {
        qCInfo(lcFiles) << "Qt does not run on GLib's event loop; GIO's answers come with a delay";
    }
    m_timer.setInterval(lookInterval);
    QObject::connect(&m_timer, &QTimer::timeout, [] {
        while (g_main_context_iteration(nullptr, FALSE) != 0) {
        }
    });
}

void GlibLoop::begin()
{
    ++m_awaited;
    if (!m_isServed) {
        m_timer.start();
    }
}

void GlibLoop::end()
{
    --m_awaited;
    if (m_awaited == 0) {
        m_timer.stop();
    }
}

} // namespace velmora
