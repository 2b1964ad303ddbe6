#include "overlay/OverlayScene.h"

#include "support/FakeDesktop.h"
#include "support/FakeNotifications.h"
#include "support/FakeScreens.h"
#include "support/MemoryStore.h"
#include "support/QmlWarnings.h"
#include "support/VirtualClock.h"

#include <QQuickItem>
#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

/// Shows windows on the offscreen platform.
class ShowingShell final : public OverlayShell
{
public:
    [[nodiscard]] std::unique_ptr<OverlaySurface> adopt(QWindow &window, const Screen &,
                                                        const QRect &bounds) override
    {
        window.setGeometry(bounds);
        return std::make_unique<Surface>(window);
    }

private:
    class Surface final : public OverlaySurface
    {
    public:
        explicit Surface(QWindow &window)
            : m_window(window)
        {
        }
        void orderFront() override { m_window.show(); }
        void setShape(const QRegion &) override {}
        void setBounds(const QRect &bounds) override { m_window.setGeometry(bounds); }

    private:
        QWindow &m_window;
    };
};

struct Scene {
    Scene()
    {
        MenuItem enable;
        enable.title = QStringLiteral("Enable Notch");
        enable.mark = MenuItem::Mark::On;
        enable.action = [this] { pressed << QStringLiteral("enable"); };
        MenuItem profile;
        profile.kind = MenuItem::Kind::Submenu;
        profile.title = QStringLiteral("Profile");
        for (int i = 0; i < 30; ++i) {
            MenuItem item;
            item.title = QStringLiteral("Profile %1").arg(i);
            item.tag = i;
            item.action = [this, i] { pressed << QString::number(i); };
            profile.submenu.push_back(item);
        }
        menu.setMenu({enable, profile});
    }

    /// An overlay on show, collapsed.
    std::unique_ptr<NotchWindowController> overlay(const NotchSettings &settings)
    {
        auto controller = std::make_unique<NotchWindowController>(
            screens.all().front(), settings, services,
            OverlayEnvironment{clock, pointer, screens, shell},
            [this](NotchWindow &filled, NotchWindowController &owner) {
                window = &filled;
                scene.populate(filled, owner);
            });
        controller->showWindow();
        if (!QTest::qWaitForWindowExposed(window)) {
            qFatal("the window does not come");
        }
        return controller;
    }

    [[nodiscard]] QList<QQuickItem *> items(const char *type) const
    {
        QList<QQuickItem *> found;
        collect(window->contentItem(), QByteArray(type), found);
        return found;
    }

    static void collect(QQuickItem *item, const QByteArray &type, QList<QQuickItem *> &found)
    {
        for (QQuickItem *child : item->childItems()) {
            // The name of a type of QML goes on with a number.
            const QByteArray name(child->metaObject()->className());
            if ((name == type || name.startsWith(type + "_QMLTYPE_")) && child->isVisible()) {
                found << child;
            }
            collect(child, type, found);
        }
    }

    QStringList pressed;
    VirtualClock clock;
    FakePointer pointer;
    FakeScreens screens;
    ShowingShell shell;
    SilentStatistics statistics;
    SilentSound sound;
    MemoryStore store;
    FakeNotifications notifications;
    NotchServices services{clock, statistics, sound, store, notifications};
    StatusMenu menu{clock};
    std::shared_ptr<FakeScreen> screen =
        screens.add(QRectF(100, 200, 800, 600), QStringLiteral("Fake")); // not under the pointer
    OverlayScene scene{menu};
    NotchWindow *window = nullptr;
};

NotchSettings withWidgets(NotchWidgetType all)
{
    NotchSettings settings;
    settings.widgets.fill(all);
    return settings;
}

} // namespace

class OverlaySceneTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_warnings.emplace(); }
    void cleanup()
    {
        const QStringList warnings = m_warnings->list();
        m_warnings.reset();
        QCOMPARE(warnings, QStringList());
    }

    void everyWidgetTypeBuilds();
    void contentIsFreshAtEachExpansion();
    void menuByRightClick();
    void longSubmenuStaysInTheWindow();
    void settingsOfNoSense();

private:
    std::optional<QmlWarnings> m_warnings;
};

void OverlaySceneTest::everyWidgetTypeBuilds()
{
    Scene scene;
    for (const NotchWidgetType type : allWidgetTypes()) {
        const auto overlay = scene.overlay(withWidgets(type));
        overlay->trackingView().mouseEntered();
        scene.clock.advance(300ms);
        const auto zones = scene.items("Zone");
        QCOMPARE(zones.size(), 5);
        QCOMPARE(scene.items("Divider").size(), 4);
        // The zones stand within the padding, one beside the other.
        QTRY_COMPARE(zones.front()->mapToScene({0, 0}).x(), 14.0); // once the spring rests
        QCOMPARE(zones.back()->mapToScene({0, 0}).x() + zones.back()->width(), 786.0);
        QCOMPARE(zones.front()->mapToScene({0, 0}).y(), 20.0);
        QCOMPARE(zones.front()->height(), 90.0);
    }
}

