#include "overlay/NotchWindowController.h"

#include "overlay/NotchGeometry.h"
#include "support/FakeDesk.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

constexpr QPointF insideCollapsed(800, 10);
constexpr QPointF insidePanel(420, 100);
constexpr QPointF outside(800, 500);

/// A controller on a screen of 1600 × 900 with the default settings.
struct Desk : FakeDesk<> {
    explicit Desk(const NotchSettings &settings = {})
        : settings(settings)
    {
        controller = std::make_unique<NotchWindowController>(screen, settings, services,
                                                             environment(), OverlayContent());
        pointer.position = outside;
    }

    void enter(const QPointF &at = insideCollapsed)
    {
        pointer.position = at;
        controller->trackingView().mouseEntered();
    }
    void leave(const QPointF &to = outside)
    {
        pointer.position = to;
        controller->trackingView().mouseExited();
    }
    [[nodiscard]] bool isExpanded() const { return controller->notchState()->isExpanded(); }
    [[nodiscard]] QRectF frame() const { return controller->frame(); }

    NotchSettings settings;
    std::shared_ptr<FakeScreen> screen = screens.add(QRectF(0, 0, 1600, 900));
    std::unique_ptr<NotchWindowController> controller;
};

const QRectF collapsedFrame(700, 0, 200, 36);
const QRectF expandedFrame(400, 0, 800, 110);

} // namespace

class NotchWindowControllerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void geometry_data();
    void geometry();
    void zoneWidths_data();
    void zoneWidths();
    void growsAndShrinks();
    void pendingCollapse();
    void guardKeepsThePanel();
    void guardWithoutPointer();
    void openMenuKeepsThePanel();
    void interruptedAnimation();
    void probeWhileAnotherProgramHoldsThePointer();
    void screenGone();
    void closedControllerIsQuiet();
    void fileDrags();
    void dragOpensThePanel();
    void dragOverThePanel();
    void dragEndsElsewhere();
    void dropWithoutFilesOrAction();
    void severalScreens();
    void dropSlots_data();
    void dropSlots();
};

void NotchWindowControllerTest::geometry_data()
{
    QTest::addColumn<QRectF>("screen");
    QTest::addColumn<double>("width");
    QTest::addColumn<double>("height");
    QTest::addColumn<double>("padding");
    QTest::addColumn<QRectF>("collapsed");
    QTest::addColumn<QRectF>("expanded");

    const QRectF first(0, 0, 1600, 900);
    QTest::newRow("defaults") << first << 200.0 << 36.0 << 20.0 << collapsedFrame << expandedFrame;
    QTest::newRow("no padding") << first << 200.0 << 36.0 << 0.0 << collapsedFrame
                                << QRectF(400, 0, 800, 90);
    QTest::newRow("second screen, lower")
        << QRectF(1600, 300, 1000, 500) << 300.0 << 24.0 << 20.0 << QRectF(1950, 300, 300, 24)
        << QRectF(1700, 300, 800, 110);
    QTest::newRow("narrow screen: overhangs")
        << QRectF(0, 0, 640, 480) << 200.0 << 36.0 << 20.0 << QRectF(220, 0, 200, 36)
        << QRectF(-80, 0, 800, 110);
    QTest::newRow("nothing to see")
        << first << 0.0 << 36.0 << 20.0 << QRectF(800, 0, 0, 36) << expandedFrame;
    QTest::newRow("negative") << first << -50.0 << -1.0 << -500.0 << QRectF(800, 0, 0, 0)
                              << QRectF(400, 0, 800, 0);
}

void NotchWindowControllerTest::geometry()
{
    QFETCH(QRectF, screen);
    QFETCH(double, width);
    QFETCH(double, height);
    QFETCH(double, padding);
    NotchSettings settings;
    settings.notchWidth = width;
    settings.notchHeight = height;
    settings.expandedTopPadding = padding;
    QTEST(NotchGeometry::collapsed(screen, settings), "collapsed");
    QTEST(NotchGeometry::expanded(screen, settings), "expanded");
    const QRectF window = NotchGeometry::window(screen, settings);
    QCOMPARE(window.united(NotchGeometry::expanded(screen, settings)), window);
    QCOMPARE(window.united(NotchGeometry::collapsed(screen, settings)), window);
    QCOMPARE(window.center().x(), screen.center().x());

    settings.notchWidth = 1e300;
    settings.expandedTopPadding = 1e300;
    const QRect huge = NotchGeometry::window(screen, settings);
    QVERIFY(huge.width() >= 800 && huge.width() < 32768 && huge.height() < 32768);
}

