#include "style/MotionWish.h"

#include <QCoreApplication>

namespace velmora
{

QEvent::Type MotionWishEvent::kind()
{
    static const auto kind = static_cast<Type>(registerEventType());
    return kind;
}

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
    const auto send = [this](bool isMade) {
        if (m_window) {
            MotionWishEvent event(isMade);
            QCoreApplication::sendEvent(m_window, &event);
        }
    };
    send(false);
    m_window = window;
    send(true);
}

} // namespace velmora
