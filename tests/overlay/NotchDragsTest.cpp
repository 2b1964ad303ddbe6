#include "overlay/ControllerDesk.h"

#include <QDragEnterEvent>
#include <QTest>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

const QList<QUrl> someFiles{QUrl(QStringLiteral("file:///tmp/a")),
                            QUrl(QStringLiteral("file:///tmp/b"))};

struct DragDesk : ControllerDesk {
    DragDesk() { data.setUrls(someFiles); }

    QMimeData data;
    DropActionsService &drop = *services.dropService();
};

/// The transient state of a drag is gone.
bool isReset(const DropActionsService &drop)
{
    return !drop.isDragging() && drop.draggedFiles().isEmpty() && !drop.hoveredAction();
}

} // namespace

class NotchDragsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fileDrags();
    void dragOpensThePanel();
    void dragOverThePanel();
    void dragEndsElsewhere();
    void dropWithoutFilesOrAction();
    void severalScreens();
    void goesWithItsController();
    void choiceOfAnApplication();
    void statusWhileTheStripIsAway();
};

void NotchDragsTest::fileDrags()
{
    TrackingView view;
    NotchWindow window(view);
    QStringList calls;
    const auto send = [&](QEvent &&event) {
        QCoreApplication::sendEvent(&window, &event);
        return event.isAccepted();
    };
    const auto enter = [&](const QMimeData &data) {
        return send(
            QDragEnterEvent({0, 5}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {}));
    };
    const auto move = [&](const QMimeData &data) {
        return send(QDragMoveEvent({10, 20}, Qt::CopyAction, &data, Qt::LeftButton, {}));
    };
    const auto drop = [&](const QMimeData &data) {
        return send(QDropEvent({20, 30}, Qt::CopyAction, &data, Qt::LeftButton, {}));
    };
    const QUrl link(QStringLiteral("https://example.org/a"));
    QMimeData files;
    files.setUrls({link, QUrl::fromLocalFile(QStringLiteral("/tmp/a b")), someFiles.front()});
    QMimeData text;
    text.setText(QStringLiteral("words"));
    QMimeData promised;
    promised.setData(QStringLiteral("XdndDirectSave0"), "a.txt");
    QMimeData links;
    links.setUrls({link});

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
        calls << QStringLiteral("performed %1 at %2")
                     .arg(QUrl::toStringList(urls, QUrl::RemoveScheme).join(u'|'))
                     .arg(p.x());
    };
    QVERIFY(enter(files) && move(files));
    send(QDragLeaveEvent());
    QVERIFY(enter(files) && drop(files));
    QCOMPARE(calls.join(u';'), QStringLiteral("entered 2;updated 10,20;exited;entered 2;"
                                              "performed ///tmp/a b|///tmp/a at 20"));
    calls.clear();
    for (const QMimeData *foreign : {&text, &links}) {
        QVERIFY(!enter(*foreign) && !move(*foreign));
        send(QDragLeaveEvent());
        QVERIFY(!drop(*foreign));
    }
    QCOMPARE(calls, QStringList());

    // What is known already is not read from the source again.
    QVERIFY(enter(promised));
    view.draggedFilesProvider = [] { return someFiles.mid(1); };
    QVERIFY(drop(promised));
    QCOMPARE(calls.join(u';'), QStringLiteral("entered 0;performed ///tmp/b at 20"));
}

