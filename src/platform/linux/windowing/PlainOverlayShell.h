#pragma once

#include "platform/OverlayShell.h"

namespace velmora
{

/// Where the window system has no notion of an overlay: an ordinary window without a frame that
/// asks to stay on top. Also for pictures and tests without a display.
class PlainOverlayShell final : public OverlayShell
{
public:
    [[nodiscard]] std::unique_ptr<OverlaySurface> adopt(QWindow &window, const Screen &screen,
                                                        const QRect &bounds) override;
};

} // namespace velmora
