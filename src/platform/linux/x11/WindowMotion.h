#pragma once

#include <QPoint>
#include <QTimer>

#include <xcb/xcb.h>

class QWindow;

namespace velmora
{

/// The moves of the pointer over one of Qt's windows: seen by asking where it is, some 30 times a
/// second while it moves, instead of hearing of every one. Thousands of moves a second cost a good
/// part of a core otherwise. What comes with a button pressed is seen twice as often, inside and
/// outside of the window.
class WindowMotion
{
public:
    /// `connection` is Qt's: a selection of events belongs to the client that made it.
    WindowMotion(QWindow &window, xcb_connection_t *connection);

    void setWanted(bool wanted);
    /// The pointer has come or gone.
    void setPointerOver(bool over);

private:
    void update();
    void look();

    QWindow &m_window;
    xcb_connection_t *m_connection;
    xcb_window_t m_id;
    QTimer m_timer;
    QPoint m_last; ///< pixels, in the window
    bool m_isWanted = true;
    bool m_isOver = false;
};

} // namespace velmora
