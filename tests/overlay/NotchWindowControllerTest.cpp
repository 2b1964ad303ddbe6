#include "overlay/ControllerDesk.h"
#include "style/WindowWish.h"

#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

struct MovesOver : QQuickItem {
    explicit MovesOver(QQuickItem *parent)
        : QQuickItem(parent)
    {
        setSize({400, 100});
        setAcceptHoverEvents(true);
    }
    void hoverMoveEvent(QHoverEvent *event) override
    {
        ++count;
        last = event->position();
    }

    int count = 0;
    QPointF last;
};

} // namespace

class NotchWindowControllerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void growsAndShrinks();
    void pendingCollapse();
    void openMenu();
    void quietArea();
    void viewsThatFollowThePointer();
    void viewsThatAreTypedInto();
    void probeWhileAnotherProgramHoldsThePointer();
    void afterItsScreenOrItsEnd();
};

void NotchWindowControllerTest::growsAndShrinks()
{
    ControllerDesk desk;
    desk.controller->showWindow();
    QCOMPARE(desk.shell.shown, 1);
    QVERIFY(desk.frame() == collapsedFrame && !desk.isExpanded());
    desk.enter();
    QVERIFY(desk.isExpanded());
    // The next picture on the screen is a frame away, and shows that it grows.
    QVERIFY(desk.frame().width() > 200 && desk.frame().width() < 210);
    desk.clock.advance(140ms);
    // Half the time of a symmetric curve is half the way, and the frames may fall beside it.
    QVERIFY(qAbs(desk.frame().width() - 500) < 40);
    QCOMPARE(desk.frame().center().x(), 800.0);
    desk.clock.advance(110ms);
    QVERIFY(desk.frame() != expandedFrame);
    desk.clock.advance(49ms);
    QCOMPARE(desk.frame(), expandedFrame);
    const auto shape = [&] {
        return QRectF(desk.shell.shape.boundingRect().translated(desk.shell.bounds.topLeft()));
    };
    QCOMPARE(shape(), expandedFrame); // what can be seen and clicked follows

    desk.leave();
    desk.clock.advance(400ms); // in the middle of shrinking
    const double between = desk.frame().width();
    QVERIFY(between < 800 && between > 200);
    desk.enter(); // goes on from where it is
    QVERIFY(qAbs(desk.frame().width() - between) < 5);
    desk.clock.advance(300ms);
    QCOMPARE(desk.frame(), expandedFrame);

    desk.leave();
    desk.clock.advance(299ms);
    QVERIFY(desk.isExpanded());
    desk.clock.advance(241ms);
    QVERIFY(!desk.isExpanded());
    QCOMPARE(desk.frame(), collapsedFrame);
    QCOMPARE(shape(), collapsedFrame);
    QSignalSpy frames(desk.controller.get(), &NotchWindowController::frameChanged);
    desk.clock.advance(1h);
    QCOMPARE(frames.count(), 0); // nothing ticks at rest
    QVERIFY(!desk.shell.isMotionWanted);
}

void NotchWindowControllerTest::pendingCollapse()
{
    ControllerDesk desk;
    desk.enter();
    desk.clock.advance(300ms);
    desk.leave();
    desk.clock.advance(200ms);
    desk.leave(); // does not extend the deadline
    desk.clock.advance(101ms);
    QVERIFY(!desk.isExpanded());

    desk.enter();
    desk.clock.advance(300ms);
    desk.leave();
    desk.clock.advance(250ms);
    QSignalSpy frames(desk.controller.get(), &NotchWindowController::frameChanged);
    desk.enter(insidePanel); // back in time: no movement at all
    desk.clock.advance(1s);
    QVERIFY(desk.isExpanded());
    QCOMPARE(frames.count(), 0);
    desk.leave(insidePanel); // told of a leave, yet still over the panel
    desk.clock.advance(10s);
    QVERIFY(desk.isExpanded());
    desk.leave();
    desk.pointer.position.reset(); // a window system that does not tell
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded());
}

void NotchWindowControllerTest::openMenu()
{
    ControllerDesk desk;
    desk.enter();
    desk.clock.advance(300ms);
    desk.controller->setProperty("menuFrame", QRectF(300, 60, 210, 140));
    desk.controller->setProperty("submenuFrame", QRectF(513, 90, 180, 100));
    const QPointF origin = desk.shell.bounds.topLeft();
    const QRegion &shape = desk.shell.shape;
    QVERIFY(shape.contains(QPoint(400, 190)) && shape.contains(QPoint(600, 150)));
    QVERIFY(!shape.contains(QPoint(511, 195)));
    for (const QPointF over : {QPointF(400, 190), QPointF(600, 180)}) {
        desk.leave(origin + over);
        desk.clock.advance(1s);
        QVERIFY(desk.isExpanded());
    }
    QSignalSpy closed(desk.controller.get(), &NotchWindowController::pressedElsewhere);
    QVERIFY(!desk.controller->mousePressed({310, 70})); // that is the menu's
    desk.pointer.dragTo(origin + QPointF(310, 190));
    QCOMPARE(closed.size(), 0);
    QVERIFY(desk.controller->mousePressed({100, 10})); // closes it, and does nothing else
    desk.pointer.dragTo(outside);                      // in another program
    QCOMPARE(closed.size(), 2);

    desk.controller->setProperty("submenuFrame", QRectF());
    desk.leave(origin + QPointF(600, 180));
    desk.clock.advance(1s);
    QVERIFY(!desk.isExpanded());
    desk.controller->setProperty("menuFrame", QRectF());
    QVERIFY(!desk.controller->mousePressed({100, 10}));
}