void NotchWindowControllerTest::zoneWidths_data()
{
    QTest::addColumn<QList<double>>("weights");
    QTest::addColumn<QList<double>>("widths");
    QTest::newRow("equal") << QList<double>{7, 7, 7, 7, 7}
                           << QList<double>{153.6, 153.6, 153.6, 153.6, 153.6};
    QTest::newRow("a weight of nothing")
        << QList<double>{0, 1, 1, 1, 1}
        << QList<double>{768 * 0.3 / 4.3, 768 / 4.3, 768 / 4.3, 768 / 4.3, 768 / 4.3};
    QTest::newRow("negative and wide")
        << QList<double>{-5, 0.3, 3, 0.3, 0.3}
        << QList<double>{768 * 0.3 / 4.2, 768 * 0.3 / 4.2, 768 * 3 / 4.2, 768 * 0.3 / 4.2,
                         768 * 0.3 / 4.2};
}

void NotchWindowControllerTest::zoneWidths()
{
    QFETCH(QList<double>, weights);
    QFETCH(QList<double>, widths);
    std::array<double, 5> given{};
    std::copy(weights.begin(), weights.end(), given.begin());
    const QList<double> found = NotchGeometry::zoneWidths(given, 800);
    QCOMPARE(found.size(), 5);
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(found[i], widths[i]);
    }
}

void NotchWindowControllerTest::growsAndShrinks()
{
    Desk desk;
    desk.controller->showWindow();
    QCOMPARE(desk.shell.shown, 1);
    QCOMPARE(desk.frame(), collapsedFrame);
    QVERIFY(!desk.isExpanded());

    desk.enter();
    QVERIFY(desk.isExpanded());
    // The next picture on the screen is a frame away, and shows that it grows.
    QVERIFY(desk.frame().width() > 200 && desk.frame().width() < 210);
    desk.clock.advance(140ms);
    // Half the time of a symmetric curve is half the way; the frames fall beside it by half a
    // frame.
    QVERIFY(qAbs(desk.frame().width() - 500) < 40);
    QCOMPARE(desk.frame().center().x(), 800.0);
    desk.clock.advance(110ms);
    QVERIFY(desk.frame() != expandedFrame);
    desk.clock.advance(49ms);
    QCOMPARE(desk.frame(), expandedFrame);
    // What can be seen and clicked follows.
    QCOMPARE(desk.shell.shape.boundingRect().translated(desk.shell.bounds.topLeft()),
             expandedFrame.toRect());

    desk.leave();
    desk.clock.advance(299ms);
    QVERIFY(desk.isExpanded());
    desk.clock.advance(1ms);
    QVERIFY(!desk.isExpanded());
    desk.clock.advance(240ms);
    QCOMPARE(desk.frame(), collapsedFrame);
    QCOMPARE(desk.shell.shape.boundingRect().translated(desk.shell.bounds.topLeft()),
             collapsedFrame.toRect());

    QSignalSpy frames(desk.controller.get(), &NotchWindowController::frameChanged);
    desk.clock.advance(1h);
    QCOMPARE(frames.count(), 0); // nothing ticks at rest
}

void NotchWindowControllerTest::pendingCollapse()
{
    Desk desk;
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
}

void NotchWindowControllerTest::guardKeepsThePanel()
{
    Desk desk;
    desk.enter();
    desk.clock.advance(300ms);
    desk.leave(insidePanel); // told of a leave, yet still over the panel
    desk.clock.advance(10s);
    QVERIFY(desk.isExpanded());
    desk.leave();
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded());
}

void NotchWindowControllerTest::guardWithoutPointer()
{
    Desk desk;
    desk.enter();
    desk.leave();
    desk.pointer.position.reset(); // a window system that does not tell
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded());
}

