#include "overlay/SceneDesk.h"

#include <QAnimationDriver>
#include <QMimeData>
#include <QQuickItem>

#include <algorithm>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class OverlaySceneTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyWidgetTypeBuilds();
    void contentIsFreshAtEachExpansion();
    void menuByRightClick();
    void stripStaysInTheNotch();
    void stripChangesWhatItShows();
    void volumeWithTheMouse();
    void dragTakesItsOwnTime();
    void dropButtonsAgreeWithTheHitTest();
    void openWithMenuAtTheDrop();
};

void OverlaySceneTest::everyWidgetTypeBuilds()
{
    SceneDesk scene;
    for (const NotchWidgetType type : allWidgetTypes()) {
        NotchSettings settings;
        settings.widgets.fill(type);
        const auto overlay = scene.panel(settings);
        const QQuickItem *panel = scene.items("FiveZoneExpandedView").front();
        auto zones = qmlItems(*panel, "QQuickLoader");
        zones.removeIf([panel](const QQuickItem *each) {
            return each->parentItem()->parentItem()->parentItem() != panel;
        });
        QCOMPARE(zones.size(), 5);
        QTRY_COMPARE(zones.front()->mapToScene({0, 0}), QPointF(14, 20)); // once the spring rests
        QVERIFY(zones.front()->x() == 0 && zones.back()->x() == 1);       // behind a hairline
        QCOMPARE(zones.back()->mapToScene({zones.back()->width(), 90}), QPointF(786, 110));
    }
}

void OverlaySceneTest::contentIsFreshAtEachExpansion()
{
    SceneDesk scene;
    const auto overlay = scene.overlay();
    const auto panels = [&] { return scene.items("FiveZoneExpandedView"); };
    QCOMPARE(panels().size(), 0);
    overlay->mouseEntered({400, 10});
    QCOMPARE(panels().size(), 1);
    const QPointer<QQuickItem> first = panels().front();
    // Laid out for good, long before there is room for all of it.
    const QRectF place(overlay->geometry().panel);
    const auto isInPlace = [&] {
        return first->size() == place.size() &&
               first->mapToScene(first->boundingRect().center()) == place.center();
    };
    QVERIFY(isInPlace() && overlay->frame().width() < 300);
    scene.clock.advance(100ms);
    QVERIFY(isInPlace());

    scene.leave(*overlay);
    QVERIFY(first && isInPlace()); // still fading
    overlay->mouseEntered({400, 10});
    QTRY_VERIFY(!first);
    QCOMPARE(panels().size(), 1);
    scene.leave(*overlay);
    QTRY_COMPARE(panels().size(), 0);
    QCOMPARE(scene.items("CollapsedLiveStripView").size(), 1);
}

void OverlaySceneTest::menuByRightClick()
{
    SceneDesk scene;
    const auto overlay = scene.panel();
    const QRectF window(QPointF(), QSizeF(scene.window->size()));
    scene.click({300, 105}, Qt::RightButton); // before any of its lines has a place
    QTRY_VERIFY(overlay->menuFrame().height() > 111 && window.contains(overlay->menuFrame()));
    scene.click({300, 50}); // closes it
    const std::unique_ptr<QPointingDevice> touch(QTest::createTouchDevice());
    QTest::touchEvent(scene.window, touch.get()).press(0, {300, 50});
    QTest::touchEvent(scene.window, touch.get()).release(0, {300, 50});
    QCOMPARE(overlay->menuFrame(), QRectF());
    scene.click({300, 50}, Qt::RightButton);
    QTRY_VERIFY(overlay->menuFrame().height() > 111);
    QCOMPARE(overlay->menuFrame().topLeft(), QPointF(300, 50));
    for (const QQuickItem *text : scene.items("NotchText")) { // there is no keyboard to press it on
        QVERIFY(!text->property("text").toString().contains(u"Ctrl"_s));
    }

    // The action waits for the next turn: it may take the window away.
    const auto rows = scene.items("StatusMenuRow");
    QCOMPARE(rows.size(), 5);
    scene.click(rows.front()->mapToScene({20, 10}));
    QCOMPARE(scene.pressed, QStringList());
    scene.clock.advance(0ms);
    QCOMPARE(scene.pressed, QStringList(u"enable"_s));
    QCOMPARE(overlay->menuFrame(), QRectF());

    // Both stay in the window, however long.
    scene.click({790, 105}, Qt::RightButton);
    QVERIFY(window.contains(overlay->menuFrame()));
    QTest::mouseMove(scene.window, rows.back()->mapToScene({20, 12}).toPoint());
    QTRY_VERIFY(!overlay->submenuFrame().isEmpty() && window.contains(overlay->submenuFrame()));
    const auto line = [&] { return overlay->submenuFrame().topLeft() + QPointF(60, 16); };
    const auto isHovered = [&] {
        QTest::mouseMove(scene.window, line().toPoint());
        return std::ranges::any_of(scene.items("StatusMenuRow"), [&](const QQuickItem *row) {
            return row->property("hovered").toBool() && row->mapToScene({}).x() > line().x() - 60;
        });
    };
    QTRY_VERIFY(isHovered());
    scene.click(line());
    scene.menu.trigger(-1);
    scene.menu.trigger(99);
    scene.menu.trigger(4, 99);
    scene.clock.advance(0ms);
    QCOMPARE(scene.pressed.size(), 2);
    QCOMPARE(scene.pressed.back(), u"0"_s);

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
    scene.leave(*overlay);
    QCOMPARE(overlay->menuFrame(), QRectF());
}

