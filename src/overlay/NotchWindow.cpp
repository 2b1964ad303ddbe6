#include "overlay/NotchWindow.h"

#include "style/MotionWish.h"

#include <QDragEnterEvent>
#include <QDropEvent>

#include <utility>

namespace velmora
{

NotchWindow::NotchWindow(TrackingView &trackingView)
    : m_trackingView(trackingView)
{
    setColor(Qt::transparent);
    setTitle(QStringLiteral("Velmora"));
}

bool NotchWindow::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::Enter:
        m_trackingView.mouseEntered(static_cast<QEnterEvent *>(event)->position());
        break;
    case QEvent::Leave:
        m_trackingView.mouseExited();
        break;
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::DragLeave:
    case QEvent::Drop:
        return dragEvent(*event);
    default:
        if (event->type() == MotionWishEvent::kind()) {
            m_motionWishes += static_cast<MotionWishEvent *>(event)->isMade ? 1 : -1;
            Q_EMIT motionWishesChanged();
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
        m_trackingView.mouseMoved(move.position());
        return m_motionWanted;
    }
    case QEvent::MouseButtonPress: {
        const auto &press = static_cast<const QMouseEvent &>(event);
        // The right button opens a menu, wherever it is pressed.
        m_isPressUsed =
            m_trackingView.mousePressed(press.position()) && press.button() != Qt::RightButton;
        return !m_isPressUsed;
    }
    case QEvent::TouchBegin:
        m_isPressUsed = m_trackingView.mousePressed(
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

bool NotchWindow::dragEvent(QEvent &event)
{
    // Nobody takes the files: the source must see that, rather than believe them delivered.
    if (!m_trackingView.onDragPerformed) {
        event.ignore();
        return true;
    }
    switch (event.type()) {
    case QEvent::DragEnter: {
        auto &enter = static_cast<QDragEnterEvent &>(event);
        m_dragAccepted = m_trackingView.draggingEntered(*enter.mimeData());
        break;
    }
    case QEvent::DragLeave:
        if (std::exchange(m_dragAccepted, false)) {
            m_trackingView.draggingExited();
        }
        return true;
    case QEvent::DragMove:
        if (m_dragAccepted) {
            m_trackingView.draggingUpdated(static_cast<QDropEvent &>(event).position());
        }
        break;
    default:
        drop(static_cast<QDropEvent &>(event));
        return true;
    }
    auto &moved = static_cast<QDropEvent &>(event);
    moved.setDropAction(Qt::CopyAction);
    moved.setAccepted(m_dragAccepted);
    return true;
}

void NotchWindow::drop(QDropEvent &event)
{
    if (!std::exchange(m_dragAccepted, false)) {
        event.ignore();
        return;
    }
    m_trackingView.performDragOperation(*event.mimeData(), event.position());
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

} // namespace velmora