void NotchWindowControllerTest::openMenuKeepsThePanel()
{
    Desk desk;
    desk.enter();
    desk.clock.advance(300ms);
    desk.controller->setMenuFrame(QRectF(300, 60, 210, 140));
    desk.controller->setSubmenuFrame(QRectF(513, 90, 180, 100));
    const QPointF origin = desk.shell.bounds.topLeft();
    QVERIFY(desk.shell.shape.contains(QPoint(400, 190)));
    QVERIFY(desk.shell.shape.contains(QPoint(600, 150)));
    QVERIFY(!desk.shell.shape.contains(QPoint(510 + 1, 195)));

    for (const QPointF over : {QPointF(400, 190), QPointF(600, 180)}) {
        desk.leave(origin + over);
        desk.clock.advance(1s);
        QVERIFY(desk.isExpanded());
    }
    desk.controller->setSubmenuFrame({});
    desk.leave(origin + QPointF(600, 180));
    desk.clock.advance(1s);
    QVERIFY(!desk.isExpanded());
}

void NotchWindowControllerTest::interruptedAnimation()
{
    Desk desk;
    desk.enter();
    desk.clock.advance(300ms);
    desk.leave();
    desk.clock.advance(400ms); // in the middle of shrinking
    const QRectF between = desk.frame();
    QVERIFY(between.width() < 800 && between.width() > 200);
    desk.enter();
    QVERIFY(qAbs(desk.frame().width() - between.width()) < 5); // goes on from where it is
    desk.clock.advance(34ms);
    QVERIFY(desk.frame().width() >= between.width());
    desk.clock.advance(300ms);
    QCOMPARE(desk.frame(), expandedFrame);
}

void NotchWindowControllerTest::probeWhileAnotherProgramHoldsThePointer()
{
    Desk desk;
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
        desk.pointer.dragTo(insideCollapsed);
        desk.clock.advance(300ms);
        desk.pointer.dragTo(insidePanel);
        if (!isTold) {
            desk.pointer.position.reset();
        }
        desk.clock.advance(1s);
        QVERIFY(desk.isExpanded());
        desk.pointer.dragTo(outside);
        if (!isTold) {
            desk.pointer.position.reset();
        }
        desk.clock.advance(300ms);
        QVERIFY(!desk.isExpanded());
    }
    // What is dragged are files: the panel stays for them.
    desk.drags.begin({QUrl(QStringLiteral("file:///tmp/a"))});
    desk.pointer.dragTo(outside);
    desk.clock.advance(1s);
    QVERIFY(desk.isExpanded());
}

void NotchWindowControllerTest::screenGone()
{
    Desk desk;
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
}