void OverlaySceneTest::contentIsFreshAtEachExpansion()
{
    Scene scene;
    const auto overlay = scene.overlay(withWidgets(NotchWidgetType::clock));
    QCOMPARE(scene.items("FiveZoneExpandedView").size(), 0);
    overlay->trackingView().mouseEntered();
    QCOMPARE(scene.items("FiveZoneExpandedView").size(), 1);
    const QPointer<QQuickItem> first = scene.items("FiveZoneExpandedView").front();

    overlay->trackingView().mouseExited();
    scene.clock.advance(310ms);
    QVERIFY(first); // still fading
    overlay->trackingView().mouseEntered();
    QTRY_VERIFY(!first);
    QCOMPARE(scene.items("FiveZoneExpandedView").size(), 1);

    overlay->trackingView().mouseExited();
    scene.clock.advance(310ms);
    QTRY_COMPARE(scene.items("FiveZoneExpandedView").size(), 0);
    QCOMPARE(scene.items("CollapsedLiveStripView").size(), 1);
}

void OverlaySceneTest::menuByRightClick()
{
    Scene scene;
    const auto overlay = scene.overlay({});
    overlay->trackingView().mouseEntered();
    scene.clock.advance(300ms);
    QCOMPARE(overlay->menuFrame(), QRectF());
    QTest::mouseClick(scene.window, Qt::RightButton, {}, {300, 50});
    QCOMPARE(overlay->menuFrame().topLeft(), QPointF(300, 50));
    const auto rows = scene.items("StatusMenuRow");
    QCOMPARE(rows.size(), 2);

    // The action waits for the next turn: it may take the window away.
    QTest::mouseClick(scene.window, Qt::LeftButton, {},
                      rows.front()->mapToScene({20, 10}).toPoint());
    QCOMPARE(scene.pressed, QStringList());
    scene.clock.advance(0ms);
    QCOMPARE(scene.pressed, QStringList(QStringLiteral("enable")));
    QCOMPARE(overlay->menuFrame(), QRectF());

    // A press beside it closes it, and so does the end of the hover.
    QTest::mouseClick(scene.window, Qt::RightButton, {}, {300, 50});
    QVERIFY(!overlay->menuFrame().isEmpty());
    QTest::mouseClick(scene.window, Qt::LeftButton, {}, {50, 50});
    QCOMPARE(overlay->menuFrame(), QRectF());
    QTest::mouseClick(scene.window, Qt::RightButton, {}, {300, 50});
    overlay->trackingView().mouseExited();
    scene.clock.advance(300ms);
    QCOMPARE(overlay->menuFrame(), QRectF());
}

void OverlaySceneTest::longSubmenuStaysInTheWindow()
{
    Scene scene;
    const auto overlay = scene.overlay({});
    overlay->trackingView().mouseEntered();
    scene.clock.advance(300ms);
    QTest::mouseClick(scene.window, Qt::RightButton, {}, {790, 105});
    const QRectF window(QPointF(), QSizeF(scene.window->size()));
    QVERIFY(window.contains(overlay->menuFrame()));
    const auto rows = scene.items("StatusMenuRow");
    QTest::mouseMove(scene.window, rows.at(1)->mapToScene({20, 12}).toPoint());
    QVERIFY(!overlay->submenuFrame().isEmpty());
    QVERIFY(window.contains(overlay->submenuFrame()));
    QTest::mouseClick(scene.window, Qt::LeftButton, {},
                      (overlay->submenuFrame().topLeft() + QPointF(60, 16)).toPoint());
    scene.clock.advance(0ms);
    QCOMPARE(scene.pressed, QStringList(QStringLiteral("0")));

    scene.menu.trigger(-1);
    scene.menu.trigger(99);
    scene.menu.trigger(1, 99);
    scene.clock.advance(0ms);
    QCOMPARE(scene.pressed.size(), 1);
}

void OverlaySceneTest::settingsOfNoSense()
{
    Scene scene;
    for (const double value : {0.0, -100.0, 1e300, 1e-300}) {
        NotchSettings settings = withWidgets(NotchWidgetType::systemMonitor);
        settings.notchWidth = value;
        settings.notchHeight = value;
        settings.cornerRadius = value;
        settings.expandedTopPadding = std::min(value, 5000.0);
        settings.zoneWidths.fill(value);
        const auto overlay = scene.overlay(settings);
        overlay->trackingView().mouseEntered();
        scene.clock.advance(300ms);
        const QImage image = scene.window->grabWindow();
        QCOMPARE(image.size(), scene.window->size());
    }
}

QTEST_MAIN(OverlaySceneTest)
#include "OverlaySceneTest.moc"
