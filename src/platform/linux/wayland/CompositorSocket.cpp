#include "platform/linux/wayland/CompositorSocket.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>

namespace velmora
{

UniqueFd connectToCompositor()
{
    const char *display = std::getenv("WAYLAND_DISPLAY");
    const char *directory = std::getenv("XDG_RUNTIME_DIR");
    std::string path = display && *display ? display : "wayland-0";
    if (path.front() != '/') {
        if (!directory)
            return {};
        path.insert(0, std::string(directory) + '/');
    }

    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return {};
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);

    UniqueFd descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!descriptor.isOpen() ||
        connect(descriptor.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) !=
            0)
        return {};
    return descriptor;
}

} // namespace velmora