void NotchWindowControllerTest::closedControllerIsQuiet()
{
    Desk desk;
    desk.enter();
    desk.clock.advance(50ms);
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

void NotchWindowControllerTest::fileDrags()
{
    TrackingView view;
    QStringList calls;
    NotchWindow window(view, [](const QPointF &p) { return p - QPointF(300, 0); });
    const auto send = [&](QEvent &event) { QCoreApplication::sendEvent(&window, &event); };
    QMimeData files;
    files.setUrls({QUrl(QStringLiteral("https://example.org/a")),
                   QUrl::fromLocalFile(QStringLiteral("/tmp/a b")),
                   QUrl::fromLocalFile(QStringLiteral("/tmp/c"))});
    QMimeData text;
    text.setText(QStringLiteral("words"));
    QMimeData promised;
    promised.setData(QStringLiteral("XdndDirectSave0"), "a.txt");
    QMimeData links;
    links.setUrls({QUrl(QStringLiteral("https://example.org/a"))});

    const auto enter = [&](const QMimeData &data) {
        QDragEnterEvent event({300, 5}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        send(event);
        return event.isAccepted() && event.dropAction() == Qt::CopyAction;
    };
    const auto move = [&](const QMimeData &data) {
        QDragMoveEvent event({310, 20}, Qt::CopyAction, &data, Qt::LeftButton, {});
        send(event);
        return event.isAccepted();
    };
    const auto drop = [&](const QMimeData &data) {
        QDropEvent event({320, 30}, Qt::CopyAction, &data, Qt::LeftButton, {});
        send(event);
        return event.isAccepted();
    };
    const auto leave = [&] {
        QDragLeaveEvent event;
        send(event);
    };

    // As long as nobody takes files, none are accepted: they would be lost.
    QVERIFY(!enter(files));
    QVERIFY(!drop(files));

    view.onDragEntered = [&](const QList<QUrl> &urls) {
        calls << QStringLiteral("entered %1").arg(urls.size());
    };
    view.onDragUpdated = [&](const QPointF &p) {
        calls << QStringLiteral("updated %1,%2").arg(p.x()).arg(p.y());
    };
    view.onDragExited = [&] { calls << QStringLiteral("exited"); };
    view.onDragPerformed = [&](const QList<QUrl> &urls, const QPointF &p) {
        QStringList paths;
        for (const QUrl &url : urls) {
            paths << url.toLocalFile();
        }
        calls << QStringLiteral("performed %1 at %2").arg(paths.join(u'|')).arg(p.x());
    };
    QVERIFY(enter(files));
    QVERIFY(move(files));
    leave();
    QVERIFY(enter(files));
    QVERIFY(drop(files));
    QCOMPARE(calls, (QStringList{QStringLiteral("entered 2"), QStringLiteral("updated 10,20"),
                                 QStringLiteral("exited"), QStringLiteral("entered 2"),
                                 QStringLiteral("performed /tmp/a b|/tmp/c at 20")}));

    calls.clear();
    for (const QMimeData *foreign : {&text, &links}) {
        QVERIFY(!enter(*foreign));
        QVERIFY(!move(*foreign));
        leave();
        QVERIFY(!drop(*foreign));
    }
    QCOMPARE(calls, QStringList());

    // What is known already is not read from the source again.
    QVERIFY(enter(promised));
    view.draggedFilesProvider = [] {
        return QList<QUrl>{QUrl::fromLocalFile(QStringLiteral("/tmp/kept"))};
    };
    QVERIFY(drop(promised));
    QCOMPARE(calls, (QStringList{QStringLiteral("entered 0"),
                                 QStringLiteral("performed /tmp/kept at 20")}));
}

namespace
{

const QList<QUrl> someFiles{QUrl(QStringLiteral("file:///tmp/a")),
                            QUrl(QStringLiteral("file:///tmp/b"))};

/// The transient state of a drag is gone.
bool isReset(const DropActionsService &drop)
{
    return !drop.isDragging() && drop.draggedFiles().isEmpty() && !drop.hoveredAction();
}

} // namespace

void NotchWindowControllerTest::dragOpensThePanel()
{
    Desk desk;
    DropActionsService &drop = *desk.services.dropService();
    drop.setLastStatus(QStringLiteral("old"));
    desk.drags.begin(someFiles);
    QVERIFY(desk.isExpanded());
    QVERIFY(drop.isDragging());
    QCOMPARE(drop.draggedFiles(), someFiles);
    QCOMPARE(drop.lastStatus(), QString());
    desk.clock.advance(240ms); // and a frame
    QCOMPARE(desk.frame(), QRectF(400, 0, 800, 110));
    desk.clock.advance(10s); // it stays as long as the drag goes on
    QVERIFY(desk.isExpanded());

    // A pending collapse is off once a drag begins.
    Desk other;
    other.enter();
    other.leave();
    other.clock.advance(200ms);
    other.drags.begin(someFiles);
    other.clock.advance(1s);
    QVERIFY(other.isExpanded());

    // The rest of a very long list comes later.
    const QList<QUrl> all = someFiles + someFiles;
    Q_EMIT other.drags.completed(all);
    QCOMPARE(other.services.dropService()->draggedFiles(), all);
    Q_EMIT other.drags.released();
    Q_EMIT other.drags.completed(all);
    QVERIFY(isReset(*other.services.dropService()));
}

void NotchWindowControllerTest::dragOverThePanel()
{
    Desk desk;
    DropActionsService &drop = *desk.services.dropService();
    TrackingView &view = desk.controller->trackingView();
    desk.platform.drops.calls.clear();
    QMimeData data;
    data.setUrls(someFiles);
    // Without any warning, as under a window system that tells nothing of drags elsewhere.
    QVERIFY(view.draggingEntered(data));
    QVERIFY(desk.isExpanded() && drop.isDragging());
    view.draggingUpdated({300, 5});
    QCOMPARE(drop.hoveredAction(), std::optional(DropActionID::zip));
    view.draggingUpdated({300, 100});
    QCOMPARE(drop.hoveredAction(), std::optional(DropActionID::zip));
    view.draggingExited();
    QVERIFY(isReset(drop));
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded());

    // Left and come back, and then dropped: the release itself is no end of it.
    desk.drags.begin(someFiles);
    QVERIFY(view.draggingEntered(data));
    view.draggingExited();
    desk.clock.advance(100ms);
    QVERIFY(view.draggingEntered(data));
    desk.clock.advance(1s);
    QVERIFY(desk.isExpanded());
    view.draggingUpdated({300, 5});
    Q_EMIT desk.drags.released();
    QVERIFY(drop.isDragging());
    view.performDragOperation(data, {300, 5});
    QVERIFY(isReset(drop));
    desk.platform.drops.settle();
    QVERIFY(!desk.platform.drops.calls.isEmpty());
    desk.pointer.position = outside;
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded());
}

