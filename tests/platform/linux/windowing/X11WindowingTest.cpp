#include "platform/linux/windowing/Windowing.h"
#include "platform/linux/windowing/XPeer.h"

#include <QGuiApplication>
#include <QProcess>
#include <QRasterWindow>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace Qt::StringLiterals;

namespace
{

constexpr QSize overlaySize(300, 100);

OverlayShape shapeOf(const QRegion &region)
{
    return [region](double, bool) { return region; };
}

/// Counts what the pointer does to it.
class Window : public QRasterWindow
{
public:
    int enters = 0;
    int leaves = 0;
    int moves = 0;
    QString typed;

    [[nodiscard]] xcb_window_t id() const { return static_cast<xcb_window_t>(winId()); }

protected:
    bool event(QEvent *event) override
    {
        enters += event->type() == QEvent::Enter;
        leaves += event->type() == QEvent::Leave;
        moves += event->type() == QEvent::MouseMove;
        return QRasterWindow::event(event);
    }
    void keyPressEvent(QKeyEvent *event) override { typed += event->text(); }
};

/// One window on the first screen, shown and exposed.
struct Overlay {
    explicit Overlay(Windowing &windowing, const QRegion &shape = QRect(QPoint(), overlaySize))
    {
        const auto screen = windowing.screens->all().front();
        const QRect frame = screen->frame().toRect();
        bounds = QRect({frame.center().x() - overlaySize.width() / 2, frame.top()}, overlaySize);
        surface = windowing.shell->adopt(window, *screen, bounds);
        surface->setShape(shapeOf(shape));
        surface->orderFront();
        shown = QTest::qWaitForWindowExposed(&window);
    }

    QRect bounds;
    Window window;
    std::unique_ptr<OverlaySurface> surface;
    bool shown = false;
};

/// Until it has done what Qt has sent. No event is handled here meanwhile.
void waitForServer()
{
    auto *xcb = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    std::free(xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr)); // NOLINT
}

int xrandr(const QStringList &arguments)
{
    return QProcess::execute(u"xrandr"_s, arguments);
}

} // namespace

