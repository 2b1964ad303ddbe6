#pragma once

#include "platform/Screens.h"

#include <QRect>
#include <QRegion>

#include <functional>
#include <memory>

class QWindow;

namespace velmora
{

/// The part of a window that is visible and takes the pointer: its pixels where a point has `scale`
/// of them. Those at the edge count as soon as they are touched if the window is blended with what
/// lies below it, and else if their centre is inside.
using OverlayShape = std::function<QRegion(double scale, bool isBlended)>;

/// The window-system side of one overlay window. Destroying it takes the window off the screen;
/// the window itself belongs to the caller and has to outlive it.
class OverlaySurface
{
public:
    OverlaySurface() = default;
    OverlaySurface(const OverlaySurface &) = delete;
    OverlaySurface &operator=(const OverlaySurface &) = delete;
    virtual ~OverlaySurface() = default;

    /// Shows the window above everything else, without taking the keyboard or activating.
    virtual void orderFront() = 0;

    /// Everything outside of the shape lets clicks through; an empty one hides all of the window.
    virtual void setShape(const OverlayShape &shape) = 0;

    /// Takes the keyboard, for as long as something in the window is typed into, and gives it back
    /// to the window that had it. The user may take it away meanwhile. Nothing before `orderFront`.
    virtual void setKeyboardWanted([[maybe_unused]] bool wanted) {}

    /// Whether the window has to hear of every move of the pointer over it, as it does at first, or
    /// of its coming and going only. Thousands of moves a second cost a good part of a core.
    virtual void setMotionWanted([[maybe_unused]] bool wanted) {}
};

/// How overlay windows get onto the screen under the running window system.
class OverlayShell
{
public:
    OverlayShell() = default;
    OverlayShell(const OverlayShell &) = delete;
    OverlayShell &operator=(const OverlayShell &) = delete;
    virtual ~OverlayShell() = default;

    /// Makes `window`, not yet created, an overlay of `screen`: above full-screen windows, on all
    /// work spaces, without focus, without reserved space. `bounds`, global and in points, touches
    /// the top edge of the screen and is centred on it. Nothing is shown before `orderFront`.
    [[nodiscard]] virtual std::unique_ptr<OverlaySurface>
    adopt(QWindow &window, const Screen &screen, const QRect &bounds) = 0;
};

} // namespace velmora