void NotchDragsTest::dragOpensThePanel()
{
    DragDesk desk;
    DropActionsService &drop = desk.drop;
    drop.setLastStatus(QStringLiteral("old"));
    desk.drags.begin(someFiles);
    QVERIFY(desk.isExpanded() && drop.isDragging() && drop.lastStatus().isEmpty());
    QCOMPARE(drop.draggedFiles(), someFiles);
    desk.clock.advance(240ms); // and a frame
    QCOMPARE(desk.frame(), expandedFrame);
    desk.clock.advance(10s); // it stays as long as the drag goes on
    QVERIFY(desk.isExpanded());

    // A pending collapse is off once a drag begins.
    DragDesk other;
    other.enter();
    other.leave();
    other.clock.advance(200ms);
    other.drags.begin(someFiles);
    other.clock.advance(1s);
    QVERIFY(other.isExpanded());

    // The rest of a very long list comes later.
    const QList<QUrl> all = someFiles + someFiles;
    Q_EMIT other.drags.completed(all);
    QCOMPARE(other.drop.draggedFiles(), all);
    Q_EMIT other.drags.released();
    Q_EMIT other.drags.completed(all);
    QVERIFY(isReset(other.drop));
}

void NotchDragsTest::dragOverThePanel()
{
    DragDesk desk;
    DropActionsService &drop = desk.drop;
    TrackingView &view = desk.controller->trackingView();
    desk.platform.drops.calls.clear();
    // Without any warning, as under a window system that tells nothing of drags elsewhere.
    QVERIFY(view.draggingEntered(desk.data));
    QVERIFY(desk.isExpanded() && drop.isDragging());
    view.draggingUpdated({300, 100});
    QCOMPARE(drop.hoveredAction(), std::optional(DropActionID::zip));
    view.draggingExited();
    QVERIFY(isReset(drop));
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded());

    // Left and come back, and then dropped: the release itself is no end of it.
    desk.drags.begin(someFiles);
    QVERIFY(view.draggingEntered(desk.data));
    view.draggingExited();
    desk.clock.advance(100ms);
    QVERIFY(view.draggingEntered(desk.data));
    desk.clock.advance(1s);
    QVERIFY(desk.isExpanded());
    view.draggingUpdated({300, 5});
    Q_EMIT desk.drags.released();
    QVERIFY(drop.isDragging());
    view.performDragOperation(desk.data, {300, 5});
    QVERIFY(isReset(drop));
    desk.platform.drops.settle();
    QVERIFY(!desk.platform.drops.calls.isEmpty());
}

void NotchDragsTest::dragEndsElsewhere()
{
    DragDesk desk;
    DropActionsService &drop = desk.drop;
    Q_EMIT desk.drags.released(); // of an ordinary press
    desk.drags.begin(someFiles);
    Q_EMIT desk.drags.released();
    QVERIFY(isReset(drop));
    desk.clock.advance(300ms);
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
    QVERIFY(desk.controller->trackingView().draggingEntered(desk.data));
    Q_EMIT desk.drags.released();
    desk.clock.advance(10s);
    QVERIFY(isReset(drop));
}

void NotchDragsTest::dropWithoutFilesOrAction()
{
    DragDesk desk;
    DropActionsService &drop = desk.drop;
    TrackingView &view = desk.controller->trackingView();
    desk.platform.drops.calls.clear();
    QMimeData promised;
    promised.setData(QStringLiteral("XdndDirectSave0"), "a.txt");
    QVERIFY(view.draggingEntered(promised));
    view.performDragOperation(promised, {300, 5});
    QVERIFY(isReset(drop));

    // Beyond the last one, what was hovered last counts.
    QVERIFY(view.draggingEntered(desk.data));
    view.draggingUpdated({799, 5});
    QVERIFY(!drop.hoveredAction());
    view.performDragOperation(desk.data, {799, 5});
    drop.setEnabledActions({});
    QVERIFY(view.draggingEntered(desk.data));
    view.performDragOperation(desk.data, {300, 5});
    desk.platform.drops.settle();
    QVERIFY(desk.platform.drops.calls.isEmpty() && isReset(drop));
    desk.clock.advance(1s);
    QVERIFY(!desk.isExpanded());
}

