#pragma once

#include <QEvent>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// Events for a window: one more view in it follows the pointer's moves, or one fewer.
inline const auto motionWishMade = static_cast<QEvent::Type>(QEvent::registerEventType());
inline const auto motionWishDropped = static_cast<QEvent::Type>(QEvent::registerEventType());

/// In a view that follows the pointer's moves (hovering, the drag of a slider): while it is visible
/// its window is told of them. Moves with a button pressed too: on X11 those come only to a window
/// that was told of moves when the button went down.
class MotionWish : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT

public:
    explicit MotionWish(QQuickItem *parent = nullptr);
    ~MotionWish() override;
    Q_DISABLE_COPY_MOVE(MotionWish)

protected:
    void itemChange(ItemChange change, const ItemChangeData &data) override;

private:
    void tell(QQuickWindow *window);

    QPointer<QQuickWindow> m_window; ///< that knows of the wish
};

} // namespace velmora
