#include "platform/linux/windowing/Windowing.h"
#include "platform/linux/windowing/XPeer.h"

#include <QGuiApplication>
#include <QProcess>
#include <QRasterWindow>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

using namespace velmora;

namespace
{

constexpr QSize overlaySize(300, 100);

/// Counts what the pointer does to it.
class Window : public QRasterWindow
{
public:
    int enters = 0;
    int leaves = 0;
    int moves = 0;

    [[nodiscard]] xcb_window_t id() const { return static_cast<xcb_window_t>(winId()); }

protected:
    bool event(QEvent *event) override
    {
        enters += event->type() == QEvent::Enter;
        leaves += event->type() == QEvent::Leave;
        moves += event->type() == QEvent::MouseMove;
        return QRasterWindow::event(event);
    }
};

/// One window on the first screen, shown and exposed.
struct Overlay {
    explicit Overlay(Windowing &windowing, const QRegion &shape = QRect(QPoint(), overlaySize))
    {
        const auto screen = windowing.screens->all().front();
        const QRect frame = screen->frame().toRect();
        bounds = QRect({frame.center().x() - overlaySize.width() / 2, frame.top()}, overlaySize);
        surface = windowing.shell->adopt(window, *screen, bounds);
        surface->setShape(shape);
        surface->orderFront();
        shown = QTest::qWaitForWindowExposed(&window);
    }

    QRect bounds;
    Window window;
    std::unique_ptr<OverlaySurface> surface;
    bool shown = false;
};

int xrandr(const QStringList &arguments)
{
    return QProcess::execute(QStringLiteral("xrandr"), arguments);
}

} // namespace

