#include "platform/linux/windowing/Windowing.h"

#include <QElapsedTimer>
#include <QLocalServer>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace velmora;
using namespace Qt::StringLiterals;

class WindowSystemChoiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        for (const char *name :
             {"QT_QPA_PLATFORM", "QT_QUICK_BACKEND", "QSG_RHI_BACKEND", "QSG_RENDER_LOOP",
              "DISPLAY", "WAYLAND_DISPLAY", "WAYLAND_SOCKET", "XDG_SESSION_TYPE",
              "QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT", "QT_WAYLAND_DISABLE_FIXED_POSITIONS",
              "QT_WAYLAND_CLIENT_BUFFER_INTEGRATION"})
            qunsetenv(name);
        qputenv("XDG_RUNTIME_DIR", m_runtime.path().toUtf8());
    }

    void softwareUnlessTheUserSaysOtherwise()
    {
        qputenv("DISPLAY", ":7");
        chooseWindowSystem();
        QCOMPARE(qgetenv("QT_QPA_PLATFORM"), "xcb");
        QCOMPARE(qgetenv("QT_QUICK_BACKEND"), "software");
        QCOMPARE(qgetenv("QSG_RENDER_LOOP"), "basic");
        QVERIFY(!qEnvironmentVariableIsSet("QT_WAYLAND_CLIENT_BUFFER_INTEGRATION"));

        init();
        qputenv("QT_QPA_PLATFORM", "wayland-egl");
        qputenv("QSG_RHI_BACKEND", "opengl");
        qputenv("QSG_RENDER_LOOP", "threaded");
        chooseWindowSystem();
        QCOMPARE(qgetenv("QT_QPA_PLATFORM"), "wayland-egl");
        QVERIFY(!qEnvironmentVariableIsSet("QT_QUICK_BACKEND"));
        QCOMPARE(qgetenv("QSG_RENDER_LOOP"), "threaded");
        QCOMPARE(qgetenv("QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT"), "1");
        // Drawing with the GPU needs the integration.
        QVERIFY(!qEnvironmentVariableIsSet("QT_WAYLAND_CLIENT_BUFFER_INTEGRATION"));
    }

    void ownEnvironmentNamesWhatWasSetHere()
    {
        qputenv("DISPLAY", ":7");
        qputenv("QSG_RENDER_LOOP", "threaded");
        chooseWindowSystem();
        const auto &own = ownEnvironment();
        QVERIFY(std::ranges::find(own, "QT_QPA_PLATFORM") != own.end());
        QVERIFY(std::ranges::find(own, "QSG_RENDER_LOOP") == own.end());
    }

    void compositorThatDoesNotAnswer()
    {
        qputenv("DISPLAY", ":7");
        qputenv("WAYLAND_DISPLAY", "wayland-gone");
        chooseWindowSystem();
        QCOMPARE(qgetenv("QT_QPA_PLATFORM"), "xcb");

        init();
        QLocalServer mute; // takes connections and says nothing
        QVERIFY(mute.listen(m_runtime.filePath(u"wayland-mute"_s)));
        qputenv("DISPLAY", ":7");
        qputenv("WAYLAND_DISPLAY", "wayland-mute");
        QElapsedTimer watch;
        watch.start();
        chooseWindowSystem();
        QCOMPARE(qgetenv("QT_QPA_PLATFORM"), "xcb");
        QVERIFY2(watch.elapsed() < 5000, qPrintable(QString::number(watch.elapsed())));
    }

    void inheritedConnectionIsLeftToQt()
    {
        qputenv("DISPLAY", ":7");
        qputenv("WAYLAND_SOCKET", "42");
        chooseWindowSystem();
        QCOMPARE(qgetenv("QT_QPA_PLATFORM"), "wayland");
        QCOMPARE(qgetenv("WAYLAND_SOCKET"), "42");
    }

private:
    QTemporaryDir m_runtime;
};

QTEST_GUILESS_MAIN(WindowSystemChoiceTest)
#include "WindowSystemChoiceTest.moc"
