#pragma once

#include "overlay/NotchWindowController.h"
#include "overlay/StatusMenu.h"

#include <QQmlComponent>
#include <QQmlEngine>

namespace velmora
{

/// The views of all overlays: one engine and one compiled tree, instantiated for each window.
class OverlayScene
{
public:
    explicit OverlayScene(StatusMenu &menu);

    /// Fills a window with the notch. A tree that cannot be built is logged, and leaves the window
    /// without content.
    void populate(NotchWindow &window, NotchWindowController &controller);

    [[nodiscard]] QQmlEngine &engine() { return m_engine; }

private:
    StatusMenu &m_menu;
    QQmlEngine m_engine;
    QQmlComponent m_container;
};

} // namespace velmora
