#pragma once

#include "platform/OverlayShell.h"
#include "platform/linux/wayland/FrameDriver.h"

#include <memory>

namespace velmora
{

class LayerShell;

/// Overlays on Wayland: surfaces of the compositor's layer shell, in its overlay layer.
class WaylandOverlayShell final : public OverlayShell
{
public:
    /// Null where the compositor has no layer shell. Waits for one answer of the compositor.
    [[nodiscard]] static std::unique_ptr<OverlayShell> create();
    ~WaylandOverlayShell() override;
    Q_DISABLE_COPY_MOVE(WaylandOverlayShell)

    [[nodiscard]] std::unique_ptr<OverlaySurface> adopt(QWindow &window, const Screen &screen,
                                                        const QRect &bounds) override;

private:
    explicit WaylandOverlayShell(std::shared_ptr<LayerShell> shell);

    std::shared_ptr<LayerShell> m_shell;
    FrameDriver m_frameDriver;
};

} // namespace velmora
