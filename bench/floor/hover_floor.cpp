/// What the way over the compositor takes by itself: a bare Wayland client that grows as the notch
/// does, in a straight line over 0.28 seconds, and draws nothing but a black bar of that width.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <wlr-layer-shell-client.h>

namespace
{

using SteadyClock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr int width = 800; // pixels, as all lengths here
constexpr int collapsedWidth = 200;
constexpr int height = 36;
constexpr std::uint32_t black = 0xff000000;
constexpr std::chrono::duration<double> growth = 280ms;

struct Canvas {
    wl_buffer *buffer = nullptr;
    std::span<std::uint32_t> pixels;
    bool isBusy = false;
};

class Client
{
public:
    bool start();
    /// Until the connection ends.
    int run()
    {
        while (wl_display_dispatch(m_display) >= 0) {
        }
        return 1;
    }

private:
    void makeCanvases();
    void setPointerInside(bool isInside);
    void draw();
    [[nodiscard]] int barWidth() const;

    static void takeGlobal(void *self, wl_registry *registry, std::uint32_t name,
                           const char *interface, std::uint32_t);
    static void configure(void *self, zwlr_layer_surface_v1 *layer, std::uint32_t serial,
                          std::uint32_t, std::uint32_t);
    static void frameDone(void *self, wl_callback *callback, std::uint32_t);

