#include "overlay/OverlayWarmUp.h"

#include "overlay/OverlayScene.h"
#include "support/FakeDesk.h"
#include "support/QmlItems.h"
#include "support/QmlWarnings.h"

#include <QQuickItem>
#include <QTest>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

struct Overlays : NoQmlWarnings, FakeDesk {
    Controller make()
    {
        return makeController(screen, {}, [this](NotchWindow &filled, auto &owner) {
            window = &filled;
            scene.populate(filled, owner);
            warmUp.useFor(filled, owner);
        });
    }

    /// One step of the program, and one of what happens beside it.
    void turn()
    {
        clock.advance(20ms);
        QCoreApplication::processEvents();
    }

    /// The view of drags, while it is being built for no drag.
    [[nodiscard]] QQuickItem *view() const
    {
        for (QQuickItem *item : window->contentItem()->childItems()) {
            if (isOfType(*item, "DropActionsOverlay")) {
                return item;
            }
        }
        return nullptr;
    }

    StatusMenu menu{clock};
    std::shared_ptr<FakeScreen> screen = screens.add(QRectF(0, 0, 800, 600));
    OverlayScene scene{menu};
    OverlayWarmUp warmUp{scene.engine(), clock};
    NotchWindow *window = nullptr;
};

} // namespace

class OverlayWarmUpTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void buildsTheViewOnceAndOutOfSight();
};

void OverlayWarmUpTest::buildsTheViewOnceAndOutOfSight()
{
    Overlays overlays;
    overlays.make().reset();
    // The fonts are found, and the view is loaded, with no overlay to build it for.
    overlays.clock.advance(2s);
    for (int i = 0; i < 100; ++i) {
        overlays.turn();
    }
    QVERIFY(!overlays.warmUp.isFinished());
    auto overlay = overlays.make();
    QVERIFY(QTest::qWaitFor([&] {
        overlays.turn();
        return overlays.view() != nullptr;
    }));
    // Each lives a little longer than the one before: they go at every stage of the work.
    for (int life = 0; !overlays.warmUp.isFinished(); ++life) {
        overlay.reset();
        overlays.turn();
        overlay = overlays.make();
        QCOMPARE(overlays.view(), nullptr);
        for (int i = 0; i < life; ++i) {
            QVERIFY(overlays.view() == nullptr || !overlays.view()->isVisible());
            overlays.turn();
        }
    }
    // Nothing is left of it, and nothing goes on.
    QCOMPARE(overlays.view(), nullptr);
    QCOMPARE(overlays.scene.engine().incubationController()->incubatingObjectCount(), 0);
}

QTEST_MAIN(OverlayWarmUpTest)
#include "OverlayWarmUpTest.moc"
