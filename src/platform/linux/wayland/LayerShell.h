#pragma once

#include <memory>

struct wl_display;
struct zwlr_layer_shell_v1;

namespace velmora
{

/// The compositor's layer shell on Qt's own connection.
class LayerShell
{
public:
    /// Null where the compositor has none. Waits for one answer of the compositor.
    [[nodiscard]] static std::shared_ptr<LayerShell> bind(wl_display *display);
    LayerShell(const LayerShell &) = delete;
    LayerShell &operator=(const LayerShell &) = delete;
    ~LayerShell();

    [[nodiscard]] zwlr_layer_shell_v1 *get() const { return m_shell; }

private:
    explicit LayerShell(zwlr_layer_shell_v1 *shell)
        : m_shell(shell)
    {
    }

    zwlr_layer_shell_v1 *m_shell;
};

} // namespace velmora
