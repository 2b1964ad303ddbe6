#include "platform/linux/wayland/WaylandOverlayShell.h"

#include "platform/linux/wayland/LayerShell.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QPointer>
#include <QScreen>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>

#include <cstdint>
#include <utility>
#include <wayland-client.h>
#include <wlr-layer-shell-client.h>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcWayland, "com.velmora.app.WaylandOverlayShell", QtInfoMsg)

class LayerSurface final : public OverlaySurface
{
public:
    LayerSurface(QWindow &window, QScreen *screen, const QRect &bounds,
                 std::shared_ptr<LayerShell> shell)
        : m_window(&window)
        , m_screen(screen)
        , m_size(bounds.size())
        , m_shell(std::move(shell))
    {
    }

    ~LayerSurface() override { close(); }
    Q_DISABLE_COPY_MOVE(LayerSurface)

    void orderFront() override
    {
        // The overlay layer is above all else already; there is nothing to raise.
        if (m_window && !m_layerSurface && !m_closed)
            open();
    }

    void setShape(const OverlayShape &shape) override
    {
        if (!m_window)
            return;
        const QRegion region = shape(1, true);
        // An empty mask means no mask to Qt; a spot outside of the window lets everything through.
        m_window->setMask(region.isEmpty() ? QRegion(-1, -1, 1, 1) : region);
        // The region takes effect with the next frame that is committed.
        m_window->requestUpdate();
    }

    void setKeyboardWanted(bool wanted) override
    {
        m_keyboardWanted = wanted;
        if (!m_layerSurface)
            return;
        // The user cannot take what is exclusive, but older shells know nothing else.
        using Mode = zwlr_layer_surface_v1_keyboard_interactivity;
        const bool isOlder = zwlr_layer_surface_v1_get_version(m_layerSurface) < 4;
        const Mode mode = !wanted   ? ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_NONE
                          : isOlder ? ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_EXCLUSIVE
                                    : ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_ON_DEMAND;
        zwlr_layer_surface_v1_set_keyboard_interactivity(m_layerSurface, mode);
        wl_surface_commit(surface());
        // Those leave the keyboard with the surface for as long as it is there. Its window may be
        // in the middle of a key.
        if (!wanted && isOlder)
            QMetaObject::invokeMethod(
                &m_context, [this] { reopen(); }, Qt::QueuedConnection);
    }

private:
    [[nodiscard]] wl_surface *surface() const
    {
        auto *native = QGuiApplication::platformNativeInterface();
        return static_cast<wl_surface *>(native->nativeResourceForWindow("surface", m_window));
    }

    void open()
    {
        m_window->create();
        auto *native = QGuiApplication::platformNativeInterface();
        auto *surface = this->surface();
        auto *output =
            m_screen ? static_cast<wl_output *>(native->nativeResourceForScreen("output", m_screen))
                     : nullptr;
        if (!surface || !output) {
            qCWarning(lcWayland, "no surface or no output for an overlay");
            return;
        }
        m_layerSurface = zwlr_layer_shell_v1_get_layer_surface(
            m_shell->get(), surface, output, ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "velmora");
        static constexpr zwlr_layer_surface_v1_listener listener{handleConfigure, handleClosed};
        zwlr_layer_surface_v1_add_listener(m_layerSurface, &listener, this);
        zwlr_layer_surface_v1_set_size(m_layerSurface, std::uint32_t(qMax(1, m_size.width())),
                                       std::uint32_t(qMax(1, m_size.height())));
        // Anchored to one edge alone, it is centred on that edge.
        zwlr_layer_surface_v1_set_anchor(m_layerSurface, ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP);
        // Reserves nothing, and is not pushed aside by what panels have reserved.
        zwlr_layer_surface_v1_set_exclusive_zone(m_layerSurface, -1);
        zwlr_layer_surface_v1_set_keyboard_interactivity(
            m_layerSurface, ZWLR_LAYER_SURFACE_V1_KEYBOARD_INTERACTIVITY_NONE);
        wl_surface_commit(surface);
    }

    void close()
    {
        if (m_layerSurface)
            zwlr_layer_surface_v1_destroy(m_layerSurface);
        m_layerSurface = nullptr;
        if (m_window)
            m_window->destroy();
    }

    void reopen()
    {
        if (m_layerSurface && m_window && !m_keyboardWanted &&
            QGuiApplication::focusWindow() == m_window) {
            close();
            open();
        }
    }

    static void handleConfigure(void *data, zwlr_layer_surface_v1 *surface, std::uint32_t serial,
                                std::uint32_t, std::uint32_t)
    {
        zwlr_layer_surface_v1_ack_configure(surface, serial);
        // Before the first configure nothing may be drawn.
        auto *self = static_cast<LayerSurface *>(data);
        if (self->m_window && !self->m_window->isVisible())
            self->m_window->show();
    }

    static void handleClosed(void *data, zwlr_layer_surface_v1 *)
    {
        auto *self = static_cast<LayerSurface *>(data);
        self->m_closed = true;
        self->close();
    }

    QPointer<QWindow> m_window;
    QPointer<QScreen> m_screen;
    QSize m_size;
    std::shared_ptr<LayerShell> m_shell;
    zwlr_layer_surface_v1 *m_layerSurface = nullptr;
    bool m_closed = false;
    bool m_keyboardWanted = false;
    QObject m_context; ///< of calls that wait
};

} // namespace

std::unique_ptr<OverlayShell> WaylandOverlayShell::create()
{
    auto *native = QGuiApplication::platformNativeInterface();
    auto *display =
        native ? static_cast<wl_display *>(native->nativeResourceForIntegration("wl_display"))
               : nullptr;
    auto shell = LayerShell::bind(display);
    if (!shell)
        return nullptr;
    return std::unique_ptr<OverlayShell>(new WaylandOverlayShell(std::move(shell)));
}

WaylandOverlayShell::WaylandOverlayShell(std::shared_ptr<LayerShell> shell)
    : m_shell(std::move(shell))
{
}

WaylandOverlayShell::~WaylandOverlayShell() = default;

std::unique_ptr<OverlaySurface> WaylandOverlayShell::adopt(QWindow &window, const Screen &screen,
                                                           const QRect &bounds)
{
    // Bypassing means here: Qt makes no shell surface of its own for the window.
    window.setFlags(Qt::FramelessWindowHint | Qt::BypassWindowManagerHint |
                    Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus);
    window.setScreen(screen.handle());
    window.setGeometry(bounds);
    return std::make_unique<LayerSurface>(window, screen.handle(), bounds, m_shell);
}

} // namespace velmora
