#include "overlay/NotchWindow.h"

#include "overlay/NotchWindowController.h"

#include <QDropEvent>

#include <utility>

namespace velmora
{

namespace
{

constexpr int moveInterval = 16; // milliseconds

} // namespace

NotchWindow::NotchWindow(NotchWindowController &controller)
    : m_controller(controller)
{
    setColor(Qt::transparent);
    setTitle(QStringLiteral("Velmora"));
}

bool NotchWindow::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::Enter:
        m_controller.mouseEntered(static_cast<QEnterEvent *>(event)->position());
        break;
    case QEvent::Leave:
        m_lastMove.reset();
        m_controller.mouseExited();
        break;
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        dragged(*static_cast<QDropEvent *>(event));
        return true;
    case QEvent::DragLeave:
        if (std::exchange(m_dragAccepted, false)) {
            m_controller.dragExited();
        }
        return true;
    default:
        if (event->type() == WindowWishEvent::kind) {
            takeWish(static_cast<WindowWishEvent &>(*event));
            return true;
        }
        if (!isForViews(*event)) {
            return true;
        }
        break;
    }
    return QQuickWindow::event(event);
}

bool NotchWindow::isForViews(const QEvent &event)
{
    switch (event.type()) {
    case QEvent::MouseMove: {
        const auto &move = static_cast<const QMouseEvent &>(event);
        if (move.buttons() != Qt::NoButton) {
            return !m_isPressUsed;
        }
        m_controller.mouseMoved(move.position());
        return m_motionWanted && isDue(move);
    }
    case QEvent::MouseButtonPress: {
        const auto &press = static_cast<const QMouseEvent &>(event);
        // The right button opens a menu, wherever it is pressed.
        m_isPressUsed =
            m_controller.mousePressed(press.position()) && press.button() != Qt::RightButton;
        return !m_isPressUsed && !deliverAfterLastMove(press);
    }
    case QEvent::TouchBegin:
        m_isPressUsed = m_controller.mousePressed(
            static_cast<const QTouchEvent &>(event).points().front().position());
        return !m_isPressUsed;
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        return !m_isPressUsed;
    default:
        return true;
    }
}

/// The views' share of a move is large, and a mouse may send a thousand a second, of which a screen
/// shows sixty.
bool NotchWindow::isDue(const QMouseEvent &move)
{
    const qint64 passed = m_sinceMove.isValid() ? m_sinceMove.elapsed() : moveInterval;
    if (passed >= moveInterval) {
        m_lastMove.reset();
        m_sinceMove.start();
        return true;
    }
    m_lastMove.reset(move.clone());
    if (!m_moveTimer.isActive()) {
        m_moveTimer.start(int(moveInterval - passed), Qt::PreciseTimer, this);
    }
    return false;
}

void NotchWindow::deliverLastMove()
{
    if (const auto last = std::exchange(m_lastMove, nullptr)) {
        QMouseEvent move(QEvent::MouseMove, last->position(), last->globalPosition(), Qt::NoButton,
                         Qt::NoButton, last->modifiers(), last->pointingDevice());
        QQuickWindow::event(&move);
    }
}

/// Views that are pressed have been hovered before. Returns whether there was such a move.
bool NotchWindow::deliverAfterLastMove(const QMouseEvent &press)
{
    if (!m_lastMove) {
        return false;
    }
    deliverLastMove();
    // Made anew: events of one device share what they tell of its latest state.
    QMouseEvent again(press.type(), press.position(), press.globalPosition(), press.button(),
                      press.buttons(), press.modifiers(), press.pointingDevice());
    QQuickWindow::event(&again);
    return true;
}

void NotchWindow::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_moveTimer.timerId()) {
        QQuickWindow::timerEvent(event);
        return;
    }
    m_moveTimer.stop();
    m_sinceMove.start();
    deliverLastMove();
}

void NotchWindow::takeWish(const WindowWishEvent &event)
{
    if (event.isMade) {
        m_wishes.insert(event.wish);
    } else {
        m_wishes.extract(event.wish);
    }
    Q_EMIT wishesChanged(event.wish);
}

void NotchWindow::dragged(QDropEvent &event)
{
    bool isAccepted = m_dragAccepted;
    if (event.type() == QEvent::DragEnter) {
        isAccepted = m_dragAccepted = m_controller.dragEntered(*event.mimeData());
    } else if (event.type() == QEvent::Drop) {
        m_dragAccepted = false;
        if (isAccepted) {
            m_controller.dragPerformed(*event.mimeData(), event.position());
        }
    } else if (isAccepted) {
        m_controller.dragUpdated(event.position());
    }
    event.setDropAction(Qt::CopyAction);
    event.setAccepted(isAccepted);
}

} // namespace velmora
