#pragma once

#include "platform/OverlayShell.h"
#include "platform/linux/x11/X11Stacking.h"

#include <memory>

namespace velmora
{

/// Overlays on X11: windows that bypass the window manager. They have no focus, no strut and no
/// work space, and are cut to their shape by the server itself, compositor or not.
class X11OverlayShell final : public OverlayShell
{
public:
    /// Without a connection the windows are not lifted again above others that come later.
    explicit X11OverlayShell(std::shared_ptr<X11Connection> connection);
    ~X11OverlayShell() override;
    Q_DISABLE_COPY_MOVE(X11OverlayShell)

    [[nodiscard]] std::unique_ptr<OverlaySurface> adopt(QWindow &window, const Screen &screen,
                                                        const QRect &bounds) override;

private:
    std::shared_ptr<X11Stacking> m_stacking;
};

} // namespace velmora
