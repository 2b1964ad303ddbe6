#include "overlay/ControllerDesk.h"

#include <QDragEnterEvent>
#include <QTest>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

const QList<QUrl> someFiles{QUrl(u"file:///tmp/a"_s), QUrl(u"file:///tmp/b"_s)};

struct DragDesk : ControllerDesk {
    DragDesk() { data.setUrls(someFiles); }

    void dragIn() { QVERIFY(view().draggingEntered(data)); }
    void drop(double x = 300) { view().performDragOperation(data, {x, 60}); }
    [[nodiscard]] const TrackingView &view() const { return controller->trackingView(); }

    QMimeData data;
    DropActionsService &service = *services.dropService();
    QStringList &calls = platform.drops.calls;
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
};

void NotchDragsTest::fileDrags()
{
    TrackingView view;
    NotchWindow window(view);
    QStringList calls;
    const auto send = [&](QDropEvent &&event) {
        QCoreApplication::sendEvent(&window, &event);
        return event.isAccepted();
    };
    const auto copy = Qt::CopyAction;
    const auto left = Qt::LeftButton;
    const auto enter = [&](const QMimeData &data) {
        return send(QDragEnterEvent({0, 5}, copy | Qt::MoveAction, &data, left, {}));
    };
    const auto moveOn = [&](const QMimeData &data) {
        return send(QDragMoveEvent({10, 20}, copy, &data, left, {}));
    };
    const auto drop = [&](const QMimeData &data) {
        return send(QDropEvent({20, 30}, copy, &data, left, {}));
    };
    const auto leave = [&] {
        QDragLeaveEvent event;
        QCoreApplication::sendEvent(&window, &event);
    };
    QMimeData files;
    files.setUrls({QUrl(u"https://example.org/a"_s), QUrl(u"file:///tmp/a%20b"_s)});
    QMimeData promised;
    promised.setData(u"XdndDirectSave0"_s, "a.txt");
    QMimeData text;
    text.setText(u"words"_s);
    QMimeData links;
    links.setUrls({QUrl(u"https://example.org/a"_s)});

    // As long as nobody takes files, none are accepted: they would be lost.
    QVERIFY(!enter(files) && !drop(files));
    view.onDragEntered = [&](const auto &urls) { calls << u"entered %1"_s.arg(urls.size()); };
    view.onDragUpdated = [&](const QPointF &p) { calls << u"updated %1"_s.arg(p.x()); };
    view.onDragExited = [&] { calls << u"exited"_s; };
    view.onDragPerformed = [&](const QList<QUrl> &urls, const QPointF &p) {
        calls << u"performed %1 %2"_s.arg(urls.value(0).toLocalFile()).arg(p.x());
    };
    QVERIFY(enter(files) && moveOn(files));
    leave();
    QVERIFY(enter(files) && drop(files));
    QCOMPARE(calls.join(u';'), u"entered 1;updated 10;exited;entered 1;performed /tmp/a b 20"_s);
    calls.clear();
    for (const QMimeData *foreign : {&text, &links}) {
        QVERIFY(!enter(*foreign) && !moveOn(*foreign));
        leave();
        QVERIFY(!drop(*foreign));
    }
    QCOMPARE(calls, QStringList());
    // What is known already is not read from the source again.
    QVERIFY(enter(promised));
    view.draggedFilesProvider = [] { return someFiles; };
    QVERIFY(drop(promised));
    QCOMPARE(calls.join(u';'), u"entered 0;performed /tmp/a 20"_s);
}

void NotchDragsTest::dragOpensThePanel()
{
    DragDesk desk;
    desk.service.setLastStatus(u"old"_s);
    desk.drags.begin(someFiles);
    QVERIFY(desk.isExpanded() && desk.service.isDragging());
    QCOMPARE(desk.service.draggedFiles(), someFiles);
    QCOMPARE(desk.service.lastStatus(), QString());
    desk.clock.advance(240ms); // and a frame
    QCOMPARE(desk.frame(), expandedFrame);

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
    QCOMPARE(other.service.draggedFiles(), all);
    Q_EMIT other.drags.released();
    Q_EMIT other.drags.completed(all);
    QVERIFY(isReset(other.service));
}

