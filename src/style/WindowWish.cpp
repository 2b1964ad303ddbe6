#include "style/WindowWish.h"

#include <QCoreApplication>

namespace velmora
{

WindowWish::WindowWish(Wish wish, QQuickItem *parent)
    : QQuickItem(parent)
    , m_wish(wish)
{
    tell(isVisible() ? window() : nullptr); // the base came into the window by itself
}

WindowWish::~WindowWish()
{
    tell(nullptr);
}

void WindowWish::renew()
{
    tell(nullptr);
    tell(isVisible() ? window() : nullptr);
}

void WindowWish::itemChange(ItemChange change, const ItemChangeData &data)
{
    QQuickItem::itemChange(change, data);
    if (change == ItemSceneChange || change == ItemVisibleHasChanged) {
        tell(isVisible() ? window() : nullptr);
    }
}

void WindowWish::tell(QQuickWindow *window)
{
    if (window == m_window) {
        return;
    }
    const auto send = [this](bool isMade) {
        if (m_window) {
            WindowWishEvent event(m_wish, isMade);
            QCoreApplication::sendEvent(m_window, &event);
        }
    };
    send(false);
    m_window = window;
    send(true);
}

} // namespace velmora
