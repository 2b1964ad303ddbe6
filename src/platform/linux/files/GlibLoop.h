#pragma once

#include <QTimer>

namespace velmora
{

/// Makes sure that GLib's main context is served, which is where GIO delivers its answers. Qt on
/// Debian runs on GLib's event loop, and then there is nothing to do. Where it was built, or told
/// by QT_NO_GLIB, to run on its own, the context is looked at from time to time while answers are
/// awaited.
class GlibLoop
{
public:
    GlibLoop();

    /// One more answer is awaited, or has come.
    void begin();
    void end();

private:
    bool m_isServed;
    int m_awaited = 0;
    QTimer m_timer;
};

} // namespace velmora
