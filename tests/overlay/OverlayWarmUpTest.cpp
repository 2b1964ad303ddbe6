#include "overlay/OverlayWarmUp.h"

#include "overlay/SceneDesk.h"

using namespace velmora;
using namespace std::chrono_literals;

class OverlayWarmUpTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void buildsTheViewOnceAndOutOfSight();
};

void OverlayWarmUpTest::buildsTheViewOnceAndOutOfSight()
{
    SceneDesk desk;
    OverlayWarmUp warmUp(desk.scene.engine(), desk.clock);
    // Of drags, while it is being built for no drag.
    const auto view = [&desk]() -> QQuickItem * {
        for (QQuickItem *item : desk.window->contentItem()->childItems()) {
            if (isOfType(*item, "DropActionsOverlay")) {
                return item;
            }
        }
        return nullptr;
    };
    bool wasSeen = false;
    // Each overlay lives a little longer than the one before: they go at every stage of the work.
    for (int life = 99; !warmUp.isFinished(); ++life) {
        const auto overlay = desk.overlay();
        warmUp.useFor(*desk.window, *overlay);
        for (int i = 0; i < life; ++i) {
            desk.clock.advance(20ms);
            QCoreApplication::processEvents(); // what happens beside it
            wasSeen |= view() != nullptr;
            QVERIFY(view() == nullptr || !view()->isVisible());
        }
    }
    QVERIFY(wasSeen);
    // Nothing is left of it, and nothing goes on.
    const auto overlay = desk.overlay();
    warmUp.useFor(*desk.window, *overlay);
    desk.clock.advance(3s);
    QCOMPARE(view(), nullptr);
    QCOMPARE(desk.scene.engine().incubationController()->incubatingObjectCount(), 0);
}

QTEST_MAIN(OverlayWarmUpTest)
#include "OverlayWarmUpTest.moc"
