#include "overlay/OverlayScene.h"

#include "overlay/CollapsedLiveStrip.h"
#include "support/FakeDesk.h"
#include "support/QmlItems.h"
#include "support/QmlWarnings.h"

#include <QMimeData>
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
        void setShape(const OverlayShape &) override {}

    private:
        QWindow &m_window;
    };
};

struct Scene : FakeDesk<ShowingShell> {
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
            screens.all().front(), settings, services, environment(),
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

    void play(const QString &title, const QString &artist)
    {
        services.mediaService()->refresh();
        platform.media.answer(playingTrack(title, artist));
    }

    /// The first such object anywhere in the window's scene.
    template<typename T>
    [[nodiscard]] T *findItem() const
    {
        return window->contentItem()->findChild<T *>();
    }

    [[nodiscard]] QList<QQuickItem *> items(const char *type) const
    {
        return qmlItems(*window->contentItem(), type);
    }

    QStringList pressed;
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
    void stripStaysInTheNotch_data();
    void stripStaysInTheNotch();
    void stripChangesWhatItShows();
    void dropButtonsAgreeWithTheHitTest();
    void openWithMenuAtTheDrop();

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
    QTest::mouseClick(scene.window, Qt::LeftButton, {}, {300, 50});
    const std::unique_ptr<QPointingDevice> touch(QTest::createTouchDevice());
    QTest::touchEvent(scene.window, touch.get()).press(0, {300, 50});
    QTest::touchEvent(scene.window, touch.get()).release(0, {300, 50});
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

void OverlaySceneTest::stripStaysInTheNotch_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("artist");
    QTest::newRow("short") << "A"
                           << "";
    QTest::newRow("long") << QString(500, u'W') << QString(500, u'g');
    QTest::newRow("right to left") << QString(u'\u05e9').repeated(300) << QString(u'\u0639');
    QTest::newRow("emoji") << QStringLiteral("\U0001f3b5 \U0001f468\u200d\U0001f467") << "x";
    QTest::newRow("markup") << "<h1>Large</h1>"
                            << "<br><br><img src='x'/>";
    QTest::newRow("tall") << QString(u'Z') + QString(u'\u0301').repeated(50) << "a\nb\nc";
}

void OverlaySceneTest::stripStaysInTheNotch()
{
    QFETCH(QString, title);
    QFETCH(QString, artist);
    Scene scene;
    scene.services.pomodoroService()->start();
    for (const double width : {120.0, 200.0, 400.0}) {
        for (const double height : {24.0, 36.0, 72.0}) {
            NotchSettings settings;
            settings.notchWidth = width;
            settings.notchHeight = height;
            const auto overlay = scene.overlay(settings);
            scene.play(title, artist);
            auto *strip = scene.findItem<CollapsedLiveStrip>();
            QVERIFY(strip);
            strip->showNotice(title);
            for (int turn = 0; turn < 2; ++turn) {
                const QRectF notch(QPointF(), QSizeF(width, height));
                const auto texts = scene.items("NotchText");
                QVERIFY(texts.size() >= 2);
                for (const QQuickItem *text : texts + scene.items("Symbol")) {
                    const QRectF place = text->mapRectToItem(
                        scene.items("CollapsedLiveStripView").front(),
                        {0, 0, text->width(), qMin(text->height(), text->implicitHeight())});
                    QVERIFY2(notch.adjusted(0, -5, 0, 5).contains(place), // on its way up or in
                             qPrintable(QString::number(place.right())));
                }
                scene.clock.advance(5s);
            }
        }
    }
}

void OverlaySceneTest::stripChangesWhatItShows()
{
    Scene scene;
    scene.clock.advance(1s); // the screen is no news any more
    const auto overlay = scene.overlay({});
    QCOMPARE(scene.items("LiveSlideRow").size(), 0); // a plain black shape
    scene.play(QStringLiteral("Song"), QStringLiteral("Them"));
    QCOMPARE(scene.items("LiveSlideText").size(), 1);
    const QPointer<QQuickItem> song = scene.items("LiveSlideText").front();
    scene.play(QStringLiteral("Next"), QStringLiteral("Them"));
    QCOMPARE(scene.items("LiveSlideText"), QList<QQuickItem *>{song}); // the same slide

    scene.services.pomodoroService()->start();
    scene.clock.advance(5s);
    QCOMPARE(scene.items("LiveSlideText").size(), 2); // one comes, one goes
    QTRY_VERIFY(!song);
    QCOMPARE(scene.items("LiveSlideText").size(), 1);

    auto *strip = scene.findItem<CollapsedLiveStrip>();
    strip->showNotice(QStringLiteral("Note"));
    QTRY_VERIFY(scene.items("LiveSlideRow").isEmpty());
    QCOMPARE(scene.items("LiveNoticeView").size(), 1);
    scene.clock.advance(3s);
    QTRY_VERIFY(scene.items("LiveNoticeView").isEmpty());

    // A press on the speaker. (With a mouse the notch opens first; fingers do not hover.)
    auto *row = scene.items("LiveSlideRow").front();
    scene.platform.sound.reported = 50;
    scene.clock.advance(2s);
    QTest::mouseClick(scene.window, Qt::LeftButton, {},
                      row->mapToScene({row->width() - 8, row->height() / 2}).toPoint());
    QTRY_VERIFY(scene.items("LiveSlideRow").isEmpty());
    const auto sliders = scene.items("QQuickSlider");
    QCOMPARE(sliders.size(), 1);
    auto *slider = sliders.front();
    const auto at = [slider](double part) {
        return slider->mapToScene({5 + part * (slider->width() - 10), slider->height() / 2});
    };
    QTest::mousePress(scene.window, Qt::LeftButton, {}, at(0.5).toPoint());
    QTest::mouseMove(scene.window, at(0.3).toPoint());
    QTest::mouseRelease(scene.window, Qt::LeftButton, {}, at(0.3).toPoint());
    QVERIFY(qAbs(scene.services.systemMonitor()->volume() - 0.3F) < 0.02F);
    scene.platform.sound.reported = 80; // somebody else turns it up
    scene.clock.advance(2s);
    QCOMPARE(slider->property("value").toFloat(), 0.8F);
}

