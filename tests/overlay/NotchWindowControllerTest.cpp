#include "overlay/NotchWindowController.h"

#include "overlay/NotchGeometry.h"
#include "support/FakeDesktop.h"
#include "support/FakePlatform.h"

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
struct Desk {
    explicit Desk(const NotchSettings &settings = {})
        : settings(settings)
    {
        controller = std::make_unique<NotchWindowController>(
            screen, settings, services, OverlayEnvironment{clock, pointer, screens, shell},
            OverlayContent());
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
    FakePlatform platform;
    VirtualClock &clock = platform.clock;
    FakeScreens &screens = platform.screens;
    FakePointer pointer;
    FakeShell shell;
    NotchServices services{platform.roles};
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
    void screenChanges();
    void screenGone();
    void closedControllerIsQuiet();
    void fileDrags();
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
    QVERIFY(desk.isExpanded()); // before the frame has moved
    QCOMPARE(desk.frame(), collapsedFrame);
    desk.clock.advance(140ms);
    // Half the time of a symmetric curve is half the way; the frames fall beside it by half a
    // frame.
    QVERIFY(qAbs(desk.frame().width() - 500) < 40);
    QCOMPARE(desk.frame().center().x(), 800.0);
    desk.clock.advance(139ms);
    QVERIFY(desk.frame() != expandedFrame);
    desk.clock.advance(20ms);
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
    QCOMPARE(desk.frame(), between); // goes on from where it is
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
}

void NotchWindowControllerTest::screenChanges()
{
    Desk desk;
    QSignalSpy frames(desk.controller.get(), &NotchWindowController::frameChanged);
    desk.screens.setFrame(*desk.screen, QRectF(1000, 0, 1000, 700));
    QCOMPARE(desk.frame(), QRectF(1400, 0, 200, 36));
    QCOMPARE(frames.count(), 1); // at once, without animation
    QVERIFY(QRectF(desk.shell.bounds).contains(desk.frame()));

    desk.enter(QPointF(1500, 10));
    desk.clock.advance(100ms);
    desk.screens.setFrame(*desk.screen, QRectF(0, 0, 1600, 900));
    QCOMPARE(desk.frame(), expandedFrame);
    desk.clock.advance(1s);
    QCOMPARE(desk.frame(), expandedFrame); // the old animation is over
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

    view.draggedFilesProvider = [] {
        return QList<QUrl>{QUrl::fromLocalFile(QStringLiteral("/tmp/kept"))};
    };
    QVERIFY(enter(promised));
    QVERIFY(drop(promised));
    QCOMPARE(calls, (QStringList{QStringLiteral("entered 0"),
                                 QStringLiteral("performed /tmp/kept at 20")}));
}

QTEST_MAIN(NotchWindowControllerTest)
#include "NotchWindowControllerTest.moc"