class X11WindowingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
        m_windowing = makeWindowing();
        QCOMPARE(m_windowing.screens->all().size(), 2U);
        m_peer.move(away);
    }

    void shapeCutsPixelsAndPointer()
    {
        Overlay overlay(m_windowing, QRect(50, 0, 200, 30));
        QVERIFY(overlay.shown);
        const QPoint corner = overlay.bounds.topLeft();
        const xcb_window_t id = overlay.window.id();
        QCOMPARE(m_peer.geometry(id), overlay.bounds);
        QTRY_COMPARE(m_peer.windowAt(corner + QPoint(50, 29)), id);
        QVERIFY(m_peer.windowAt(corner + QPoint(49, 29)) != id);
        QVERIFY(m_peer.windowAt(corner + QPoint(50, 30)) != id);

        overlay.surface->setShape(QRect(QPoint(), overlaySize));
        QTRY_COMPARE(m_peer.windowAt(corner + QPoint(49, 99)), id);
        overlay.surface->setShape({});
        QTRY_VERIFY(m_peer.windowAt(corner + QPoint(100, 10)) != id);

        overlay.surface.reset();
        QTRY_VERIFY(m_peer.geometry(id).isNull());
        m_peer.move(away);
    }

    void neverTakesTheFocus()
    {
        const xcb_window_t before = m_peer.focus();
        Overlay overlay(m_windowing);
        QVERIFY(overlay.shown);
        m_peer.move(overlay.bounds.center());
        QTRY_COMPARE(overlay.window.enters, 1);
        m_peer.press();
        m_peer.release();
        m_peer.move(away);
        QTRY_COMPARE(overlay.window.leaves, 1);
        QCOMPARE(m_peer.focus(), before);
        QVERIFY(!overlay.window.isActive());
    }

    void staysAboveManagedWindowsAndBelowLockers()
    {
        Overlay overlay(m_windowing);
        QVERIFY(overlay.shown);
        const xcb_window_t id = overlay.window.id();
        const QRect all(0, 0, 1600, 600);

        const xcb_window_t frame = m_peer.coverWith(all, true);
        QTRY_VERIFY(m_peer.isAbove(id, frame));
        m_peer.raise(frame);
        QTRY_VERIFY(m_peer.isAbove(id, frame));

        // The second frame ends the wait: when the overlay is above it, the locker has been seen.
        const xcb_window_t locker = m_peer.coverWith(all, false);
        m_peer.raise(frame);
        m_peer.raise(locker);
        QTRY_VERIFY(m_peer.isAbove(id, frame));
        QVERIFY(m_peer.isAbove(locker, id));
        m_peer.remove(locker);
        m_peer.remove(frame);
    }

    void contestForTheTopEnds()
    {
        Overlay overlay(m_windowing);
        QVERIFY(overlay.shown);
        const xcb_window_t frame = m_peer.coverWith({0, 0, 1600, 600}, true);
        const auto lifted = [&] { return m_peer.isAbove(overlay.window.id(), frame); };
        int rounds = 0;
        while (rounds < 20 && QTest::qWaitFor(lifted, 500)) {
            ++rounds;
            m_peer.raise(frame);
        }
        QVERIFY2(rounds < 20, "still climbing");
        m_peer.remove(frame);
    }

    void movesReachTheWindowOnlyWhenWanted()
    {
        Overlay overlay(m_windowing);
        QVERIFY(overlay.shown);
        const QPoint corner = overlay.bounds.topLeft();
        const auto enter = [&] {
            overlay.window.moves = 0;
            const int enters = overlay.window.enters;
            m_peer.move(corner + QPoint(10, 20));
            return QTest::qWaitFor([&] { return overlay.window.enters == enters + 1; });
        };
        const auto leave = [&] {
            const int leaves = overlay.window.leaves;
            m_peer.move(away);
            return QTest::qWaitFor([&] { return overlay.window.leaves == leaves + 1; });
        };

        for (const bool wanted : {true, false, true}) {
            overlay.surface->setMotionWanted(wanted);
            QVERIFY(enter());
            m_peer.move(corner + QPoint(100, 20));
            if (wanted) // moves that wait together with a leave are dropped by Qt
                QTRY_VERIFY(overlay.window.moves > 0);
            QVERIFY(leave());
            if (!wanted)
                QCOMPARE(overlay.window.moves, 0);
        }
    }

    void dragsOfOthersAreFollowed()
    {
        QSignalSpy moved(m_windowing.pointer.get(), &Pointer::movedElsewhere);
        m_peer.move({400, 500});
        QTRY_COMPARE(m_windowing.pointer->location(), QPointF(400, 500));
        QVERIFY(m_peer.grabPointer());
        m_peer.press(4); // a wheel is no drag
        m_peer.release(4);
        m_peer.press();
        for (const QPoint to : {QPoint(410, 300), QPoint(900, 7)}) {
            m_peer.move(to);
            QTRY_VERIFY(!moved.isEmpty() && moved.last().first().toPointF() == QPointF(to));
        }
        m_peer.release();
        m_peer.ungrabPointer();

        // Released, moves are nobody's business. The next drag tells when all is over.
        moved.clear();
        m_peer.move({420, 300});
        m_peer.move({430, 300});
        m_peer.press();
        m_peer.move({440, 310});
        QTRY_VERIFY(!moved.isEmpty() && moved.last().first().toPointF() == QPointF(440, 310));
        for (const auto &arguments : moved)
            QVERIFY(arguments.first().toPointF() != QPointF(420, 300));
        m_peer.release();
        m_peer.move(away);
    }

    void removedScreenIsGoneWithinTheRemoval()
    {
        Screens &screens = *m_windowing.screens;
        const std::weak_ptr<Screen> second = screens.all().back();
        const QString name = second.lock()->localizedName();
        std::vector<std::size_t> counts;
        bool expired = false;
        QObject listener; // the connections end with this test
        connect(&screens, &Screens::changed, &listener, [&] {
            counts.push_back(screens.all().size());
            expired = expired || second.expired();
        });
        bool toldAtOnce = false;
        connect(qGuiApp, &QGuiApplication::screenRemoved, &listener,
                [&] { toldAtOnce = !counts.empty() && counts.back() == 1; });

        QCOMPARE(xrandr({QStringLiteral("--delmonitor"), name}), 0);
        QTRY_VERIFY(!counts.empty() && counts.back() == 1);
        QVERIFY(toldAtOnce);
        QVERIFY(expired);

        counts.clear();
        QCOMPARE(xrandr({QStringLiteral("--setmonitor"), name,
                         QStringLiteral("800/400x600/300+800+0"), QStringLiteral("none")}),
                 0);
        QTRY_VERIFY(!counts.empty() && counts.back() == 2);
    }

    void withoutAnOutputThereIsNoScreen()
    {
        for (const auto &screen : m_windowing.screens->all())
            xrandr({QStringLiteral("--delmonitor"), screen->localizedName()});
        QTRY_COMPARE(m_windowing.screens->all().size(), 1U);
        QSignalSpy changed(m_windowing.screens.get(), &Screens::changed);
        const QString output = m_windowing.screens->all().front()->localizedName();
        QCOMPARE(xrandr({QStringLiteral("--output"), output, QStringLiteral("--off"),
                         QStringLiteral("--fb"), QStringLiteral("1600x600")}),
                 0);
        QTRY_COMPARE(changed.size(), 1);
        QVERIFY(m_windowing.screens->all().empty());

        QCOMPARE(xrandr({QStringLiteral("--output"), output, QStringLiteral("--auto")}), 0);
        QTRY_COMPARE(m_windowing.screens->all().size(), 1U);
        QTRY_VERIFY(changed.size() >= 2);
    }

    void cleanupTestCase() { m_windowing = {}; }

private:
    static constexpr QPoint away{20, 550};

    XPeer m_peer;
    Windowing m_windowing;
};

QTEST_MAIN(X11WindowingTest)
#include "X11WindowingTest.moc"
