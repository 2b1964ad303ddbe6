#include "overlay/NotchWindow.h"

#include <QDragEnterEvent>
#include <QDropEvent>

#include <utility>

namespace velmora
{

NotchWindow::NotchWindow(TrackingView &trackingView, std::function<QPointF(const QPointF &)> toView)
    : m_trackingView(trackingView)
    , m_toView(std::move(toView))
{
    setColor(Qt::transparent);
    setTitle(QStringLiteral("Velmora"));
}

bool NotchWindow::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::Enter:
        m_trackingView.mouseEntered();
        break;
    case QEvent::Leave:
        m_trackingView.mouseExited();
        break;
    case QEvent::MouseMove:
        if (!m_motionWanted && static_cast<QMouseEvent *>(event)->buttons() == Qt::NoButton) {
            return true;
        }
        break;
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::DragLeave:
    case QEvent::Drop:
        return dragEvent(*event);
    default:
        break;
    }
    return QQuickWindow::event(event);
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
            m_trackingView.draggingUpdated(m_toView(static_cast<QDropEvent &>(event).position()));
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
    m_trackingView.performDragOperation(*event.mimeData(), m_toView(event.position()));
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

} // namespace velmora
