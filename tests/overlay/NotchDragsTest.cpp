#include "overlay/ControllerDesk.h"

#include <QDropEvent>
#include <QTest>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

const QList<QUrl> someFiles{QUrl(u"file:///tmp/a"_s), QUrl(u"file:///tmp/b"_s)};

struct DragDesk : ControllerDesk {
    DragDesk() { data.setUrls(someFiles); }

    void dragIn() { QVERIFY(controller->dragEntered(data)); }
    void drop(double x = 300) { controller->dragPerformed(data, {x, 60}); }

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
    void windowTakesFilesOnly();
    void dragOpensThePanel();
    void dragOverThePanel();
    void dragEndsElsewhere();
    void dropWithoutFilesOrAction();
    void severalScreens();
    void goesWithItsController();
    void choiceOfAnApplication();
};

void NotchDragsTest::windowTakesFilesOnly()
{
    DragDesk desk;
    const auto send = [&](QEvent::Type type, const QMimeData &data) {
        const auto actions = Qt::CopyAction | Qt::MoveAction;
        QDropEvent event({300, 20}, actions, &data, Qt::LeftButton, {}, type);
        QCoreApplication::sendEvent(desk.window, &event);
        return event.isAccepted();
    };
    const auto leave = [&] {
        QDragLeaveEvent event;
        QCoreApplication::sendEvent(desk.window, &event);
    };
    QMimeData files;
    files.setUrls({QUrl(u"https://example.org/a"_s), QUrl(u"file:///tmp/a%20b"_s)});
    QMimeData promised;
    promised.setData(u"XdndDirectSave0"_s, "a.txt");
    QMimeData text;
    text.setText(u"words"_s);
    QMimeData links;
    links.setUrls({QUrl(u"https://example.org/a"_s)});

    QVERIFY(send(QEvent::DragEnter, files) && send(QEvent::DragMove, files));
    QCOMPARE(desk.service.draggedFiles(), files.urls().mid(1));
    QCOMPARE(desk.service.hoveredAction(), std::optional(DropActionID::zip));
    leave();
    QVERIFY(isReset(desk.service));
    desk.clock.advance(1s);
    desk.calls.clear();
    for (const QMimeData *foreign : {&text, &links}) {
        QVERIFY(!send(QEvent::DragEnter, *foreign) && !send(QEvent::DragMove, *foreign));
        leave();
        QVERIFY(!send(QEvent::Drop, *foreign) && !desk.isExpanded());
    }
    // What is known already is not read from the source again.
    QVERIFY(send(QEvent::DragEnter, promised) && desk.service.draggedFiles().isEmpty());
    desk.drags.known = someFiles;
    QVERIFY(send(QEvent::Drop, promised));
    desk.platform.drops.settle();
    QVERIFY(desk.calls.join(u' ').contains(u"/tmp/b"_s));
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
    desk.controller->dragUpdated({300, 100});
    QCOMPARE(desk.service.hoveredAction(), std::optional(DropActionID::zip));
    desk.controller->dragExited();
    QVERIFY(isReset(desk.service));
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded());

    // Left and come back, and then dropped: the release itself is no end of it.
    desk.drags.begin(someFiles);
    desk.dragIn();
    desk.controller->dragExited();
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
    QVERIFY(desk.controller->dragEntered(promised));
    desk.controller->dragPerformed(promised, {300, 5});
    QVERIFY(isReset(desk.service));
    desk.dragIn();
    desk.controller->dragUpdated({799, 5}); // beyond the last one
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
    desk.drags.begin(someFiles);
    QVERIFY(desk.isExpanded() && !other->isExpanded()); // one of them is enough
    QVERIFY(other->dragEntered(desk.data) && other->isExpanded());
    other->dragUpdated({100, 5});
    // The drop follows the release, which is no end for the notch that it is outside of.
    Q_EMIT desk.drags.released();
    QVERIFY(desk.service.isDragging() && desk.service.hoveredAction());
    other->dragPerformed(desk.data, {100, 5});
    desk.clock.advance(300ms);
    QVERIFY(!desk.isExpanded() && !other->isExpanded());
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
    const auto drop = [&](std::chrono::milliseconds toTheList = 0ms) {
        desk.dragIn();
        desk.drop();
        desk.clock.advance(toTheList);
        roles.settle();
    };
    const auto isShown = [&] { return desk.isExpanded() && desk.controller->isOpenWithShown(); };
    const auto isGone = [&] { return !desk.isExpanded() && !menu.isOpen(); };

    // The list comes when the panel has closed: it opens once more, and waits for the pointer.
    drop(1s);
    desk.clock.advance(9s);
    QVERIFY(isShown());
    QCOMPARE(desk.controller->dropPosition(), QPointF(300, 60));
    desk.enter();
    desk.clock.advance(1min);
    QVERIFY(isShown());
    desk.leave();
    desk.clock.advance(300ms);
    QVERIFY(isGone());
    // It does not wait for ever, and not for the next drag.
    drop();
    desk.clock.advance(10s);
    QVERIFY(isGone());
    drop();
    desk.drags.begin(someFiles);
    desk.clock.advance(1s);
    QVERIFY(desk.isExpanded() && !menu.isOpen());
    // Nobody is left to show it.
    desk.dragIn();
    desk.drop();
    desk.controller = desk.makeController(desk.screen);
    roles.settle();
    QVERIFY(!menu.isOpen());
    drop();
    QVERIFY(menu.isOpen());
    desk.controller->close();
    QVERIFY(!menu.isOpen());
}

QTEST_MAIN(NotchDragsTest)
#include "NotchDragsTest.moc"