class X11WindowingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::platformName(), u"xcb"_s);
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

        // It grows before anything can be drawn there, and shrinks after it has been drawn without.
        overlay.surface->setShape(shapeOf(QRect(QPoint(), overlaySize)));
        waitForServer();
        QCOMPARE(m_peer.windowAt(corner + QPoint(49, 99)), id);
        overlay.surface->setShape(shapeOf({}));
        waitForServer();
        QCOMPARE(m_peer.windowAt(corner + QPoint(49, 99)), id);
        QTRY_VERIFY(m_peer.windowAt(corner + QPoint(100, 10)) != id);

        overlay.surface.reset();
        QTRY_VERIFY(m_peer.geometry(id).isNull());
        m_peer.move(away);
    }

    void keyboardOnWishOnly()
    {
        const xcb_window_t typing = m_peer.openWindow({100, 300, 300, 200});
        QTRY_COMPARE(m_peer.focus(), typing);
        Overlay overlay(m_windowing);
        QVERIFY(overlay.shown);
        m_peer.move(overlay.bounds.center());
        QTRY_COMPARE(overlay.window.enters, 1);
        m_peer.press();
        m_peer.release();
        m_peer.move(away);
        QTRY_COMPARE(overlay.window.leaves, 1);
        QCOMPARE(m_peer.focus(), typing);

        overlay.surface->setKeyboardWanted(true);
        QTRY_COMPARE(QGuiApplication::focusWindow(), &overlay.window);
        m_peer.type(38);
        QTRY_COMPARE(overlay.window.typed, u"a"_s);
        overlay.surface->setKeyboardWanted(false);
        QTRY_COMPARE(m_peer.focus(), typing);
        QTRY_VERIFY(!overlay.window.isActive());

        // The user has gone on to another window meanwhile.
        const xcb_window_t other = m_peer.openWindow({500, 300, 200, 200});
        QTRY_COMPARE(m_peer.focus(), other);
        overlay.surface->setKeyboardWanted(true);
        QTRY_COMPARE(m_peer.focus(), overlay.window.id());
        m_peer.setFocus(typing);
        overlay.surface->setKeyboardWanted(false);
        QCOMPARE(m_peer.focus(), typing);

        // The window that had it is gone; and the overlay itself goes, with the keyboard.
        overlay.surface->setKeyboardWanted(true);
        QTRY_COMPARE(m_peer.focus(), overlay.window.id());
        m_peer.remove(typing);
        overlay.surface.reset();
        QTRY_COMPARE(m_peer.focus(), other);
        m_peer.remove(other);
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

        // A frame that insists on the top has it in the end.
        m_peer.raise(frame);
        const auto lifted = [&] { return m_peer.isAbove(id, frame); };
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
            if (wanted) { // moves that wait together with a leave are dropped by Qt
                QTRY_VERIFY(overlay.window.moves > 0);
                m_peer.press();
                overlay.window.moves = 0;
                m_peer.move(corner + QPoint(50, 20));
                QTRY_VERIFY(overlay.window.moves > 0);
                m_peer.release();
                QTRY_COMPARE(QGuiApplication::mouseButtons(), Qt::NoButton);
            }
            QVERIFY(leave());
            if (!wanted)
                QCOMPARE(overlay.window.moves, 0);
        }
    }

    void dragsOfOthersAreFollowed()
    {
        QCOMPARE(QGuiApplication::mouseButtons(), Qt::NoButton);
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
        // Also where it ended, however quickly.
        m_peer.move({500, 200});
        m_peer.release();
        QTRY_COMPARE(moved.last().first().toPointF(), QPointF(500, 200));
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

    void fileDragsOfOthers_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<int>("files");
        QTest::newRow("a file") << QByteArray("file:///tmp/a\r\n") << 1;
        const QByteArray lines = QByteArray("file:///tmp/a\r\n").repeated(65'535 / 15);
        QTest::newRow("a line at the limit") << lines + "file:///tmp/another" << 65'535 / 15 + 1;
        QTest::newRow("no end of a line") << "file:///tmp/" + QByteArray(70'000, 'a') << 1;
    }

    void fileDragsOfOthers()
    {
        QFETCH(const QByteArray, list);
        QFETCH(const int, files);
        QSignalSpy began(m_windowing.drags.get(), &FileDrags::began);
        QSignalSpy released(m_windowing.drags.get(), &FileDrags::released);
        m_peer.press(2);
        m_peer.offerFiles(list);
        QTRY_VERIFY((m_peer.answer(), !began.isEmpty()));
        QTRY_COMPARE(m_windowing.drags->files().size(), files);
        QCOMPARE(began.size(), 1);
        // A wheel and a second button do not end it.
        m_peer.press(4);
        m_peer.release(4);
        m_peer.press(3);
        m_peer.release(2);
        QSignalSpy moved(m_windowing.pointer.get(), &Pointer::movedElsewhere);
        m_peer.move({450, 400});
        QTRY_VERIFY(!moved.isEmpty());
        QCOMPARE(released.size(), 0);
        m_peer.release(3);
        QTRY_COMPARE(released.size(), 1);
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

        QCOMPARE(xrandr({u"--delmonitor"_s, name}), 0);
        QTRY_VERIFY(!counts.empty() && counts.back() == 1);
        QVERIFY(toldAtOnce);
        QVERIFY(expired);

        counts.clear();
        QCOMPARE(xrandr({u"--setmonitor"_s, name, u"800/400x600/300+800+0"_s, u"none"_s}), 0);
        QTRY_VERIFY(!counts.empty() && counts.back() == 2);

        // Without an output there is none.
        for (const auto &screen : screens.all())
            xrandr({u"--delmonitor"_s, screen->localizedName()});
        QTRY_COMPARE(screens.all().size(), 1U);
        QSignalSpy changed(&screens, &Screens::changed);
        const QString output = screens.all().front()->localizedName();
        QCOMPARE(xrandr({u"--output"_s, output, u"--off"_s, u"--fb"_s, u"1600x600"_s}), 0);
        QTRY_COMPARE(changed.size(), 1);
        QVERIFY(screens.all().empty());

        QCOMPARE(xrandr({u"--output"_s, output, u"--auto"_s}), 0);
        QTRY_COMPARE(screens.all().size(), 1U);
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