void OverlaySceneTest::stripStaysInTheNotch()
{
    const std::pair<QString, QString> tracks[]{
        {u"A"_s, QString()},
        {QString(500, u'W'), QString(500, u'g')},
        {QString(u'\u05e9').repeated(300), QString(u'\u0639')},
        {u"\U0001f3b5 \U0001f468\u200d\U0001f467"_s, u"x"_s},
        {u"<h1>Large</h1>"_s, u"<br><br><img src='x'/>"_s},
        {u'Z' + QString(u'\u0301').repeated(50), u"a\nb\nc"_s}};
    SceneDesk scene;
    scene.services.pomodoroService()->start();
    for (const QSizeF &size : {QSizeF(120, 24), QSizeF(200, 36), QSizeF(400, 72)}) {
        NotchSettings settings;
        settings.notchWidth = size.width();
        settings.notchHeight = size.height();
        const auto overlay = scene.overlay(settings);
        for (const auto &[title, artist] : tracks) {
            scene.play(title, artist);
            scene.strip().showNotice(title);
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
    SceneDesk scene;
    scene.clock.advance(1s); // the screen is no news any more
    const auto overlay = scene.overlay();
    const auto rows = [&] { return scene.items("LiveSlideRow").size(); };
    const auto texts = [&] { return scene.items("LiveSlideText"); };
    QCOMPARE(rows(), 0); // a plain black shape
    scene.play(u"Song"_s);
    QCOMPARE(texts().size(), 1);
    const QPointer<QQuickItem> song = texts().front();
    scene.play(u"Next"_s);
    QCOMPARE(texts(), QList<QQuickItem *>{song}); // the same slide
    scene.services.pomodoroService()->start();
    scene.clock.advance(5s);
    QCOMPARE(texts().size(), 2); // one comes, one goes
    QTRY_VERIFY(!song);
    QCOMPARE(texts().size(), 1);

    scene.strip().showNotice(u"Note"_s);
    QTRY_COMPARE(rows(), 0);
    QCOMPARE(scene.items("LiveNoticeView").size(), 1);
    scene.clock.advance(3s);
    QTRY_VERIFY(scene.items("LiveNoticeView").isEmpty());
    // What became of a drop is told when there is a strip to tell it, unless the next one begins.
    for (const bool hasNext : {false, true}) {
        overlay->mouseEntered({400, 10});
        QTRY_VERIFY(scene.items("CollapsedLiveStripView").isEmpty());
        scene.services.dropService()->setLastStatus(u"Zip failed"_s);
        if (hasNext) {
            scene.drags.begin({QUrl(u"file:///a"_s)});
            Q_EMIT scene.drags.released();
        }
        scene.leave(*overlay);
        QCOMPARE(scene.strip().noticeText(), hasNext ? QString() : u"Zip failed"_s);
    }
}

void OverlaySceneTest::volumeWithTheMouse()
{
    SceneDesk scene;
    const auto overlay = scene.overlay();
    scene.play(u"Song"_s);
    scene.platform.sound.reported = 50;
    scene.clock.advance(4s);
    // The pointer reaches the speaker without opening the panel, and then the slider.
    const QPointF speaker = overlay->geometry().stripButton.center();
    QEnterEvent entered(speaker, speaker, speaker);
    QCoreApplication::sendEvent(scene.window, &entered);
    scene.click(speaker);
    QTRY_VERIFY(scene.items("LiveSlideRow").isEmpty());
    auto *slider = scene.items("QQuickSlider").value(0);
    QVERIFY(slider);
    const auto at = [slider](double part) {
        const QPointF place(5 + part * (slider->width() - 10), slider->height() / 2);
        return slider->mapToScene(place).toPoint();
    };
    QTest::mouseMove(scene.window, at(0.5));
    QTest::mousePress(scene.window, Qt::LeftButton, {}, at(0.5));
    QTest::mouseMove(scene.window, at(0.3));
    scene.clock.advance(1min);
    QTest::mouseRelease(scene.window, Qt::LeftButton, {}, at(0.3));
    QVERIFY(qAbs(scene.services.systemMonitor()->volume() - 0.3F) < 0.02F);
    scene.platform.sound.reported = 80; // somebody else turns it up
    scene.clock.advance(2s);
    QCOMPARE(slider->property("value").toFloat(), 0.8F);
    QVERIFY(!overlay->isExpanded());
    // To leave it for a moment is the way back.
    overlay->mouseExited();
    scene.clock.advance(1500ms);
    QTRY_COMPARE(scene.items("LiveSlideRow").size(), 1);
    QCOMPARE(overlay->quietArea(), overlay->geometry().stripButton);
}

void OverlaySceneTest::dragTakesItsOwnTime()
{
    struct Driver final : QAnimationDriver {
        qint64 now = 0;
        [[nodiscard]] qint64 elapsed() const override { return now; }
    };
    SceneDesk scene;
    const auto overlay = scene.panel();
    QTRY_VERIFY(scene.items("CollapsedLiveStripView").isEmpty());
    Driver driver;
    driver.install();
    scene.drags.begin({QUrl(u"file:///a"_s)});
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
        SceneDesk scene;
        scene.screen->rect.setWidth(width);
        const auto overlay = scene.overlay();
        DropActionsService &drop = *scene.services.dropService();
        drop.setEnabledActions({all.begin(), all.begin() + count});
        scene.drags.begin({QUrl(u"file:///a"_s), QUrl(u"file:///b"_s)});
        scene.clock.advance(300ms);
        const auto buttons = scene.items("DropActionButton");
        QCOMPARE(buttons.size(), count);
        for (const QQuickItem *button : buttons) {
            for (const double x : {0.1, button->width() - 0.1}) {
                overlay->dragUpdated(button->mapToScene({x, 0}));
                for (const QQuickItem *each : buttons) {
                    QCOMPARE(each->property("isHovered").toBool(), each == button);
                }
            }
        }
        // The last one grows, but not over what is beside it.
        const auto growth = [](const QQuickItem &button) {
            return qmlItems(button, "velmora::RoundedRectangle").front()->width() - button.width();
        };
        QTRY_VERIFY(buttons.isEmpty() || growth(*buttons.back()) > 2);
        for (const QQuickItem *button : buttons) {
            QVERIFY(growth(*button) <= 6.001);
        }
        const auto texts = scene.items("NotchText");
        QCOMPARE(texts.back()->property("text").toString(), u"Drop 2 file(s) on an action"_s);
        for (const QQuickItem *text : texts) {
            const QRectF place = text->mapRectToScene(text->boundingRect());
            QVERIFY(QRectF(0, 0, width, 110).contains(place));
        }
    }
}

void OverlaySceneTest::openWithMenuAtTheDrop()
{
    SceneDesk scene;
    FakeDropRoles &roles = scene.platform.drops;
    roles.applications = {{u"One"_s, u"One"_s, {}}, {u"Two"_s, u"Two"_s, {}}};
    DropActionsService &drop = *scene.services.dropService();
    drop.setEnabledActions({DropActionID::openWith});
    const OpenWithMenu &menu = *drop.openWithMenu();
    const auto overlay = scene.overlay();
    QMimeData data;
    data.setUrls({QUrl(u"file:///tmp/a"_s)});
    const auto dropFile = [&] {
        QVERIFY(overlay->dragEntered(data));
        scene.clock.advance(300ms);
        scene.pointer.position = scene.window->position() + QPointF(400, 60);
        overlay->dragPerformed(data, {400, 60});
        roles.settle();
        QTRY_COMPARE(scene.items("StatusMenuRow").size(), 2);
    };
    dropFile();
    QTRY_VERIFY(overlay->menuFrame().contains(400, 60) && overlay->menuFrame().height() > 50);
    scene.clock.advance(1s);
    QVERIFY(overlay->isExpanded());
    scene.click(scene.items("StatusMenuRow").back()->mapToScene({20, 10}));
    QTRY_VERIFY(!menu.isOpen());
    QTRY_COMPARE(overlay->menuFrame(), QRectF());
    QCOMPARE(roles.calls.filter(u"Two"_s).size(), 1);

    dropFile();
    scene.click({50, 50}); // beside it
    QVERIFY(!menu.isOpen());
}

QTEST_MAIN(OverlaySceneTest)
#include "OverlaySceneTest.moc"
