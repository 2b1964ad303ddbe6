#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>

#include <memory>
#include <vector>

namespace velmora
{

/// Keeps windows that bypass the window manager above all windows that it manages, full-screen ones
/// too. Menus, notifications and screen lockers, which bypass it as well, stay where they are: to
/// climb over them would be rude, and over a locker a leak.
class X11Stacking final : public QObject
{
    Q_OBJECT

public:
    explicit X11Stacking(std::shared_ptr<X11Connection> connection);
    ~X11Stacking() override;
    Q_DISABLE_COPY_MOVE(X11Stacking)

    void watch(xcb_window_t window);
    void unwatch(xcb_window_t window);

private:
    void handleEvent(const xcb_generic_event_t *event);
    void checkLater();
    void check();
    [[nodiscard]] bool mayRaise();
    [[nodiscard]] xcb_window_t topmostManaged(const std::vector<xcb_window_t> &windows) const;

    std::shared_ptr<X11Connection> m_connection;
    xcb_atom_t m_clientList;
    xcb_atom_t m_clientListStacking;
    xcb_atom_t m_activeWindow;
    xcb_atom_t m_wmState;
    std::vector<xcb_window_t> m_watched;
    QTimer m_checkTimer;
    QDeadlineTimer m_period;
    int m_raises = 0; ///< within the present period
};

} // namespace velmora
