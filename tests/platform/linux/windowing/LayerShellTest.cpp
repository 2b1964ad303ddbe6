#include "platform/linux/windowing/Windowing.h"
#include "platform/linux/windowing/XPeer.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QRasterWindow>
#include <QScreen>
#include <QTest>
#include <QVariantAnimation>

using namespace velmora;
using namespace Qt::StringLiterals;

namespace
{

class Window : public QRasterWindow
{
public:
    explicit Window(const QColor &color)
        : m_color(color)
    {
        QSurfaceFormat format;
        format.setAlphaBufferSize(8);
        setFormat(format);
    }

    QString typed;

protected:
    void keyPressEvent(QKeyEvent *event) override { typed += event->text(); }
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(QRect(QPoint(), size()), Qt::transparent);
        painter.fillRect(0, 0, width() / 2, height(), m_color);
    }

private:
    QColor m_color;
};

bool run(const QString &program, const QStringList &arguments)
{
    return QProcess::execute(program, arguments) == 0;
}

/// What the compositor shows of a screen, through a client of its own.
QImage picture(const QString &output)
{
    QProcess grim;
    grim.start(u"grim"_s, {u"-o"_s, output, u"-t"_s, u"ppm"_s, u"-"_s});
    grim.waitForFinished();
    return QImage::fromData(grim.readAllStandardOutput(), "PPM");
}

QRect boundsOn(const Screen &screen)
{
    const QRect frame = screen.frame().toRect();
    return {frame.x() + frame.width() / 2 - 100, frame.y(), 200, 40};
}

} // namespace

class LayerShellTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::platformName(), u"wayland"_s);
        m_windowing = makeWindowing();
        QCOMPARE(m_windowing.screens->all().size(), 2U);
        QVERIFY(!m_windowing.pointer->location());
    }

    void standsAtTheTopCentreOfItsScreen()
    {
        const auto screens = m_windowing.screens->all();
        const auto name = screens.back()->localizedName();
        Window window(Qt::red);
        const QRect bounds = boundsOn(*screens.back());
        auto surface = m_windowing.shell->adopt(window, *screens.back(), bounds);
        QVERIFY(!window.isVisible());
        surface->orderFront();
        QVERIFY(QTest::qWaitForWindowExposed(&window));

        const int left = bounds.x() - screens.back()->frame().toRect().x();
        const QRgb red = qRgb(255, 0, 0);
        QTRY_COMPARE(picture(name).pixel(left, 0), red);
        const QImage shown = picture(name);
        QVERIFY(shown.pixel(left - 1, 0) != red);
        QCOMPARE(shown.pixel(left + 99, 39), red);
        QVERIFY(shown.pixel(left + 100, 39) != red); // transparent
        QVERIFY(shown.pixel(left, 40) != red);

        surface.reset();
        QTRY_VERIFY(picture(name).pixel(left, 0) != red);
    }

    void keyboardOnWishOnly()
    {
        const auto screen = m_windowing.screens->all().front();
        Window ordinary(Qt::gray);
        ordinary.resize(300, 200);
        ordinary.show();
        QTRY_COMPARE(QGuiApplication::focusWindow(), &ordinary);
        Window window(Qt::blue);
        auto surface = shownOn(*screen, window);
        XPeer host(qgetenv("VELMORA_HOST_DISPLAY").constData());
        for (int round = 1; round <= 2; ++round) {
            surface->setKeyboardWanted(true);
            QTRY_COMPARE(QGuiApplication::focusWindow(), &window);
            host.type(38);
            QTRY_COMPARE(window.typed, u"a"_s.repeated(round));
            surface->setKeyboardWanted(false);
            QTRY_COMPARE(QGuiApplication::focusWindow(), &ordinary);
        }
        QVERIFY(ordinary.typed.isEmpty());
    }

    void animationsGoWithTheFrames()
    {
        const auto screen = m_windowing.screens->all().front();
        Window window(Qt::yellow);
        auto surface = shownOn(*screen, window);
        QVariantAnimation animation;
        animation.setStartValue(0.0);
        animation.setEndValue(1.0);
        animation.setDuration(300);
        int steps = 0;
        connect(&animation, &QVariantAnimation::valueChanged, &window, [&] {
            ++steps;
            window.update();
        });
        animation.start();
        QTRY_COMPARE(animation.state(), QAbstractAnimation::Stopped);
        QVERIFY(steps > 1);
        // Also where there is nothing to be drawn, and no frame comes.
        surface.reset();
        animation.start();
        QTRY_COMPARE(animation.state(), QAbstractAnimation::Stopped);
    }

    void closedByTheCompositor()
    {
        Window window(Qt::green);
        const auto screen = m_windowing.screens->all().back();
        auto surface = shownOn(*screen, window);

        // The screen goes, and the surface with it; the owner has not heard yet.
        XPeer host(qgetenv("VELMORA_HOST_DISPLAY").constData());
        QVERIFY(host.close("wlroots - " + screen->localizedName().toUtf8()));
        QTRY_COMPARE(m_windowing.screens->all().size(), 1U);
        QTRY_VERIFY(!window.handle());
        surface->setShape([](double, bool) { return QRect(0, 0, 10, 10); });
        surface->orderFront();
        QVERIFY(!window.isVisible());
        QVERIFY(screen->frame().isNull());
    }

    void newScreenAndNewScaleAreTold()
    {
        QVERIFY(run(u"swaymsg"_s, {u"create_output"_s}));
        QTRY_COMPARE(m_windowing.screens->all().size(), 2U);
        const auto first = m_windowing.screens->all().front();
        const QRectF before = first->frame();
        bool told = false;
        connect(m_windowing.screens.get(), &Screens::changed, this,
                [&] { told = told || first->handle()->devicePixelRatio() == 2; });
        QVERIFY(run(u"swaymsg"_s, {u"output"_s, first->localizedName(), u"scale"_s, u"2"_s}));
        QTRY_VERIFY(told);
        QCOMPARE(first->frame().size(), before.size() / 2);
    }

    void cleanupTestCase() { m_windowing = {}; }

private:
    std::unique_ptr<OverlaySurface> shownOn(const Screen &screen, Window &window) const
    {
        auto surface = m_windowing.shell->adopt(window, screen, boundsOn(screen));
        surface->orderFront();
        if (!QTest::qWaitForWindowExposed(&window))
            qFatal("the window does not come");
        return surface;
    }

    Windowing m_windowing;
};

int main(int argc, char **argv)
{
    chooseWindowSystem();
    QGuiApplication app(argc, argv);
    LayerShellTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "LayerShellTest.moc"
