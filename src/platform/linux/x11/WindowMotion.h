#pragma once

#include <QPoint>
#include <QTimer>

#include <optional>
#include <xcb/xcb.h>

class QWindow;

namespace velmora
{

/// The moves of the pointer over one of Qt's windows: seen by asking where it is, once a frame
/// while it moves, instead of hearing of every one. Thousands of moves a second cost a good part of
/// a core otherwise. What comes with a button pressed is seen as well, inside and outside of the
/// window.
class WindowMotion
{
public:
    /// `connection` is Qt's: a selection of events belongs to the client that made it.
    WindowMotion(QWindow &window, xcb_connection_t *connection);
    ~WindowMotion();
    WindowMotion(const WindowMotion &) = delete;
    WindowMotion &operator=(const WindowMotion &) = delete;

    void setWanted(bool wanted);
    /// The pointer has come or gone.
    void setPointerOver(bool over);

private:
    void update();
    void look();
    void ask();
    void report(const xcb_query_pointer_reply_t &pointer);

    QWindow &m_window;
    xcb_connection_t *m_connection;
    xcb_window_t m_id;
    QTimer m_timer;
    std::optional<unsigned int> m_question; ///< sequence number of the query that is under way
    QPoint m_last;                          ///< pixels, in the window
    bool m_isWanted = true;
    bool m_isOver = false;
};

} // namespace velmora
