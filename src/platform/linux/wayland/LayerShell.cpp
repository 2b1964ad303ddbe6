#include "platform/linux/wayland/LayerShell.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <wayland-client.h>
#include <wlr-layer-shell-client.h>

namespace velmora
{
namespace
{

constexpr std::uint32_t newestVersion = 4;

void takeGlobal(void *shell, wl_registry *registry, std::uint32_t name, const char *interface,
                std::uint32_t version)
{
    if (std::strcmp(interface, zwlr_layer_shell_v1_interface.name) == 0) {
        *static_cast<zwlr_layer_shell_v1 **>(shell) =
            static_cast<zwlr_layer_shell_v1 *>(wl_registry_bind(
                registry, name, &zwlr_layer_shell_v1_interface, std::min(version, newestVersion)));
    }
}

void ignoreRemovedGlobal(void *, wl_registry *, std::uint32_t) {}

} // namespace

std::shared_ptr<LayerShell> LayerShell::bind(wl_display *display)
{
    if (!display)
        return nullptr;

    // On a queue of our own, so that waiting for it does not run Qt's handlers in between.
    wl_event_queue *queue = wl_display_create_queue(display);
    auto *wrapper = static_cast<wl_display *>(wl_proxy_create_wrapper(display));
    wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(wrapper), queue);
    wl_registry *registry = wl_display_get_registry(wrapper);
    wl_proxy_wrapper_destroy(wrapper);

    static constexpr wl_registry_listener listener{takeGlobal, ignoreRemovedGlobal};
    zwlr_layer_shell_v1 *shell = nullptr;
    wl_registry_add_listener(registry, &listener, &shell);
    wl_display_roundtrip_queue(display, queue);
    wl_registry_destroy(registry);
    // What is made from the shell inherits its queue; on the default one Qt hands out the events.
    if (shell)
        wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(shell), nullptr);
    wl_event_queue_destroy(queue);

    return shell ? std::shared_ptr<LayerShell>(new LayerShell(shell)) : nullptr;
}

LayerShell::~LayerShell()
{
    zwlr_layer_shell_v1_destroy(m_shell);
}

} // namespace velmora