void NotchWindowControllerTest::dragEndsElsewhere()
{
    Desk desk;
    DropActionsService &drop = *desk.services.dropService();
    Q_EMIT desk.drags.released(); // of an ordinary press
    desk.drags.begin(someFiles);
    Q_EMIT desk.drags.released();
    QVERIFY(isReset(drop));
    desk.clock.advance(299ms);
    QVERIFY(desk.isExpanded());
    desk.clock.advance(1ms);
    QVERIFY(!desk.isExpanded());

    // With the pointer inside, the guard keeps it open.
    desk.drags.begin(someFiles);
    desk.pointer.position = insidePanel;
    desk.clock.advance(220ms);
    Q_EMIT desk.drags.released();
    desk.clock.advance(1s);
    QVERIFY(desk.isExpanded());

    // A source that dies between release and drop does not keep the overlay for ever.
    desk.drags.begin(someFiles);
    QMimeData data;
    data.setUrls(someFiles);
    QVERIFY(desk.controller->trackingView().draggingEntered(data));
    Q_EMIT desk.drags.released();
    desk.clock.advance(10s);
    QVERIFY(isReset(drop));
}

void NotchWindowControllerTest::dropWithoutFilesOrAction()
{
    Desk desk;
    DropActionsService &drop = *desk.services.dropService();
    TrackingView &view = desk.controller->trackingView();
    desk.platform.drops.calls.clear();
    QMimeData promised;
    promised.setData(QStringLiteral("XdndDirectSave0"), "a.txt");
    QVERIFY(view.draggingEntered(promised));
    view.performDragOperation(promised, {300, 5});
    QVERIFY(isReset(drop));

    QMimeData data;
    data.setUrls(someFiles);
    // Beyond the last one, what was hovered last counts.
    QVERIFY(view.draggingEntered(data));
    view.draggingUpdated({799, 5});
    QVERIFY(!drop.hoveredAction());
    view.performDragOperation(data, {799, 5});
    drop.setEnabledActions({});
    QVERIFY(view.draggingEntered(data));
    view.performDragOperation(data, {300, 5});
    desk.platform.drops.settle();
    QVERIFY(desk.platform.drops.calls.isEmpty());
    QVERIFY(isReset(drop));
    desk.clock.advance(1s);
    QVERIFY(!desk.isExpanded());
}

void NotchWindowControllerTest::severalScreens()
{
    Desk desk;
    const auto second = desk.screens.add(QRectF(1600, 0, 1600, 900));
    NotchWindowController other(second, desk.settings, desk.services, desk.environment(), {});
    desk.drags.begin(someFiles);
    QVERIFY(desk.isExpanded());
    QVERIFY(!other.notchState()->isExpanded()); // one of them is enough
    QMimeData data;
    data.setUrls(someFiles);
    QVERIFY(other.trackingView().draggingEntered(data));
    QVERIFY(other.notchState()->isExpanded());
    other.trackingView().performDragOperation(data, {100, 5});
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded() && !other.notchState()->isExpanded());
}

void NotchWindowControllerTest::dropSlots_data()
{
    QTest::addColumn<double>("x");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("slot");
    const struct {
        double x;
        int count;
        int slot;
    } rows[] = {{10, 0, -1},   {0, 3, 0},   {9, 3, 0},     {10, 3, 0},   {271, 3, 0}, {272, 3, 1},
                {533, 3, 1},   {534, 3, 2}, {795, 3, 2},   {796, 3, -1}, {795, 1, 0}, {796, 1, -1},
                {-252, 3, -1}, {0, 11, 0},  {795, 11, 10}, {796, 11, -1}};
    for (const auto &row : rows) {
        QTest::addRow("%g of %d", row.x, row.count) << row.x << row.count << row.slot;
    }
}

void NotchWindowControllerTest::dropSlots()
{
    QFETCH(double, x);
    QFETCH(int, count);
    QTEST(NotchGeometry::dropSlotAt(x, count), "slot");
}

QTEST_MAIN(NotchWindowControllerTest)
#include "NotchWindowControllerTest.moc"
