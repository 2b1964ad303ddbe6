#include "platform/linux/wayland/CompositorGlobals.h"
#include "platform/linux/windowing/Windowing.h"

#include <QtGlobal>

#include <algorithm>

namespace velmora
{
namespace
{

using namespace std::chrono_literals;

std::vector<QByteArray> &ownVariables()
{
    static std::vector<QByteArray> names;
    return names;
}

void setUnlessSet(const char *name, const char *value)
{
    if (qEnvironmentVariableIsSet(name))
        return;
    qputenv(name, value);
    ownVariables().emplace_back(name);
}

bool isWaylandSession()
{
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           qgetenv("XDG_SESSION_TYPE") == "wayland";
}

/// Without a GPU the software scene graph shows its first frame five times sooner and takes a
/// third of the memory, and the overlay draws little.
void chooseRendering()
{
    if (!qEnvironmentVariableIsSet("QSG_RHI_BACKEND"))
        setUnlessSet("QT_QUICK_BACKEND", "software");
    setUnlessSet("QSG_RENDER_LOOP", "basic");
}

void choosePlatform()
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return;
    // An inherited socket serves for one connection only, which has to be Qt's.
    if (qEnvironmentVariableIsSet("WAYLAND_SOCKET")) {
        setUnlessSet("QT_QPA_PLATFORM", "wayland");
        return;
    }
    const bool hasX11 = !qEnvironmentVariableIsEmpty("DISPLAY");
    if (isWaylandSession()) {
        const auto globals = compositorGlobals(500ms);
        const bool reachable = globals.has_value();
        const bool layers =
            reachable && std::ranges::find(*globals, "zwlr_layer_shell_v1") != globals->end();
        if (layers || (reachable && !hasX11)) {
            setUnlessSet("QT_QPA_PLATFORM", "wayland");
            return;
        }
    }
    if (hasX11)
        setUnlessSet("QT_QPA_PLATFORM", "xcb");
}

void prepareWayland()
{
    if (!qgetenv("QT_QPA_PLATFORM").startsWith("wayland"))
        return;
    setUnlessSet("QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT", "1");
    setUnlessSet("QT_WAYLAND_DISABLE_FIXED_POSITIONS", "1");
    // Qt loads EGL and its drivers otherwise, 50 MB that drawing in software has no use for.
    if (qgetenv("QT_QUICK_BACKEND") == "software")
        setUnlessSet("QT_WAYLAND_CLIENT_BUFFER_INTEGRATION", "none");
}

} // namespace

void chooseWindowSystem()
{
    ownVariables().clear();
    chooseRendering();
    choosePlatform();
    prepareWayland();
}

const std::vector<QByteArray> &ownEnvironment()
{
    return ownVariables();
}

} // namespace velmora