void NotchDragsTest::severalScreens()
{
    DragDesk desk;
    const auto second = desk.screens.add(QRectF(1600, 0, 1600, 900));
    const auto other = desk.makeController(second);
    desk.drags.begin(someFiles);
    QVERIFY(desk.isExpanded() && !other->notchState()->isExpanded()); // one of them is enough
    QVERIFY(other->trackingView().draggingEntered(desk.data));
    QVERIFY(other->notchState()->isExpanded());
    other->trackingView().draggingUpdated({100, 5});
    // The drop follows the release, and to no notch that is outside of it.
    Q_EMIT desk.drags.released();
    QVERIFY(desk.drop.isDragging() && desk.drop.hoveredAction());
    other->trackingView().performDragOperation(desk.data, {100, 5});
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded() && !other->notchState()->isExpanded());
}

void NotchDragsTest::goesWithItsController()
{
    DragDesk desk;
    const auto second = desk.screens.add(QRectF(1600, 0, 1600, 900));
    for (const bool isInside : {false, true}) {
        auto other = desk.makeController(second);
        desk.drags.begin(someFiles);
        QVERIFY(!isInside || desk.controller->trackingView().draggingEntered(desk.data));
        other->close(); // has no part in it
        QVERIFY(desk.drop.isDragging());
        desk.controller->close();
        QVERIFY(isReset(desk.drop));
        desk.controller = desk.makeController(desk.screen);
        desk.drags.begin(someFiles); // the next one is seen
        QVERIFY(desk.isExpanded());
        Q_EMIT desk.drags.released();
        desk.clock.advance(1s);
    }
}

void NotchDragsTest::choiceOfAnApplication()
{
    DragDesk desk;
    FakeDropRoles &roles = desk.platform.drops;
    roles.applications << Application{QStringLiteral("a"), QStringLiteral("A"), {}};
    desk.drop.setEnabledActions({DropActionID::openWith});
    const OpenWithMenu &menu = *desk.drop.openWithMenu();
    const auto drop = [&] {
        QVERIFY(desk.controller->trackingView().draggingEntered(desk.data));
        desk.controller->trackingView().performDragOperation(desk.data, {300, 60});
    };
    const auto isShown = [&] { return desk.isExpanded() && desk.controller->isOpenWithShown(); };

    // The list comes when the panel has closed: it opens once more, and waits for the pointer.
    drop();
    desk.clock.advance(1s);
    QVERIFY(!desk.isExpanded());
    roles.settle();
    desk.clock.advance(9s);
    QVERIFY(isShown());
    QCOMPARE(desk.controller->dropPosition(), QPointF(300, 60));
    desk.enter();
    desk.clock.advance(1min);
    QVERIFY(isShown());
    desk.leave();
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded() && !menu.isOpen());
    // It does not wait for ever, and not for the next drag.
    drop();
    roles.settle();
    desk.clock.advance(10s);
    QVERIFY(!desk.isExpanded() && !menu.isOpen());
    drop();
    roles.settle();
    QVERIFY(isShown());
    desk.drags.begin(someFiles);
    QVERIFY(!menu.isOpen());
    desk.clock.advance(1s);
    QVERIFY(desk.isExpanded());
    // Nobody is left to show it.
    drop();
    desk.controller = desk.makeController(desk.screen);
    roles.settle();
    QVERIFY(!menu.isOpen());
}

void NotchDragsTest::statusWhileTheStripIsAway()
{
    DragDesk desk;
    desk.drop.setLastStatus(QStringLiteral("seen"));
    QCOMPARE(desk.controller->missedStatus(), QString());
    desk.enter();
    desk.drop.setLastStatus(QStringLiteral("done"));
    desk.leave();
    desk.clock.advance(1s);
    QCOMPARE(desk.controller->missedStatus(), QStringLiteral("done"));
    desk.enter(); // by now it has been told
    QCOMPARE(desk.controller->missedStatus(), QString());
    desk.drop.setLastStatus(QStringLiteral("failed"));
    desk.drags.begin(someFiles);
    QCOMPARE(desk.controller->missedStatus(), QString());
}

QTEST_MAIN(NotchDragsTest)
#include "NotchDragsTest.moc"