    wl_display *m_display = nullptr;
    wl_compositor *m_compositor = nullptr;
    wl_shm *m_shm = nullptr;
    wl_seat *m_seat = nullptr;
    zwlr_layer_shell_v1 *m_shell = nullptr;
    wl_surface *m_surface = nullptr;
    std::array<Canvas, 3> m_canvases;
    bool m_isInside = false;
    bool m_isWaiting = false; ///< for the compositor's next frame
    int m_drawn = 0;
    SteadyClock::time_point m_entered{};
};

template<typename Interface>
Interface *bound(wl_registry *registry, std::uint32_t name, const wl_interface &interface)
{
    return static_cast<Interface *>(wl_registry_bind(registry, name, &interface, 1));
}

void Client::takeGlobal(void *self, wl_registry *registry, std::uint32_t name,
                        const char *interface, std::uint32_t)
{
    auto *const client = static_cast<Client *>(self);
    const std::string_view offered = interface;
    if (offered == wl_compositor_interface.name)
        client->m_compositor = bound<wl_compositor>(registry, name, wl_compositor_interface);
    else if (offered == wl_shm_interface.name)
        client->m_shm = bound<wl_shm>(registry, name, wl_shm_interface);
    else if (offered == wl_seat_interface.name)
        client->m_seat = bound<wl_seat>(registry, name, wl_seat_interface);
    else if (offered == zwlr_layer_shell_v1_interface.name)
        client->m_shell = bound<zwlr_layer_shell_v1>(registry, name, zwlr_layer_shell_v1_interface);
}

bool Client::start()
{
    m_display = wl_display_connect(nullptr);
    if (!m_display)
        return false;
    static constexpr wl_registry_listener listener{takeGlobal, [](auto...) {}};
    wl_registry_add_listener(wl_display_get_registry(m_display), &listener, this);
    wl_display_roundtrip(m_display);
    if (!m_compositor || !m_shm || !m_seat || !m_shell)
        return false;
    makeCanvases();

    static constexpr wl_pointer_listener pointerListener{
        .enter = [](void *self, auto...) { static_cast<Client *>(self)->setPointerInside(true); },
        .leave = [](void *self, auto...) { static_cast<Client *>(self)->setPointerInside(false); },
        .motion = [](auto...) {},
        .button = [](auto...) {},
        .axis = [](auto...) {},
        .frame = [](auto...) {},
        .axis_source = [](auto...) {},
        .axis_stop = [](auto...) {},
        .axis_discrete = [](auto...) {},
        .axis_value120 = [](auto...) {},
    };
    wl_pointer_add_listener(wl_seat_get_pointer(m_seat), &pointerListener, this);

    m_surface = wl_compositor_create_surface(m_compositor);
    auto *const layer = zwlr_layer_shell_v1_get_layer_surface(
        m_shell, m_surface, nullptr, ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "hover_floor");
    static constexpr zwlr_layer_surface_v1_listener layerListener{configure, [](auto...) {}};
    zwlr_layer_surface_v1_add_listener(layer, &layerListener, this);
    zwlr_layer_surface_v1_set_size(layer, width, height);
    zwlr_layer_surface_v1_set_anchor(layer, ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP);
    zwlr_layer_surface_v1_set_exclusive_zone(layer, -1);
    wl_surface_commit(m_surface);
    return true;
}

void Client::makeCanvases()
{
    constexpr std::size_t size = std::size_t(width) * height * 4;
    const int file = memfd_create("hover_floor", MFD_CLOEXEC);
    if (file < 0 || ftruncate(file, static_cast<off_t>(size * m_canvases.size())) != 0)
        return;
    auto *const memory = static_cast<std::uint32_t *>(
        mmap(nullptr, size * m_canvases.size(), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
    wl_shm_pool *const pool = wl_shm_create_pool(m_shm, file, int(size * m_canvases.size()));
    static constexpr wl_buffer_listener listener{
        [](void *canvas, wl_buffer *) { static_cast<Canvas *>(canvas)->isBusy = false; }};
    for (std::size_t i = 0; i < m_canvases.size(); ++i) {
        Canvas &canvas = m_canvases[i];
        canvas.pixels = {memory + i * size / 4, size / 4};
        canvas.buffer = wl_shm_pool_create_buffer(pool, int(i * size), width, height, width * 4,
                                                  WL_SHM_FORMAT_ARGB8888);
        wl_buffer_add_listener(canvas.buffer, &listener, &canvas);
    }
    close(file);
}

void Client::configure(void *self, zwlr_layer_surface_v1 *layer, std::uint32_t serial,
                       std::uint32_t, std::uint32_t)
{
    zwlr_layer_surface_v1_ack_configure(layer, serial);
    static_cast<Client *>(self)->draw();
}

void Client::setPointerInside(bool isInside)
{
    m_isInside = isInside;
    m_entered = SteadyClock::now();
    if (!m_isWaiting)
        draw();
}

int Client::barWidth() const
{
    const std::chrono::duration<double> elapsed = SteadyClock::now() - m_entered;
    const double part = m_isInside ? std::min(1.0, elapsed / growth) : 0;
    return collapsedWidth + static_cast<int>((width - collapsedWidth) * part);
}

/// One picture, and then one with each frame of the compositor until nothing changes any more.
void Client::draw()
{
    Canvas *const canvas = std::ranges::find(m_canvases, false, &Canvas::isBusy);
    const int bar = barWidth();
    const bool isGrowing = m_isInside && bar < width;
    if (canvas == m_canvases.end() || (bar == m_drawn && !isGrowing))
        return;
    for (int y = 0; y < height; ++y) {
        const auto row = canvas->pixels.subspan(static_cast<std::size_t>(y) * width, width);
        std::ranges::fill(row, 0U);
        std::ranges::fill(row.subspan(static_cast<std::size_t>(width - bar) / 2, bar), black);
    }
    canvas->isBusy = true;
    m_drawn = bar;
    m_isWaiting = true;

    wl_region *const region = wl_compositor_create_region(m_compositor);
    wl_region_add(region, (width - bar) / 2, 0, bar, height);
    wl_surface_set_input_region(m_surface, region);
    wl_region_destroy(region);
    static constexpr wl_callback_listener listener{frameDone};
    wl_callback_add_listener(wl_surface_frame(m_surface), &listener, this);
    wl_surface_attach(m_surface, canvas->buffer, 0, 0);
    wl_surface_damage(m_surface, 0, 0, width, height);
    wl_surface_commit(m_surface);
}

void Client::frameDone(void *self, wl_callback *callback, std::uint32_t)
{
    wl_callback_destroy(callback);
    auto *const client = static_cast<Client *>(self);
    client->m_isWaiting = false;
    client->draw();
}

} // namespace

int main()
{
    Client client;
    if (!client.start()) {
        std::fprintf(stderr, "hover_floor: no compositor with a layer shell\n");
        return 1;
    }
    return client.run();
}
