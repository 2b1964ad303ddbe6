#include "style/MotionWish.h"

#include <QCoreApplication>

namespace velmora
{

MotionWish::MotionWish(QQuickItem *parent)
    : QQuickItem(parent)
{
    tell(isVisible() ? window() : nullptr); // the base came into the window by itself
}

MotionWish::~MotionWish()
{
    tell(nullptr);
}

void MotionWish::itemChange(ItemChange change, const ItemChangeData &data)
{
    QQuickItem::itemChange(change, data);
    if (change == ItemSceneChange || change == ItemVisibleHasChanged) {
        tell(isVisible() ? window() : nullptr);
    }
}

void MotionWish::tell(QQuickWindow *window)
{
    if (window == m_window) {
        return;
    }
    const auto send = [this](QEvent::Type type) {
        if (m_window) {
            QEvent event(type);
            QCoreApplication::sendEvent(m_window, &event);
        }
    };
    send(motionWishDropped);
    m_window = window;
    send(motionWishMade);
}

} // namespace velmora