void NotchWindowControllerTest::quietArea()
{
    ControllerDesk desk;
    const QPointF origin = desk.shell.bounds.topLeft();
    const QRectF button = desk.controller->geometry().stripButton;
    desk.controller->setProperty("quietArea", button);
    desk.enter(origin + button.center());
    desk.pointer.dragTo(origin + button.center()); // whoever asks the server hears of a press there
    QVERIFY(!desk.isExpanded());
    QVERIFY(desk.controller->isPointerOver() && desk.shell.isMotionWanted);
    desk.leave();
    QVERIFY(!desk.shell.isMotionWanted);

    // It opens at the first step to the side, and follows the pointer no longer.
    desk.enter(origin + button.center());
    desk.controller->mouseMoved(button.center() + QPointF(2, 2));
    QVERIFY(!desk.isExpanded());
    desk.controller->mouseMoved(button.topLeft() - QPointF(1, -5));
    QVERIFY(desk.isExpanded() && !desk.shell.isMotionWanted);
}

void NotchWindowControllerTest::viewsThatFollowThePointer()
{
    ControllerDesk desk;
    QVERIFY(!desk.shell.isMotionWanted);
    std::optional<MotionWish> wish(std::in_place, desk.window->contentItem());
    auto *const other = new MotionWish(desk.window->contentItem());
    other->setVisible(false);
    QVERIFY(desk.shell.isMotionWanted);
    wish.reset();
    QVERIFY(!desk.shell.isMotionWanted);
    other->setVisible(true); // this one goes with the window
    QVERIFY(desk.shell.isMotionWanted);

    // No more than a screen can show, and never an old place in the end.
    auto *const view = new MovesOver(desk.window->contentItem());
    for (int x = 1; x <= 200; ++x) {
        QMouseEvent move(QEvent::MouseMove, QPointF(x, 5), QPointF(x, 5), Qt::NoButton, {}, {});
        QCoreApplication::sendEvent(desk.window, &move);
    }
    QVERIFY(view->count < 100);
    QTRY_COMPARE(view->last, QPointF(200, 5));
}

/// They have the keyboard as long as the panel is open, and the panel stays for what they hold.
void NotchWindowControllerTest::viewsThatAreTypedInto()
{
    ControllerDesk desk;
    desk.enter();
    std::optional<KeyboardWish> keyboard(std::in_place, desk.window->contentItem());
    QVERIFY(desk.shell.isKeyboardWanted);
    desk.leave();
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded() && !desk.shell.isKeyboardWanted); // at once, not when it has faded
    desk.enter();
    QVERIFY(desk.shell.isKeyboardWanted);
    std::optional<StayWish> typed(std::in_place, desk.window->contentItem());
    desk.leave();
    desk.clock.advance(1h);
    QVERIFY(desk.isExpanded() && desk.shell.isKeyboardWanted);
    keyboard.reset();
    QVERIFY(desk.isExpanded() && !desk.shell.isKeyboardWanted);
    typed.reset();
    desk.clock.advance(299ms);
    QVERIFY(desk.isExpanded());
    desk.clock.advance(1ms);
    QVERIFY(!desk.isExpanded());
    desk.enter();
    typed.emplace(desk.window->contentItem());
    typed.reset();
    desk.clock.advance(1s);
    QVERIFY(desk.isExpanded()); // the pointer is there
}

void NotchWindowControllerTest::probeWhileAnotherProgramHoldsThePointer()
{
    ControllerDesk desk;
    desk.pointer.dragTo(QPointF(699, 10));
    desk.pointer.dragTo(QPointF(800, 37));
    QVERIFY(!desk.isExpanded());
    desk.pointer.dragTo(insideCollapsed);
    QVERIFY(desk.isExpanded());

    // On the panel but outside of the small notch, it does not keep the panel open.
    desk.clock.advance(300ms);
    desk.leave();
    desk.pointer.dragTo(insidePanel);
    desk.pointer.position = outside;
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded());

    // No window is told that the drag has gone on.
    for (const bool isTold : {true, false}) {
        const auto dragTo = [&](const QPointF &place) {
            desk.pointer.dragTo(place);
            if (!isTold) {
                desk.pointer.position.reset();
            }
            desk.clock.advance(1s);
        };
        dragTo(insideCollapsed);
        dragTo(insidePanel);
        QVERIFY(desk.isExpanded());
        dragTo(outside);
        QVERIFY(!desk.isExpanded());
    }
    // What is dragged are files: the panel stays for them.
    desk.drags.begin({QUrl(QStringLiteral("file:///tmp/a"))});
    desk.pointer.dragTo(outside);
    desk.clock.advance(1s);
    QVERIFY(desk.isExpanded());
}

void NotchWindowControllerTest::afterItsScreenOrItsEnd()
{
    ControllerDesk desk;
    desk.enter();
    desk.clock.advance(100ms);
    desk.leave();
    desk.screens.remove(desk.screen.get());
    desk.screen.reset();
    desk.clock.advance(1s); // the pending collapse and the animation find no screen
    desk.enter();
    desk.pointer.dragTo(insideCollapsed);
    desk.clock.advance(1s);
    QVERIFY(desk.isExpanded());
    desk.leave();
    desk.controller->close();
    QCOMPARE(desk.shell.surfaces, 0);
    desk.enter();
    desk.leave();
    desk.pointer.dragTo(insideCollapsed);
    desk.controller->showWindow();
    desk.clock.advance(1s);
    QCOMPARE(desk.shell.shown, 0);
}

QTEST_MAIN(NotchWindowControllerTest)
#include "NotchWindowControllerTest.moc"
