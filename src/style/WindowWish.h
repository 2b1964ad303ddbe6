#pragma once

#include <QEvent>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// What a view may ask of its window.
enum class Wish {
    Motion,   ///< to be told of the pointer's moves
    Keyboard, ///< to be typed into
    Stay      ///< not to be closed because the pointer has left
};

/// Tells a window that one more view has a wish, or one fewer.
class WindowWishEvent : public QEvent
{
public:
    WindowWishEvent(Wish wish, bool isMade)
        : QEvent(kind)
        , wish(wish)
        , isMade(isMade)
    {
    }

    static inline const auto kind = static_cast<Type>(registerEventType());
    const Wish wish;
    const bool isMade;
};

/// Makes a wish of its window for as long as it is visible.
class WindowWish : public QQuickItem
{
    Q_OBJECT
    QML_ANONYMOUS

public:
    ~WindowWish() override;
    Q_DISABLE_COPY_MOVE(WindowWish)

    /// Makes the wish once more, where the user has gone against it meanwhile.
    Q_INVOKABLE void renew();

protected:
    WindowWish(Wish wish, QQuickItem *parent);

    void itemChange(ItemChange change, const ItemChangeData &data) override;

private:
    void tell(QQuickWindow *window);

    const Wish m_wish;
    QPointer<QQuickWindow> m_window; ///< that knows of it
};

/// In a view that follows the pointer's moves (hovering, the drag of a slider). Moves with a button
/// pressed too: on X11 those come only to a window that was told of moves when the button went
/// down.
class MotionWish : public velmora::WindowWish
{
    Q_OBJECT
    QML_ELEMENT

public:
    explicit MotionWish(QQuickItem *parent = nullptr)
        : WindowWish(Wish::Motion, parent)
    {
    }
};

/// In a view that is typed into.
class KeyboardWish : public velmora::WindowWish
{
    Q_OBJECT
    QML_ELEMENT

public:
    explicit KeyboardWish(QQuickItem *parent = nullptr)
        : WindowWish(Wish::Keyboard, parent)
    {
    }
};

/// In a view that has something to lose.
class StayWish : public velmora::WindowWish
{
    Q_OBJECT
    QML_ELEMENT

public:
    explicit StayWish(QQuickItem *parent = nullptr)
        : WindowWish(Wish::Stay, parent)
    {
    }
};

} // namespace velmora
