#include "platform/linux/windowing/Windowing.h"

#include "platform/linux/wayland/WaylandOverlayShell.h"
#include "platform/linux/wayland/WaylandPointer.h"
#include "platform/linux/windowing/LinuxScreens.h"
#include "platform/linux/windowing/PlainOverlayShell.h"
#include "platform/linux/x11/X11FileDrags.h"
#include "platform/linux/x11/X11OverlayShell.h"
#include "platform/linux/x11/X11Pointer.h"

#include <QGuiApplication>

namespace velmora
{

Windowing makeWindowing()
{
    Windowing windowing;
    windowing.screens = std::make_unique<LinuxScreens>();
    windowing.drags = std::make_unique<FileDrags>();

    const QString platform = QGuiApplication::platformName();
    if (platform == u"xcb") {
        const auto connection = X11Connection::open();
        auto pointer = std::make_unique<X11Pointer>(connection);
        if (connection)
            windowing.drags = std::make_unique<X11FileDrags>(connection, *pointer);
        windowing.pointer = std::move(pointer);
        windowing.shell = std::make_unique<X11OverlayShell>(connection);
        return windowing;
    }

    windowing.pointer = std::make_unique<WaylandPointer>();
    if (platform.startsWith(u"wayland"))
        windowing.shell = WaylandOverlayShell::create();
    if (!windowing.shell)
        windowing.shell = std::make_unique<PlainOverlayShell>();
    return windowing;
}

} // namespace velmora
