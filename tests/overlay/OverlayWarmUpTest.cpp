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
        const auto items = window->contentItem()->childItems();
        const auto found = std::find_if(items.begin(), items.end(), [](const auto *item) {
            return isOfType(*item, "DropActionsOverlay");
        });
        return found == items.end() ? nullptr : *found;
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
    bool wasSeen = false;
    // Each lives a little longer than the one before: they go at every stage of the work.
    for (int life = 99; !overlays.warmUp.isFinished(); ++life) {
        const auto overlay = overlays.make();
        QCOMPARE(overlays.view(), nullptr);
        for (int i = 0; i < life; ++i) {
            overlays.turn();
            wasSeen |= overlays.view() != nullptr;
            QVERIFY(overlays.view() == nullptr || !overlays.view()->isVisible());
        }
    }
    QVERIFY(wasSeen);
    // Nothing is left of it, and nothing goes on.
    const auto overlay = overlays.make();
    QCOMPARE(overlays.view(), nullptr);
    QCOMPARE(overlays.scene.engine().incubationController()->incubatingObjectCount(), 0);
}

QTEST_MAIN(OverlayWarmUpTest)
#include "OverlayWarmUpTest.moc"
