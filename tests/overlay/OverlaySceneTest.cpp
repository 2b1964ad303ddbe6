#include "overlay/OverlayScene.h"

#include "overlay/CollapsedLiveStrip.h"
#include "support/FakeDesk.h"
#include "support/QmlItems.h"
#include "support/QmlWarnings.h"

#include <QAnimationDriver>
#include <QMimeData>
#include <QQuickItem>
#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

struct Scene : FakeDesk {
    Scene()
    {
        MenuItem enable;
        enable.title = QStringLiteral("Enable Notch");
        enable.mark = MenuItem::Mark::On;
        enable.keyEquivalent = QStringLiteral("n");
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
    std::unique_ptr<NotchWindowController> overlay(const NotchSettings &settings = {})
    {
        auto controller = std::make_unique<NotchWindowController>(
            screen, settings, services, environment(),
            [this](NotchWindow &filled, NotchWindowController &owner) {
                window = &filled;
                scene.populate(filled, owner);
            });
        window->setGeometry(shell.bounds);
        window->show();
        if (!QTest::qWaitForWindowExposed(window)) {
            qFatal("the window does not come");
        }
        return controller;
    }

    /// The same, expanded.
    std::unique_ptr<NotchWindowController> panel(const NotchSettings &settings = {})
    {
        auto controller = overlay(settings);
        controller->trackingView().mouseEntered({400, 10});
        clock.advance(300ms);
        return controller;
    }

    void click(const QPointF &place, Qt::MouseButton button = Qt::LeftButton) const
    {
        QTest::mouseClick(window, button, {}, place.toPoint());
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
    void settingsOfNoSense();
    void stripStaysInTheNotch();
    void stripChangesWhatItShows();
    void dragTakesItsOwnTime();
    void dropButtonsAgreeWithTheHitTest();
    void openWithMenuAtTheDrop();

private:
    std::optional<QmlWarnings> m_warnings;
};

void OverlaySceneTest::everyWidgetTypeBuilds()
{
    Scene scene;
    for (const NotchWidgetType type : allWidgetTypes()) {
        const auto overlay = scene.panel(withWidgets(type));
        const auto zones = scene.items("ZoneSlot");
        QCOMPARE(zones.size(), 5);
        QCOMPARE(scene.items("ZoneDivider").size(), 4);
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
    overlay->trackingView().mouseEntered({400, 10});
    QCOMPARE(scene.items("FiveZoneExpandedView").size(), 1);
    const QPointer<QQuickItem> first = scene.items("FiveZoneExpandedView").front();
    // Laid out for good, long before there is room for all of it.
    const QRectF place(overlay->geometry().panel);
    const auto isInPlace = [&] {
        return first->size() == place.size() &&
               first->mapToScene(first->boundingRect().center()) == place.center();
    };
    QVERIFY(isInPlace() && overlay->frame().width() < 300);
    scene.clock.advance(100ms);
    QVERIFY(isInPlace());

    overlay->trackingView().mouseExited();
    scene.clock.advance(310ms);
    QVERIFY(first && isInPlace()); // still fading
    overlay->trackingView().mouseEntered({400, 10});
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
    const auto overlay = scene.panel();
    const QRectF window(QPointF(), QSizeF(scene.window->size()));
    scene.click({300, 50});
    const std::unique_ptr<QPointingDevice> touch(QTest::createTouchDevice());
    QTest::touchEvent(scene.window, touch.get()).press(0, {300, 50});
    QTest::touchEvent(scene.window, touch.get()).release(0, {300, 50});
    QCOMPARE(overlay->menuFrame(), QRectF());
    scene.click({300, 50}, Qt::RightButton);
    QCOMPARE(overlay->menuFrame().topLeft(), QPointF(300, 50));
    for (const QQuickItem *text : scene.items("NotchText")) { // there is no keyboard to press it on
        QVERIFY(!text->property("text").toString().contains(QStringLiteral("Ctrl")));
    }

    // The action waits for the next turn: it may take the window away.
    const auto rows = scene.items("StatusMenuRow");
    QCOMPARE(rows.size(), 2);
    QTRY_VERIFY(overlay->menuFrame().height() > 50);
    scene.click(rows.front()->mapToScene({20, 10}));
    QCOMPARE(scene.pressed, QStringList());
    scene.clock.advance(0ms);
    QCOMPARE(scene.pressed, QStringList(QStringLiteral("enable")));
    QCOMPARE(overlay->menuFrame(), QRectF());

    // Both stay in the window, however long.
    scene.click({790, 105}, Qt::RightButton);
    QVERIFY(window.contains(overlay->menuFrame()));
    QTest::mouseMove(scene.window, rows.back()->mapToScene({20, 12}).toPoint());
    QVERIFY(!overlay->submenuFrame().isEmpty() && window.contains(overlay->submenuFrame()));
    scene.click(overlay->submenuFrame().topLeft() + QPointF(60, 16));
    scene.menu.trigger(-1);
    scene.menu.trigger(99);
    scene.menu.trigger(1, 99);
    scene.clock.advance(0ms);
    QCOMPARE(scene.pressed.size(), 2);
    QCOMPARE(scene.pressed.back(), QStringLiteral("0"));

    // A press beside it closes it, on any screen, and so does the end of the hover.
    scene.click({300, 50}, Qt::RightButton);
    QVERIFY(!overlay->menuFrame().isEmpty());
    scene.click({50, 50});
    QCOMPARE(overlay->menuFrame(), QRectF());
    scene.click({300, 50}, Qt::RightButton);
    NotchWindow *const own = scene.window;
    const auto other = scene.overlay();
    scene.click({400, 10});
    QCOMPARE(overlay->menuFrame(), QRectF());
    scene.window = own;
    scene.click({300, 50}, Qt::RightButton);
    overlay->trackingView().mouseExited();
    scene.clock.advance(300ms);
    QCOMPARE(overlay->menuFrame(), QRectF());
}

void OverlaySceneTest::settingsOfNoSense()
{
    Scene scene;
    for (const double value : {0.0, -100.0, 1e60, qQNaN(), 1e-300}) {
        NotchSettings settings = withWidgets(NotchWidgetType::systemMonitor);
        settings.notchWidth = settings.notchHeight = value;
        settings.cornerRadius = settings.expandedTopPadding = value;
        settings.zoneWidths.fill(value);
        const auto overlay = scene.panel(settings);
        QCOMPARE(scene.window->grabWindow().size(), scene.window->size());
    }
}

void OverlaySceneTest::stripStaysInTheNotch()
{
    using namespace Qt::StringLiterals;
    const std::pair<QString, QString> tracks[]{
        {u"A"_s, QString()},
        {QString(500, u'W'), QString(500, u'g')},
        {QString(u'\u05e9').repeated(300), QString(u'\u0639')},
        {u"\U0001f3b5 \U0001f468\u200d\U0001f467"_s, u"x"_s},
        {u"<h1>Large</h1>"_s, u"<br><br><img src='x'/>"_s},
        {u'Z' + QString(u'\u0301').repeated(50), u"a\nb\nc"_s}};
    Scene scene;
    scene.services.pomodoroService()->start();
    for (const QSizeF &size : {QSizeF(120, 24), QSizeF(200, 36), QSizeF(400, 72)}) {
        NotchSettings settings;
        settings.notchWidth = size.width();
        settings.notchHeight = size.height();
        const auto overlay = scene.overlay(settings);
        for (const auto &[title, artist] : tracks) {
            scene.play(title, artist);
            scene.findItem<CollapsedLiveStrip>()->showNotice(title);
            for (int turn = 0; turn < 2; ++turn, scene.clock.advance(5s)) {
                scene.window->grabWindow(); // rows take their places with the next frame
                const auto texts = scene.items("NotchText");
                QVERIFY(texts.size() >= 2);
                for (const QQuickItem *text : texts + scene.items("Symbol")) {
                    const QRectF place = text->mapRectToItem(
                        scene.items("CollapsedLiveStripView").front(),
                        {0, 0, text->width(), qMin(text->height(), text->implicitHeight())});
                    // It may be on its way up or in.
                    const QRectF notch(0, -5, size.width(), size.height() + 10);
                    QVERIFY2(notch.contains(place), qPrintable(title.left(20)));
                }
            }
        }
    }
}

void OverlaySceneTest::stripChangesWhatItShows()
{
    Scene scene;
    scene.clock.advance(1s); // the screen is no news any more
    const auto overlay = scene.overlay();
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

    // The pointer reaches the speaker without opening the panel, and then the slider.
    scene.platform.sound.reported = 50;
    scene.clock.advance(2s);
    const QPointF speaker = overlay->geometry().stripButton.center();
    QEnterEvent entered(speaker, speaker, speaker);
    QCoreApplication::sendEvent(scene.window, &entered);
    scene.click(speaker);
    QTRY_VERIFY(scene.items("LiveSlideRow").isEmpty());
    const auto sliders = scene.items("QQuickSlider");
    QCOMPARE(sliders.size(), 1);
    auto *slider = sliders.front();
    const auto at = [slider](double part) {
        return slider->mapToScene({5 + part * (slider->width() - 10), slider->height() / 2});
    };
    QTest::mouseMove(scene.window, at(0.5).toPoint());
    QTest::mousePress(scene.window, Qt::LeftButton, {}, at(0.5).toPoint());
    QTest::mouseMove(scene.window, at(0.3).toPoint());
    scene.clock.advance(1min);
    QTest::mouseRelease(scene.window, Qt::LeftButton, {}, at(0.3).toPoint());
    QVERIFY(!overlay->notchState()->isExpanded());
    QVERIFY(qAbs(scene.services.systemMonitor()->volume() - 0.3F) < 0.02F);
    scene.platform.sound.reported = 80; // somebody else turns it up
    scene.clock.advance(2s);
    QCOMPARE(slider->property("value").toFloat(), 0.8F);
    // To leave it for a moment is the way back.
    overlay->trackingView().mouseExited();
    scene.clock.advance(1500ms);
    QTRY_COMPARE(scene.items("LiveSlideRow").size(), 1);
    QVERIFY(overlay->quietArea() == overlay->geometry().stripButton);

    // What became of a drop is told when there is a strip to tell it.
    overlay->trackingView().mouseEntered({400, 10});
    QTRY_VERIFY(scene.items("CollapsedLiveStripView").isEmpty());
    scene.services.dropService()->setLastStatus(QStringLiteral("Zip failed"));
    overlay->trackingView().mouseExited();
    scene.clock.advance(400ms);
    QCOMPARE(scene.findItem<CollapsedLiveStrip>()->noticeText(), QStringLiteral("Zip failed"));
}

void OverlaySceneTest::dragTakesItsOwnTime()
{
    struct Driver final : QAnimationDriver {
        qint64 now = 0;
        [[nodiscard]] qint64 elapsed() const override { return now; }
    };
    Scene scene;
    const auto overlay = scene.panel();
    QTRY_VERIFY(scene.items("CollapsedLiveStripView").isEmpty());
    Driver driver;
    driver.install();
    scene.drags.begin({QUrl(QStringLiteral("file:///a"))});
    const auto opacityAt = [&](qint64 milliseconds) {
        driver.now = milliseconds;
        driver.advance();
        return scene.items("DropActionsOverlay").front()->parentItem()->opacity();
    };
    qint64 begin = 0; // in one of the next turns
    for (; begin < 20 && opacityAt(begin + 1) == 0; ++begin) {
        QCoreApplication::processEvents();
    }
    QCOMPARE(opacityAt(begin + 100), 0.5);
    QCOMPARE(opacityAt(begin + 200), 1.0);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(scene.items("FiveZoneExpandedView").isEmpty());
    driver.uninstall();
}

void OverlaySceneTest::dropButtonsAgreeWithTheHitTest()
{
    const std::vector<DropActionID> all(allDropActions().begin(), allDropActions().end());
    for (const auto &[width, count] :
         {std::pair(800, 1), {800, 3}, {800, 11}, {480, 7}, {800, 0}}) {
        Scene scene;
        scene.screen->rect.setWidth(width);
        const auto overlay = scene.overlay();
        DropActionsService &drop = *scene.services.dropService();
        drop.setEnabledActions({all.begin(), all.begin() + count});
        scene.drags.begin({QUrl(QStringLiteral("file:///a")), QUrl(QStringLiteral("file:///b"))});
        scene.clock.advance(300ms);
        const auto buttons = scene.items("DropActionButton");
        QCOMPARE(buttons.size(), count);
        for (const QQuickItem *button : buttons) {
            for (const double x : {0.1, button->width() - 0.1}) {
                overlay->trackingView().draggingUpdated(button->mapToScene({x, 0}));
                for (const QQuickItem *each : buttons) {
                    QCOMPARE(each->property("isHovered").toBool(), each == button);
                }
            }
        }
        // The last one grows, but not over what is beside it.
        const auto growth = [](const QQuickItem &button) {
            return qmlItems(button, "QQuickRectangle").front()->width() - button.width();
        };
        QTRY_VERIFY(buttons.isEmpty() || growth(*buttons.back()) > 2);
        for (const QQuickItem *button : buttons) {
            QVERIFY(growth(*button) <= 6.001);
        }
        const auto texts = scene.items("NotchText");
        QCOMPARE(texts.back()->property("text").toString(),
                 QStringLiteral("Drop 2 file(s) on an action"));
        for (const QQuickItem *text : texts) {
            const QRectF place = text->mapRectToScene(text->boundingRect());
            QVERIFY(QRectF(0, 0, width, 110).contains(place));
        }
    }
}

void OverlaySceneTest::openWithMenuAtTheDrop()
{
    Scene scene;
    FakeDropRoles &roles = scene.platform.drops;
    for (const QString &name : {QStringLiteral("One"), QStringLiteral("Two")}) {
        roles.applications << Application{name, name, {}};
    }
    DropActionsService &drop = *scene.services.dropService();
    drop.setEnabledActions({DropActionID::openWith});
    const auto overlay = scene.overlay();
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
    scene.click(scene.items("StatusMenuRow").back()->mapToScene({20, 10}));
    QTRY_VERIFY(!drop.openWithMenu()->isOpen());
    QTRY_COMPARE(overlay->menuFrame(), QRectF());
    QCOMPARE(roles.calls.filter(QStringLiteral("Two")).size(), 1);

    // It goes with a press beside it, with the panel, at the next drag, and with the overlay.
    dropFile();
    scene.click({50, 50});
    QVERIFY(!drop.openWithMenu()->isOpen());
    dropFile();
    scene.pointer.position = QPointF(0, 0);
    overlay->trackingView().mouseExited();
    scene.clock.advance(400ms);
    QVERIFY(!drop.openWithMenu()->isOpen());
    dropFile();
    scene.drags.begin({QUrl(QStringLiteral("file:///tmp/b"))});
    QVERIFY(!drop.openWithMenu()->isOpen());
    dropFile();
    overlay->close();
    QVERIFY(!drop.openWithMenu()->isOpen());
}

QTEST_MAIN(OverlaySceneTest)
#include "OverlaySceneTest.moc"
