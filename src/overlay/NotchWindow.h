#pragma once

#include "overlay/TrackingView.h"

#include <QQuickWindow>

class QDropEvent;

namespace velmora
{

/// The window of one overlay. It never takes the keyboard; hovering and file drags are seen for the
/// whole window, whatever the views in it do.
class NotchWindow : public QQuickWindow
{
    Q_OBJECT

public:
    /// `toView` maps a position in the window to the tracking view's coordinates.
    NotchWindow(TrackingView &trackingView, std::function<QPointF(const QPointF &)> toView);

    /// Whether the views are told when the pointer merely moves, as they are at first. Not every
    /// window system can be asked to keep such news to itself, and the views' share of them is
    /// large.
    void setMotionWanted(bool wanted) { m_motionWanted = wanted; }

protected:
    bool event(QEvent *event) override;

private:
    bool dragEvent(QEvent &event);
    void drop(QDropEvent &event);

    TrackingView &m_trackingView;
    std::function<QPointF(const QPointF &)> m_toView;
    bool m_dragAccepted = false;
    bool m_motionWanted = true;
};

} // namespace velmora
