#pragma once

#include "support/FakeDesk.h"

#include <QMimeData>

namespace velmora
{

inline constexpr QPointF insideCollapsed(800, 10);
inline constexpr QPointF insidePanel(420, 100);
inline constexpr QPointF outside(800, 500);
inline const QRectF collapsedFrame(700, 0, 200, 36);
inline const QRectF expandedFrame(400, 0, 800, 110);

/// A controller on a screen of 1600 × 900 with the default settings. Places are global.
struct ControllerDesk : FakeDesk {
    ControllerDesk()
        : screen(screens.add(QRectF(0, 0, 1600, 900)))
        , controller(makeController(screen, {}, [this](auto &own, auto &) { window = &own; }))
    {
        pointer.position = outside;
    }

    void enter(const QPointF &at = insideCollapsed)
    {
        pointer.position = at;
        controller->mouseEntered(at - shell.bounds.topLeft());
    }
    void leave(const QPointF &to = outside)
    {
        pointer.position = to;
        controller->mouseExited();
    }
    [[nodiscard]] bool isExpanded() const { return controller->isExpanded(); }
    [[nodiscard]] QRectF frame() const
    {
        return controller->frame().translated(shell.bounds.topLeft());
    }

    std::shared_ptr<FakeScreen> screen;
    NotchWindow *window = nullptr;
    Controller controller;
};

} // namespace velmora
