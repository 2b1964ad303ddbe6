#pragma once

#include "style/WindowWish.h"

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QQuickWindow>

#include <memory>
#include <set>

class QDropEvent;

namespace velmora
{

class NotchWindowController;

/// The window of one overlay. Its controller is told of hovering,
/// presses and file drags in the whole window, whatever the views in it do.
class NotchWindow : public QQuickWindow
{
    Q_OBJECT

public:
    explicit NotchWindow(NotchWindowController &controller);

    /// Whether the views are told when the pointer merely moves, as they are at first. Not every
    /// window system can be asked to keep such news to itself, and the views' share of them is
    /// large.
    void setMotionWanted(bool wanted) { m_motionWanted = wanted; }

    /// Whether one of the views in it has that wish.
    [[nodiscard]] bool has(Wish wish) const { return m_wishes.contains(wish); }

Q_SIGNALS:
    /// One view more or fewer has it.
    void wishesChanged(velmora::Wish wish);

protected:
    bool event(QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    [[nodiscard]] bool isForViews(const QEvent &event);
    [[nodiscard]] bool isDue(const QMouseEvent &move);
    void deliverLastMove();
    bool deliverAfterLastMove(const QMouseEvent &press);
    void takeWish(const WindowWishEvent &event);
    void dragged(QDropEvent &event);

    NotchWindowController &m_controller;
    bool m_dragAccepted = false;
    bool m_motionWanted = true;
    std::multiset<Wish> m_wishes;
    bool m_isPressUsed = false; ///< the last one: its views do not hear of it
    QElapsedTimer m_sinceMove;  ///< that the views were told last
    QBasicTimer m_moveTimer;
    std::unique_ptr<QMouseEvent> m_lastMove; ///< that they are still to be told
};

} // namespace velmora