void NotchDragsTest::dragOverThePanel()
{
    DragDesk desk;
    desk.calls.clear();
    // Without any warning, as under a window system that tells nothing of drags elsewhere.
    desk.dragIn();
    QVERIFY(desk.isExpanded() && desk.service.isDragging());
    desk.view().draggingUpdated({300, 100});
    QCOMPARE(desk.service.hoveredAction(), std::optional(DropActionID::zip));
    desk.view().draggingExited();
    QVERIFY(isReset(desk.service));
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded());

    // Left and come back, and then dropped: the release itself is no end of it.
    desk.drags.begin(someFiles);
    desk.dragIn();
    desk.view().draggingExited();
    desk.clock.advance(100ms);
    desk.dragIn();
    desk.clock.advance(1s);
    QVERIFY(desk.isExpanded());
    Q_EMIT desk.drags.released();
    QVERIFY(desk.service.isDragging());
    desk.drop();
    QVERIFY(isReset(desk.service));
    desk.platform.drops.settle();
    QVERIFY(!desk.calls.isEmpty());
}

void NotchDragsTest::dragEndsElsewhere()
{
    DragDesk desk;
    Q_EMIT desk.drags.released(); // of an ordinary press
    desk.drags.begin(someFiles);
    Q_EMIT desk.drags.released();
    QVERIFY(isReset(desk.service));
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded());

    // A source that dies between release and drop does not keep the overlay for ever.
    desk.drags.begin(someFiles);
    desk.dragIn();
    Q_EMIT desk.drags.released();
    desk.clock.advance(10s);
    QVERIFY(isReset(desk.service));
}

void NotchDragsTest::dropWithoutFilesOrAction()
{
    DragDesk desk;
    desk.calls.clear();
    QMimeData promised;
    promised.setData(u"XdndDirectSave0"_s, "a.txt");
    QVERIFY(desk.view().draggingEntered(promised));
    desk.view().performDragOperation(promised, {300, 5});
    QVERIFY(isReset(desk.service));
    desk.dragIn();
    desk.view().draggingUpdated({799, 5}); // beyond the last one
    QVERIFY(!desk.service.hoveredAction());
    desk.drop(799);
    desk.service.setEnabledActions({});
    desk.dragIn();
    desk.drop();
    desk.platform.drops.settle();
    QVERIFY(desk.calls.isEmpty() && isReset(desk.service));
    desk.clock.advance(1s);
    QVERIFY(!desk.isExpanded());
}

void NotchDragsTest::severalScreens()
{
    DragDesk desk;
    const auto second = desk.screens.add(QRectF(1600, 0, 1600, 900));
    const auto other = desk.makeController(second);
    const TrackingView &view = other->trackingView();
    desk.drags.begin(someFiles);
    QVERIFY(desk.isExpanded() && !other->notchState()->isExpanded()); // one of them is enough
    QVERIFY(view.draggingEntered(desk.data) && other->notchState()->isExpanded());
    view.draggingUpdated({100, 5});
    // The drop follows the release, which is no end for the notch that it is outside of.
    Q_EMIT desk.drags.released();
    QVERIFY(desk.service.isDragging() && desk.service.hoveredAction());
    view.performDragOperation(desk.data, {100, 5});
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded() && !other->notchState()->isExpanded());
}

void NotchDragsTest::goesWithItsController()
{
    DragDesk desk;
    const auto second = desk.screens.add(QRectF(1600, 0, 1600, 900));
    for (const bool isInside : {false, true}) {
        const auto other = desk.makeController(second);
        desk.drags.begin(someFiles);
        if (isInside) {
            desk.dragIn();
        }
        other->close(); // has no part in it
        QVERIFY(desk.service.isDragging());
        desk.controller->close();
        QVERIFY(isReset(desk.service));
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
    roles.applications << Application{u"a"_s, u"A"_s, {}};
    desk.service.setEnabledActions({DropActionID::openWith});
    const OpenWithMenu &menu = *desk.service.openWithMenu();
    const auto drop = [&] {
        desk.dragIn();
        desk.drop();
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
    desk.drags.begin(someFiles);
    desk.clock.advance(1s);
    QVERIFY(desk.isExpanded() && !menu.isOpen());
    // Nobody is left to show it.
    drop();
    desk.controller = desk.makeController(desk.screen);
    roles.settle();
    QVERIFY(!menu.isOpen());
    drop();
    roles.settle();
    QVERIFY(menu.isOpen());
    desk.controller->close();
    QVERIFY(!menu.isOpen());
}

QTEST_MAIN(NotchDragsTest)
#include "NotchDragsTest.moc"