void OverlaySceneTest::dropButtonsAgreeWithTheHitTest()
{
    Scene scene;
    const auto overlay = scene.overlay({});
    DropActionsService &drop = *scene.services.dropService();
    const std::vector<DropActionID> all(allDropActions().begin(), allDropActions().end());
    for (const size_t count : {1U, 3U, 11U, 0U}) {
        drop.setEnabledActions({all.begin(), all.begin() + long(count)});
        scene.drags.begin({QUrl(QStringLiteral("file:///a")), QUrl(QStringLiteral("file:///b"))});
        scene.clock.advance(300ms);
        const auto buttons = scene.items("DropActionButton");
        QCOMPARE(buttons.size(), qsizetype(count));
        const double left = scene.items("DropActionsOverlay").front()->mapToScene({0, 0}).x();
        for (double x = 10; x < 790; x += 1) {
            // In the gap behind a button that one is meant, and in a button itself.
            const QQuickItem *meant = nullptr;
            for (const QQuickItem *button : buttons) {
                if (button->x() + 10 <= x) {
                    meant = button;
                }
            }
            overlay->trackingView().draggingUpdated({x, 50});
            QCOMPARE(drop.hoveredAction().has_value(), meant != nullptr);
            for (const QQuickItem *button : buttons) {
                QCOMPARE(button->property("isHovered").toBool(), button == meant);
            }
        }
        const auto texts = scene.items("NotchText");
        QCOMPARE(texts.back()->property("text").toString(),
                 QStringLiteral("Drop 2 file(s) on an action"));
        // All of it within the panel.
        for (const QQuickItem *text : texts) {
            const QRectF place = text->mapRectToScene(text->boundingRect());
            QVERIFY(place.left() >= left && place.right() <= left + 800 && place.bottom() <= 110);
        }
        Q_EMIT scene.drags.released();
        QTRY_VERIFY(scene.items("DropActionsOverlay").isEmpty());
    }
}

void OverlaySceneTest::openWithMenuAtTheDrop()
{
    Scene scene;
    FakeDropRoles &roles = scene.platform.drops;
    for (const char *name : {"One", "Two"}) {
        Application application;
        application.id = application.name = QString::fromLatin1(name);
        roles.applications << application;
    }
    DropActionsService &drop = *scene.services.dropService();
    drop.setEnabledActions({DropActionID::openWith});
    const auto overlay = scene.overlay({});
    QMimeData data;
    data.setUrls({QUrl(QStringLiteral("file:///tmp/a"))});
    const auto dropFile = [&] {
        QVERIFY(overlay->trackingView().draggingEntered(data));
        scene.clock.advance(300ms);
        scene.pointer.position = scene.window->position() + QPointF(400, 60);
        overlay->trackingView().performDragOperation(data, {400, 60});
        roles.settle();
        QTRY_COMPARE(scene.items("StatusMenuRow").size(), 2);
    };
    dropFile();
    QTRY_VERIFY(overlay->menuFrame().contains(400, 60) && overlay->menuFrame().height() > 50);
    scene.clock.advance(1s);
    QVERIFY(overlay->notchState()->isExpanded());
    roles.calls.clear();
    QTest::mouseClick(scene.window, Qt::LeftButton, {},
                      scene.items("StatusMenuRow").back()->mapToScene({20, 10}).toPoint());
    QTRY_VERIFY(!drop.openWithMenu()->isOpen());
    QTRY_COMPARE(overlay->menuFrame(), QRectF());
    QCOMPARE(roles.calls.filter(QStringLiteral("Two")).size(), 1);

    // It goes with the panel, and with the overlay.
    dropFile();
    scene.pointer.position = QPointF(0, 0);
    overlay->trackingView().mouseExited();
    scene.clock.advance(400ms);
    QVERIFY(!drop.openWithMenu()->isOpen());
    dropFile();
    overlay->close();
    QVERIFY(!drop.openWithMenu()->isOpen());
}

QTEST_MAIN(OverlaySceneTest)
#include "OverlaySceneTest.moc"
